#pragma once

#include "app/action.h"

#include <QObject>

#include <memory>

namespace vesk {

/// An ordered list of actions, separators and further groups, from which menus
/// and tool bars are filled. It owns none of the actions, and one action may
/// stand in several groups.
class ActionGroup : public QObject
{
    Q_OBJECT
public:
    /// A group that is not exclusive.
    explicit ActionGroup(QObject *parent, const QString &name = QString());
    ActionGroup(QObject *parent, const QString &name, bool exclusive);
    ~ActionGroup() override;

    /// Appends \a action; adding it twice is ignored. In a disabled or invisible
    /// group it becomes disabled or invisible.
    virtual void add(Action *action);
    /// Appends the action of that name, which must exist.
    virtual void add(const QString &actionName);
    /// Appends \a group, under the same rules as an action.
    virtual void add(ActionGroup *group);
    void addSeparator();

    /// Own actions first, then those of each sub-group in turn.
    QList<Action *> actions() const;
    /// Number of actions(): separators do not count.
    uint count() const;

    /// Appends all members to \a container, a menu or a tool bar. Sub-groups come
    /// inline, or as a submenu with the sub-group's menu text as title where it
    /// uses a drop-down. An invisible group adds nothing.
    void addTo(QWidget *container) const;

    QString text() const;
    void setText(const QString &text);
    QString menuText() const;
    void setMenuText(const QString &text);

    /// In an exclusive group, of its own toggle actions one at most is on, and
    /// the one that is on can only be switched off by another.
    bool isExclusive() const;
    void setExclusive(bool on);
    bool usesDropDown() const;
    void setUsesDropDown(bool on);
    bool isEnabled() const;
    /// Sets all members alike.
    void setEnabled(bool on);
    bool isVisible() const;
    /// Sets all members alike.
    void setVisible(bool on);

private:
    struct Private;

    void memberToggled(Action *action, bool on);

    const std::unique_ptr<Private> d;
};

} // namespace vesk
