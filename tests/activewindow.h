#pragma once

#include <QTest>
#include <QWidget>

/// Waits until \a window has the keyboard. A window manager that has just started
/// may leave out the first window, so that it is asked again.
inline bool waitForActive(QWidget *window)
{
    for (int i = 0; i < 20; ++i) {
        window->activateWindow();
        if (QTest::qWaitForWindowActive(window, 500))
            return true;
    }
    return false;
}
