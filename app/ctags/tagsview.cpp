#include "app/ctags/tagsview.h"

#include "app/actiongroup.h"
#include "app/ctags/node.h"
#include "app/ctags/parser.h"
#include "app/filetype.h"

#include <QContextMenuEvent>
#include <QHash>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMap>
#include <QMenu>
#include <QMouseEvent>
#include <QScrollBar>
#include <QSet>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace vesk {

namespace {

constexpr QSize smallIcon(16, 16);

bool isBefore(const QTreeWidgetItem *a, const QTreeWidgetItem *b)
{
    return *a < *b;
}

/// A row of siblings and the file that they are of.
struct Source
{
    const Node *node;
    QString fileName;
};

} // namespace

TagsViewItem::TagsViewItem(const TagsView *owner, const QString &name)
    : QTreeWidgetItem(itemType), view(owner)
{
    setText(0, name);
}

bool TagsViewItem::isKeyedByName() const
{
    const int mode = view->sortingMode();
    return mode == TagsView::ByName || (mode == TagsView::ClassesByName && type == "Class"_L1);
}

QString TagsViewItem::key(int, bool) const
{
    const QString place = u"%1"_s.arg(pos1, 6, 10, QChar(u'0'));
    QString key = isKeyedByName()                                 ? text(0)
                  : view->sortingMode() == TagsView::ByLineNumber ? place
                                                                  : u"zzzzzz"_s + place;
    return key.replace(u'_', u'1');
}

bool TagsViewItem::operator<(const QTreeWidgetItem &other) const
{
    const auto &item = static_cast<const TagsViewItem &>(other);
    if (!isKeyedByName() && !item.isKeyedByName())
        return pos1 < item.pos1;
    return QString::localeAwareCompare(key(0, true), item.key(0, true)) < 0;
}

struct TagsView::Private
{
    explicit Private(TagsView *view) : q(view) {}

    TagsViewItem *newItem(const Source &source) const;
    void describe(TagsViewItem *item, const Source &source) const;
    void merge(QTreeWidgetItem *above, const QList<Source> &sources);
    void replaceChildren(QTreeWidgetItem *above, const QList<QTreeWidgetItem *> &gone,
                         const QList<QTreeWidgetItem *> &made);
    void reopen(QTreeWidgetItem *item);

    TagsView *const q;
    int sortingMode = ByLineNumber;
    QMap<QString, QMenu *> menus; ///< children of the view, made on first use
    QMap<QString, ActionGroup *> groups;
    /// Of the update that is being made.
    const Parser *parser = nullptr;
    bool isSorted = true;
};

/// The item with all below it. It is in no tree yet, where items are added for little.
TagsViewItem *TagsView::Private::newItem(const Source &source) const
{
    auto *const item = new TagsViewItem(q, source.node->name);
    item->isOpen = true;
    describe(item, source);
    QList<QTreeWidgetItem *> children;
    for (const Node *child = source.node->child; child; child = child->next)
        children.append(newItem({child, source.fileName}));
    std::stable_sort(children.begin(), children.end(), isBefore);
    item->addChildren(children);
    return item;
}

void TagsView::Private::describe(TagsViewItem *item, const Source &source) const
{
    item->pos1 = source.node->start;
    item->fileName = source.fileName;
    if (!parser)
        return;
    // A name may have become that of something else.
    const QString type = parser->typeName(source.node);
    if (type == item->type)
        return;
    item->type = type;
    item->setIcon(0, parser->typeIcon(source.node));
}

/// Makes the children of \a above those that follow from \a sources. Of several nodes
/// of one name the last counts for the items that are there already.
void TagsView::Private::merge(QTreeWidgetItem *above, const QList<Source> &sources)
{
    QHash<QString, const Source *> found;
    found.reserve(above->childCount());
    for (int i = 0; i < above->childCount(); ++i)
        found.insert(above->child(i)->text(0), nullptr);
    QList<QTreeWidgetItem *> made;
    for (const Source &source : sources) {
        const auto known = found.find(source.node->name);
        if (known == found.end())
            made.append(newItem(source));
        else
            *known = &source;
    }
    QList<QTreeWidgetItem *> gone;
    for (int i = 0; i < above->childCount(); ++i) {
        auto *const item = static_cast<TagsViewItem *>(above->child(i));
        const Source *const source = found.value(item->text(0));
        if (!source) {
            gone.append(item);
            continue;
        }
        describe(item, *source);
        QList<Source> below;
        for (const Node *child = source->node->child; child; child = child->next)
            below.append({child, source->fileName});
        if (!below.isEmpty() || item->childCount() > 0)
            merge(item, below);
    }
    if (!gone.isEmpty() || !made.isEmpty())
        replaceChildren(above, gone, made);
    for (int i = 1; i < above->childCount() && isSorted; ++i)
        isSorted = !isBefore(above->child(i), above->child(i - 1));
}

/// All at once: a tree takes single items in and out slowly.
void TagsView::Private::replaceChildren(QTreeWidgetItem *above,
                                        const QList<QTreeWidgetItem *> &gone,
                                        const QList<QTreeWidgetItem *> &made)
{
    QTreeWidgetItem *const current = q->currentItem();
    const bool isSelected = current && current->isSelected();
    QTreeWidgetItem *branch = current;
    QTreeWidgetItem *const parent = above == q->invisibleRootItem() ? nullptr : above;
    while (branch && branch->parent() != parent)
        branch = branch->parent();

    const QSet<QTreeWidgetItem *> dropped(gone.cbegin(), gone.cend());
    QList<QTreeWidgetItem *> children = above->takeChildren();
    children.removeIf([&dropped](QTreeWidgetItem *item) { return dropped.contains(item); });
    const bool isCurrentKept = !branch || !dropped.contains(branch);
    qDeleteAll(gone);
    children += made;
    std::stable_sort(children.begin(), children.end(), isBefore);
    above->addChildren(children);
    reopen(above);
    q->setCurrentItem(isCurrentKept ? current : nullptr, 0,
                      isSelected && isCurrentKept ? QItemSelectionModel::ClearAndSelect
                                                  : QItemSelectionModel::NoUpdate);
}

/// The tree knows only of items in it which are open.
void TagsView::Private::reopen(QTreeWidgetItem *item)
{
    if (item->childCount() == 0)
        return;
    if (item != q->invisibleRootItem())
        item->setExpanded(static_cast<TagsViewItem *>(item)->isOpen);
    for (int i = 0; i < item->childCount(); ++i)
        reopen(item->child(i));
}

TagsView::TagsView(QWidget *parent, const QString &name)
    : QTreeWidget(parent), d(std::make_unique<Private>(this))
{
    setObjectName(name);
    setColumnCount(1);
    setHeaderLabels({tr("Name")});
    header()->hide();
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setUniformRowHeights(true);
    setIconSize(smallIcon);
    connect(this, &QTreeWidget::itemClicked, this, &TagsView::mouseClick);
    connect(this, &QTreeWidget::itemExpanded, this,
            [](QTreeWidgetItem *item) { static_cast<TagsViewItem *>(item)->isOpen = true; });
    connect(this, &QTreeWidget::itemCollapsed, this,
            [](QTreeWidgetItem *item) { static_cast<TagsViewItem *>(item)->isOpen = false; });
}

TagsView::~TagsView() = default;

int TagsView::sortingMode() const
{
    return d->sortingMode;
}

void TagsView::setSortingMode(int mode)
{
    d->sortingMode = mode == ByName || mode == ClassesByName ? mode : ByLineNumber;
}

void TagsView::sort()
{
    sortItems(0, Qt::AscendingOrder);
}

void TagsView::installHelper(const QString &typeName, ActionGroup *group)
{
    d->groups.insert(typeName, group);
}

void TagsView::adjustContentSize()
{
    updateGeometries();
}

void TagsView::updateSubTree(TagsViewItem *parent, const QList<const Node *> &nodes,
                             const QStringList &fileNames)
{
    QList<Source> sources;
    for (qsizetype i = 0; i < nodes.size(); ++i) {
        const QString fileName = fileNames.size() == nodes.size() ? fileNames[i] : QString();
        for (const Node *node = nodes[i]; node; node = node->next)
            sources.append({node, fileName});
    }
    d->parser = FileTypeManager::self()->fileType(u"file"_s)->parser();
    d->isSorted = true;
    const int scrolledTo = verticalScrollBar()->value();
    d->merge(parent ? parent : invisibleRootItem(), sources);
    if (!d->isSorted)
        sort();
    executeDelayedItemsLayout();
    verticalScrollBar()->setValue(scrolledTo);
}

void TagsView::openCurrent()
{
    mouseClick(nullptr);
}

void TagsView::mouseClick(QTreeWidgetItem *item)
{
    QTreeWidgetItem *const chosen = item ? item : currentItem();
    if (!chosen)
        return;
    setCurrentItem(chosen);
    if (chosen->type() != TagsViewItem::itemType)
        return;
    const auto *const symbol = static_cast<const TagsViewItem *>(chosen);
    // The slot may bring other symbols up.
    const QString fileName = symbol->fileName;
    emit gotoTextPos(symbol->pos1, fileName);
}

void TagsView::mouseRightClick(QTreeWidgetItem *item, const QPoint &place)
{
    QTreeWidgetItem *const chosen = item ? item : currentItem();
    if (!chosen || chosen->type() != TagsViewItem::itemType)
        return;
    setCurrentItem(chosen);
    const QString type = static_cast<const TagsViewItem *>(chosen)->type;
    QMenu *menu = d->menus.value(type);
    if (!menu) {
        const ActionGroup *const group = d->groups.value(type);
        if (!group)
            return;
        menu = new QMenu(this);
        group->addTo(menu);
        d->menus.insert(type, menu);
    }
    menu->popup(place);
}

void TagsView::contextMenuEvent(QContextMenuEvent *event)
{
    if (event->reason() == QContextMenuEvent::Mouse)
        return mouseRightClick(itemAt(event->pos()), event->globalPos());
    const QTreeWidgetItem *const item = currentItem();
    const QRect row = item ? visualItemRect(item) : QRect();
    mouseRightClick(nullptr, viewport()->mapToGlobal(row.bottomLeft() + QPoint(row.height(), 0)));
}

void TagsView::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        openCurrent();
    else
        QTreeWidget::keyPressEvent(event);
}

void TagsView::mousePressEvent(QMouseEvent *event)
{
    QTreeWidget::mousePressEvent(event);
    // What stands below the last row stands for the current one.
    if (event->button() == Qt::LeftButton && !itemAt(event->position().toPoint()))
        mouseClick(nullptr);
}

} // namespace vesk
