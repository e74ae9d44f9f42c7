#pragma once

#include <QDomNode>
#include <QIcon>
#include <QPixmap>
#include <QStringList>
#include <QTreeWidget>

#include <memory>

class QMenu;

namespace vesk {

class ActionGroup;
class DomListView;

/// One element of the mirrored tree. It shares its node with the document, so a
/// node that was removed there stays valid until the item goes.
class DomListViewItem : public QTreeWidgetItem
{
public:
    /// The top item of \a owner, with an item for each shown element below \a n.
    DomListViewItem(DomListView *owner, const QDomNode &n);
    /// An item of its own, to be put below a parent by the caller.
    explicit DomListViewItem(const QDomNode &n);

    /// What items are ordered by: the text of column 0, whatever \a column is.
    virtual QString key(int column, bool ascending) const;
    /// Expands or collapses the item in its view and writes the attribute "open"
    /// of its node. The top item is always expanded.
    virtual void setOpen(bool open);
    /// Builds sortKey from the list order of the node's tag and the node's
    /// attribute \a attribute, or the shown text where that is empty.
    virtual void setSorting(const QString &attribute);
    /// Makes text, icon and the items below what the document says now. Elements
    /// are matched with items by name: of two siblings with one name the second
    /// gets no item here.
    void syncToDom();

    bool operator<(const QTreeWidgetItem &other) const override;

    QDomNode node;
    QString sortKey;

private:
    DomListView *domView() const;
    void init(const DomListView *owner);
    void applyIcon(const DomListView *owner);
    void removeVanished();
    bool isComplete(const DomListView *owner) const;
    void addMissing(const DomListView *owner);
};

/// A tree that mirrors a part of a DOM document: one item for each element whose
/// tag is in the tag set, elements of other tags are left out with all below
/// them. The document is the master and stays with the caller; the only thing
/// written into it is the attribute "open".
class DomListView : public QTreeWidget
{
    Q_OBJECT
public:
    explicit DomListView(QWidget *parent = nullptr, const QString &name = QString());
    ~DomListView() override;

    /// Shows \a node as the top item. Call clear() first if another tree is shown.
    void setDomTree(const QDomNode &node);
    /// The item of setDomTree(), null after clear().
    DomListViewItem *rootItem() const;

    /// The tags that get items. Items already made are not changed by it.
    virtual QStringList &tagSet();
    virtual void setTagSet(QStringList &tags);
    /// Fills the context menu of the items of \a tag; null if none was set. Not
    /// owned.
    virtual ActionGroup *actionGroup(const QString &tag) const;
    virtual void setActionGroup(const QString &tag, ActionGroup *group);
    /// The icon of \a tag at the size of small icons, null if none was set.
    virtual QPixmap pixmap(const QString &tag) const;
    virtual void setPixmap(const QString &tag, const QPixmap &pixmap);
    /// Like setPixmap(), with an icon that may be drawn when it is first shown.
    void setIcon(const QString &tag, const QIcon &icon);
    /// 500 for a tag that was never set.
    virtual int listOrder(const QString &tag) const;
    virtual void setListOrder(const QString &tag, int order);
    /// The node's attribute that sort keys are built from, "name" at first.
    virtual QString sortingAttribute() const;
    virtual void setSortingAttribute(const QString &attribute);
    /// Makes the items what the document says now.
    virtual void syncToDom();

    /// Expands or collapses \a item and emits setNodeOpen().
    virtual void setOpen(QTreeWidgetItem *item, bool open);
    /// Drops all items.
    virtual void clear();
    /// Fits the column to the width of the view: long names are cut, and there is
    /// no horizontal scroll bar.
    void adjustContentSize();

signals:
    /// The node is null in all of these where no item was hit.
    void click(const QDomNode &node);
    void doubleClick(const QDomNode &node);
    /// Return alone does not emit it, which is meant: only keyReturnPressed() does.
    void returnPressed(const QDomNode &node);
    void rightClick(const QDomNode &node);
    void setNodeOpen(const QDomNode &node, bool open);

protected:
    void contextMenuEvent(QContextMenuEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;

private slots:
    void mouseClick(QTreeWidgetItem *item);
    void mouseDoubleClick(QTreeWidgetItem *item);
    void mouseRightClick(QTreeWidgetItem *item, const QPoint &place, int column);
    void keyReturnPressed(QTreeWidgetItem *item);

private:
    friend class DomListViewItem;
    struct Private;

    void itemToggled(QTreeWidgetItem *item, bool open);

    const std::unique_ptr<Private> d;
};

} // namespace vesk
