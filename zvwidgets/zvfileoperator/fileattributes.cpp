#include "zvwidgets/zvfileoperator/fileattributes.h"

#include "zvwidgets/zvfileoperator/filehandle.h"

#include <array>
#include <cstring>
#include <fcntl.h>
#include <sys/xattr.h>

namespace zvwidgets {

namespace {

constexpr mode_t identityBits = S_ISUID | S_ISGID;

std::array<timespec, 2> times(const struct stat &info)
{
    return {info.st_atim, info.st_mtim};
}

/// A folder may give new files an access list; a source without one has none to give.
void dropInheritedAccess(int file, bool isFolder)
{
    (void)::fremovexattr(file, "system.posix_acl_access");
    if (isFolder)
        (void)::fremovexattr(file, "system.posix_acl_default");
}

void copyExtended(int from, int to)
{
    const ssize_t size = ::flistxattr(from, nullptr, 0);
    if (size <= 0)
        return;
    QByteArray names(size, Qt::Uninitialized);
    const ssize_t length = ::flistxattr(from, names.data(), size_t(size));
    for (const char *name = names.constData(); name < names.constData() + length;
         name += std::strlen(name) + 1) {
        const ssize_t valueSize = ::fgetxattr(from, name, nullptr, 0);
        if (valueSize < 0)
            continue;
        QByteArray value(valueSize, Qt::Uninitialized);
        if (::fgetxattr(from, name, value.data(), size_t(valueSize)) == valueSize)
            (void)::fsetxattr(to, name, value.constData(), size_t(valueSize), 0);
    }
}

} // namespace

void FileAttributes::copy(int from, const struct stat &info, int to, bool keepsOwner)
{
    struct stat made;
    if (::fstat(to, &made) != 0)
        return;
    if (keepsOwner && (made.st_uid != info.st_uid || made.st_gid != info.st_gid) &&
        ::fchown(to, info.st_uid, info.st_gid) == 0) {
        made.st_uid = info.st_uid;
        made.st_gid = info.st_gid;
    }
    const bool sameOwner = made.st_uid == info.st_uid && made.st_gid == info.st_gid;
    dropInheritedAccess(to, S_ISDIR(info.st_mode));
    // Attributes first: a mode without the right to write would refuse them.
    copyExtended(from, to);
    // A program must not run as somebody who didn't allow that.
    const bool mayKeepIdentity = sameOwner || S_ISDIR(info.st_mode);
    (void)::fchmod(to, info.st_mode & (mayKeepIdentity ? 07777 : 07777 & ~identityBits));
    (void)::futimens(to, times(info).data());
}

void FileAttributes::copyToLink(const struct stat &info, int folder, const QByteArray &name,
                                bool keepsOwner)
{
    if (keepsOwner)
        (void)::fchownat(folder, name.constData(), info.st_uid, info.st_gid, AT_SYMLINK_NOFOLLOW);
    (void)::utimensat(folder, name.constData(), times(info).data(), AT_SYMLINK_NOFOLLOW);
}

} // namespace zvwidgets
