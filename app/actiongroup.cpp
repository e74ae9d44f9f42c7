#include "app/actiongroup.h"

#include "app/actions.h"

#include <QToolBar>

namespace vesk {

struct ActionGroup::Private
{
    /// An action, a group, or a separator if both are null. An entry whose
    /// object died is skipped.
    struct Member
    {
        enum class Kind
        {
            Action,
            Group,
            Separator
        };
        Kind kind = Kind::Separator;
        QPointer<Action> action;
        QPointer<ActionGroup> group;
    };

    template <typename Visit>
    void forEachMember(const Visit &visit) const
    {
        for (const Member &member : members) {
            if (member.action)
                visit(member.action.data());
            if (member.group)
                visit(member.group.data());
        }
    }

    QList<Member> members;
    QPointer<Action> selected;
    QString text;
    QString menuText;
    bool exclusive = false;
    bool dropDown = false;
    bool enabled = true;
    bool visible = true;
};

namespace {

void addSeparatorTo(QWidget *container)
{
    if (auto *const menu = qobject_cast<QMenu *>(container))
        menu->addSeparator();
    else if (auto *const bar = qobject_cast<QToolBar *>(container))
        bar->addSeparator();
}

} // namespace

ActionGroup::ActionGroup(QObject *parent, const QString &name) : ActionGroup(parent, name, false)
{}

ActionGroup::ActionGroup(QObject *parent, const QString &name, bool exclusive)
    : QObject(parent), d(std::make_unique<Private>())
{
    setObjectName(name);
    d->exclusive = exclusive;
}

ActionGroup::~ActionGroup() = default;

void ActionGroup::add(Action *action)
{
    for (const Private::Member &member : std::as_const(d->members)) {
        if (member.action == action)
            return;
    }
    d->members.append({Private::Member::Kind::Action, action, nullptr});
    if (!d->enabled)
        action->setEnabled(false);
    if (!d->visible)
        action->setVisible(false);
    // Always, because actions may be made toggles after they were added.
    connect(action, &QAction::toggled, this,
            [this, action](bool on) { memberToggled(action, on); });
    if (action->isChecked())
        memberToggled(action, true);
}

void ActionGroup::add(const QString &actionName)
{
    Action *const action = Actions::action(actionName);
    Q_ASSERT_X(action, "ActionGroup::add", qPrintable(actionName));
    add(action);
}

void ActionGroup::add(ActionGroup *group)
{
    for (const Private::Member &member : std::as_const(d->members)) {
        if (member.group == group)
            return;
    }
    d->members.append({Private::Member::Kind::Group, nullptr, group});
    if (!d->enabled)
        group->setEnabled(false);
    if (!d->visible)
        group->setVisible(false);
}

void ActionGroup::addSeparator()
{
    d->members.append(Private::Member());
}

QList<Action *> ActionGroup::actions() const
{
    QList<Action *> result;
    for (const Private::Member &member : std::as_const(d->members)) {
        if (member.action)
            result.append(member.action);
    }
    for (const Private::Member &member : std::as_const(d->members)) {
        if (member.group)
            result.append(member.group->actions());
    }
    return result;
}

uint ActionGroup::count() const
{
    return uint(actions().size());
}

void ActionGroup::addTo(QWidget *container) const
{
    if (!d->visible)
        return;
    for (const Private::Member &member : std::as_const(d->members)) {
        if (member.kind == Private::Member::Kind::Separator) {
            addSeparatorTo(container);
        } else if (member.action) {
            member.action->addTo(container);
        } else if (member.group && member.group->usesDropDown() && member.group->isVisible()) {
            auto *const submenu = new QMenu(member.group->menuText(), container);
            member.group->addTo(submenu);
            container->addAction(submenu->menuAction());
        } else if (member.group) {
            member.group->addTo(container);
        }
    }
}

QString ActionGroup::text() const
{
    return d->text;
}

void ActionGroup::setText(const QString &text)
{
    d->text = text;
}

QString ActionGroup::menuText() const
{
    return d->menuText;
}

void ActionGroup::setMenuText(const QString &text)
{
    d->menuText = text;
}

bool ActionGroup::isExclusive() const
{
    return d->exclusive;
}

void ActionGroup::setExclusive(bool on)
{
    d->exclusive = on;
}

bool ActionGroup::usesDropDown() const
{
    return d->dropDown;
}

void ActionGroup::setUsesDropDown(bool on)
{
    d->dropDown = on;
}

bool ActionGroup::isEnabled() const
{
    return d->enabled;
}

void ActionGroup::setEnabled(bool on)
{
    d->enabled = on;
    d->forEachMember([on](auto *member) { member->setEnabled(on); });
}

bool ActionGroup::isVisible() const
{
    return d->visible;
}

void ActionGroup::setVisible(bool on)
{
    d->visible = on;
    d->forEachMember([on](auto *member) { member->setVisible(on); });
}

void ActionGroup::memberToggled(Action *action, bool on)
{
    if (!d->exclusive)
        return;
    if (!on) {
        if (action == d->selected)
            action->setChecked(true);
        return;
    }
    if (action == d->selected)
        return;
    // Noted first: the one that goes off must not count as selected any more.
    Action *const previous = d->selected;
    d->selected = action;
    if (previous)
        previous->setChecked(false);
}

} // namespace vesk
