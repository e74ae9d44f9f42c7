#include "zvwidgets/zveditor/editorcursor.h"

#include "zvwidgets/zveditor/pattern/columns.h"
#include "zvwidgets/zveditor/pattern/words.h"
#include "zvwidgets/zveditor/textdoc.h"
#include "zvwidgets/zveditor/texteditor.h"
#include "zvwidgets/zveditor/textfolding.h"
#include "zvwidgets/zveditor/textline.h"
#include "zvwidgets/zveditor/textmanager.h"
#include "zvwidgets/zveditor/textview.h"
#include "zvwidgets/zveditor/view/typedtext.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QStyleHints>
#include <QTimerEvent>

#include <algorithm>

namespace zvwidgets {

namespace {

/// Moves from line to line keep the column that they want to return to.
bool isVertical(EditorCursor::CursorAction action)
{
    return action == EditorCursor::MoveUp || action == EditorCursor::MoveDown ||
           action == EditorCursor::MovePgUp || action == EditorCursor::MovePgDown;
}

/// First column from \a column on that is not of the kind \a isWord.
int skipForward(QStringView text, int column, bool isWord)
{
    const int length = int(text.size());
    while (column < length && isStepCharacter(text[column]) == isWord)
        ++column;
    return column;
}

/// Start of the run of the kind \a isWord that ends before \a column.
int skipBackward(QStringView text, int column, bool isWord)
{
    while (column > 0 && isStepCharacter(text[column - 1]) == isWord)
        --column;
    return column;
}

/// Where the cursor is, or where a move takes it.
struct Place
{
    int line;
    int column;
};

} // namespace

struct EditorCursor::Private
{
    TextView *view = nullptr;
    TextEditor *editor = nullptr;
    TextDocument *document = nullptr;
    TextEditorManager *manager = nullptr;

    int line = 0;
    int column = 0;
    int wantingColumn = 0;
    int stack = 0;
    int timer = 0;
    bool active = false;
    bool visible = false;
    int prev_line = 0;
    int prev_column = 0;
    QRect shape;

    const QString &textOf(int n) const { return *document->lineOf(n); }
    int lengthOf(int n) const { return int(textOf(n).length()); }
    int clampedLine(int n) const { return std::clamp(n, 0, document->lastLine()); }
    /// Typing between the two halves of a character would tear it apart.
    int wholeColumn(int n, int col) const { return splitsPair(textOf(n), col) ? col - 1 : col; }
    void makeViewActive();
    int column2wanted(int n, int col) const;
    int wanted2column(int n, int wanted) const;
    Place wordBackward(const EditorCursor *cursor, Place from) const;
    Place wordForward(const EditorCursor *cursor, Place from) const;
    Place backward(const EditorCursor *cursor, Place from) const;
    Place forward(const EditorCursor *cursor, Place from) const;
    Place lineStart(Place from) const;
    Place endOf(int n) const { return {n, lengthOf(n)}; }
    Place wantedPlace(int n) const;
    Place movedBy(const EditorCursor *cursor, CursorAction action, Place from) const;
    void killTimer(EditorCursor *cursor);
    void hide(EditorCursor *cursor);
    bool runNavigationKey(EditorCursor *cursor, const QKeyEvent *event);
    bool runEditKey(const QKeyEvent *event);
    bool runClipboardKey(const QKeyEvent *event);
    void insertTyped(int atLine, int atColumn, const QString &text);
};

/// Tabs count as a fixed number of columns here, not as a step to the next
/// tab stop; both directions agree on that.
int EditorCursor::Private::column2wanted(int n, int col) const
{
    return col + document->tabsBefore(n, col) * (document->spacesInTab() - 1);
}

int EditorCursor::Private::wanted2column(int n, int wanted) const
{
    // The first column that is not below the wanted one; what is left of it only
    // grows along the line.
    int low = 0;
    int high = lengthOf(n);
    while (low < high) {
        const int middle = low + (high - low) / 2;
        if (column2wanted(n, middle) < wanted)
            low = middle + 1;
        else
            high = middle;
    }
    return low;
}

Place EditorCursor::Private::backward(const EditorCursor *cursor, Place from) const
{
    if (manager->fCursorWrap && from.column == 0 && from.line != 0)
        return endOf(cursor->prevVisibleLine(from.line));
    return {from.line, wholeColumn(from.line, std::max(from.column - 1, 0))};
}

Place EditorCursor::Private::forward(const EditorCursor *cursor, Place from) const
{
    if (manager->fCursorWrap && from.column >= lengthOf(from.line)) {
        if (from.line < document->lastLine())
            return {cursor->nextVisibleLine(from.line), 0};
        return from;
    }
    const int next = from.column + 1;
    return {from.line, splitsPair(textOf(from.line), next) ? next + 1 : next};
}

/// To the start of the word before the cursor, passing what is no word
/// between; from after the line's end to that end.
Place EditorCursor::Private::wordBackward(const EditorCursor *cursor, Place from) const
{
    if (from.column == 0)
        return from.line != 0 ? endOf(cursor->prevVisibleLine(from.line)) : from;
    const QStringView text = textOf(from.line);
    if (from.column > text.size())
        return endOf(from.line);
    const int wordEnd = skipBackward(text, from.column, false);
    return {from.line, skipBackward(text, wordEnd, true)};
}

Place EditorCursor::Private::wordForward(const EditorCursor *cursor, Place from) const
{
    const QStringView text = textOf(from.line);
    if (from.column < text.size()) {
        const int wordEnd = skipForward(text, from.column, true);
        return {from.line, skipForward(text, wordEnd, false)};
    }
    if (from.line != document->lastLine())
        return {cursor->nextVisibleLine(from.line), 0};
    return from;
}

Place EditorCursor::Private::lineStart(Place from) const
{
    const int first = document->lineOf(from.line)->firstChar();
    const bool isSmart = first != from.column && manager->fSmartHome;
    return {from.line, isSmart ? std::max(first, 0) : 0};
}

/// Where a vertical move to line \a n ends; never after the end of the line.
Place EditorCursor::Private::wantedPlace(int n) const
{
    const int length = lengthOf(n);
    if (wantingColumn < column2wanted(n, length))
        return {n, wanted2column(n, wantingColumn)};
    return {n, length};
}

void EditorCursor::Private::killTimer(EditorCursor *cursor)
{
    if (timer != 0)
        cursor->killTimer(timer);
    timer = 0;
}

void EditorCursor::Private::hide(EditorCursor *cursor)
{
    if (!active)
        return;
    killTimer(cursor);
    if (!visible)
        return;
    visible = false;
    view->update(shape);
}

EditorCursor::EditorCursor(TextView *view) : QObject(view), d(std::make_unique<Private>())
{
    d->view = view;
    d->editor = view->editor();
    d->manager = view->manager();
    d->document = view->document();
}

EditorCursor::~EditorCursor() = default;

void EditorCursor::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Shift)
        return;
    d->makeViewActive();
    if (d->runNavigationKey(this, event) || d->runEditKey(event) || d->runClipboardKey(event))
        return;
    if (!isTypedText(event)) {
        event->ignore();
        return;
    }
    typeText(event->text());
}

bool EditorCursor::Private::runNavigationKey(EditorCursor *cursor, const QKeyEvent *event)
{
    struct Key
    {
        int key;
        CursorAction plain;
        CursorAction ctrl;
    };
    static constexpr Key keys[] = {
        {Qt::Key_Home, MoveLineStart, MoveHome},
        {Qt::Key_End, MoveLineEnd, MoveEnd},
        {Qt::Key_Left, MoveBackward, MoveWordBackward},
        {Qt::Key_Right, MoveForward, MoveWordForward},
        {Qt::Key_Up, MoveUp, MovePgUp},
        {Qt::Key_Down, MoveDown, MovePgDown},
        {Qt::Key_PageUp, MovePgUp, MovePgUp},
        {Qt::Key_PageDown, MovePgDown, MovePgDown},
    };
    const auto *const found =
        std::find_if(std::begin(keys), std::end(keys),
                     [event](const Key &candidate) { return candidate.key == event->key(); });
    if (found == std::end(keys))
        return false;
    const bool ctrl = event->modifiers().testFlag(Qt::ControlModifier);
    const bool shift = event->modifiers().testFlag(Qt::ShiftModifier);
    cursor->move(ctrl ? found->ctrl : found->plain, shift);
    return true;
}

bool EditorCursor::Private::runEditKey(const QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Escape:
        view->clearSelection();
        return true;
    case Qt::Key_Tab: {
        const QRect selected = view->selection();
        if (!view->hasSelection() || selected.top() == selected.bottom())
            return false;
        document->indent();
        return true;
    }
    case Qt::Key_Backtab:
        document->unindent();
        return true;
    case Qt::Key_Backspace:
        if (view->hasSelection())
            document->selectionCommand(SelectionRemove);
        else
            document->backspace(0, 0);
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        document->insertLineBreak(0, 0);
        return true;
    case Qt::Key_Delete:
        editor->del();
        return true;
    default:
        return false;
    }
}

bool EditorCursor::Private::runClipboardKey(const QKeyEvent *event)
{
    const bool ctrl = event->modifiers().testFlag(Qt::ControlModifier);
    const bool shift = event->modifiers().testFlag(Qt::ShiftModifier);
    if (event->key() == Qt::Key_Insert) {
        if (ctrl == shift)
            manager->setOverwriteMode(!manager->overwriteMode());
        else if (ctrl)
            editor->copy();
        else
            editor->paste();
        return true;
    }
    if (!ctrl)
        return false;
    switch (event->key()) {
    case Qt::Key_C:
        editor->copy();
        return true;
    case Qt::Key_V:
        editor->paste();
        return true;
    case Qt::Key_X:
        editor->cut();
        return true;
    default:
        return false;
    }
}

void EditorCursor::typeText(const QString &text)
{
    if (text.isEmpty() || d->document->isReadOnly())
        return;
    d->makeViewActive();
    d->document->selectionCommand(SelectionRemove);
    d->insertTyped(line(), d->column, text);
}

/// The document's commands work at the cursor of its active view.
void EditorCursor::Private::makeViewActive()
{
    document->setActiveView(view);
}

void EditorCursor::Private::insertTyped(int atLine, int atColumn, const QString &text)
{
    if (text.contains(u'\t') || text.contains(u'\n')) {
        document->insert(text, 0, 0);
        return;
    }
    if (!manager->overwriteMode()) {
        document->cmdInsert(atLine, atColumn, text);
        return;
    }
    const int length = splitsPair(textOf(atLine), atColumn + 1) ? 2 : 1;
    document->cmdReplace(atLine, atColumn, length, text);
}

Place EditorCursor::Private::movedBy(const EditorCursor *cursor, CursorAction action,
                                     Place from) const
{
    const int page = view->height() / std::max(view->lineHeight(), 1);
    const int lastLine = document->lastLine();
    switch (action) {
    case MoveBackward:
        return backward(cursor, from);
    case MoveForward:
        return forward(cursor, from);
    case MoveWordBackward:
        return wordBackward(cursor, from);
    case MoveWordForward:
        return wordForward(cursor, from);
    case MoveUp:
        return wantedPlace(cursor->prevVisibleLine(from.line));
    case MoveDown:
        return wantedPlace(cursor->nextVisibleLine(from.line));
    case MoveLineStart:
        return lineStart(from);
    case MoveLineEnd:
        return endOf(from.line);
    case MoveHome:
        return {0, 0};
    case MoveEnd:
        return endOf(lastLine);
    case MovePgUp:
        return wantedPlace(std::max(from.line - page, 0));
    case MovePgDown:
        return wantedPlace(std::min(from.line + page, lastLine));
    }
    return from;
}

void EditorCursor::move(CursorAction action, bool select)
{
    const Place to = d->movedBy(this, action, {line(), d->column});
    const int newColumn = d->wholeColumn(to.line, to.column);
    if (!isVertical(action))
        d->wantingColumn = d->column2wanted(to.line, newColumn);
    // Takes the present place as the anchor of a new selection.
    d->view->setCursorPositionInternal(to.line, newColumn, select);
    set(to.line, newColumn, true);
}

void EditorCursor::set(int line, int column, bool update)
{
    d->prev_line = d->line;
    d->prev_column = d->column;
    d->column = std::max(d->column, 0);
    d->line = d->clampedLine(d->line);
    if (update)
        setEnabled(false);
    d->column = std::max(column, 0);
    d->line = d->clampedLine(line);
    d->column = d->wholeColumn(d->line, d->column);
    if (update) {
        d->view->ensureCursorVisible();
        setEnabled(true);
    }
    if (d->line == d->prev_line && d->column == d->prev_column)
        return;
    emit changePosition(d->line, d->column);
    d->editor->notifyChange(TextEditor::CursorPosition);
}

void EditorCursor::setWantedColumn(int column)
{
    d->wantingColumn = d->column2wanted(d->clampedLine(d->line), column);
}

int EditorCursor::line() const
{
    // Another view of the document may have removed the lines at the end.
    return d->clampedLine(d->line);
}

int EditorCursor::column() const
{
    return d->column;
}

QPoint EditorCursor::pos() const
{
    return {d->column, line()};
}

bool EditorCursor::isEnabled() const
{
    return d->visible;
}

void EditorCursor::setEnabled(bool enabled)
{
    if (!enabled) {
        ++d->stack;
        d->hide(this);
        return;
    }
    d->stack = std::max(d->stack - 1, 0);
    if (d->stack > 0) {
        d->hide(this);
        return;
    }
    if (!d->active)
        return;
    d->visible = true;
    d->killTimer(this);
    paint();
    // A flash time of 0 is the user's wish for a steady cursor.
    const int halfPeriod = QApplication::cursorFlashTime() / 2;
    if (halfPeriod > 0)
        d->timer = startTimer(halfPeriod);
}

void EditorCursor::activate()
{
    if (d->active)
        return;
    d->active = true;
    setEnabled(true);
}

void EditorCursor::deactivate()
{
    if (!d->active)
        return;
    setEnabled(false);
    d->active = false;
}

void EditorCursor::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != d->timer)
        return;
    d->visible = !d->visible;
    // Whatever moves the text hides and shows the cursor, so the place holds.
    d->view->update(d->shape);
}

void EditorCursor::paint()
{
    d->column = std::max(d->column, 0);
    d->line = d->clampedLine(d->line);
    d->view->updateLinesList();
    const QPoint p = d->view->docPosToScreen(pos());
    const int x = p.x() - d->view->contentsX();
    const int y = p.y() - d->view->contentsY();
    const int height = d->view->lineHeight() - 1;
    d->view->update(d->shape);
    d->shape = QRect(x, y, 5, height);
    d->view->update(d->shape);
}

QRect EditorCursor::shape() const
{
    return d->shape;
}

/// An upright stroke with serifs. The parts must not overlap: inverting twice
/// would leave a hole.
void EditorCursor::draw(QPainter &painter) const
{
    if (!d->visible)
        return;
    const QRect &s = d->shape;
    painter.save();
    painter.setCompositionMode(QPainter::RasterOp_SourceXorDestination);
    painter.fillRect(s.x(), s.y(), s.width(), 1, Qt::white);
    painter.fillRect(s.x(), s.bottom(), s.width(), 1, Qt::white);
    painter.fillRect(s.x() + 2, s.y() + 1, 1, s.height() - 2, Qt::white);
    painter.restore();
}

int EditorCursor::nextVisibleLine(int line) const
{
    const int last = d->document->lastLine();
    return line < last ? std::min(d->document->folding()->visibleLineFrom(line + 1), last) : last;
}

int EditorCursor::prevVisibleLine(int line) const
{
    return line > 0 ? d->document->folding()->visibleLineUpTo(line - 1) : 0;
}

} // namespace zvwidgets
