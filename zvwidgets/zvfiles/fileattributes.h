#pragma once

#include <QByteArray>

#include <sys/stat.h>

namespace zvwidgets {

/// What copyAttributes() did.
enum class Attributes
{
    Copied,
    Refused, ///< the system does not let this user, or here, copy one of them
    Failed   ///< with errno
};

/// Gives \a file, which is open and new, owner, group, rights, access control list and
/// extended attributes of the file at \a path, whose status is \a old. Until all are
/// there \a file is open to its owner at most.
[[nodiscard]] Attributes copyAttributes(const QByteArray &path, const struct stat &old, int file);

/// True if errno \a number says that this user, or this file system, may not do what
/// was tried, not that it went wrong.
bool isRefusal(int number);

} // namespace zvwidgets
