#pragma once

#include <QString>

namespace vesk {

/// Message boxes over the main window. Their texts are shown as plain text, and
/// the boxes bear the object name "message".
class Message
{
public:
    /// One button "OK"; returns 0.
    static int information(const QString &caption, const QString &message);
    /// Buttons without a text are left out. Returns the number of the pressed
    /// one. Escape means \a escapeButton, or nothing if that is -1.
    static int information(const QString &caption, const QString &message,
                           const QString &button0Text, const QString &button1Text,
                           const QString &button2Text, int defaultButton, int escapeButton);

    /// The buttons are values of QMessageBox::StandardButton, 0 for none, and the
    /// pressed one is returned. A button can be combined with QMessageBox::Default
    /// and QMessageBox::Escape; without these the first is the default, and Escape
    /// means Cancel, else No, else the only button.
    static int warning(const QString &caption, const QString &message, int button0, int button1,
                       int button2);
    /// The same as information() with texts, with the sign of a warning.
    static int warning(const QString &caption, const QString &message, const QString &button0Text,
                       const QString &button1Text, const QString &button2Text, int defaultButton,
                       int escapeButton);
    /// One button \a buttonText, with the sign of a failure.
    static void critical(const QString &caption, const QString &message, const QString &buttonText);
};

} // namespace vesk
