#include "app/action.h"

#include <QKeySequence>
#include <QToolBar>

namespace vesk {

struct Action::Private
{
    bool usesTextLabel = false;
    Qt::ToolButtonStyle textPosition = Qt::ToolButtonTextBesideIcon;
    QString ownToolTip;
    QString ownStatusTip;
};

Action::Action(QObject *parent, const QString &name, bool toggle)
    : QAction(parent), d(std::make_unique<Private>())
{
    setObjectName(name);
    setCheckable(toggle);
    connect(this, &QAction::changed, this, &Action::updateTips);
}

Action::Action(const QString &text, const QIcon &icon, const QString &menuText,
               const QKeySequence &accel, QObject *parent, const QString &name, bool toggle)
    : Action(text, menuText, accel, parent, name, toggle)
{
    setIcon(icon);
}

Action::Action(const QString &text, const QString &menuText, const QKeySequence &accel,
               QObject *parent, const QString &name, bool toggle)
    : Action(parent, name, toggle)
{
    setText(text);
    setMenuText(menuText);
    setShortcut(accel);
}

Action::~Action() = default;

void Action::setUsesTextLabel(bool on)
{
    d->usesTextLabel = on;
}

void Action::setTextPosition(Qt::ToolButtonStyle position)
{
    d->textPosition = position;
}

void Action::addTo(QWidget *container)
{
    if (container->actions().contains(this))
        return;
    container->addAction(this);
    if (auto *const menu = qobject_cast<QMenu *>(container))
        addedTo(int(menu->actions().size()) - 1, menu);
    else if (auto *const bar = qobject_cast<QToolBar *>(container))
        addedTo(bar->widgetForAction(this), bar);
}

void Action::addedTo(QWidget *actionWidget, QWidget *)
{
    auto *const button = qobject_cast<QToolButton *>(actionWidget);
    if (!button || toolbuttons.contains(button))
        return;
    connect(button, &QObject::destroyed, this, &Action::objectDestroyed);
    toolbuttons.append(button);
    button->setToolButtonStyle(d->usesTextLabel ? d->textPosition : Qt::ToolButtonIconOnly);
    button->setMinimumSize(24, 24);
}

void Action::addedTo(int, QMenu *menu)
{
    menus.append(menu);
}

void Action::objectDestroyed(QObject *object)
{
    toolbuttons.removeIf([object](const QObject *button) { return button == object; });
}

/// The tips follow text and shortcut until somebody sets others.
void Action::updateTips()
{
    QString tip = text();
    if (!shortcut().isEmpty())
        tip += QStringLiteral(" (%1)").arg(shortcut().toString(QKeySequence::NativeText));
    const bool mayTip = d->ownToolTip.isNull() || toolTip() == d->ownToolTip;
    const bool mayStatus = statusTip() == d->ownStatusTip;
    const QString previousTip = d->ownToolTip;
    d->ownToolTip = tip;
    d->ownStatusTip = text();
    if (mayTip && tip != previousTip)
        setToolTip(tip);
    if (mayStatus && statusTip() != d->ownStatusTip)
        setStatusTip(d->ownStatusTip);
}

} // namespace vesk
