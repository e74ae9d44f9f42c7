#include "tests/faults/faults.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <linux/limits.h>
#include <mutex>
#include <sstream>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace {

using faults::Call;

std::atomic<bool> isArmed = false;
std::mutex lock;
std::string watched;
std::vector<faults::Fault> plan;
std::array<int, faults::callCount> counts;
int hitCount = 0;

/// A call of our own must not be counted.
thread_local bool isInside = false;

std::string linkTarget(const std::string &link)
{
    std::array<char, PATH_MAX> text;
    const auto length = syscall(SYS_readlinkat, AT_FDCWD, link.c_str(), text.data(), text.size());
    return length > 0 ? std::string(text.data(), size_t(length)) : std::string();
}

std::string pathOf(int file)
{
    return linkTarget("/proc/self/fd/" + std::to_string(file));
}

std::string pathOf(int folder, const char *name)
{
    if (!name || name[0] == '/')
        return name ? name : "";
    return (folder == AT_FDCWD ? linkTarget("/proc/self/cwd") : pathOf(folder)) + '/' + name;
}

bool startsWith(const std::string &path, const std::string &folder)
{
    return path.compare(0, folder.size(), folder) == 0;
}

/// The error that the call is to end with: 0 for none, faults::shortCount.
int planned(Call call, const std::string &path)
{
    const std::lock_guard guard(lock);
    if (!startsWith(path, watched))
        return 0;
    const int number = ++counts[size_t(call)];
    for (const faults::Fault &fault : plan) {
        const bool isDue = number == fault.first || (fault.lasts && number > fault.first);
        if (fault.call == call && isDue && startsWith(path, fault.folder)) {
            ++hitCount;
            return fault.error;
        }
    }
    return 0;
}

/// The same for a call on \a place, an open file or a folder and a name in it.
template <typename... Place>
int fate(Call call, Place... place)
{
    if (!isArmed || isInside)
        return 0;
    isInside = true;
    const int error = planned(call, pathOf(place...));
    isInside = false;
    return error;
}

/// Ends a call: with the planned error, or with what \a real gives.
template <typename Real>
long run(int error, const Real &real)
{
    if (error > 0) {
        errno = error;
        return -1;
    }
    return real();
}

size_t cut(int error, size_t length)
{
    return error == faults::shortCount ? std::max<size_t>(length / 2, 1) : length;
}

long openAt(int folder, const char *name, int flags, mode_t mode)
{
    return run(fate(Call::Open, folder, name),
               [&] { return syscall(SYS_openat, folder, name, flags, mode); });
}

const std::array<const char *, faults::callCount> callNames = {
    "open",  "stat",   "list", "read",  "write",  "copy",  "truncate", "sync",
    "close", "rename", "link", "mkdir", "unlink", "rmdir", "attribute"};

int errorNumber(const std::string &name)
{
    if (name == "short")
        return faults::shortCount;
    for (int number = 1; number < 134; ++number) {
        const char *const known = strerrorname_np(number);
        if (known && name == known)
            return number;
    }
    return EIO;
}

/// The plan that a program got in its environment.
struct PlanFromEnvironment
{
    PlanFromEnvironment()
    {
        const char *const text = std::getenv("VESK_FAULTS");
        if (!text)
            return;
        std::istringstream words(text);
        std::string folder;
        std::string word;
        std::vector<faults::Fault> faultPlan;
        words >> folder;
        while (words >> word) {
            const size_t first = word.find(':');
            const size_t second = word.find(':', first + 1);
            const auto name = std::find(callNames.begin(), callNames.end(), word.substr(0, first));
            if (name == callNames.end() || second == std::string::npos)
                continue;
            faultPlan.push_back({Call(name - callNames.begin()),
                                 std::atoi(word.c_str() + first + 1),
                                 errorNumber(word.substr(second + 1)), word[second - 1] == '+'});
        }
        faults::arm(folder, faultPlan);
    }
};
const PlanFromEnvironment planFromEnvironment;

} // namespace

void faults::arm(const std::string &folder, const std::vector<Fault> &faultPlan)
{
    const std::lock_guard guard(lock);
    watched = folder;
    plan = faultPlan;
    counts.fill(0);
    hitCount = 0;
    isArmed = true;
}

void faults::disarm()
{
    isArmed = false;
}

int faults::count(Call call)
{
    const std::lock_guard guard(lock);
    return counts[size_t(call)];
}

int faults::hits()
{
    const std::lock_guard guard(lock);
    return hitCount;
}

// The calls of the system, by all the names that programs use for them.
extern "C" {

int openat(int folder, const char *name, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = flags & (O_CREAT | O_TMPFILE) ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return int(openAt(folder, name, flags, mode));
}

int openat64(int folder, const char *name, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = flags & (O_CREAT | O_TMPFILE) ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return int(openAt(folder, name, flags, mode));
}

int open(const char *name, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = flags & (O_CREAT | O_TMPFILE) ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return int(openAt(AT_FDCWD, name, flags, mode));
}

int open64(const char *name, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = flags & (O_CREAT | O_TMPFILE) ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return int(openAt(AT_FDCWD, name, flags, mode));
}

int fstatat(int folder, const char *name, struct stat *info, int flags) noexcept
{
    return int(run(fate(Call::Stat, folder, name),
                   [&] { return syscall(SYS_newfstatat, folder, name, info, flags); }));
}

int fstat(int file, struct stat *info) noexcept
{
    return int(run(fate(Call::Stat, file), [&] { return syscall(SYS_fstat, file, info); }));
}

dirent64 *readdir64(DIR *list)
{
    static const auto real =
        reinterpret_cast<dirent64 *(*)(DIR *)>(::dlsym(RTLD_NEXT, "readdir64"));
    const int error = fate(Call::List, ::dirfd(list));
    if (error <= 0)
        return real(list);
    errno = error;
    return nullptr;
}

dirent *readdir(DIR *list)
{
    // Both have the same layout where files can be large.
    return reinterpret_cast<dirent *>(readdir64(list));
}

ssize_t read(int file, void *bytes, size_t length)
{
    const int error = fate(Call::Read, file);
    return run(error, [&] { return syscall(SYS_read, file, bytes, cut(error, length)); });
}

ssize_t pread(int file, void *bytes, size_t length, off_t offset)
{
    const int error = fate(Call::Read, file);
    return run(error,
               [&] { return syscall(SYS_pread64, file, bytes, cut(error, length), offset); });
}

ssize_t pread64(int file, void *bytes, size_t length, off64_t offset)
{
    return pread(file, bytes, length, offset);
}

ssize_t write(int file, const void *bytes, size_t length)
{
    const int error = fate(Call::Write, file);
    return run(error, [&] { return syscall(SYS_write, file, bytes, cut(error, length)); });
}

ssize_t pwrite(int file, const void *bytes, size_t length, off_t offset)
{
    const int error = fate(Call::Write, file);
    return run(error,
               [&] { return syscall(SYS_pwrite64, file, bytes, cut(error, length), offset); });
}

ssize_t pwrite64(int file, const void *bytes, size_t length, off64_t offset)
{
    return pwrite(file, bytes, length, offset);
}

ssize_t copy_file_range(int in, off64_t *from, int out, off64_t *to, size_t length, unsigned flags)
{
    const int error = fate(Call::Copy, out);
    return run(error, [&] {
        return syscall(SYS_copy_file_range, in, from, out, to, cut(error, length), flags);
    });
}

int ftruncate(int file, off_t length) noexcept
{
    return int(
        run(fate(Call::Truncate, file), [&] { return syscall(SYS_ftruncate, file, length); }));
}

int ftruncate64(int file, off64_t length) noexcept
{
    return ftruncate(file, length);
}

int fsync(int file)
{
    return int(run(fate(Call::Sync, file), [&] { return syscall(SYS_fsync, file); }));
}

int fdatasync(int file)
{
    return int(run(fate(Call::Sync, file), [&] { return syscall(SYS_fdatasync, file); }));
}

int syncfs(int file) noexcept
{
    return int(run(fate(Call::Sync, file), [&] { return syscall(SYS_syncfs, file); }));
}

int close(int file)
{
    const int error = fate(Call::Close, file);
    const long result = syscall(SYS_close, file);
    return int(run(error, [&] { return result; }));
}

int renameat2(int folder, const char *from, int toFolder, const char *to, unsigned flags) noexcept
{
    return int(run(fate(Call::Rename, folder, from),
                   [&] { return syscall(SYS_renameat2, folder, from, toFolder, to, flags); }));
}

int renameat(int folder, const char *from, int toFolder, const char *to) noexcept
{
    return renameat2(folder, from, toFolder, to, 0);
}

int rename(const char *from, const char *to) noexcept
{
    return renameat2(AT_FDCWD, from, AT_FDCWD, to, 0);
}

int linkat(int folder, const char *from, int toFolder, const char *to, int flags) noexcept
{
    return int(run(fate(Call::Link, toFolder, to),
                   [&] { return syscall(SYS_linkat, folder, from, toFolder, to, flags); }));
}

int symlinkat(const char *text, int folder, const char *name) noexcept
{
    return int(run(fate(Call::Link, folder, name),
                   [&] { return syscall(SYS_symlinkat, text, folder, name); }));
}

int mkdirat(int folder, const char *name, mode_t mode) noexcept
{
    return int(run(fate(Call::MakeFolder, folder, name),
                   [&] { return syscall(SYS_mkdirat, folder, name, mode); }));
}

int mkdir(const char *name, mode_t mode) noexcept
{
    return mkdirat(AT_FDCWD, name, mode);
}

int unlinkat(int folder, const char *name, int flags) noexcept
{
    const Call call = flags & AT_REMOVEDIR ? Call::RemoveFolder : Call::Unlink;
    return int(
        run(fate(call, folder, name), [&] { return syscall(SYS_unlinkat, folder, name, flags); }));
}

int unlink(const char *name) noexcept
{
    return unlinkat(AT_FDCWD, name, 0);
}

int rmdir(const char *name) noexcept
{
    return unlinkat(AT_FDCWD, name, AT_REMOVEDIR);
}

int fchmod(int file, mode_t mode) noexcept
{
    return int(run(fate(Call::Attribute, file), [&] { return syscall(SYS_fchmod, file, mode); }));
}

int fchown(int file, uid_t user, gid_t group) noexcept
{
    return int(
        run(fate(Call::Attribute, file), [&] { return syscall(SYS_fchown, file, user, group); }));
}

int futimens(int file, const struct timespec times[2]) noexcept
{
    return int(run(fate(Call::Attribute, file),
                   [&] { return syscall(SYS_utimensat, file, nullptr, times, 0); }));
}

int fsetxattr(int file, const char *name, const void *value, size_t size, int flags) noexcept
{
    return int(run(fate(Call::Attribute, file),
                   [&] { return syscall(SYS_fsetxattr, file, name, value, size, flags); }));
}

} // extern "C"
