#pragma once

#include <QString>
#include <QStringList>

class QWidget;

namespace vesk {

/// The toolkit's own file dialogs over the main window, with the icons of the
/// file types. They bear the object name "fileDialog" if none is given. \a filter
/// holds filters separated by ";;".
namespace FileDialog {

/// Existing files, as many as the user likes; empty if the dialog is rejected.
QStringList openFileNames(const QString &caption, const QString &dir, const QString &filter,
                          const QString &name = QString());
/// One existing file; empty if the dialog is rejected.
QString openFileName(const QString &caption, const QString &dir, const QString &filter,
                     const QString &name = QString());

/// A name for a file to write. It may exist: asking before it is replaced is the
/// caller's. Empty if the dialog is rejected. \a selectedFilter, where given,
/// gets the filter in use.
QString saveFileName(const QString &caption, const QString &dir, const QString &filter,
                     QString *selectedFilter = nullptr);

/// An existing folder; empty if the dialog is rejected. Over \a parent.
QString existingDirectory(QWidget *parent, const QString &caption, const QString &dir);

} // namespace FileDialog

} // namespace vesk
