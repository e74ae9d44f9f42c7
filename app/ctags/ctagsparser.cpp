#include "app/ctags/ctagsparser.h"

#include "app/ctags/ctagsoutput.h"
#include "app/ctags/node.h"
#include "app/message.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QHash>
#include <QMessageBox>
#include <QPointer>
#include <QProcess>
#include <QTemporaryDir>
#include <QThreadPool>
#include <QTimer>

#include <utility>

using namespace Qt::StringLiterals;

namespace vesk {

namespace {

/// In ms: a run that takes longer hangs. What it has printed until then counts.
constexpr int longestRun = 60'000;
/// In bytes, for one text: a run that prints more is stopped.
constexpr qsizetype mostOutput = 256 * 1024 * 1024;
/// In bytes, the end of the file's name that decides on the language. A longer one
/// is no language's, and would not fit into a file name.
constexpr qsizetype longestExtension = 100;

const QStringList forcedExtensions{u".ch"_s, u".CH"_s, u".chf"_s, u".CHF"_s, u".chs"_s, u".CHS"_s};

QString extensionOf(const QString &filePath)
{
    const qsizetype dot = filePath.lastIndexOf(u'.');
    return dot < 0 ? QString() : filePath.mid(dot);
}

} // namespace

/// One parse. Between its steps it is in the hands of one thread at a time.
struct CTagsParser::Job
{
    int key;
    QString ext;
    QString text;
    std::unique_ptr<QTemporaryDir> folder; ///< goes with all in it, whatever happens
    QString tmpname;
    QByteArray output;
    std::unique_ptr<Node> tree;

    bool writeCopy()
    {
        // mkdtemp(3) makes it for us alone, under a name that nobody knows before.
        folder = std::make_unique<QTemporaryDir>(QDir::tempPath() + u"/vesk-XXXXXX"_s);
        const bool fits = !ext.contains(u'/') && ext.toUtf8().size() <= longestExtension;
        tmpname =
            folder->filePath(u"vesk_"_s + QString::number(QDateTime::currentSecsSinceEpoch()) +
                             QString::number(key) + (fits ? ext : QString()));
        QFile copy(tmpname);
        return folder->isValid() && copy.open(QIODevice::WriteOnly | QIODevice::NewOnly) &&
               copy.write(text.toUtf8()) >= 0 && copy.flush();
    }

    void makeTree()
    {
        folder.reset();
        CTagsOutput result(text, ext);
        result.addLines(output);
        tree = result.buildTree();
    }
};

struct CTagsParser::Private
{
    QString ext; ///< of the text that parse() is about
    QHash<QProcess *, std::shared_ptr<Job>> jobs;
    QThreadPool pool;
    /// The user knows that the program can't be run.
    bool isFailureTold = false;
};

CTagsParser::CTagsParser(QObject *parent) : Parser(parent), d(std::make_unique<Private>())
{}

CTagsParser::~CTagsParser()
{
    d->pool.clear();
    d->pool.waitForDone();
    for (auto it = d->jobs.begin(); it != d->jobs.end(); ++it) {
        it.key()->disconnect(this);
        it.key()->kill();
    }
    for (auto it = d->jobs.begin(); it != d->jobs.end(); ++it)
        it.key()->waitForFinished();
}

CTagsParser *CTagsParser::self()
{
    static const QPointer<CTagsParser> parser = new CTagsParser(QCoreApplication::instance());
    return parser;
}

int CTagsParser::parse(const QString &text, const QString &filePath)
{
    d->ext = extensionOf(filePath);
    return Parser::parse(text, filePath);
}

int CTagsParser::parse(const QString &text)
{
    const auto job = std::make_shared<Job>();
    job->key = calculateKey(text);
    job->ext = d->ext;
    job->text = text;
    d->pool.start([this, job] {
        const bool isWritten = job->writeCopy();
        QMetaObject::invokeMethod(
            this, [this, job, isWritten] { isWritten ? start(job) : startFailed(*job); },
            Qt::QueuedConnection);
    });
    return job->key;
}

void CTagsParser::start(const std::shared_ptr<Job> &job)
{
    auto *process = new QProcess(this);
    QStringList arguments{u"-f"_s, u"-"_s, u"-n"_s, u"-V"_s, job->tmpname};
    if (forcedExtensions.contains(job->ext))
        arguments.prepend(u"--language-force=C++"_s);
    process->setProgram(u"ctags"_s);
    process->setArguments(arguments);
    // There, the options that a folder being edited holds for the tool don't count.
    process->setWorkingDirectory(job->folder->path());
    connect(process, &QProcess::readyReadStandardOutput, this, &CTagsParser::readyReadStdout);
    connect(process, &QProcess::readyReadStandardError, this, &CTagsParser::readyReadStderr);
    connect(process, &QProcess::finished, this, &CTagsParser::processExited);
    process->start(QIODevice::ReadOnly);
    if (!process->waitForStarted()) {
        delete process;
        startFailed(*job);
        return;
    }
    d->isFailureTold = false;
    d->jobs.insert(process, job);
    QTimer::singleShot(longestRun, process, &QProcess::kill);
}

void CTagsParser::startFailed(const Job &job)
{
    forget(job.key);
    if (std::exchange(d->isFailureTold, true))
        return;
    Message::warning(tr("Error"), tr("Can't run ctags program"), QMessageBox::Ok, 0, 0);
}

void CTagsParser::readyReadStderr()
{
    static_cast<QProcess *>(sender())->readAllStandardError();
}

void CTagsParser::readyReadStdout()
{
    takeOutput(static_cast<QProcess *>(sender()));
}

void CTagsParser::takeOutput(QProcess *process)
{
    QByteArray &output = d->jobs[process]->output;
    output += process->readAllStandardOutput();
    if (output.size() > mostOutput)
        process->kill();
}

void CTagsParser::processExited()
{
    auto *process = static_cast<QProcess *>(sender());
    takeOutput(process);
    const std::shared_ptr<Job> job = d->jobs.take(process);
    process->deleteLater();
    d->pool.start([this, job] {
        job->makeTree();
        QMetaObject::invokeMethod(
            this, [this, job] { deliver(*job); }, Qt::QueuedConnection);
    });
}

void CTagsParser::deliver(Job &job)
{
    // The cache takes it over.
    emit nodes(job.key, job.tree.release());
}

} // namespace vesk
