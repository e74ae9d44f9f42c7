#pragma once

#include "app/action.h"
#include "app/actiongroup.h"

namespace vesk {

/// The registry of all commands by name. The main window owns the actions; a dead
/// one is gone from here too.
class Actions
{
public:
    /// Null for an unknown name.
    static Action *action(const QString &name);

    /// Makes and registers a command that lives as long as the main window, which must exist.
    ///
    /// \a accel is a key with modifiers as one number, such as
    /// `(Qt::CTRL | Qt::Key_Q).toCombined()`; 0 means none. \a slot is the text of
    /// SLOT(). If it contains "bool" the action is a toggle whose toggled(bool)
    /// goes to the slot, otherwise its triggered() does.
    static Action *createAction(const QString &menuText, const QString &name, int accel,
                                QObject *object, const char *slot);
};

} // namespace vesk
