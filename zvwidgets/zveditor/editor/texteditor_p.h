#pragma once

#include "zvwidgets/zveditor/editor/linematcher.h"
#include "zvwidgets/zveditor/texteditor.h"

#include <QEvent>
#include <QListWidget>
#include <QPointer>
#include <QRect>
#include <QStringConverter>
#include <QStringList>

#include <climits>

class QKeyEvent;

namespace zvwidgets {

/// Ends the completion by the popup; posted by the editor to itself.
constexpr auto completionFinished = QEvent::Type(1001);

/// The lines and columns a search walks through.
struct SearchScope
{
    int firstLine = 0;
    int firstColumn = 0;
    int lastLine = 0;
    /// Where the lines after the first begin.
    int leftColumn = 0;
    /// Column at which matches must have ended; holds on every line of a box,
    /// otherwise on the last line.
    int rightColumn = INT_MAX;
    bool box = false;
    /// Of a box: the line where replaced text has moved its right side, and how far.
    int shiftedLine = -1;
    int shift = 0;

    int startColumn(int line) const { return line == firstLine ? firstColumn : leftColumn; }
    int endColumn(int line) const
    {
        if (box)
            return rightColumn + (line == shiftedLine ? shift : 0);
        return line == lastLine ? rightColumn : INT_MAX;
    }
};

/// The list of popup completion. Typed letters narrow the list and so must not
/// also move through it.
class CompletionList : public QListWidget
{
    Q_OBJECT
public:
    /// \a filter sees the events of the list as long as it is one, and not those
    /// of the bare widget that is left of it while it dies.
    CompletionList(QObject *filter, QWidget *parent);
    ~CompletionList() override;
    void fill(const QStringList &words);
    void keyboardSearch(const QString &) override {}

private:
    QPointer<QObject> eventSink;
};

struct TextEditor::Private
{
    TextEditor *self = nullptr;
    TextDocument *doc = nullptr;
    TextEditorManager *manager = nullptr;
    TextView *view = nullptr;
    QString path;
    QString error;
    QStringConverter::Encoding textCodec = QStringConverter::System;

    int viCompletionPos = 0;
    QStringList viCompletionWords;
    bool breakViCompletion = true;

    QString completionWord;
    QStringList completionGrep;
    QStringList completionWords;
    QPointer<CompletionList> completionPopup;

    /// What another edit, a cursor move or a selection changes.
    struct SearchState
    {
        bool operator==(const SearchState &other) const = default;

        QPoint cursor;
        QRect selection;
        unsigned edits = 0;
    };

    // The last search
    SearchTerms findTerms;
    bool findFromCursor = false;
    bool findInSelection = false;
    /// Where findInSelection is bound to: the selection when the search began, whose
    /// end goes along with replaced text.
    QRect selectionForFind;
    int shiftedLine = -1; ///< as in SearchScope
    int columnShift = 0;
    /// The match on the cursor's line that is selected; not found if it was replaced.
    LineMatcher::Hit found;
    SearchState leftBySearch;
    unsigned edits = 0; ///< steps of the document since they are counted
    bool countsEdits = false;
    SearchWatch searchWatch;

    /// Makes this editor's cursor the one the document's commands work at.
    void makeViewActive();
    void insertPasted(const QString &text);

    bool find();
    SearchScope searchScope() const;
    PatternBudget searchBudget(const int &line);
    SearchState present();
    bool isAtFound();
    void moveSearchedEnd(int line, int oldEnd, const QPoint &newEnd);
    void select(int line, int column, int length);

    QString wordAtCursor() const;
    /// Columns of the word at the cursor, \a end exclusive; false if there is none.
    bool wordRange(int *start, int *end) const;
    bool fillCompletionCycle();
    void showCandidate();
    void showPopup();
    QPoint popupPosition() const;
    bool filterPopupKey(const QKeyEvent *event);
    bool narrowPopup();
    void filterPopup(QEvent *event);
    void postFinish();
};

} // namespace zvwidgets
