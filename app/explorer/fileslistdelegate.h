#pragma once

#include <QStyledItemDelegate>

namespace vesk {

class FilesList;
class FilesListItem;

/// Paints the rows of a FilesList: a pale name for entries that are cut, a second line
/// in the detailed view, and a lock on what cannot be read.
class FilesListDelegate : public QStyledItemDelegate
{
public:
    explicit FilesListDelegate(FilesList *owner);

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override;

private:
    void paintSecondLine(QPainter *painter, const QStyleOptionViewItem &row,
                         const FilesListItem &item) const;

    const FilesList *const list;
};

} // namespace vesk
