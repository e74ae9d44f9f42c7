#pragma once

#include <QByteArray>
#include <QString>

#include <cerrno>
#include <fcntl.h>
#include <sys/types.h>
#include <utility>

namespace zvwidgets {

/// Calls \a call, which answers -1 and sets errno, until no signal interrupts it.
template <typename Call>
auto retried(const Call &call)
{
    auto result = call();
    while (result == -1 && errno == EINTR)
        result = call();
    return result;
}

/// What the system says of errno \a number.
QString systemError(int number);

enum class FileKind
{
    Missing,
    Regular,
    Other
};
/// What there is at \a path; links are followed.
FileKind kindOf(const QByteArray &path);

/// An open file, closed with this object.
class OpenFile
{
public:
    OpenFile() = default;
    explicit OpenFile(int descriptor) : file(descriptor) {}
    OpenFile(OpenFile &&other) noexcept : file(std::exchange(other.file, -1)) {}
    OpenFile &operator=(OpenFile &&other) noexcept
    {
        std::swap(file, other.file);
        return *this;
    }
    ~OpenFile();

    /// Not open, with errno, if that fails. \a flags and \a mode as of open(2).
    static OpenFile open(const QByteArray &path, int flags, mode_t mode = 0);

    explicit operator bool() const { return file >= 0; }
    int descriptor() const { return file; }

private:
    int file = -1;
};

/// A file in the making, which nobody can find before it is published. Where the file
/// system cannot do without a name it has a short one of its own.
class FreshFile
{
public:
    FreshFile() = default;
    FreshFile(const FreshFile &) = delete;
    FreshFile &operator=(const FreshFile &) = delete;
    /// Nothing is left of one that wasn't published.
    ~FreshFile();

    /// Makes it in the folder that ends \a path's name. False, with errno, on failure.
    [[nodiscard]] bool make(const QByteArray &path, mode_t mode);
    /// Gives it the name \a path, in the folder it was made in; a file of that name is
    /// replaced in one step. False, with errno, on failure.
    [[nodiscard]] bool publish(const QByteArray &path);
    int descriptor() const { return file.descriptor(); }

private:
    bool makeNamed(mode_t mode);
    bool linkAs(const QByteArray &path) const;

    OpenFile file;
    QByteArray folder;
    QByteArray name; ///< path of its own; empty if it has none
};

/// The folder that holds \a path, with a "/" at its end; "./" for a name alone.
QByteArray folderOf(const QByteArray &path);
/// Letters and digits that are hardly used twice.
QByteArray randomName();
/// Hands \a file to the disk. True too where the file system cannot do that.
[[nodiscard]] bool syncFile(int file);
/// Hands the names in \a folder to the disk, as far as the folder can be read.
[[nodiscard]] bool syncFolder(const QByteArray &folder);
/// Copies all of \a from to the start of \a to. The number of bytes; -1, with errno, on
/// failure.
qint64 copyContent(int from, int to);
/// True if both hold the same bytes; false also if one can't be read.
bool haveSameContent(int file, int other);

} // namespace zvwidgets
