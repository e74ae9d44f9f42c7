#include "app/widgets/domlistview.h"

#include "app/actiongroup.h"

#include <QContextMenuEvent>
#include <QHash>
#include <QHeaderView>
#include <QMap>
#include <QMenu>
#include <QMouseEvent>
#include <QScopedValueRollback>
#include <QSet>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace vesk {

namespace {

const QString openAttribute = u"open"_s;
constexpr int defaultListOrder = 500;
constexpr QSize smallIcon(18, 18);

QString nameOf(const QDomNode &node)
{
    return node.toElement().attribute(u"name"_s);
}

DomListViewItem *domItem(QTreeWidgetItem *item)
{
    return static_cast<DomListViewItem *>(item);
}

/// Where an item with the text of \a item belongs among the children of \a parent.
int sortedPlace(const QTreeWidgetItem &parent, const QTreeWidgetItem &item)
{
    int first = 0;
    int last = parent.childCount();
    while (first < last) {
        const int middle = (first + last) / 2;
        if (item < *parent.child(middle))
            last = middle;
        else
            first = middle + 1;
    }
    return first;
}

} // namespace

struct DomListView::Private
{
    DomListViewItem *root = nullptr;
    QStringList tagSet;
    QMap<QString, int> listOrders;
    QMap<QString, QIcon> icons;
    QMap<QString, QMenu *> menus; ///< children of the tree, made on first use
    QMap<QString, ActionGroup *> groups;
    QString sortingAttribute = u"name"_s;
    /// An item is being opened or closed by the program, not by the user.
    bool isToggling = false;
};

DomListViewItem::DomListViewItem(DomListView *owner, const QDomNode &n)
    : QTreeWidgetItem(UserType), node(n)
{
    init(owner);
    owner->addTopLevelItem(this);
    // Only an item in a tree can be expanded.
    QList<DomListViewItem *> pending{this};
    while (!pending.isEmpty()) {
        DomListViewItem *item = pending.takeLast();
        const QString open = item->node.toElement().attribute(openAttribute);
        if (!open.isEmpty())
            item->setOpen(open == "1"_L1);
        for (int i = 0; i < item->childCount(); ++i)
            pending.append(domItem(item->child(i)));
    }
}

DomListViewItem::DomListViewItem(const QDomNode &n) : QTreeWidgetItem(UserType), node(n)
{}

DomListView *DomListViewItem::domView() const
{
    return static_cast<DomListView *>(treeWidget());
}

void DomListViewItem::init(const DomListView *owner)
{
    setText(0, nameOf(node));
    applyIcon(owner);
    QList<QTreeWidgetItem *> made;
    for (QDomNode child = node.firstChild(); !child.isNull(); child = child.nextSibling()) {
        if (!child.isElement() || !owner->d->tagSet.contains(child.nodeName()))
            continue;
        auto *item = new DomListViewItem(child);
        item->init(owner);
        made.append(item);
    }
    std::stable_sort(made.begin(), made.end(),
                     [](const QTreeWidgetItem *a, const QTreeWidgetItem *b) { return *a < *b; });
    addChildren(made);
}

void DomListViewItem::applyIcon(const DomListView *owner)
{
    const QString tag = node.nodeName();
    const QIcon icon = owner->d->icons.value(tag);
    if (icon.isNull() || !owner->d->tagSet.contains(tag))
        return;
    // Setting it has the row painted anew.
    if (QTreeWidgetItem::icon(0).cacheKey() != icon.cacheKey())
        setIcon(0, icon);
}

QString DomListViewItem::key(int, bool) const
{
    return text(0);
}

bool DomListViewItem::operator<(const QTreeWidgetItem &other) const
{
    const auto &item = static_cast<const DomListViewItem &>(other);
    return QString::localeAwareCompare(key(0, true), item.key(0, true)) < 0;
}

void DomListViewItem::setOpen(bool open)
{
    const bool isOpen = open || !parent();
    DomListView *owner = domView();
    {
        const QScopedValueRollback toggling(owner->d->isToggling, true);
        setExpanded(isOpen);
    }
    node.toElement().setAttribute(openAttribute, isOpen ? u"1"_s : u"0"_s);
    owner->adjustContentSize();
}

void DomListViewItem::setSorting(const QString &attribute)
{
    QString value = node.toElement().attribute(attribute);
    if (value.isEmpty())
        value = text(0);
    const int order = domView()->listOrder(node.nodeName());
    sortKey = u"%1"_s.arg(order, 5, 10, QChar(u'0')) + value;
    sortKey.replace(u'_', u'0');
}

void DomListViewItem::removeVanished()
{
    for (int i = childCount() - 1; i >= 0; --i) {
        const QDomNode &n = domItem(child(i))->node;
        if (n.isNull() || n.parentNode().isNull())
            delete takeChild(i);
    }
}

/// True if each shown element below the node is that of one of the items.
bool DomListViewItem::isComplete(const DomListView *owner) const
{
    int missing = childCount();
    for (QDomNode n = node.firstChild(); !n.isNull(); n = n.nextSibling()) {
        if (n.isElement() && owner->d->tagSet.contains(n.nodeName()))
            --missing;
    }
    for (int i = 0; i < childCount() && missing == 0; ++i) {
        if (nameOf(domItem(child(i))->node) != child(i)->text(0))
            return false;
    }
    return missing == 0;
}

void DomListViewItem::addMissing(const DomListView *owner)
{
    if (isComplete(owner))
        return;
    QSet<QString> names;
    names.reserve(childCount());
    for (int i = 0; i < childCount(); ++i)
        names.insert(child(i)->text(0));
    for (QDomNode n = node.firstChild(); !n.isNull(); n = n.nextSibling()) {
        if (!n.isElement() || names.contains(nameOf(n)) || !owner->d->tagSet.contains(n.nodeName()))
            continue;
        auto *item = new DomListViewItem(n);
        item->init(owner);
        names.insert(item->text(0));
        insertChild(sortedPlace(*this, *item), item);
    }
}

void DomListViewItem::syncToDom()
{
    const DomListView *owner = domView();
    if (const QString name = nameOf(node); name != text(0)) {
        setText(0, name);
        if (QTreeWidgetItem *above = parent()) {
            const bool wasExpanded = isExpanded();
            above->removeChild(this);
            above->insertChild(sortedPlace(*above, *this), this);
            const QScopedValueRollback toggling(owner->d->isToggling, true);
            setExpanded(wasExpanded);
        }
    }
    applyIcon(owner);
    if (!node.hasChildNodes() && childCount() == 0)
        return;
    removeVanished();
    addMissing(owner);
    // A child that gets another name moves among its siblings.
    QList<DomListViewItem *> kept;
    for (int i = 0; i < childCount(); ++i)
        kept.append(domItem(child(i)));
    for (DomListViewItem *item : std::as_const(kept))
        item->syncToDom();
}

DomListView::DomListView(QWidget *parent, const QString &name)
    : QTreeWidget(parent), d(std::make_unique<Private>())
{
    setObjectName(name);
    setColumnCount(1);
    setHeaderLabels({tr("Name")});
    header()->hide();
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setSelectionMode(ExtendedSelection);
    setRootIsDecorated(false);
    setUniformRowHeights(true);
    setIconSize(smallIcon);
    connect(this, &QTreeWidget::itemClicked, this, &DomListView::mouseClick);
    connect(this, &QTreeWidget::itemDoubleClicked, this, &DomListView::mouseDoubleClick);
    connect(this, &QTreeWidget::itemExpanded, this,
            [this](QTreeWidgetItem *item) { itemToggled(item, true); });
    connect(this, &QTreeWidget::itemCollapsed, this,
            [this](QTreeWidgetItem *item) { itemToggled(item, false); });
}

DomListView::~DomListView() = default;

void DomListView::setDomTree(const QDomNode &node)
{
    d->root = new DomListViewItem(this, node);
    adjustContentSize();
}

DomListViewItem *DomListView::rootItem() const
{
    return d->root;
}

QStringList &DomListView::tagSet()
{
    return d->tagSet;
}

void DomListView::setTagSet(QStringList &tags)
{
    d->tagSet = tags;
}

ActionGroup *DomListView::actionGroup(const QString &tag) const
{
    return d->groups.value(tag);
}

void DomListView::setActionGroup(const QString &tag, ActionGroup *group)
{
    d->groups.insert(tag, group);
}

QPixmap DomListView::pixmap(const QString &tag) const
{
    return d->icons.value(tag).pixmap(smallIcon, devicePixelRatioF());
}

void DomListView::setPixmap(const QString &tag, const QPixmap &pixmap)
{
    d->icons.insert(tag, QIcon(pixmap));
}

void DomListView::setIcon(const QString &tag, const QIcon &icon)
{
    d->icons.insert(tag, icon);
}

int DomListView::listOrder(const QString &tag) const
{
    return d->listOrders.value(tag, defaultListOrder);
}

void DomListView::setListOrder(const QString &tag, int order)
{
    d->listOrders.insert(tag, order);
}

QString DomListView::sortingAttribute() const
{
    return d->sortingAttribute;
}

void DomListView::setSortingAttribute(const QString &attribute)
{
    d->sortingAttribute = attribute;
    // The order on screen stays: it follows the names alone.
    for (QTreeWidgetItemIterator it(this); *it; ++it)
        domItem(*it)->setSorting(attribute);
}

void DomListView::syncToDom()
{
    setUpdatesEnabled(false);
    if (d->root)
        d->root->syncToDom();
    setUpdatesEnabled(true);
    adjustContentSize();
}

void DomListView::setOpen(QTreeWidgetItem *item, bool open)
{
    domItem(item)->setOpen(open);
    emit setNodeOpen(domItem(item)->node, open);
}

void DomListView::itemToggled(QTreeWidgetItem *item, bool open)
{
    if (!d->isToggling)
        setOpen(item, open);
}

void DomListView::clear()
{
    QTreeWidget::clear();
    d->root = nullptr;
}

void DomListView::adjustContentSize()
{
    updateGeometries();
}

void DomListView::contextMenuEvent(QContextMenuEvent *event)
{
    if (event->reason() == QContextMenuEvent::Mouse)
        return mouseRightClick(itemAt(event->pos()), event->globalPos(), 0);
    QTreeWidgetItem *item = currentItem();
    // It may be out of sight, and the menu with it.
    if (item)
        scrollToItem(item);
    const QRect row = item ? visualItemRect(item) : QRect();
    mouseRightClick(item, viewport()->mapToGlobal(row.bottomLeft() + QPoint(row.height(), 0)), 0);
}

void DomListView::mousePressEvent(QMouseEvent *event)
{
    const bool isOnItem = itemAt(event->position().toPoint());
    QTreeWidget::mousePressEvent(event);
    if (event->button() == Qt::LeftButton && !isOnItem)
        mouseClick(nullptr);
}

void DomListView::mouseDoubleClickEvent(QMouseEvent *event)
{
    // Asked before: the answer to a double click may be another tree.
    const bool isOnItem = itemAt(event->position().toPoint());
    QTreeWidget::mouseDoubleClickEvent(event);
    if (event->button() == Qt::LeftButton && !isOnItem)
        mouseDoubleClick(nullptr);
}

void DomListView::mouseClick(QTreeWidgetItem *item)
{
    emit click(item ? domItem(item)->node : QDomNode());
}

void DomListView::mouseDoubleClick(QTreeWidgetItem *item)
{
    emit doubleClick(item ? domItem(item)->node : QDomNode());
}

void DomListView::keyReturnPressed(QTreeWidgetItem *item)
{
    emit returnPressed(item ? domItem(item)->node : QDomNode());
}

void DomListView::mouseRightClick(QTreeWidgetItem *item, const QPoint &place, int)
{
    if (!item) {
        emit rightClick(QDomNode());
        return;
    }
    const QDomNode node = domItem(item)->node;
    const QString tag = node.nodeName();
    QMenu *menu = d->menus.value(tag);
    if (!menu) {
        const ActionGroup *group = d->groups.value(tag);
        if (!group)
            return;
        menu = new QMenu(this);
        group->addTo(menu);
        d->menus.insert(tag, menu);
    }
    emit rightClick(node);
    menu->popup(place);
}

} // namespace vesk
