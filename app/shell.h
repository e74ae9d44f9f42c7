#pragma once

#include <QMainWindow>

#include <memory>

class QGridLayout;
class QToolBar;

namespace vesk {

class ActionGroup;
class WidgetStack;

/// The main window: a frame of named places. Components put their actions into
/// named groups and their panels into the docks; rebuildUI() then turns the
/// groups into menus and tool bars, in the order in which groups were declared.
///
/// `main` holds the one shell. While it is destroyed the geometry is saved and
/// all that stands in the window is deleted, so that nothing outlives self().
class Shell : public QMainWindow
{
    Q_OBJECT
public:
    explicit Shell(QWidget *parent = nullptr, const QString &name = QString());
    ~Shell() override;

    static Shell *self();

    /// The group of the path \a name, such as "menu/File/Open". It and all its
    /// parents spring into being when first asked for; paths are case-sensitive.
    /// Null only for a path without any component.
    ActionGroup *actionGroup(const QString &name);

    QGridLayout *centralLayout() const;
    WidgetStack *workspace() const;
    QToolBar *stackButtons() const;
    WidgetStack *leftDock() const;
    WidgetStack *bottomDock() const;
    QToolBar *leftDockTab() const;
    QToolBar *bottomDockTab() const;
    QWidget *leftDockWidget() const;
    QWidget *bottomDockWidget() const;

    /// True once exit() has closed everything.
    bool isLeaving() const;

public slots:
    /// Leaves the event loop once all files are closed; a refusal changes nothing.
    /// Called before there is a loop it makes isLeaving() true.
    void exit();
    void rebuildUI();
    void timeout();
    void leftDockShowHide();
    void bottomDockShowHide();
    /// For the gotFocus() of a component, which becomes the owner of the shared keys.
    void focusIn();
    /// For the raised() of a panel, whose dock is shown.
    void raiseLeftDock();
    void raiseBottomDock();
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
    void openArguments();

    std::unique_ptr<Private> d;
};

} // namespace vesk
