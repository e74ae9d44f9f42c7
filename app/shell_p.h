#pragma once

#include "app/shell.h"

#include <QHash>
#include <QPointer>

class QFrame;
class QGridLayout;
class QLabel;
class QMenu;

namespace vesk {

class RecentFiles;
class Splitter;
class StylesMenu;

struct Shell::Private
{
    /// One dock: a stack of panels and the strip of their buttons.
    struct DockArea
    {
        /// The dock as a whole, a pane of \a splitter.
        QWidget *widget = nullptr;
        Splitter *splitter = nullptr;
        WidgetStack *stack = nullptr;
        QToolBar *tab = nullptr;
        /// Gives the strip its size.
        QFrame *tabFrame = nullptr;
        QFrame *tabLine = nullptr;
    };

    /// What sets the docks apart, as data.
    struct DockTraits
    {
        const char *group;
        const char *actionPrefix;
        const char *showHideAction;
        QLatin1String shownKey;
        QLatin1String panelKey;
        QLatin1String sizesKey;
        /// Of the panes of the splitter, in pixels, separated by commas.
        const char *standardSizes;
        int standardSize;
        void (Shell::*raised)(QObject *);
    };

    static Shell *self;
    static const DockTraits &traits(Dock dock);

    DockArea &area(Dock dock) { return dock == Dock::Left ? left : bottom; }
    void initLeftDock();
    void initBottomDock();
    void initCentre(QWidget *workspaceWidget);

    ActionGroup *newGroup(Shell *shell, const QString &path, const QString &title);
    void buildMenus(Shell *shell);
    void buildToolBars(Shell *shell);

    void showDocksWithPanels(Shell *shell);
    void toggleDock(Dock dock);
    void openDock(Dock dock);
    void raiseStoredPanel(Shell *shell, Dock dock);
    void raiseFirstPanel(Shell *shell, Dock dock);
    void restoreGeometry(Shell *shell);
    void restoreSplitters();
    void saveGeometry(Shell *shell);

    QHash<QString, ActionGroup *> groups;
    QStringList menuGroups;
    QStringList toolbarGroups;
    QList<QPointer<QMenu>> menus;
    QList<QPointer<QToolBar>> toolbars;
    DockArea left;
    DockArea bottom;
    Splitter *vSplitter = nullptr;
    Splitter *hSplitter = nullptr;
    QWidget *centralWidget = nullptr;
    QGridLayout *centralLayout = nullptr;
    /// Of centralWidget.
    QGridLayout *centralGrid = nullptr;
    WidgetStack *workspace = nullptr;
    QToolBar *stackButtons = nullptr;
    QLabel *statusMessage = nullptr;
    QLabel *statusCursorIns = nullptr;
    QLabel *statusCursorLine = nullptr;
    QLabel *statusCursorCol = nullptr;
    std::unique_ptr<StylesMenu> styles;
    std::unique_ptr<RecentFiles> recent;
    std::function<bool()> mayLeave;
    bool hasBottomTabStretch = false;
    bool hasPanelSizes = false;
    bool isGeometrySaved = false;
    bool isLeaving = false;
};

} // namespace vesk
