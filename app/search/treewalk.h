#pragma once

#include "app/editors/zveditor/filemasks.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <utility>
#include <vector>

#include <sys/types.h>

namespace vesk {

/// The files of a folder tree in a fixed order: those of a folder sorted by name, then
/// those of its folders, depth first. Links to folders are followed, but for those that
/// lead back up. Hidden entries and what is no regular file are left out, folders that
/// can't be read are passed over.
class TreeWalk
{
public:
    /// Asked while a folder is listed; false ends the walk.
    using GoOn = std::function<bool()>;

    TreeWalk(const QString &root, const QString &masks);

    /// False if there are no more files.
    [[nodiscard]] bool next(QString *file, const GoOn &goOn);

private:
    using FolderId = std::pair<dev_t, ino_t>;
    struct Folder
    {
        QString path;
        FolderId id;
        QStringList files; ///< those to come, the next one last
        QStringList folders;
    };

    void enter(const QString &path, const GoOn &goOn);
    bool list(Folder *folder, const GoOn &goOn) const;

    const FileMasks masks;
    QString root; ///< null once entered
    /// From the root down to the one that is walked.
    std::vector<Folder> way;
};

} // namespace vesk
