#pragma once

#include <QList>
#include <QObject>

#include <memory>

namespace zvwidgets {

class TextDocument;

/// One fold of a saved state, both lines inclusive.
struct FolderInfo
{
    bool isOpened = true;
    int firstLine = 0;
    int lastLine = 0;
};

using FoldersState = QList<FolderInfo>;

/// The folds of one document, made by hand. They exist only as fields of the
/// lines, so that editing moves them without any bookkeeping. Folds nest: the
/// level of a line, the number of folds around it, rises from one line to the
/// next only at a fold's first line. A closed fold hides all its lines but the
/// first. Child of the document. Line numbers outside the document are
/// ignored, or answered with false or -1.
class TextFolding : public QObject
{
    Q_OBJECT
public:
    /// \a doc becomes the parent.
    explicit TextFolding(TextDocument *doc);
    ~TextFolding() override;

    /// Whether a fold ends on \a line. Never for line 0.
    bool isLastLineOfFold(int line) const;
    /// First line of the innermost fold around \a line; -1 if there is none, or
    /// if that fold begins together with an inner one that \a line is not in.
    int findFirstFoldLine(int line) const;
    /// The first line from \a line on that no closed fold hides; the number
    /// behind the last line if there is none. Cheap whatever is hidden.
    int visibleLineFrom(int line) const;
    /// The same upwards; 0 if there is none.
    int visibleLineUpTo(int line) const;
    /// To be told when a line came in before \a line, which is a \a count of 1, or
    /// when line \a line went, which is a count of -1.
    void linesMoved(int line, int count);
    /// To be told when \a line, which shows, is about to go; removes every fold that
    /// begins there. settle() has to follow.
    void lineWillGo(int line);
    /// To be told when all lines were exchanged for lines without folds.
    void linesReplaced();
    /// To be called at the end of a macro, in which lines may be behind: a macro of
    /// many edits in closed folds would pass over all lines at each. False if there
    /// was nothing to do, otherwise updateViews() and repaintViews() have to follow.
    bool settle();
    void repaintViews() const;
    /// Recomputes which lines the closed folds hide and repaints all views.
    void updateLinesVisibility();

    /// All folds, each after the folds inside it.
    FoldersState foldersState() const;
    /// Replaces all folds. An entry that does not fit is clipped to the
    /// document, or left out if nothing remains of it or if it crosses another.
    void setFolderstState(const QList<FolderInfo> &list);
    /// Appends to \a foldersState the fold of level \a parentLevel + 1 that
    /// begins on \a startLine, after all folds inside it. Returns its last line.
    int subFolders(int startLine, int parentLevel, FoldersState &foldersState) const;

public slots:
    /// Makes a closed fold over both lines and all between. False if it has
    /// less than two lines or would cross another fold.
    bool createFold(int firstLine, int lastLine);
    /// Removes the innermost fold around \a line. Its text stays.
    void removeFold(int line);
    void openFold(int line);
    /// Opens the fold as well, which is meant: toggleFold() closes.
    void closeFold(int line);
    void toggleFold(int line);
    void clearAllFolds();
    /// Opens whatever hides \a line, and a closed fold that begins on it. Costs
    /// nothing if there is nothing to open.
    void ensureLineVisible(int line);

private:
    void update() const;

    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace zvwidgets
