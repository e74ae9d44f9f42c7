#pragma once

#include "app/explorer/folderreader.h"

#include <QStringList>
#include <QTreeWidget>

#include <memory>

namespace vesk {

class Action;
class ActionGroup;
class FilesListItem;

/// The entries of one folder, with a history of the folders that were shown. It is read
/// when the folder changes and at reload(); the disk is not watched, but an entry is
/// looked at again when it is selected.
class FilesList : public QTreeWidget
{
    Q_OBJECT
public:
    enum ViewMode
    {
        Simple = 0,
        Detailed = 1
    };
    enum SortMode
    {
        Name = 0,
        Date = 1,
        Size = 2
    };
    /// Whether Return and a double click on a folder lead into it.
    enum class Browsing
    {
        Enabled,
        Disabled
    };

    explicit FilesList(QWidget *parent = nullptr, Browsing browsing = Browsing::Enabled);
    ~FilesList() override;

    /// The folder shown, absolute; empty before the first.
    QString path() const;
    ViewMode viewMode() const;
    /// Reads the folder again; the same value does nothing.
    void setViewMode(int mode);
    SortMode sortMode() const;
    /// Reads the folder again; the same value does nothing.
    void setSortMode(int mode);

    QString currentItemName() const;
    // Of what is selected "..", which stands for the folder above, is left out. From
    // the top of the list downwards.
    QStringList selectedNames() const;
    QStringList selectedFileNames() const;
    QList<FilesListItem *> selectedItems() const;
    /// The paths of all entries.
    QStringList filePaths() const;
    /// The last selected entry, or the one below it if there is one; null without a
    /// selection.
    FilesListItem *itemBelowSelection() const;
    FilesListItem *itemAt(int row) const;
    /// Adds an entry that need not lie in the folder shown, at its place in the order.
    void addEntry(const QString &name, const QString &path, int sortIndex, bool isFolder);

    void clear();

    QStringList excludeFilePaths() const;
    /// Entries of these paths are shown grey from the next reading on.
    void setExcludeFilePaths(const QStringList &paths);

    /// What fills the context menu for \a word: "folder", "none", "selection", or the
    /// name of a file type, for which "file" stands in.
    ActionGroup *actionGroup(const QString &word) const;
    void setActionGroup(const QString &word, ActionGroup *group);
    /// While the list has the focus, the keys of those of \a actions that are enabled
    /// come before equal ones elsewhere.
    void setShortcutActions(const QList<Action *> &actions);

    void setCurrent(QTreeWidgetItem *item);
    /// The first entry if \a name is empty; nothing happens if there is none of it.
    void setCurrentItem(const QString &name);
    void adjustContentSize();
    /// With the path in the status line.
    void setFocus();

public slots:
    /// Nothing happens if there is no such folder.
    void go(const QString &path);
    void reload();
    void back();
    void forward();
    void setCurrentFirst();
    void setCurrentLast();
    /// Opens a file or goes to a folder; null stands for the current entry.
    void itemClicked(QTreeWidgetItem *item);

signals:
    void gotFocus();
    void filesListLoaded();
    void upAvailable(bool is);
    void backAvailable(bool is);
    void forwardAvailable(bool is);

protected:
    bool event(QEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void selectionChanged(const QItemSelection &selected,
                          const QItemSelection &deselected) override;

private:
    struct Private;

    bool setPath(const QString &path);
    void fill(const FolderReader &folder);
    void rememberPlace();
    void restorePlace();
    void setScrollPosition(int position);
    void itemSelected();
    void mouseRightClick(const FilesListItem *item, const QPoint &place);
    void status(const QString &text) const;

    const std::unique_ptr<Private> d;
};

} // namespace vesk
