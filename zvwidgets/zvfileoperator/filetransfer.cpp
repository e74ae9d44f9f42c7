#include "zvwidgets/zvfileoperator/filetransfer.h"

#include "zvwidgets/zvfileoperator/deviceflush.h"
#include "zvwidgets/zvfileoperator/fileattributes.h"

#include <QRandomGenerator>

#include <algorithm>
#include <climits>
#include <fcntl.h>
#include <limits>
#include <linux/fs.h>
#include <sys/ioctl.h>

namespace zvwidgets {

namespace {

constexpr mode_t untilComplete = 0600;

/// What is read at a time stays in the processor's cache until it is written: a larger
/// buffer takes several times as long.
constexpr qint64 pieceSize = 128 * 1024;

/// Calls \a make with names that are not likely to exist until one is new.
template <typename Make>
auto madeUnderNewName(QByteArray *name, const Make &make)
{
    constexpr int tries = 100;
    auto result = decltype(make(*name))(-1);
    for (int i = 0; i < tries; ++i) {
        *name = ".copying-" + QByteArray::number(QRandomGenerator::global()->generate64(), 36);
        result = retried([&] { return make(*name); });
        if (result >= 0 || errno != EEXIST)
            break;
    }
    return result;
}

bool writeAll(int file, const char *bytes, qint64 length, qint64 offset)
{
    for (qint64 done = 0; done < length;) {
        const auto written = retried([&] {
            return ::pwrite(file, bytes + done, size_t(length - done), off_t(offset + done));
        });
        if (written <= 0)
            return false;
        done += written;
    }
    return true;
}

void removeQuietly(int folder, const QByteArray &name)
{
    const int error = errno;
    (void)retried([&] { return ::unlinkat(folder, name.constData(), 0); });
    errno = error;
}

/// The failure to make a file: for a new one that there is another one by now is
/// no failure yet.
FileTransfer::Outcome refusal(FileTransfer::Target mode)
{
    return errno == EEXIST && mode == FileTransfer::Target::New
               ? FileTransfer::Outcome::TargetExists
               : FileTransfer::Outcome::TargetRefused;
}

bool replace(int folder, const QByteArray &from, const QByteArray &to)
{
    return retried([&] { return ::renameat(folder, from.constData(), folder, to.constData()); }) ==
           0;
}

/// A run of data between holes, or to the end of the file.
struct Extent
{
    qint64 start;
    qint64 end;
};

/// The next run of data at \a offset or later; empty at the end of the file.
Extent nextExtent(int file, qint64 offset)
{
    const off_t start = ::lseek(file, offset, SEEK_DATA);
    if (start < 0) {
        // A file system that knows nothing of holes is read through.
        if (errno != ENXIO)
            return {offset, std::numeric_limits<qint64>::max()};
        const off_t end = std::max<off_t>(::lseek(file, 0, SEEK_END), offset);
        return {end, end};
    }
    const off_t end = ::lseek(file, start, SEEK_HOLE);
    return {start, end > start ? end : std::numeric_limits<qint64>::max()};
}

} // namespace

qint64 FileTransfer::calcBlockSize(qint64 size)
{
    constexpr qint64 least = 1024;
    constexpr qint64 most = 1048576;
    return size == 0 ? least : std::clamp(size / 100, least, most);
}

FileTransfer::Outcome FileTransfer::run(const FilePlace &source, const FilePlace &target,
                                        Target mode, const Progress &progress)
{
    changed = false;
    incomplete = false;
    if (::fstatat(source.folder, source.name.constData(), &info, AT_SYMLINK_NOFOLLOW) != 0)
        return Outcome::SourceRefused;
    if (S_ISLNK(info.st_mode))
        return copyLink(source, target, mode);
    if (!S_ISREG(info.st_mode))
        return Outcome::SourceRefused;
    // A pipe that took the place of the file meanwhile must not block.
    constexpr int flags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    const FileHandle in(
        retried([&] { return ::openat(source.folder, source.name.constData(), flags); }));
    if (!in.isOpen() || ::fstat(in.get(), &info) != 0 || !S_ISREG(info.st_mode))
        return Outcome::SourceRefused;
    return copyFile(in.get(), target, mode, progress);
}

FileTransfer::Outcome FileTransfer::copyLink(const FilePlace &source, const FilePlace &target,
                                             Target mode)
{
    // Some file systems don't tell the length of a link.
    QByteArray text(std::max<qsizetype>(info.st_size, PATH_MAX) + 1, Qt::Uninitialized);
    const auto length = retried([&] {
        return ::readlinkat(source.folder, source.name.constData(), text.data(),
                            size_t(text.size()));
    });
    if (length < 0 || length == text.size())
        return Outcome::SourceRefused;
    text.truncate(length);
    const auto make = [&](const QByteArray &name) {
        return ::symlinkat(text.constData(), target.folder, name.constData());
    };
    QByteArray name = target.name;
    const int made =
        mode == Target::New ? retried([&] { return make(name); }) : madeUnderNewName(&name, make);
    if (made != 0)
        return refusal(mode);
    FileAttributes::copyToLink(info, target.folder, name, flush != nullptr);
    if (mode == Target::New || replace(target.folder, name, target.name))
        return Outcome::Done;
    removeQuietly(target.folder, name);
    return Outcome::WriteFailed;
}

FileTransfer::Outcome FileTransfer::copyFile(int in, const FilePlace &target, Target mode,
                                             const Progress &progress)
{
    const auto make = [&](const QByteArray &name) {
        return ::openat(target.folder, name.constData(),
                        O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, untilComplete);
    };
    QByteArray name = target.name;
    FileHandle out(mode == Target::New ? retried([&] { return make(name); })
                                       : madeUnderNewName(&name, make));
    if (!out.isOpen())
        return refusal(mode);
    if (flush)
        flush->add(out.get());
    Outcome outcome = copyContent(in, out.get(), progress);
    if (outcome == Outcome::Done)
        outcome = complete(in, std::move(out));
    if (outcome == Outcome::Done && mode == Target::Replace &&
        !replace(target.folder, name, target.name))
        outcome = Outcome::WriteFailed;
    if (outcome == Outcome::Done)
        return outcome;
    if (mode == Target::Replace)
        removeQuietly(target.folder, name);
    incomplete = mode == Target::New;
    return outcome;
}

/// Copies to where the file ends by then, holes as holes.
FileTransfer::Outcome FileTransfer::copyContent(int in, int out, const Progress &progress)
{
    const qint64 block = calcBlockSize(info.st_size);
    buffer.resize(std::max(buffer.size(), size_t(std::min(block, pieceSize))));
    if (info.st_size > 0 && ::ioctl(out, FICLONE, in) == 0) {
        (void)progress(info.st_size);
        return Outcome::Done;
    }
    const bool hasHoles = qint64(info.st_blocks) * 512 < info.st_size;
    Extent extent = {0, hasHoles ? 0 : std::numeric_limits<qint64>::max()};
    qint64 offset = 0;
    for (;;) {
        if (offset == extent.end) {
            extent = nextExtent(in, offset);
            offset = extent.start;
            if (extent.start == extent.end)
                break;
        }
        Outcome failure = Outcome::Done;
        const qint64 copied =
            copyBlock(in, out, offset, std::min(block, extent.end - offset), &failure);
        if (copied < 0)
            return failure;
        if (copied == 0)
            break;
        offset += copied;
        if (!progress(copied))
            return Outcome::Stopped;
    }
    if (hasHoles && retried([&] { return ::ftruncate(out, offset); }) != 0)
        return Outcome::WriteFailed;
    return Outcome::Done;
}

/// The number of bytes copied, fewer than \a length at the end of the file only; -1
/// with \a failure set.
qint64 FileTransfer::copyBlock(int in, int out, qint64 offset, qint64 length, Outcome *failure)
{
    qint64 copied = 0;
    while (copied < length) {
        const auto got = retried([&] {
            return ::pread(in, buffer.data(), std::min(buffer.size(), size_t(length - copied)),
                           off_t(offset + copied));
        });
        if (got < 0) {
            *failure = Outcome::ReadFailed;
            return -1;
        }
        if (got == 0)
            break;
        if (!writeAll(out, buffer.data(), got, offset + copied)) {
            *failure = Outcome::WriteFailed;
            return -1;
        }
        copied += got;
    }
    return copied;
}

FileTransfer::Outcome FileTransfer::complete(int in, FileHandle out)
{
    struct stat after;
    changed = ::fstat(in, &after) != 0 || !isUnchanged(info, after);
    FileAttributes::copy(in, info, out.get(), flush != nullptr);
    return out.close() ? Outcome::Done : Outcome::CloseFailed;
}

} // namespace zvwidgets
