#pragma once

#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace zvwidgets {

/// Owns an open file of the system.
class FileHandle
{
public:
    explicit FileHandle(int handle = -1) : number(handle) {}
    FileHandle(FileHandle &&other) noexcept : number(std::exchange(other.number, -1)) {}
    FileHandle &operator=(FileHandle &&other) noexcept
    {
        std::swap(number, other.number);
        return *this;
    }
    ~FileHandle() { (void)close(); }

    bool isOpen() const { return number >= 0; }
    int get() const { return number; }
    /// Leaves closing it to the caller.
    int release() { return std::exchange(number, -1); }

    /// False if what was written may not have arrived.
    [[nodiscard]] bool close()
    {
        const int closed = release();
        // An interrupted close has closed it all the same.
        return closed < 0 || ::close(closed) == 0 || errno == EINTR;
    }

private:
    int number;
};

/// Calls \a operation until no signal interrupts it.
template <typename Operation>
auto retried(const Operation &operation)
{
    auto result = operation();
    while (result < 0 && errno == EINTR)
        result = operation();
    return result;
}

inline bool isSameFile(const struct stat &a, const struct stat &b)
{
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

/// Whether \a a and \a b are the same file with, as far as can be told, the same content.
inline bool isUnchanged(const struct stat &a, const struct stat &b)
{
    return isSameFile(a, b) && a.st_size == b.st_size && a.st_mtim.tv_sec == b.st_mtim.tv_sec &&
           a.st_mtim.tv_nsec == b.st_mtim.tv_nsec;
}

} // namespace zvwidgets
