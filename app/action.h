#pragma once

#include <QAction>
#include <QList>
#include <QMenu>
#include <QPointer>
#include <QToolButton>

#include <memory>

namespace vesk {

/// A command of the program. It knows the tool buttons and the menus that show
/// it, so that others can hang something beside or under them.
class Action : public QAction
{
    Q_OBJECT
public:
    explicit Action(QObject *parent, const QString &name = QString(), bool toggle = false);
    Action(const QString &text, const QIcon &icon, const QString &menuText,
           const QKeySequence &accel, QObject *parent, const QString &name = QString(),
           bool toggle = false);
    Action(const QString &text, const QString &menuText, const QKeySequence &accel, QObject *parent,
           const QString &name = QString(), bool toggle = false);
    ~Action() override;

    /// The plain text: that of buttons and, with the shortcut, of the tool tip.
    /// It hides the toolkit's text(), which is the menu text here.
    QString text() const { return iconText(); }
    void setText(const QString &text) { setIconText(text); }
    QString menuText() const { return QAction::text(); }
    void setMenuText(const QString &text) { QAction::setText(text); }

    /// Holds for buttons made later: call it before the tool bars are built.
    void setUsesTextLabel(bool on);
    /// Where the label of setUsesTextLabel() stands: Qt::ToolButtonTextBesideIcon
    /// (the default) or Qt::ToolButtonTextUnderIcon. Holds for buttons made later.
    void setTextPosition(Qt::ToolButtonStyle position);

    /// Puts the action at the end of \a container, a menu, a tool bar or any
    /// widget, and tells addedTo(). Nothing happens if it is there already.
    void addTo(QWidget *container);

    /// Every live tool button that shows this action, in order of adding.
    QList<QToolButton *> toolbuttons;
    /// Every menu the action was added to, in order of adding. One that was
    /// deleted since stays as a null entry.
    QList<QPointer<QMenu>> menus;

protected:
    /// \a actionWidget was made in \a container to show this action.
    virtual void addedTo(QWidget *actionWidget, QWidget *container);
    /// The action stands in \a menu, at \a index of its actions.
    virtual void addedTo(int index, QMenu *menu);

private:
    struct Private;

    void objectDestroyed(QObject *object);
    void updateTips();

    const std::unique_ptr<Private> d;
};

} // namespace vesk
