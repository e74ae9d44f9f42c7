#pragma once

#include "app/explorer/explorerpanelbase.h"

#include <memory>

namespace vesk {

/// The page of the left dock that browses the file system. Files are cut and copied
/// into a buffer that is shown below the list, until they are pasted into a folder.
///
/// The first self() makes it and puts it into the main window, which owns it.
class ExplorerPanel : public ExplorerPanelBase
{
    Q_OBJECT
public:
    enum ViewMode
    {
        TreeView = 0,
        ListView = 1,
        DetailedView = 2
    };
    enum SortMode
    {
        Name = 0,
        Date = 1,
        Size = 2
    };

    ~ExplorerPanel() override;

    static ExplorerPanel *self();

public slots:
    void setFocus();
    /// The panel's actions work only while \a who, the owner of the shared keys, is
    /// this panel.
    void focusChanged(QObject *who);
    /// Without an object raises the panel; otherwise \a raised is the panel that is on
    /// top of the dock now.
    void makeVisible(QObject *raised = nullptr);
    void setViewMode(int mode);
    void setSortMode(int mode);

    void back();
    void forward();
    void setCurrentLast();
    void setCurrentFirst();
    /// Goes to the parent folder, or to the folder of the first \a id pieces of the path.
    void cdUp(int id = -1);
    /// Asks for a folder and goes there.
    void selectPath();
    void newFolder();
    void open();

    void cut();
    void copy();
    void paste();
    void erase();
    /// Without \a show drops what is staged: what was cut is as before.
    void showBuffer(bool show = false);

    void showBookmarkMenu();
    void aboutToShowBookmarkMenu();
    void activatedBookmarkMenu(int id);
    void manageBookmarks();
    void addBookmark();
    void showActionMenu();
    void pathMenu();

signals:
    void gotFocus();
    void raised();

private:
    struct Private;

    explicit ExplorerPanel(QWidget *parent);

    void createActions();
    void createContextGroups();
    void createMenus();
    void connectButtons();
    void restore();
    void updateActions();
    void stage();
    void sizeBuffer();
    void warnAccess(const QString &message) const;

    const std::unique_ptr<Private> d;
};

} // namespace vesk
