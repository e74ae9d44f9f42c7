#include "app/actions.h"

#include "app/mainwindow.h"

#include <QHash>
#include <QKeySequence>
#include <QPointer>
#include <QRegularExpression>
#include <QWidget>

namespace vesk {

namespace {

QHash<QString, QPointer<Action>> &registry()
{
    static QHash<QString, QPointer<Action>> actions;
    return actions;
}

} // namespace

Action *Actions::action(const QString &name)
{
    return registry().value(name);
}

Action *Actions::createAction(const QString &menuText, const QString &name, int accel,
                              QObject *object, const char *slot)
{
    static const QRegularExpression marks(QStringLiteral("[&.]"));
    const bool isToggled = QByteArrayView(slot).contains("bool");
    QWidget *const window = MainWindow::self();
    auto *const action = new Action(QString(menuText).remove(marks), menuText, QKeySequence(accel),
                                    window, name, isToggled);
    if (isToggled)
        QObject::connect(action, SIGNAL(toggled(bool)), object, slot);
    else
        QObject::connect(action, SIGNAL(triggered()), object, slot);
    // The shortcut of an action that stands in no widget would be dead.
    window->addAction(action);
    registry().insert(name, action);
    return action;
}

} // namespace vesk
