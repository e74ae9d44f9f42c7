#pragma once

#include "app/explorer/folderreader.h"

#include <QPixmap>
#include <QTreeWidgetItem>

#include <memory>

namespace vesk {

class FilesList;
class FileType;

/// One row of a FilesList. There may be a hundred thousand, so that texts and pixmaps
/// are made when a row is painted.
class FilesListItem : public QTreeWidgetItem
{
public:
    static constexpr int itemType = UserType + 1;

    /// Not in the list yet. \a owner outlives the item.
    FilesListItem(const FilesList *owner, const QString &name, const QString &path, int sortIndex,
                  bool isFolder);
    ~FilesListItem() override;

    /// Contents by the name alone.
    void init(const QString &name, const QString &path, int sortIndex, bool isFolder);
    /// Contents with what the disk says, which decides about the kind too.
    void init(const FileStatus &status, int sortIndex);

    /// What items are ordered by, as a text: folders, then files by the list order of
    /// their types, each in the order of \a sort_key.
    QString key(int column, bool ascending) const;
    bool operator<(const QTreeWidgetItem &other) const override;
    QVariant data(int column, int role) const override;

    FileStatus status() const;
    FileType *fileType() const;
    /// Readable by people; empty before init() with a status.
    QString date() const;
    QString size() const;
    /// The second line of a folder.
    QString items() const;
    /// It cannot be read, as far as the disk was asked.
    bool isLocked() const;
    bool isGrayed() const;
    void setGrayed(bool on);
    bool isParent() const;

    bool isDir = false;
    QString fileName;
    QString filePath; ///< absolute
    int sort_key = 0; ///< index among the folders or the files of the listing

private:
    struct Private;

    int listOrder() const;
    QPixmap pixmap() const;

    const std::unique_ptr<Private> d;
};

} // namespace vesk
