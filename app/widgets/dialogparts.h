#pragma once

#include <QString>

class QCheckBox;
class QComboBox;
class QDialog;
class QHBoxLayout;
class QLabel;
class QWidget;

namespace vesk {

/// What the dialogs are made of. Everything made belongs to the widget
/// that it is made for, and bears the given object name.
namespace DialogParts {

/// An editable list that neither completes what is typed nor keeps it by itself.
QComboBox *textCombo(QWidget *parent, const QString &name);
QCheckBox *option(QWidget *parent, const QString &name, const QString &text,
                  const QString &shortcut);
QLabel *label(QWidget *parent, const QString &name, const QString &text);
/// A label in bold on yellow paper for texts of any length, which it wraps; all but the
/// first dozen rows is left out.
QLabel *note(QWidget *parent, const QString &name, const QString &text);
/// "OK" and "Cancel" at the right end of a row.
QHBoxLayout *okAndCancel(QDialog *dialog);
/// Caption, name and size grip. The size is \a width by \a height, or more if the
/// content needs it: call it when the layout is complete.
void finish(QDialog *dialog, const QString &name, const QString &caption, int width, int height);

} // namespace DialogParts

} // namespace vesk
