#include "app/ctags/ctagsparser.h"

#include "app/ctags/ctagsoutput.h"
#include "app/ctags/node.h"
#include "app/message.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QHash>
#include <QMessageBox>
#include <QPointer>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>
#include <QThreadPool>
#include <QTimer>

#include <atomic>
#include <utility>

#include <unistd.h>

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

/// In seconds: a folder of that age was left by a run of this program that was killed.
constexpr qint64 oldestFolder = 3600;
const QString folderPattern = u"vesk-tags-%1"_s;

/// Read by the tool in its working folder. Of the optional fields it prints only the
/// scope, which then is the one after the kind; others there would be taken for it.
constexpr char toolOptions[] = "--fields=fks\n"
                               "--fields-all=-{access}{category}{implements}{mixin}{nameref}"
                               "{package}{packageName}{protocols}{uri}\n";

const QStringList forcedExtensions{u".ch"_s, u".CH"_s, u".chf"_s, u".CHF"_s, u".chs"_s, u".CHS"_s};

QString extensionOf(const QString &filePath)
{
    const qsizetype dot = filePath.lastIndexOf(u'.');
    return dot < 0 ? QString() : filePath.mid(dot);
}

bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::NewOnly) && file.write(bytes) >= 0 &&
           file.flush();
}

void removeLeftFolders()
{
    const QDateTime limit = QDateTime::currentDateTime().addSecs(-oldestFolder);
    const QFileInfoList folders = QDir::temp().entryInfoList(
        {folderPattern.arg(u'*')}, QDir::Dirs | QDir::NoSymLinks | QDir::NoDotAndDotDot);
    for (const QFileInfo &folder : folders) {
        if (folder.ownerId() == getuid() && folder.lastModified() < limit)
            QDir(folder.filePath()).removeRecursively();
    }
}

} // namespace

/// One parse. Between its steps it is in the hands of one thread at a time.
struct CTagsParser::Job
{
    int key;
    QString ext;
    QString text;
    std::unique_ptr<QTemporaryDir> folder; ///< goes with all in it, whatever happens
    QString tmpname;                       ///< in the folder
    QByteArray output;
    std::unique_ptr<Node> tree;

    bool writeCopy()
    {
        // mkdtemp(3) makes it for us alone, under a name that nobody knows before.
        folder =
            std::make_unique<QTemporaryDir>(QDir::temp().filePath(folderPattern.arg(u"XXXXXX")));
        const bool fits = !ext.contains(u'/') && ext.toUtf8().size() <= longestExtension;
        // The same in all runs: the tool makes names for what has none from the file's.
        tmpname = u"vesk"_s + (fits ? ext : QString());
        return folder->isValid() && QDir(folder->path()).mkdir(u".ctags.d"_s) &&
               writeFile(folder->filePath(u".ctags.d/vesk.ctags"_s), toolOptions) &&
               writeFile(folder->filePath(tmpname), text.toUtf8());
    }

    /// Lets go of all that is large: freeing it takes a thread's time too.
    void makeTree(const std::atomic_bool &isStopped)
    {
        folder.reset();
        CTagsOutput result(std::exchange(text, QString()), ext, &isStopped);
        result.addLines(std::exchange(output, QByteArray()));
        tree = result.buildTree();
    }
};

struct CTagsParser::Private
{
    QString ext; ///< of the text that parse() is about
    QHash<QProcess *, std::shared_ptr<Job>> jobs;
    QThreadPool pool;
    std::atomic_bool isStopped = false;
    bool areLeftFoldersRemoved = false;
    /// The user knows that the program can't be run.
    bool isFailureTold = false;
};

CTagsParser::CTagsParser(QObject *parent) : Parser(parent), d(std::make_unique<Private>())
{}

CTagsParser::~CTagsParser()
{
    d->isStopped = true;
    d->pool.clear();
    for (auto it = d->jobs.begin(); it != d->jobs.end(); ++it) {
        it.key()->disconnect(this);
        it.key()->kill();
    }
    for (auto it = d->jobs.begin(); it != d->jobs.end(); ++it)
        it.key()->waitForFinished();
    d->pool.waitForDone();
}

CTagsParser *CTagsParser::self()
{
    static QPointer<CTagsParser> parser;
    if (!parser)
        parser = new CTagsParser;
    return parser;
}

int CTagsParser::parse(const QString &text, const QString &filePath, int key)
{
    d->ext = extensionOf(filePath);
    return Parser::parse(text, filePath, key);
}

int CTagsParser::parse(const QString &text)
{
    const auto job = std::make_shared<Job>();
    job->key = keyOfText();
    job->ext = d->ext;
    job->text = text;
    if (!std::exchange(d->areLeftFoldersRemoved, true))
        d->pool.start(removeLeftFolders);
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
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    // It sorts by a further program, which in other locales drops names that differ.
    environment.insert(u"LC_ALL"_s, u"C"_s);
    // What it writes while it sorts goes with the folder, also if it is killed.
    environment.insert(u"TMPDIR"_s, job->folder->path());
    process->setProcessEnvironment(environment);
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
    fail(job.key);
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
        job->makeTree(d->isStopped);
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
