#include "app/filedialog.h"

#include "app/filetype.h"
#include "app/mainwindow.h"

#include <QFileDialog>

namespace vesk {

namespace {

void prepare(QFileDialog &dialog, const QString &filter)
{
    dialog.setObjectName(QStringLiteral("fileDialog"));
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    dialog.setIconProvider(FileTypeManager::self()->fileIconProvider());
    dialog.setNameFilters(filter.split(QStringLiteral(";;"), Qt::SkipEmptyParts));
}

QStringList chooseExisting(QFileDialog::FileMode mode, const QString &caption, const QString &dir,
                           const QString &filter, const QString &name)
{
    QFileDialog dialog(MainWindow::self(), caption, dir);
    prepare(dialog, filter);
    if (!name.isEmpty())
        dialog.setObjectName(name);
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    dialog.setFileMode(mode);
    return dialog.exec() == QDialog::Accepted ? dialog.selectedFiles() : QStringList();
}

} // namespace

QStringList FileDialog::openFileNames(const QString &caption, const QString &dir,
                                      const QString &filter, const QString &name)
{
    return chooseExisting(QFileDialog::ExistingFiles, caption, dir, filter, name);
}

QString FileDialog::openFileName(const QString &caption, const QString &dir, const QString &filter,
                                 const QString &name)
{
    return chooseExisting(QFileDialog::ExistingFile, caption, dir, filter, name).value(0);
}

QString FileDialog::saveFileName(const QString &caption, const QString &dir, const QString &filter,
                                 QString *selectedFilter)
{
    QFileDialog dialog(MainWindow::self(), caption, dir);
    prepare(dialog, filter);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    // The caller asks, and after it has added an ending to the name.
    dialog.setOption(QFileDialog::DontConfirmOverwrite);
    if (dialog.exec() != QDialog::Accepted)
        return {};
    if (selectedFilter)
        *selectedFilter = dialog.selectedNameFilter();
    return dialog.selectedFiles().value(0);
}

QString FileDialog::existingDirectory(QWidget *parent, const QString &caption, const QString &dir)
{
    QFileDialog dialog(parent, caption, dir);
    prepare(dialog, QString());
    dialog.setFileMode(QFileDialog::Directory);
    dialog.setOption(QFileDialog::ShowDirsOnly);
    return dialog.exec() == QDialog::Accepted ? dialog.selectedFiles().value(0) : QString();
}

} // namespace vesk
