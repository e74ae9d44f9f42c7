#include "app/explorer/fileslistdelegate.h"

#include "app/explorer/fileslist.h"
#include "app/explorer/fileslistitem.h"
#include "app/utils.h"

#include <QPainter>

namespace vesk {

namespace {

const QColor grayText(0x80, 0x80, 0x80);
const QColor folderDetails(0x90, 0x90, 0xe0);
const QColor fileDetails(0x90, 0x90, 0x90);
// As wide as the widest size and date.
constexpr QLatin1String sampleDetails("888.M 88 WWW 88");

} // namespace

FilesListDelegate::FilesListDelegate(FilesList *owner) : QStyledItemDelegate(owner), list(owner)
{}

void FilesListDelegate::initStyleOption(QStyleOptionViewItem *option,
                                        const QModelIndex &index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    const FilesListItem *const item = list->itemAt(index.row());
    // All rows are equally high, whatever the name holds.
    option->text = shownName(item->fileName);
    if (list->viewMode() == FilesList::Detailed)
        option->text += QString(QChar::LineSeparator) + u' ';
    if (item->isGrayed()) {
        option->palette.setColor(QPalette::Text, grayText);
        option->palette.setColor(QPalette::HighlightedText, grayText);
    }
}

QSize FilesListDelegate::sizeHint(const QStyleOptionViewItem &option,
                                  const QModelIndex &index) const
{
    QSize size = QStyledItemDelegate::sizeHint(option, index);
    const QFontMetrics &metrics = option.fontMetrics;
    if (list->viewMode() == FilesList::Detailed)
        size.setHeight(qMax(size.height(), 2 * metrics.height() + metrics.descent() + 1));
    return size;
}

void FilesListDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                              const QModelIndex &index) const
{
    QStyledItemDelegate::paint(painter, option, index);
    const FilesListItem *const item = list->itemAt(index.row());
    const bool isDetailed = list->viewMode() == FilesList::Detailed;
    if (!isDetailed && !item->isLocked())
        return;
    QStyleOptionViewItem row = option;
    initStyleOption(&row, index);
    painter->save();
    painter->setClipRect(option.rect, Qt::IntersectClip);
    if (isDetailed)
        paintSecondLine(painter, row, *item);
    if (item->isLocked()) {
        const QRect icon =
            list->style()->subElementRect(QStyle::SE_ItemViewItemDecoration, &row, list);
        painter->drawPixmap(icon.topLeft(), Utils::icon(QStringLiteral("16x16_Lock")));
    }
    painter->restore();
}

void FilesListDelegate::paintSecondLine(QPainter *painter, const QStyleOptionViewItem &row,
                                        const FilesListItem &item) const
{
    const QStyle *const style = list->style();
    const QRect text = style->subElementRect(QStyle::SE_ItemViewItemText, &row, list);
    const int margin = style->pixelMetric(QStyle::PM_FocusFrameHMargin, &row, list) + 1;
    const int x = text.left() + margin;
    const int baseline = row.rect.top() + 2 * row.fontMetrics.height();
    painter->setFont(row.font);
    painter->setPen(item.isDir ? folderDetails : fileDetails);
    if (item.isDir) {
        const QString details = item.isParent() ? shownName(item.filePath) : item.items();
        painter->drawText(x, baseline, details);
        return;
    }
    painter->drawText(x, baseline, item.size());
    const QString date = item.date();
    const int right = x + row.fontMetrics.horizontalAdvance(sampleDetails);
    painter->drawText(right - row.fontMetrics.horizontalAdvance(date), baseline, date);
}

} // namespace vesk
