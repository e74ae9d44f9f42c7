#include "zvwidgets/zveditor/editorcursor.h"
#include "zvwidgets/zveditor/textdoc.h"
#include "zvwidgets/zveditor/texteditor.h"
#include "zvwidgets/zveditor/textmanager.h"
#include "zvwidgets/zveditor/view/textview_p.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMenu>
#include <QMouseEvent>
#include <QScrollBar>

namespace zvwidgets {

/// The document position under the pointer, x = column.
QPoint TextView::Private::positionAt(const QPoint &local) const
{
    q->updateLinesList();
    return q->screenPosToDoc(local.x() + xPos, local.y() + yPos);
}

void TextView::Private::keepPosition(const QMouseEvent *event, const QPoint &position)
{
    bnModifiers = event->modifiers();
    bnButtons = event->buttons();
    keptPosition = position;
}

void TextView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        d->pressLeft(event);
    else if (event->button() == Qt::MiddleButton)
        d->editor->pasteSelection();
    else if (event->button() == Qt::RightButton && !d->rmbMenu->actions().isEmpty())
        d->rmbMenu->exec(event->globalPosition().toPoint());
}

void TextView::Private::pressLeft(const QMouseEvent *event)
{
    doc->setActiveView(q);
    const QPoint local = event->position().toPoint();
    const QPoint position = positionAt(local);
    if (position.y() > doc->lastLine())
        return;
    if (!startDrag && q->inSelected(position.y(), position.x())) {
        startDrag = true;
        keepPosition(event, position);
        return;
    }
    startDrag = false;
    const bool shift = event->modifiers().testFlag(Qt::ShiftModifier);
    q->setCursorPosition(position.y(), position.x(), shift);
    mousePressed = true;
}

void TextView::mouseMoveEvent(QMouseEvent *event)
{
    const QPoint local = event->position().toPoint();
    const bool isInside = rect().contains(local);
    if (!isInside && !d->mousePressed && event->buttons() == Qt::NoButton)
        return;
    if (!d->cursor->isEnabled())
        d->cursor->setEnabled(true);
    QPoint position = d->positionAt(local);
    const bool outside = position.y() > d->doc->lastLine() || position.y() < 0;
    if (outside)
        position.setX(0);
    if (d->dragOver(event, position))
        return;
    const bool onlyLeft =
        event->buttons() == Qt::LeftButton && event->modifiers() == Qt::NoModifier;
    if (d->mousePressed && onlyLeft) {
        if (!isInside)
            d->scrollWithPointer(local);
        setCursorPosition(position.y(), position.x(), true);
        return;
    }
    const bool overText = !outside && !inSelected(position.y(), position.x());
    setCursor(overText ? Qt::IBeamCursor : Qt::ArrowCursor);
}

/// True if the selection is being dragged over \a position outside of it.
bool TextView::Private::dragOver(const QMouseEvent *event, const QPoint &position)
{
    const bool isDrag = startDrag && !mousePressed && event->buttons().testFlag(Qt::LeftButton) &&
                        !event->modifiers().testFlag(Qt::ShiftModifier);
    if (!isDrag)
        return false;
    if (q->inSelected(position.y(), position.x())) {
        cursor->set(position.y(), position.x(), true);
        return false;
    }
    endDrag = true;
    keepPosition(event, position);
    q->setCursorPosition(position.y(), position.x(), false);
    q->setCursor(Qt::PointingHandCursor);
    return true;
}

/// Scrolls by one step. The pointer's place in the view is compared with the
/// view's place on the screen, which is meant: how far out it has to be depends
/// on where the window is.
void TextView::Private::scrollWithPointer(const QPoint &local) const
{
    const QPoint topLeft = q->mapToGlobal(q->rect().topLeft());
    const QPoint bottomRight = q->mapToGlobal(q->rect().bottomRight());
    const auto step = [](QScrollBar *bar, int at, int low, int high) {
        if (at <= low)
            bar->setValue(bar->value() - 1);
        else if (at >= high)
            bar->setValue(bar->value() + 1);
    };
    cursor->setEnabled(false);
    step(vbar, local.y(), topLeft.y(), bottomRight.y());
    step(hbar, local.x(), topLeft.x(), bottomRight.x());
    cursor->setEnabled(true);
}

void TextView::mouseReleaseEvent(QMouseEvent *)
{
    if (d->startDrag && !d->endDrag && !d->mousePressed)
        setCursorPosition(d->keptPosition.y(), d->keptPosition.x(),
                          d->bnModifiers.testFlag(Qt::ShiftModifier));
    else if (d->startDrag && d->endDrag && !inSelected(d->cursor->line(), d->cursor->column()))
        d->drop();
    d->startDrag = false;
    d->endDrag = false;
    if (d->mousePressed)
        d->publishSelection();
    d->mousePressed = false;
}

/// Moves the selected text, or copies it, to where the drag ended.
void TextView::Private::drop()
{
    const bool copies =
        bnModifiers.testFlag(Qt::ControlModifier) && bnButtons.testFlag(Qt::LeftButton);
    // Another program, or a selection by keys, may have left something else
    // there, and what is removed here has to come back.
    publishSelection();
    doc->selectionCommand(copies ? SelectionCopy : SelectionRemove);
    const QClipboard *const clipboard = QGuiApplication::clipboard();
    const QString text = clipboard->supportsSelection() ? clipboard->text(QClipboard::Selection)
                                                        : manager->winClipboard;
    startDrag = false;
    endDrag = false;
    if (!text.isNull()) {
        q->setCursorPosition(keptPosition.y(), keptPosition.x(), false);
        doc->insert(text, 0, 0);
        editor->notifyChange(TextEditor::Modification);
    }
    q->setCursorPosition(cursor->line(), cursor->column(), false);
}

void TextView::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        mousePressEvent(event);
        return;
    }
    clearSelection();
    const QPoint position = d->positionAt(event->position().toPoint());
    const int line = position.y();
    if (line > d->doc->lastLine())
        return;
    int start = 0;
    int end = 0;
    d->doc->wordIn(line, position.x(), &start, &end);
    setCursorPosition(line, start, false);
    setCursorPosition(line, end, true);
    d->publishSelection();
}

} // namespace zvwidgets
