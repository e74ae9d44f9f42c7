#pragma once

#include <QDialog>

class QLabel;
class QLineEdit;
class QPushButton;
class QTextEdit;
class QToolButton;

namespace vesk {

/// Asks what a new project is called and where it is to be. Folder and file name are
/// proposed from the name while it is typed, until the user changes them.
class NewProjectWizard : public QDialog
{
    Q_OBJECT
public:
    explicit NewProjectWizard(QWidget *parent = nullptr);

    QLabel *labelName;
    QLineEdit *lineName;
    QLabel *labelDirectory;
    QLineEdit *lineDirectory;
    QToolButton *selectDirectoryButton;
    QLabel *labelFilename;
    QLineEdit *lineFileName;
    QLabel *textLabel1;
    QTextEdit *textEditDescription;
    QPushButton *buttonOk;
    QPushButton *buttonCancel;

    /// What was proposed last.
    QString prevFileName;
    QString prevDirectory;

public slots:
    void textChanged();
    void projectNameChanged();
    void selectFolder();

private:
    void createWidgets();
    void layOutWidgets();
};

} // namespace vesk
