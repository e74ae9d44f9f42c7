#include "zvwidgets/zvfiles/filesave.h"

#include "zvwidgets/zvfiles/fileattributes.h"
#include "zvwidgets/zvfiles/filenames.h"
#include "zvwidgets/zvfiles/keptcopies.h"
#include "zvwidgets/zvfiles/posixfile.h"

#include <QCoreApplication>
#include <QIODevice>

#include <algorithm>
#include <sys/stat.h>
#include <unistd.h>

namespace zvwidgets {

namespace {

/// Whom the texts below belong to.
struct FileSave
{
    Q_DECLARE_TR_FUNCTIONS(FileSave)
};

/// NotPossible leaves the file as it was, and another way may succeed.
enum class Replacement
{
    Done,
    Failed,
    NotPossible
};

Replacement failed(QString *error)
{
    *error = systemError(errno);
    return Replacement::Failed;
}

/// Only a file that is there can be saved in another way.
Replacement failedOrRefused(const struct stat *old, QString *error)
{
    const bool hasOtherWay = old && isRefusal(errno);
    *error = systemError(errno);
    return hasOtherWay ? Replacement::NotPossible : Replacement::Failed;
}

/// Writes to an open file, knows the reason of every failure, and counts.
class FileWriter : public QIODevice
{
public:
    explicit FileWriter(int descriptor) : file(descriptor) { open(WriteOnly | Unbuffered); }

    bool isSequential() const override { return true; }
    qint64 written() const { return count; }

protected:
    qint64 readData(char *, qint64) override { return -1; }
    qint64 writeData(const char *bytes, qint64 size) override
    {
        const ssize_t done = retried([&] { return ::write(file, bytes, size_t(size)); });
        if (done < 0)
            setErrorString(systemError(errno));
        else
            count += done;
        return done;
    }

private:
    const int file;
    qint64 count = 0;
};

/// The number of bytes, -1 with \a error on failure.
qint64 writeTo(int file, const WriteContent &write, QString *error)
{
    FileWriter device(file);
    return write(device, error) ? device.written() : -1;
}

Replacement replaceFile(const QByteArray &path, const struct stat *old, const WriteContent &write,
                        QString *error)
{
    // Replacing a file asks for rights on its folder only.
    const auto access = [&] { return ::faccessat(AT_FDCWD, path.constData(), W_OK, AT_EACCESS); };
    if (old && retried(access) != 0)
        return failed(error);
    FreshFile fresh;
    if (!fresh.make(path, old ? 0600 : 0666))
        return failedOrRefused(old, error);
    if (old) {
        switch (copyAttributes(path, *old, fresh.descriptor())) {
        case Attributes::Copied:
            break;
        case Attributes::Refused:
            return Replacement::NotPossible;
        case Attributes::Failed:
            return failed(error);
        }
    }
    if (writeTo(fresh.descriptor(), write, error) < 0)
        return Replacement::Failed;
    if (!syncFile(fresh.descriptor()))
        return failed(error);
    if (!fresh.publish(path))
        return failedOrRefused(old, error);
    // The new file is there, whatever becomes of this.
    [[maybe_unused]] const bool isSynced = syncFolder(folderOf(path));
    return Replacement::Done;
}

/// Writes the \a size bytes of \a content over \a file.
bool overwrite(int file, int content, qint64 size)
{
    const qint64 copied = copyContent(content, file);
    if (copied >= 0 && copied != size) {
        errno = EIO;
        return false;
    }
    return copied == size && retried([&] { return ::ftruncate(file, off_t(size)); }) == 0 &&
           syncFile(file);
}

/// Makes sure that \a file of \a size bytes can become \a wanted bytes long. An errno.
int reserve(int file, qint64 size, qint64 wanted)
{
    if (wanted <= size)
        return 0;
    int result = EINTR;
    while (result == EINTR)
        result = ::posix_fallocate(file, off_t(size), off_t(wanted - size));
    // Then it is seen while the file is written, and taken back.
    return result == EOPNOTSUPP || result == EINVAL ? 0 : result;
}

bool refuse(int number, QString *error)
{
    *error = number == ENOSPC
                 ? FileSave::tr("No room for a copy of the file")
                 : FileSave::tr("No copy of the file can be kept: %1").arg(systemError(number));
    return false;
}

bool overwriteFile(const QByteArray &path, const WriteContent &write, QString *error)
{
    const OpenFile file = OpenFile::open(path, O_RDWR);
    if (!file) {
        *error = systemError(errno);
        return false;
    }
    KeptCopies copies(path);
    if (!copies.make())
        return refuse(errno, error);
    const qint64 size = writeTo(copies.fresh(), write, error);
    if (size < 0)
        return false;
    const qint64 formerSize = copyContent(file.descriptor(), copies.former());
    if (formerSize < 0 || !copies.settle())
        return refuse(errno, error);
    const int noRoom = reserve(file.descriptor(), formerSize, size);
    if (!noRoom && overwrite(file.descriptor(), copies.fresh(), size))
        return true;
    *error = systemError(noRoom ? noRoom : errno);
    const bool isRestored =
        noRoom ? retried([&] { return ::ftruncate(file.descriptor(), off_t(formerSize)); }) == 0
               : overwrite(file.descriptor(), copies.former(), formerSize);
    if (!isRestored) {
        copies.keep();
        *error = FileSave::tr("%1; the former content is in %2").arg(*error, copies.formerPath());
    }
    return false;
}

} // namespace

bool saveContent(const QString &path, const WriteContent &write, QString *error)
{
    const QByteArray name = encodedPath(path);
    struct stat old = {};
    const bool exists = retried([&] { return ::lstat(name.constData(), &old); }) == 0;
    if (!exists && errno != ENOENT) {
        *error = systemError(errno);
        return false;
    }
    if (exists && !S_ISREG(old.st_mode)) {
        *error = FileSave::tr("Not a regular file");
        return false;
    }
    Replacement outcome = Replacement::NotPossible;
    if (!exists || old.st_nlink == 1)
        outcome = replaceFile(name, exists ? &old : nullptr, write, error);
    if (outcome == Replacement::NotPossible)
        return overwriteFile(name, write, error);
    return outcome == Replacement::Done;
}

} // namespace zvwidgets
