#include "zvwidgets/zvfiles/fileattributes.h"

#include "zvwidgets/zvfiles/posixfile.h"

#include <QByteArrayList>

#include <algorithm>
#include <optional>
#include <sys/xattr.h>
#include <unistd.h>

namespace zvwidgets {

namespace {

// What attributes hold may grow between two calls.
constexpr int mostTries = 10;

/// Calls \a get(bytes, size), which with no room tells the size, until all fits in.
/// Nothing, with errno, on failure.
template <typename Get>
std::optional<QByteArray> sized(const Get &get)
{
    for (int i = 0; i < mostTries; ++i) {
        const ssize_t size = retried([&] { return get(nullptr, 0); });
        if (size < 0)
            return {};
        if (size == 0)
            return QByteArray();
        QByteArray bytes(size, Qt::Uninitialized);
        const ssize_t got = retried([&] { return get(bytes.data(), size_t(size)); });
        if (got >= 0)
            return bytes.first(std::min<qsizetype>(got, bytes.size()));
        if (errno != ERANGE)
            return {};
    }
    return {};
}

// These belong to the content, and the system drops or renews them at any change of it.
bool followsContent(const QByteArray &name)
{
    return name == "security.capability" || name == "security.ima" || name == "security.evm";
}

std::optional<QByteArrayList> names(const std::optional<QByteArray> &list)
{
    if (!list)
        return errno == EOPNOTSUPP || errno == ENOSYS ? std::optional(QByteArrayList())
                                                      : std::nullopt;
    QByteArrayList found = list->split('\0');
    found.removeAll(QByteArray());
    return found;
}

Attributes outcomeOfErrno()
{
    return isRefusal(errno) ? Attributes::Refused : Attributes::Failed;
}

Attributes copyAttribute(const QByteArray &path, const QByteArray &name, int file)
{
    const auto wanted = sized([&](char *bytes, size_t size) {
        return ::getxattr(path.constData(), name.constData(), bytes, size);
    });
    if (!wanted)
        return errno == ENODATA ? Attributes::Copied : outcomeOfErrno();
    const auto present = sized(
        [&](char *bytes, size_t size) { return ::fgetxattr(file, name.constData(), bytes, size); });
    if (present == wanted)
        return Attributes::Copied;
    const int result = retried([&] {
        return ::fsetxattr(file, name.constData(), wanted->constData(), size_t(wanted->size()), 0);
    });
    return result == 0 ? Attributes::Copied : outcomeOfErrno();
}

Attributes copyExtended(const QByteArray &path, int file)
{
    const auto wanted = names(sized(
        [&](char *bytes, size_t size) { return ::listxattr(path.constData(), bytes, size); }));
    if (!wanted)
        return outcomeOfErrno();
    const auto present =
        names(sized([&](char *bytes, size_t size) { return ::flistxattr(file, bytes, size); }));
    if (!present)
        return outcomeOfErrno();
    // The folder may give a new file what the old one did not have, rights among it.
    for (const QByteArray &name : *present) {
        const bool isForeign = !wanted->contains(name) && !name.startsWith("security.");
        if (isForeign && retried([&] { return ::fremovexattr(file, name.constData()); }) != 0)
            return outcomeOfErrno();
    }
    for (const QByteArray &name : *wanted) {
        const Attributes copied =
            followsContent(name) ? Attributes::Copied : copyAttribute(path, name, file);
        if (copied != Attributes::Copied)
            return copied;
    }
    return Attributes::Copied;
}

} // namespace

bool isRefusal(int number)
{
    switch (number) {
    case EPERM:
    case EACCES:
    case EBUSY: // mounted
    case EXDEV:
    case EINVAL: // an owner that has no number here
    case ENAMETOOLONG:
    case ENOSYS:
    case EOPNOTSUPP:
    case E2BIG:
    case ERANGE:
        return true;
    default:
        return false;
    }
}

Attributes copyAttributes(const QByteArray &path, const struct stat &old, int file)
{
    struct stat fresh = {};
    if (retried([&] { return ::fstat(file, &fresh); }) != 0)
        return Attributes::Failed;
    const bool isSame = fresh.st_uid == old.st_uid && fresh.st_gid == old.st_gid;
    if (!isSame && retried([&] { return ::fchown(file, old.st_uid, old.st_gid); }) != 0)
        return outcomeOfErrno();
    const Attributes extended = copyExtended(path, file);
    if (extended != Attributes::Copied)
        return extended;
    // With an access control list these are its mask, and the same as that.
    if (retried([&] { return ::fchmod(file, old.st_mode & 07777); }) != 0)
        return outcomeOfErrno();
    return Attributes::Copied;
}

} // namespace zvwidgets
