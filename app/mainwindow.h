#pragma once

class QWidget;

namespace vesk {

/// The window over which dialogs and messages open and which owns the actions. The
/// shell sets it; what lies below the shell knows no more of it than this.
namespace MainWindow {

/// Null before there is one and after it is gone.
QWidget *self();
/// \a window is not owned.
void set(QWidget *window);

} // namespace MainWindow

} // namespace vesk
