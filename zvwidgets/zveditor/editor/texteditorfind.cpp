#include "qtundo/src/qtundo.h"
#include "zvwidgets/zveditor/document/selectionrect.h"
#include "zvwidgets/zveditor/editor/linematcher.h"
#include "zvwidgets/zveditor/editor/linereplacer.h"
#include "zvwidgets/zveditor/editor/texteditor_p.h"
#include "zvwidgets/zveditor/editorcursor.h"
#include "zvwidgets/zveditor/textdoc.h"
#include "zvwidgets/zveditor/texteditor.h"
#include "zvwidgets/zveditor/textline.h"
#include "zvwidgets/zveditor/textmanager.h"
#include "zvwidgets/zveditor/textview.h"

#include <QScopeGuard>
#include <QScopedValueRollback>

#include <algorithm>

namespace zvwidgets {

namespace {

constexpr QRect nothing(QPoint(0, 0), QPoint(0, 0));

/// What a search may cost that nobody watches: many seconds of the worst expression,
/// and many times of what the largest text needs of any other.
constexpr qint64 unwatchedSteps = qint64(1) << 32;

} // namespace

bool TextEditor::find(const QString &text, bool caseSensitive, bool wholeWord, bool fromCursor,
                      bool inSelection)
{
    const SearchTerms terms{text, SearchTerms::Kind::Text, caseSensitive, wholeWord};
    // What is selected now is only the last match, or gone if it was replaced.
    const bool goesOn = inSelection && d->findInSelection && fromCursor && terms == d->findTerms &&
                        d->present() == d->leftBySearch;
    if (!goesOn) {
        d->selectionForFind = d->view->selection();
        d->shiftedLine = -1;
    }
    d->findTerms = terms;
    d->findFromCursor = fromCursor;
    d->findInSelection = inSelection;
    return d->find();
}

bool TextEditor::findRegexp(const QString &pattern, bool caseSensitive, bool wildcard,
                            bool fromCursor)
{
    const auto kind = wildcard ? SearchTerms::Kind::Wildcard : SearchTerms::Kind::Expression;
    d->findTerms = {pattern, kind, caseSensitive, false};
    d->findFromCursor = fromCursor;
    d->findInSelection = false;
    return d->find();
}

bool TextEditor::findNext()
{
    d->findFromCursor = true;
    // Another edit or a move of the cursor took the selection away.
    if (d->present() != d->leftBySearch)
        d->selectionForFind = nothing;
    return d->find();
}

void TextEditor::setSearchWatch(const SearchWatch &watch)
{
    d->searchWatch = watch;
}

SearchScope TextEditor::Private::searchScope() const
{
    SearchScope scope;
    scope.lastLine = doc->lastLine();
    if (findFromCursor) {
        scope.firstLine = view->cursor()->line();
        scope.firstColumn = view->cursor()->column();
    }
    if (!findInSelection)
        return scope;
    scope.box = manager->fVerticalSelection;
    scope.shiftedLine = shiftedLine;
    scope.shift = columnShift;
    const QRect range = scope.box ? ordered(selectionForFind) : selectionForFind;
    if (scope.firstLine < range.top()) {
        scope.firstLine = range.top();
        scope.firstColumn = 0;
    }
    const bool hasLeft =
        scope.box ? scope.firstLine != shiftedLine : scope.firstLine == range.top();
    if (hasLeft)
        scope.firstColumn = std::max(scope.firstColumn, range.left());
    if (scope.box)
        scope.leftColumn = range.left();
    // The lines below the text must not become the selection's last one.
    if (range.bottom() <= scope.lastLine || scope.box)
        scope.rightColumn = range.right();
    scope.lastLine = std::min(scope.lastLine, range.bottom());
    return scope;
}

/// The end of the selection that is searched goes along when the text up to \a oldEnd
/// of \a line becomes one that ends at \a newEnd.
void TextEditor::Private::moveSearchedEnd(int line, int oldEnd, const QPoint &newEnd)
{
    const int columns = newEnd.x() - oldEnd;
    const int lines = newEnd.y() - line;
    QRect &range = selectionForFind;
    if (manager->fVerticalSelection) {
        range = ordered(range);
        range.setBottom(range.bottom() + lines);
        columnShift = columns + (line == shiftedLine ? columnShift : 0);
        shiftedLine = newEnd.y();
        return;
    }
    if (line == range.bottom())
        range.setRight(range.right() + columns);
    range.setBottom(range.bottom() + lines);
}

/// Where things are; from that another edit, cursor move or selection is told.
TextEditor::Private::SearchState TextEditor::Private::present()
{
    if (!countsEdits) {
        countsEdits = true;
        connect(doc->undoStack(), &QtUndoStack::commandExecuted, self, [this] { ++edits; });
    }
    return {view->cursor()->pos(), view->selection(), edits};
}

/// Gives the watch a look at the line that \a line is when it is called.
PatternBudget TextEditor::Private::searchBudget(const int &line)
{
    if (!searchWatch)
        return PatternBudget(unwatchedSteps);
    return PatternBudget(PatternBudget::unlimited,
                         [this, &line] { return searchWatch(line, doc->lastLine() + 1); });
}

bool TextEditor::Private::find()
{
    view->clearSelection();
    found = LineMatcher::Hit();
    const SearchScope scope = searchScope();
    int line = scope.firstLine;
    PatternBudget budget = searchBudget(line);
    LineMatcher matcher(findTerms, &budget);
    // A match of nothing where the cursor stands would be found for ever.
    EmptyAtStart empty = findFromCursor ? EmptyAtStart::IsPassed : EmptyAtStart::Counts;
    for (; line <= scope.lastLine && !budget.isSpent(); ++line) {
        matcher.setLine(*doc->lineOf(line));
        const LineMatcher::Hit hit = matcher.find(scope.startColumn(line), empty);
        empty = EmptyAtStart::Counts;
        if (hit.isFound() && hit.end() <= scope.endColumn(line)) {
            select(line, hit.column, hit.length);
            found = hit;
            break;
        }
    }
    view->updateView(false);
    leftBySearch = present();
    return found.isFound();
}

void TextEditor::Private::select(int line, int column, int length)
{
    self->reveal(line);
    view->setCursorPosition(line, column + length, false);
    view->setSelection(QPoint(column, line), QPoint(column + length, line));
}

bool TextEditor::Private::isAtFound()
{
    return found.isFound() && present() == leftBySearch;
}

void TextEditor::replaceFound(const QString &text)
{
    if (isReadOnly())
        return;
    d->makeViewActive();
    if (!d->isAtFound()) {
        d->doc->selectionCommand(SelectionRemove);
        // In overwrite mode the new text would eat what follows.
        const QScopedValueRollback insertMode(d->manager->fOvr, false);
        d->doc->insert(text, 0, 0);
        return;
    }
    const int line = this->line();
    const LineMatcher::Hit hit = d->found;
    d->view->clearSelection();
    LineReplacer replacer(d->doc, text, !d->manager->fSaveTab);
    d->doc->macroBegin(QStringLiteral("replace"), line, hit.column);
    replacer.replace(line, hit);
    d->doc->macroEnd(replacer.place().y(), replacer.place().x());
    if (d->findInSelection)
        d->moveSearchedEnd(line, hit.end(), replacer.place());
    d->found = LineMatcher::Hit();
    d->leftBySearch = d->present();
}

int TextEditor::replaceRest(const QString &text)
{
    if (isReadOnly() || !d->isAtFound())
        return 0;
    d->makeViewActive();
    d->findFromCursor = true;
    SearchScope scope = d->searchScope();
    int line = this->line();
    int column = d->found.column;
    d->view->clearSelection();
    PatternBudget budget = d->searchBudget(line);
    LineMatcher matcher(d->findTerms, &budget);
    LineReplacer replacer(d->doc, text, !d->manager->fSaveTab);
    // The watch may run the event loop, and what a view knows of the lines is old
    // until the macro has ended.
    setUpdatesEnabled(false);
    const auto paintsAgain = qScopeGuard([this] { setUpdatesEnabled(true); });
    d->doc->macroBegin(QStringLiteral("replace all"), line, column);
    while (line <= scope.lastLine && !budget.isSpent()) {
        const int taken =
            replacer.replaceIn(line, &matcher, column, scope.endColumn(line), EmptyAtStart::Counts);
        line += taken;
        scope.lastLine += taken - 1;
        column = scope.leftColumn;
    }
    d->doc->macroEnd(replacer.place().y(), replacer.place().x());
    reveal(replacer.place().y());
    d->found = LineMatcher::Hit();
    return replacer.count();
}

int TextEditor::replaceAll(const QString &text, const QString &replaceText, bool caseSensitive,
                           bool wholeWord, bool inSelection)
{
    const bool isFound = find(text, caseSensitive, wholeWord, false, inSelection);
    const int count = isFound ? replaceRest(replaceText) : 0;
    d->view->clearSelection();
    return count;
}

} // namespace zvwidgets
