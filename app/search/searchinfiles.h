#pragma once

#include "app/search/treesearch.h"

#include <QDialog>
#include <QStringList>

class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;
class QToolButton;

namespace vesk {

/// The dialog that walks a folder tree and reports each hit as a row for the
/// message list. It stays inside the click of its button until the search has ended
/// and lets the window go on meanwhile, so that the same button stops it.
class SearchInFiles : public QDialog
{
    Q_OBJECT
public:
    explicit SearchInFiles(QWidget *parent = nullptr, const QString &name = QString());

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
    /// Reports the hits in a file, or in all below a folder, for what the dialog asks
    /// for; returns at the end, or once the search was canceled.
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
    void createWidgets();
    void layOutWidgets();
    void saveHistory();
    void search(const TreeSearch::NextFile &files);

    QString projectRoot;
    QStringList projectFiles;
    /// The search under way shall end.
    bool canceled = false;
    /// From the press of the button to the end of its search, stopped or not.
    bool searching = false;
};

} // namespace vesk
