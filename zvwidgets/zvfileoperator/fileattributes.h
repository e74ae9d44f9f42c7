#pragma once

#include <QByteArray>

#include <sys/stat.h>

namespace zvwidgets {

/// What a file has beside its content. All of it is kept as far as the rights and the
/// target's file system allow; what can't be kept is no failure.
class FileAttributes
{
public:
    /// Gives the open file or folder \a to the mode, times, access list and extended
    /// attributes of \a from, whose state is \a info.
    static void copy(int from, const struct stat &info, int to, bool keepsOwner);
    /// The same for the link \a name in \a folder, which has neither mode nor attributes.
    static void copyToLink(const struct stat &info, int folder, const QByteArray &name,
                           bool keepsOwner);
};

} // namespace zvwidgets
