#include "zvwidgets/zveditor/document/selectionrect.h"
#include "zvwidgets/zveditor/editorcursor.h"
#include "zvwidgets/zveditor/pattern/columns.h"
#include "zvwidgets/zveditor/textdoc.h"
#include "zvwidgets/zveditor/texteditor.h"
#include "zvwidgets/zveditor/textline.h"
#include "zvwidgets/zveditor/textmanager.h"
#include "zvwidgets/zveditor/view/textview_p.h"

#include <QClipboard>
#include <QGuiApplication>

#include <algorithm>
#include <utility>

namespace zvwidgets {

/// The ends of a selection widened to whole characters, which are what an edit
/// takes. A box keeps its columns: each of its lines is widened by itself.
void TextView::Private::widen(QPoint *first, QPoint *second) const
{
    const bool isBox = manager->fVerticalSelection && first->y() != second->y();
    if (isBox || *first == *second || first->y() < 0 || second->y() > doc->lastLine())
        return;
    const int start = first->x();
    first->setX(wholeCharacters(*doc->lineOf(first->y()), {start, start}).from);
    second->setX(wholeCharacters(*doc->lineOf(second->y()), {-1, second->x()}).to);
}

/// Has the selected lines repainted.
void TextView::Private::markSelection()
{
    const QRect lines = ordered(q->selected);
    update.expand(lines.top(), lines.bottom());
}

/// True if \a position, x = column, stands between the halves of one character.
bool TextView::Private::splitsCharacter(const QPoint &position) const
{
    return position.y() <= doc->lastLine() && splitsPair(*doc->lineOf(position.y()), position.x());
}

bool TextView::hasSelection() const
{
    return !isEmptySelection(selected);
}

void TextView::setSelection(const QPoint &from, const QPoint &to)
{
    // A later move that extends the selection keeps its start.
    d->selectionStart = from;
    d->selectionEnd = to;
    QPoint first = from;
    QPoint second = to;
    if (second.y() < first.y() || (second.y() == first.y() && second.x() < first.x()))
        std::swap(first, second);
    d->widen(&first, &second);
    if (first == selected.topLeft() && second == selected.bottomRight())
        return;
    if (hasSelection())
        d->markSelection();
    selected = QRect(first, second);
    d->markSelection();
    d->editor->notifyChange(TextEditor::Selection);
}

void TextView::clearSelection()
{
    if (!d->selectionLocked && hasSelection()) {
        d->markSelection();
        selected = QRect(QPoint(0, 0), QPoint(0, 0));
    }
    d->editor->notifyChange(TextEditor::Selection);
    updateView(false);
}

bool TextView::inSelected(int line, int column) const
{
    const TextSelection selection(selected, d->manager->fVerticalSelection);
    if (line < 0 || line > d->doc->lastLine())
        return selection.contains(line, column);
    // Both halves of one character are selected together.
    const ColumnRange whole = wholeCharacters(*d->doc->lineOf(line), {column, column + 1});
    return selection.contains(line, whole.from) || selection.contains(line, whole.to - 1);
}

void TextView::lockSelection()
{
    d->selectionLocked = true;
}

void TextView::unlockSelection()
{
    d->selectionLocked = false;
}

void TextView::setCursorPositionInternal(int line, int column, bool select)
{
    line = std::clamp(line, 0, d->doc->lastLine());
    column = std::max(column, 0);
    // The cursor is rounded alike; the end of the selection must not differ from it.
    if (d->splitsCharacter({column, line}))
        --column;
    if (select) {
        // One that was drawn backward within a line cannot be: its ends have
        // been put in order.
        if (selected.right() <= selected.left() && selected.bottom() <= selected.top())
            d->selectionStart = d->cursor->pos();
        setSelection(d->selectionStart, QPoint(column, line));
    } else if (!d->endDrag) {
        if (hasSelection())
            clearSelection();
        d->selectionStart = d->selectionEnd = QPoint(0, 0);
    }
    if (line != d->cursor->line()) {
        d->update.expand(line, -1);
        d->update.expand(d->cursor->line(), -1);
    }
}

void TextView::setCursorPosition(int line, int column, bool select)
{
    setCursorPositionInternal(line, column, select);
    d->cursor->set(line, column, true);
    d->cursor->setWantedColumn(column);
    d->editor->notifyChange(TextEditor::CursorPosition);
}

/// Makes the selected text what a middle click pastes, in any program.
void TextView::Private::publishSelection() const
{
    const QString text =
        doc->selectionCommand(SelectionText, q->selected, manager->fVerticalSelection);
    if (text.isEmpty())
        return;
    QClipboard *const clipboard = QGuiApplication::clipboard();
    if (clipboard->supportsSelection())
        clipboard->setText(text, QClipboard::Selection);
    else
        manager->winClipboard = text;
}

} // namespace zvwidgets
