#pragma once

#include <QDialog>
#include <QStringList>
#include <QTreeWidgetItem>

#include <memory>

class QPushButton;
class QTreeWidget;

namespace vesk {

class Project;

/// The widgets of the dialog.
class AddFilesDialogBase : public QDialog
{
    Q_OBJECT
public:
    explicit AddFilesDialogBase(QWidget *parent = nullptr);

    QPushButton *buttonSelectAll;
    QPushButton *buttonClearSelection;
    QPushButton *buttonAddExternalFiles;
    QTreeWidget *listViewFiles;
    QPushButton *buttonOk;
    QPushButton *buttonCancel;
};

/// A folder or a file that can be added.
class AddFilesDialogItem : public QTreeWidgetItem
{
public:
    enum class Kind
    {
        Folder,
        File
    };
    AddFilesDialogItem(Kind kind, const QString &name, const QString &path, int place);

    bool isDir;
    QString fileName;
    QString filePath;
    /// Its place among the entries of its kind in the folder.
    int sort_key;
};

/// Offers the files below the folder of the project that are not in it yet, as a tree
/// whose rows are chosen by being selected. A large folder is read on while the dialog
/// is shown, and can be left at any time.
class AddFilesDialog : public AddFilesDialogBase
{
    Q_OBJECT
public:
    explicit AddFilesDialog(const Project &project, QWidget *parent = nullptr);
    ~AddFilesDialog() override;

    /// Absolute paths that are not offered.
    QStringList filePaths;
    /// What was chosen, once the dialog was accepted.
    QStringList addedFilePaths;

    QStringList selectedFilePaths() const;
    /// Fits the column to the width of the list: long names are cut.
    void adjustContentSize();

public slots:
    void accept() override;
    void selectAll();
    void clearSelection();

private:
    void readOn(int patience);
    void readFolder(AddFilesDialogItem *folder);

    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace vesk
