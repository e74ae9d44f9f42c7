#pragma once

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

    int startColumn(int line) const { return line == firstLine ? firstColumn : leftColumn; }
    int endColumn(int line) const { return box || line == lastLine ? rightColumn : INT_MAX; }
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

    QString findText;
    bool findCaseSensitive = false;
    bool findWholeWord = false;
    bool findFromCursor = false;
    bool findInSelection = false;
    QRect selectionForFind;
    /// What the last successful search selected.
    QRect lastFound;

    /// Makes this editor's cursor the one the document's commands work at.
    void makeViewActive();
    void insertPasted(const QString &text);

    bool find();
    SearchScope searchScope() const;
    void select(int line, int column, int length);
    void keepSearchedSelection(const QString &text, bool caseSensitive, bool wholeWord,
                               bool fromCursor, bool inSelection);

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
