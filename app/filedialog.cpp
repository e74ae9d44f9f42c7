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

} // namespace

QStringList FileDialog::openFileNames(const QString &caption, const QString &dir,
                                      const QString &filter)
{
    QFileDialog dialog(MainWindow::self(), caption, dir);
    prepare(dialog, filter);
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    dialog.setFileMode(QFileDialog::ExistingFiles);
    if (dialog.exec() != QDialog::Accepted)
        return {};
    return dialog.selectedFiles();
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
