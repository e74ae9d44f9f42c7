#pragma once

#include <QApplication>
#include <QTest>
#include <QWidget>

/// Shows \a window and makes it the active one, with a window manager or
/// without. One that is just starting may miss the first request to map a
/// window, hence the second try. False if the window didn't come.
[[nodiscard]] inline bool showActive(QWidget *window)
{
    constexpr int patience = 1000; // ms
    window->show();
    if (!QTest::qWaitForWindowExposed(window, patience)) {
        window->hide();
        window->show();
        if (!QTest::qWaitForWindowExposed(window))
            return false;
    }
    QApplication::setActiveWindow(window);
    return QTest::qWaitFor([window] { return window->isActiveWindow(); });
}
