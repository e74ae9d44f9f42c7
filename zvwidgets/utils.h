#pragma once

#include <QString>

class QWidget;

namespace zvwidgets {

/// Stateless helpers of the library that the application shares.
class Utils
{
public:
    /// \a size in bytes. A value from 1000 up to below 1024 of a unit above bytes
    /// gives the unit alone: list columns are laid out for that.
    static QString humanReadableSize(quint64 size);

    /// The main window that is shown, null if there is none.
    static QWidget *mainWindow();
};

} // namespace zvwidgets
