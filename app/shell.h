#pragma once

#include <QKeyCombination>
#include <QMainWindow>

#include <functional>
#include <memory>

class QGridLayout;
class QToolBar;

namespace vesk {

class Action;
class ActionGroup;
class WidgetStack;

enum class Dock
{
    Left,
    Bottom
};

/// What a dock has to know of a panel beside its widget.
struct PanelInfo
{
    /// The action is called "leftDock/" or "bottomDock/" and this.
    const char *name;
    QString label;
    QKeyCombination key;
    const char *icon;
    /// What the action calls, the text of SLOT(), and whose that is: null stands
    /// for the panel. The slot raises the panel with Shell::raisePanel().
    const char *slot;
    QObject *receiver = nullptr;
    /// The button shows the label beside the icon.
    bool usesTextLabel = false;
};

/// The main window: a frame of named places. Components put their actions into
/// named groups and their panels into the docks; rebuildUI() then turns the
/// groups into menus and tool bars, in the order in which groups were declared.
///
/// `Components` makes the one shell first of all and deletes it last. While it is
/// destroyed the geometry is saved and all that stands in the window is deleted, so
/// that nothing outlives self().
class Shell : public QMainWindow
{
    Q_OBJECT
public:
    explicit Shell(QWidget *parent = nullptr, const QString &name = QString());
    ~Shell() override;

    /// There must be a shell; the pointer is good from its constructor on.
    static Shell *self();

    /// The group of the path \a name, such as "menu/File/Open". It and all its
    /// parents are created when first asked for; paths are case-sensitive.
    /// Null only for a path without any component.
    ActionGroup *actionGroup(const QString &name);

    /// Makes \a panel a page of \a dock and gives it a button there. The action
    /// that is returned is checked while the panel is on top.
    Action *addPanel(Dock dock, QWidget *panel, const PanelInfo &info);
    /// Brings a page of a dock to the top, and the dock into sight.
    void raisePanel(QWidget *panel);

    /// Puts \a tabs below the workspace.
    void setWorkspaceTabs(QWidget *tabs);

    QGridLayout *centralLayout() const;
    WidgetStack *workspace() const;
    QToolBar *stackButtons() const;
    WidgetStack *leftDock() const;
    WidgetStack *bottomDock() const;
    QToolBar *leftDockTab() const;
    QToolBar *bottomDockTab() const;
    QWidget *leftDockWidget() const;
    QWidget *bottomDockWidget() const;

    /// \a mayLeave is asked by exit(); false keeps the program running.
    void setLeaveQuestion(const std::function<bool()> &mayLeave);
    /// True once exit() has closed everything.
    bool isLeaving() const;

    /// Writes the geometry into the settings, once: what is taken out of the window
    /// afterwards leaves no trace there.
    void saveGeometryOnce();

public slots:
    /// Leaves the event loop once all files are closed; a refusal changes nothing.
    /// Called before there is a loop it makes isLeaving() true.
    void exit();
    void rebuildUI();
    void timeout();
    /// A dock that was dragged shut counts as hidden, and comes back with the size
    /// that it had.
    void leftDockShowHide();
    void bottomDockShowHide();
    /// \a component got the focus and becomes the owner of the shared keys.
    void focusIn(QObject *component);
    /// \a panel is on top of its dock now; the dock is shown.
    void raiseLeftDock(QObject *panel);
    void raiseBottomDock(QObject *panel);
    /// Sets the status bar cell \a type: "default", "insowr", "line" or "col".
    /// Other types are ignored.
    void statusMessage(const QString &type, const QString &message);
    void postPrepare();

signals:
    void uiRebuilded();
    void focusChanged(QObject *who);
    void leftDockRaised(QObject *panel);
    void bottomDockRaised(QObject *panel);

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    struct Private;

    void initActionGroups();
    void initStatusBar();
    void initWorkspace();

    std::unique_ptr<Private> d;
};

} // namespace vesk
