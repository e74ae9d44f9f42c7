#include "zvwidgets/zvfiles/keptcopies.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QStringList>

#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zvwidgets {

namespace {

// A record is this, then the file, the former and the new copy, each ended by a null
// character, and what says that both are on the disk.
constexpr char recordHead[] = "save in place 1";
constexpr char settledMark[] = "settled";
constexpr char recordPrefix[] = "save-";
/// The most bytes of a file's name that its copies begin with.
constexpr qsizetype longestStem = 180;

/// Where programs keep what must outlive them, with a "/" at its end.
QByteArray stateFolder()
{
    const QString base = qEnvironmentVariable("XDG_STATE_HOME");
    const QString home =
        QDir::isAbsolutePath(base) ? base : QDir::homePath() + QStringLiteral("/.local/state");
    return QFile::encodeName(home + u'/' + QCoreApplication::applicationName().toLower() + u'/');
}

bool makeFolder(const QByteArray &folder)
{
    const QString path = QDir::cleanPath(QFile::decodeName(folder));
    QDir().mkpath(path.section(u'/', 0, -2));
    return ::mkdir(folder.constData(), 0700) == 0 || errno == EEXIST;
}

/// The name of \a path without folder, short enough to have something added.
QByteArray stem(const QByteArray &path)
{
    QByteArray name = path.mid(path.lastIndexOf('/') + 1);
    if (name.size() <= longestStem)
        return name;
    qsizetype length = longestStem;
    while (length > 0 && (uchar(name.at(length)) & 0xC0) == 0x80)
        --length;
    return name.first(length);
}

QByteArray absolute(const QByteArray &path)
{
    return path.startsWith('/') ? path : QFile::encodeName(QDir::currentPath()) + '/' + path;
}

bool writeAll(int file, const QByteArray &bytes)
{
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t written = retried(
            [&] { return ::write(file, bytes.constData() + done, size_t(bytes.size() - done)); });
        if (written < 0)
            return false;
        done += written;
    }
    return true;
}

bool isThere(const QByteArray &path)
{
    return ::access(path.constData(), F_OK) == 0;
}

void removeFile(const QByteArray &path)
{
    if (!path.isEmpty())
        ::unlink(path.constData());
}

} // namespace

KeptCopies::~KeptCopies()
{
    if (areKept)
        return;
    removeCopies();
    removeFile(recordName);
}

void KeptCopies::removeCopies()
{
    if (formerFile)
        removeFile(formerName);
    if (freshFile)
        removeFile(freshName);
    formerFile = OpenFile();
    freshFile = OpenFile();
}

QString KeptCopies::formerPath() const
{
    return QFile::decodeName(formerName);
}

bool KeptCopies::make()
{
    const QByteArray target = absolute(path);
    // In the order in which they are tried.
    const QByteArray state = stateFolder();
    const bool hasRecord = makeRecord();
    if (makeIn(folderOf(target)))
        return true;
    const bool isRefused =
        errno == EACCES || errno == EPERM || errno == EROFS || errno == ENAMETOOLONG;
    // Without the record nobody would look for them there.
    return isRefused && hasRecord && makeIn(state);
}

bool KeptCopies::makeRecord()
{
    const QByteArray folder = stateFolder();
    if (!makeFolder(folder))
        return false;
    FreshFile made;
    const QByteArray name = folder + recordPrefix + randomName();
    if (!made.make(name, 0600))
        return false;
    record = OpenFile(retried([&] { return ::fcntl(made.descriptor(), F_DUPFD_CLOEXEC, 0); }));
    // Locked before anybody can find it.
    if (!record || retried([&] { return ::flock(record.descriptor(), LOCK_EX | LOCK_NB); }) != 0 ||
        !made.publish(name)) {
        record = OpenFile();
        return false;
    }
    recordName = name;
    return true;
}

bool KeptCopies::writeRecord()
{
    if (recordName.isEmpty())
        return true;
    const QByteArray bytes =
        QByteArrayList{recordHead, absolute(path), formerName, freshName}.join('\0') + '\0';
    const int file = record.descriptor();
    return retried([&] { return ::ftruncate(file, 0); }) == 0 && ::lseek(file, 0, SEEK_SET) == 0 &&
           writeAll(file, bytes);
}

bool KeptCopies::makeIn(const QByteArray &folder)
{
    const QByteArray common = folder + stem(path);
    const QByteArray random = randomName();
    formerName = common + ".before-save-" + random;
    freshName = common + ".after-save-" + random;
    constexpr int flags = O_CREAT | O_EXCL | O_RDWR;
    if (!writeRecord())
        return false;
    formerFile = OpenFile::open(formerName, flags, 0600);
    if (formerFile)
        freshFile = OpenFile::open(freshName, flags, 0600);
    if (freshFile)
        return true;
    const int number = errno;
    removeCopies();
    errno = number;
    return false;
}

bool KeptCopies::settle()
{
    if (!syncFile(former()) || !syncFile(fresh()) || !syncFolder(folderOf(formerName)))
        return false;
    if (recordName.isEmpty())
        return true;
    return writeAll(record.descriptor(), QByteArray(settledMark) + '\0') &&
           syncFile(record.descriptor()) && syncFolder(folderOf(recordName));
}

std::vector<InterruptedSave> InterruptedSave::findAll()
{
    std::vector<InterruptedSave> found;
    const QByteArray folder = stateFolder();
    const QStringList names = QDir(QFile::decodeName(folder))
                                  .entryList({QLatin1String(recordPrefix) + u'*'}, QDir::Files);
    for (const QString &name : names) {
        Record record;
        record.name = folder + QFile::encodeName(name);
        if (!read(&record))
            continue;
        InterruptedSave save(std::move(record));
        if (save.isOutOfReach())
            continue;
        if (save.needsNobody())
            save.remove();
        else
            found.push_back(std::move(save));
    }
    return found;
}

/// False if this is no record, or one that a living process holds.
bool InterruptedSave::read(Record *record)
{
    record->file = OpenFile::open(record->name, O_RDWR | O_NOFOLLOW);
    const int file = record->file.descriptor();
    struct stat info = {};
    // Its process may have finished, and removed it, meanwhile.
    if (!record->file || retried([&] { return ::flock(file, LOCK_EX | LOCK_NB); }) != 0 ||
        ::fstat(file, &info) != 0 || info.st_nlink == 0)
        return false;
    QFile reader;
    if (!reader.open(file, QIODevice::ReadOnly))
        return false;
    const QByteArrayList parts = reader.readAll().split('\0');
    // An empty one is of a process that ended before it made anything.
    if (parts.size() < 5)
        return info.st_size == 0 || parts.constFirst() == recordHead;
    if (parts.at(0) != recordHead)
        return false;
    record->target = parts.at(1);
    record->former = parts.at(2);
    record->fresh = parts.at(3);
    record->areSettled = parts.at(4) == settledMark;
    return true;
}

/// True if nothing of it is there, as on a disk that was taken out.
bool InterruptedSave::isOutOfReach() const
{
    return record.areSettled && !isThere(record.target) && !isThere(record.former) &&
           !isThere(record.fresh);
}

bool InterruptedSave::needsNobody() const
{
    if (!record.areSettled || (!isThere(record.former) && !isThere(record.fresh)))
        return true;
    const OpenFile target = OpenFile::open(record.target, O_RDONLY);
    const OpenFile fresh = OpenFile::open(record.fresh, O_RDONLY);
    return target && fresh && haveSameContent(target.descriptor(), fresh.descriptor());
}

void InterruptedSave::remove()
{
    removeFile(record.former);
    removeFile(record.fresh);
    removeFile(record.name);
}

QString InterruptedSave::target() const
{
    return QFile::decodeName(record.target);
}

QString InterruptedSave::former() const
{
    return isThere(record.former) ? QFile::decodeName(record.former) : QString();
}

QString InterruptedSave::fresh() const
{
    return isThere(record.fresh) ? QFile::decodeName(record.fresh) : QString();
}

bool InterruptedSave::restoreFormer(QString *error)
{
    return restore(record.former, error);
}

bool InterruptedSave::restoreFresh(QString *error)
{
    return restore(record.fresh, error);
}

bool InterruptedSave::restore(const QByteArray &copy, QString *error)
{
    const OpenFile from = OpenFile::open(copy, O_RDONLY);
    const OpenFile to = from ? OpenFile::open(record.target, O_RDWR | O_CREAT, 0600) : OpenFile();
    const qint64 size = to ? copyContent(from.descriptor(), to.descriptor()) : -1;
    if (size < 0 || retried([&] { return ::ftruncate(to.descriptor(), off_t(size)); }) != 0 ||
        !syncFile(to.descriptor())) {
        *error = systemError(errno);
        return false;
    }
    remove();
    return true;
}

void InterruptedSave::dismiss()
{
    removeFile(record.name);
}

} // namespace zvwidgets
