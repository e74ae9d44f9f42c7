#pragma once

#include <QObject>

#include <memory>

namespace vesk {

/// Owns the search commands on the current editor: their actions, the dialogs and
/// what the user is told. The matching is the editor's.
///
/// `main` makes the first call of self(), after the editors exist; the object is
/// a child of the shell.
class SearchManager : public QObject
{
    Q_OBJECT
public:
    ~SearchManager() override;

    static SearchManager *self();

public slots:
    void findText();
    /// Repeats the last search for a text from the cursor.
    void findNext();
    void replace();
    void goToLine();
    /// Shows the dialog of the search in a folder tree and empties the message
    /// list for its report.
    void findInFiles();

private:
    SearchManager();

    void ensureFindDialog();
    void tellNotFound();

    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace vesk
