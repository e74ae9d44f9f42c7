#pragma once

#include "zvwidgets/zvfileoperator/filehandle.h"

#include <QByteArray>
#include <QSet>

#include <vector>

namespace zvwidgets {

/// Opens folders below given roots component by component and never through a link,
/// so that a folder that is swapped for a link meanwhile leads nowhere else. The
/// folders on the way to the last one stay open: neighbours cost nothing.
class FolderHandles
{
public:
    enum class Missing
    {
        Fail,
        Create
    };

    /// A link in the path of a root itself is followed. Of several roots above a
    /// folder the deepest counts.
    void addRoot(const QByteArray &root) { roots.insert(root); }

    /// A handle that is good as a start for paths, but not for reading; it is valid
    /// until the next call. -1 with errno set if there is no such folder.
    int open(const QByteArray &folder, Missing missing = Missing::Fail);

    /// Closes all, so that the next call looks at the disk again.
    void forget();

private:
    struct Level
    {
        /// Length of the path down to this folder.
        qsizetype end;
        FileHandle handle;
    };

    QByteArray rootOf(const QByteArray &folder) const;
    bool openRoot(const QByteArray &folder);
    bool descend(const QByteArray &name, qsizetype end, Missing missing);

    QSet<QByteArray> roots;
    QByteArray current;
    std::vector<Level> chain;
};

} // namespace zvwidgets
