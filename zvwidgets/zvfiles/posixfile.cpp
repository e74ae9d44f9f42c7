#include "zvwidgets/zvfiles/posixfile.h"

#include <QRandomGenerator>

#include <cstdio>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace zvwidgets {

namespace {

constexpr qint64 bytesPerCopy = 256 * 1024;
/// Names that somebody else took by chance are tried again.
constexpr int mostNames = 100;

/// Reads until \a buffer is full or the file ends; -1 on failure.
qint64 readAt(int file, QByteArray *buffer, off_t offset)
{
    qint64 filled = 0;
    while (filled < buffer->size()) {
        char *const next = buffer->data() + filled;
        const size_t left = size_t(buffer->size() - filled);
        const ssize_t got =
            retried([&] { return ::pread(file, next, left, offset + off_t(filled)); });
        if (got < 0)
            return -1;
        if (got == 0)
            break;
        filled += got;
    }
    return filled;
}

bool writeAt(int file, const char *bytes, qint64 size, off_t offset)
{
    while (size > 0) {
        const ssize_t written =
            retried([&] { return ::pwrite(file, bytes, size_t(size), offset); });
        if (written < 0)
            return false;
        bytes += written;
        offset += written;
        size -= written;
    }
    return true;
}

bool cannotBeUnnamed(int number)
{
    return number == EOPNOTSUPP || number == EISDIR || number == EINVAL || number == ENOENT;
}

} // namespace

QString systemError(int number)
{
    return QString::fromLocal8Bit(std::strerror(number));
}

OpenFile::~OpenFile()
{
    if (file >= 0)
        ::close(file);
}

FileKind kindOf(const QByteArray &path)
{
    struct stat info = {};
    if (retried([&] { return ::stat(path.constData(), &info); }) != 0)
        return FileKind::Missing;
    return S_ISREG(info.st_mode) ? FileKind::Regular : FileKind::Other;
}

OpenFile OpenFile::open(const QByteArray &path, int flags, mode_t mode)
{
    return OpenFile(retried([&] { return ::open(path.constData(), flags | O_CLOEXEC, mode); }));
}

FreshFile::~FreshFile()
{
    if (!name.isEmpty())
        ::unlink(name.constData());
}

bool FreshFile::make(const QByteArray &path, mode_t mode)
{
    folder = folderOf(path);
    // An unnamed file gets its name by way of this folder.
    if (::access("/proc/self/fd", X_OK) == 0) {
        file = OpenFile::open(folder, O_TMPFILE | O_RDWR, mode);
        if (file || !cannotBeUnnamed(errno))
            return bool(file);
    }
    return makeNamed(mode);
}

bool FreshFile::makeNamed(mode_t mode)
{
    for (int i = 0; i < mostNames; ++i) {
        const QByteArray wanted = folder + ".save-" + randomName();
        file = OpenFile::open(wanted, O_CREAT | O_EXCL | O_RDWR, mode);
        if (file)
            name = wanted;
        if (file || errno != EEXIST)
            break;
    }
    return bool(file);
}

bool FreshFile::linkAs(const QByteArray &path) const
{
    const QByteArray self = "/proc/self/fd/" + QByteArray::number(descriptor());
    return retried([&] {
               return ::linkat(AT_FDCWD, self.constData(), AT_FDCWD, path.constData(),
                               AT_SYMLINK_FOLLOW);
           }) == 0;
}

bool FreshFile::publish(const QByteArray &path)
{
    // The short way if there is no such file yet.
    if (name.isEmpty() && linkAs(path))
        return true;
    for (int i = 0; name.isEmpty() && i < mostNames; ++i) {
        if (errno != EEXIST)
            return false;
        const QByteArray wanted = folder + ".save-" + randomName();
        if (linkAs(wanted))
            name = wanted;
    }
    if (name.isEmpty() ||
        retried([&] { return std::rename(name.constData(), path.constData()); }) != 0)
        return false;
    name.clear();
    return true;
}

QByteArray folderOf(const QByteArray &path)
{
    const qsizetype slash = path.lastIndexOf('/');
    return slash < 0 ? QByteArray("./") : path.first(slash + 1);
}

QByteArray randomName()
{
    constexpr char characters[] = "abcdefghijklmnopqrstuvwxyz0123456789";
    QByteArray made;
    for (int i = 0; i < 12; ++i)
        made += characters[QRandomGenerator::system()->bounded(int(sizeof(characters) - 1))];
    return made;
}

bool syncFile(int file)
{
    return retried([file] { return ::fsync(file); }) == 0 || errno == EINVAL || errno == ENOSYS ||
           errno == EOPNOTSUPP;
}

bool syncFolder(const QByteArray &folder)
{
    const OpenFile opened = OpenFile::open(folder, O_RDONLY | O_DIRECTORY);
    return opened ? syncFile(opened.descriptor()) : errno == EACCES;
}

qint64 copyContent(int from, int to)
{
    QByteArray buffer(bytesPerCopy, Qt::Uninitialized);
    for (qint64 at = 0;;) {
        const qint64 got = readAt(from, &buffer, off_t(at));
        if (got < 0 || !writeAt(to, buffer.constData(), got, off_t(at)))
            return -1;
        at += got;
        if (got < buffer.size())
            return at;
    }
}

bool haveSameContent(int file, int other)
{
    QByteArray buffer(bytesPerCopy, Qt::Uninitialized);
    QByteArray otherBuffer(bytesPerCopy, Qt::Uninitialized);
    for (off_t at = 0;; at += off_t(bytesPerCopy)) {
        const qint64 got = readAt(file, &buffer, at);
        if (got < 0 || got != readAt(other, &otherBuffer, at) ||
            std::memcmp(buffer.constData(), otherBuffer.constData(), size_t(got)) != 0)
            return false;
        if (got < buffer.size())
            return true;
    }
}

} // namespace zvwidgets
