#include "app/mainwindow.h"

#include <QPointer>
#include <QWidget>

namespace vesk {

namespace {

QPointer<QWidget> &current()
{
    static QPointer<QWidget> window;
    return window;
}

} // namespace

QWidget *MainWindow::self()
{
    return current();
}

void MainWindow::set(QWidget *window)
{
    current() = window;
}

} // namespace vesk
