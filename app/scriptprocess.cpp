#include "app/scriptprocess.h"

#include <QDir>
#include <QFileInfo>
#include <QTimer>

namespace vesk {

namespace {

/// Rows are given on this often, in ms.
constexpr int giveInterval = 40;

/// Entries of the search path that are no absolute folders are passed over: they would
/// find whatever lies in the current one. Empty if there is no such program.
QString programPath(const QString &name)
{
    if (name.contains(u'/'))
        return name;
    const QStringList folders = qEnvironmentVariable("PATH").split(u':', Qt::SkipEmptyParts);
    for (const QString &folder : folders) {
        const QFileInfo file(folder + u'/' + name);
        if (QDir::isAbsolutePath(folder) && file.isFile() && file.isExecutable())
            return file.filePath();
    }
    return {};
}

} // namespace

ScriptProcess::ScriptProcess(const QStringList &arguments, const QString &folder, QObject *parent)
    : QProcess(parent), argv(arguments), give(new QTimer(this))
{
    const bool isFolder = !folder.isEmpty() && QFileInfo(folder).isDir();
    if (isFolder)
        setWorkingDirectory(folder);
    output = std::make_unique<OutputRows>(isFolder ? folder : QDir::currentPath());
    setStandardInputFile(nullDevice());
    give->setSingleShot(true);
    give->setInterval(giveInterval);
    connect(give, &QTimer::timeout, this, &ScriptProcess::giveRows);
    connect(this, &QProcess::readyReadStandardOutput, this, &ScriptProcess::readStdout);
    connect(this, &QProcess::readyReadStandardError, this, &ScriptProcess::readStderr);
    // The first to hear of it, so that the rows come before what others make of the end.
    connect(this, &QProcess::finished, this, [this] {
        readStdout();
        readStderr();
        output->finish();
        giveRows();
    });
}

ScriptProcess::~ScriptProcess()
{
    // The base would kill the program otherwise.
    setProcessState(NotRunning);
}

bool ScriptProcess::run()
{
    const QString program = programPath(name());
    if (program.isEmpty())
        return false;
    start(program, argv.mid(1));
    return waitForStarted();
}

void ScriptProcess::readStdout()
{
    take(OutputStream::Output, readAllStandardOutput());
}

void ScriptProcess::readStderr()
{
    take(OutputStream::Error, readAllStandardError());
}

void ScriptProcess::take(OutputStream stream, const QByteArray &bytes)
{
    output->add(stream, bytes);
    if (!output->isEmpty() && !give->isActive())
        give->start();
}

void ScriptProcess::giveRows()
{
    give->stop();
    if (!output->isEmpty())
        emit rowsCame(output->take());
}

} // namespace vesk
