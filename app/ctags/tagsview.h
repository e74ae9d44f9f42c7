#pragma once

#include <QStringList>
#include <QTreeWidget>

#include <memory>

namespace vesk {

class ActionGroup;
class TagsView;
struct Node;

/// One symbol of a TagsView.
class TagsViewItem : public QTreeWidgetItem
{
public:
    /// What tells the items of this class from others.
    static constexpr int itemType = 1200341;

    /// An item of its own, to be put below a parent by the caller. \a owner is the
    /// view that it will stand in: its sorting mode decides on the key.
    TagsViewItem(const TagsView *owner, const QString &name);

    /// What items are ordered by, whatever \a column is. Positions above 999999 are
    /// wider than others here; the order takes them as the numbers that they are.
    virtual QString key(int column, bool ascending) const;
    bool operator<(const QTreeWidgetItem &other) const override;

    int pos1 = 0;     ///< offset of the symbol in the text, in UTF-16 units
    int pos2 = 0;     ///< reserved
    QString type;     ///< the parser's name for the type; it decides on the context menu
    QString fileName; ///< empty in a tree of the current file only
    /// Its children are to be seen, also while it has none.
    bool isOpen = false;

private:
    bool isKeyedByName() const;

    const TagsView *const view;
};

/// A tree of symbols that is brought up to date in place: what is open stays open,
/// and the view stays where it was scrolled to.
class TagsView : public QTreeWidget
{
    Q_OBJECT
public:
    /// The numbers are those of the settings.
    enum SortingMode
    {
        ByLineNumber = 0,
        ByName = 1,
        /// By name, and what is no class after that, by position.
        ClassesByName = 2
    };

    explicit TagsView(QWidget *parent = nullptr, const QString &name = QString());
    ~TagsView() override;

    int sortingMode() const;
    /// Takes effect with sort() or the next update. Unknown modes are ByLineNumber.
    void setSortingMode(int mode);
    void sort();

    /// Fills the context menu of the items of type \a typeName; others have none. Not
    /// owned.
    void installHelper(const QString &typeName, ActionGroup *group);
    /// Fits the column to the width of the view: long names are cut.
    void adjustContentSize();

    /// Makes what stands below \a parent, or at top level if that is null, the symbols
    /// of \a nodes and of all that follow each of them. Items are matched with nodes by
    /// name. \a fileNames are those of \a nodes, or none.
    void updateSubTree(TagsViewItem *parent, const QList<const Node *> &nodes,
                       const QStringList &fileNames);

public slots:
    /// Chooses the current item, as a click on it does.
    void openCurrent();

signals:
    /// An item was chosen. \a fileName is empty for the current file.
    void gotoTextPos(int pos, const QString &fileName);

protected:
    void contextMenuEvent(QContextMenuEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;

private:
    struct Private;

    void mouseClick(QTreeWidgetItem *item);
    void mouseRightClick(QTreeWidgetItem *item, const QPoint &place);

    const std::unique_ptr<Private> d;
};

} // namespace vesk
