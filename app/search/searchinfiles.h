#pragma once

#include <QDialog>
#include <QElapsedTimer>
#include <QStringList>

#include <memory>

class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;
class QToolButton;

namespace vesk {

class FileSearch;

/// The dialog that walks a folder tree and reports each hit as a row for the
/// message list. It searches inside the click of its button and lets the window
/// go on meanwhile, so that the same button stops it.
class SearchInFiles : public QDialog
{
    Q_OBJECT
public:
    explicit SearchInFiles(QWidget *parent = nullptr, const QString &name = QString());
    ~SearchInFiles() override;

    QLabel *TextLabel2;
    QComboBox *comboSearch;
    QLabel *replaceLabel;
    QComboBox *comboReplace;
    QLabel *TextLabel1;
    QComboBox *comboDirectory;
    QToolButton *buttonDirectory;
    QLabel *TextLabel3;
    QComboBox *comboPattern;
    QCheckBox *checkWholeWord;
    QCheckBox *checkCaseSensetive;
    QCheckBox *checkSearchInProject;
    QCheckBox *checkRegExp;
    QPushButton *buttonSearch;
    QPushButton *buttonCancel;
    QLabel *labelProcessing;

public slots:
    void init();
    void cancelPressed();
    void processFile(const QString &fname);
    void processDirectory(const QString &path);
    /// Starts the search, or stops the one that runs.
    void searchPressed();
    void searchStringChanged();
    void selectDirectory();
    /// Keeps the files of a project; the walk doesn't ask for them.
    void setProjectFiles(const QString &root, const QStringList &files);
    void reject() override;

signals:
    /// A row of the report; \a line counts from 1.
    void newEntry(const QString &text, int line, const QString &fileName);

private:
    struct Private;

    void createWidgets();
    void layOutWidgets();
    void saveHistory();
    /// Lets the window live now and then; false once the search was canceled.
    bool goOn();

    QString projectRoot;
    QStringList projectFiles;
    bool canceled = false;
    bool searching = false;
    const std::unique_ptr<Private> d;
};

} // namespace vesk
