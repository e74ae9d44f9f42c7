#include "app/project/recentprojects.h"

#include "app/recentfiles.h"
#include "app/settings.h"
#include "app/utils.h"

#include <QApplication>
#include <QFileInfo>
#include <QHeaderView>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QSignalBlocker>
#include <QStyledItemDelegate>
#include <QToolTip>

using namespace Qt::StringLiterals;

namespace vesk {

namespace {

const QString selectedKey = u"/recentprojects/selected"_s;
const QColor detailColor(0x90, 0x90, 0x90);

const RecentProjectItem *recentItem(const QTreeWidgetItem *item)
{
    return static_cast<const RecentProjectItem *>(item);
}

/// Paints file name and date into the two lines that the row's text leaves empty.
class RecentDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override
    {
        QStyledItemDelegate::paint(painter, option, index);
        const auto *const view = static_cast<const QTreeWidget *>(option.widget);
        const RecentProjectItem *const item = recentItem(view->itemFromIndex(index));
        if (!item)
            return;
        QStyleOptionViewItem laidOut = option;
        initStyleOption(&laidOut, index);
        const QRect text =
            view->style()->subElementRect(QStyle::SE_ItemViewItemText, &laidOut, view);
        const int margin =
            view->style()->pixelMetric(QStyle::PM_FocusFrameHMargin, &laidOut, view) + 1;
        const QFontMetrics metrics(option.font);
        const int top = option.rect.top() + (option.rect.height() - 3 * metrics.lineSpacing()) / 2;
        const auto drawDetail = [&](int row, const QString &detail) {
            const QRect line(text.left() + margin, top + row * metrics.lineSpacing(),
                             text.width() - margin, metrics.lineSpacing());
            painter->drawText(line, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                              metrics.elidedText(detail, Qt::ElideRight, line.width()));
        };
        painter->save();
        painter->setFont(option.font);
        painter->setPen(detailColor);
        drawDetail(1, RecentProjects::tr("    File: %1").arg(item->fileName));
        // The file may vanish while the list is shown.
        drawDetail(2, QFileInfo::exists(item->filePath)
                          ? RecentProjects::tr("    Opened: %1").arg(item->date)
                          : RecentProjects::tr("    Not found"));
        painter->restore();
    }
};

} // namespace

struct RecentProjects::Private
{
    QString selected;
};

RecentProjectItem::RecentProjectItem(const QString &projectName, const QString &path)
    : QTreeWidgetItem(UserType), name(projectName), filePath(path)
{
    const QFileInfo info(path);
    date = Utils::humanReadableDateTime(info.lastModified());
    dirPath = info.absolutePath();
    fileName = info.fileName();
    // The delegate fills the other lines.
    QString line = name;
    setText(0, line.replace(u'\n', u' ') + u"\n \n"_s);
}

RecentProjects::RecentProjects(QWidget *parent)
    : QTreeWidget(parent), d(std::make_unique<Private>())
{
    setObjectName(u"recentProjects"_s);
    setColumnCount(1);
    setHeaderLabels({tr("Name")});
    header()->hide();
    setRootIsDecorated(false);
    setUniformRowHeights(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFocusPolicy(Qt::ClickFocus);
    setItemDelegate(new RecentDelegate(this));
    connect(this, &QTreeWidget::itemSelectionChanged, this, &RecentProjects::itemSelected);
    connect(this, &QTreeWidget::itemDoubleClicked, this, &RecentProjects::itemClicked);
}

RecentProjects::~RecentProjects()
{
    if (!d->selected.isEmpty())
        Settings::write(selectedKey, d->selected);
}

void RecentProjects::updateRecent()
{
    const QTreeWidgetItem *const current = currentItem();
    QString selected =
        current ? recentItem(current)->filePath : Settings::read(selectedKey, d->selected);
    const QStringList paths = RecentFiles::self()->recentProjects();
    const QStringList names = RecentFiles::self()->recentProjectsNames();
    if (selected.isEmpty())
        selected = paths.value(0);
    {
        const QSignalBlocker quiet(this);
        clear();
    }
    for (qsizetype i = 0; i < paths.size(); ++i)
        addTopLevelItem(new RecentProjectItem(names.value(i), paths.at(i)));
    sortItems(0, Qt::AscendingOrder);
    for (int i = 0; i < topLevelItemCount(); ++i) {
        if (recentItem(topLevelItem(i))->filePath == selected)
            setCurrentItem(topLevelItem(i));
    }
    adjustContentSize();
}

void RecentProjects::adjustContentSize()
{
    updateGeometries();
}

void RecentProjects::itemSelected()
{
    if (const QTreeWidgetItem *const item = currentItem())
        d->selected = recentItem(item)->filePath;
}

void RecentProjects::itemClicked(QTreeWidgetItem *item)
{
    // By value: the item goes when the list is filled anew.
    const QString path = recentItem(item)->filePath;
    emit chosen(path);
}

void RecentProjects::keyPressEvent(QKeyEvent *event)
{
    QTreeWidgetItem *const item = currentItem();
    if (item && (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)) {
        itemClicked(item);
        return;
    }
    QTreeWidget::keyPressEvent(event);
}

bool RecentProjects::viewportEvent(QEvent *event)
{
    if (event->type() != QEvent::ToolTip)
        return QTreeWidget::viewportEvent(event);
    const auto *const help = static_cast<QHelpEvent *>(event);
    const QTreeWidgetItem *const under = itemAt(help->pos());
    if (!under) {
        QToolTip::hideText();
        return true;
    }
    const RecentProjectItem *const item = recentItem(under);
    // Plain text, whatever a name looks like.
    QToolTip::showText(help->globalPos(),
                       u"<p style='white-space:pre'>"_s +
                           tr("Name: %1\nFilename: %2\nDirectory: %3")
                               .arg(item->name, item->fileName, item->dirPath)
                               .toHtmlEscaped() +
                           u"</p>"_s,
                       viewport(), visualItemRect(under));
    return true;
}

} // namespace vesk
