#include "zvwidgets/zveditor/textview.h"

#include "zvwidgets/zveditor/editorcursor.h"
#include "zvwidgets/zveditor/editormargins.h"
#include "zvwidgets/zveditor/highlight.h"
#include "zvwidgets/zveditor/highlight/highlightmanager.h"
#include "zvwidgets/zveditor/textdoc.h"
#include "zvwidgets/zveditor/texteditor.h"
#include "zvwidgets/zveditor/textmanager.h"
#include "zvwidgets/zveditor/view/rowbuffer.h"
#include "zvwidgets/zveditor/view/textview_p.h"

#include <QApplication>
#include <QGridLayout>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QScrollBar>
#include <QWheelEvent>

#include <algorithm>

namespace zvwidgets {

namespace {

constexpr int fontVariants = 4;

bool isMoveOrEditKey(int key)
{
    switch (key) {
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_Home:
    case Qt::Key_End:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
    case Qt::Key_Insert:
    case Qt::Key_Delete:
    case Qt::Key_Backspace:
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Escape:
        return true;
    default:
        return false;
    }
}

/// Keys the editor takes before any shortcut of the window: those that edit or
/// move, alone or with Shift. F keys and letters with Ctrl stay shortcuts.
bool precedesShortcuts(const QKeyEvent *event)
{
    const Qt::KeyboardModifiers modifiers =
        event->modifiers() & ~(Qt::KeypadModifier | Qt::GroupSwitchModifier);
    if (event->key() == Qt::Key_Insert && modifiers == Qt::ControlModifier)
        return true;
    if (modifiers != Qt::NoModifier && modifiers != Qt::ShiftModifier)
        return false;
    const QString text = event->text();
    return isMoveOrEditKey(event->key()) || (!text.isEmpty() && text.at(0).isPrint());
}

} // namespace

TextView::Private::Private(TextView *view) : q(view)
{}

TextView::Private::~Private() = default;

void TextView::Private::setUpWidget() const
{
    q->setAttribute(Qt::WA_OpaquePaintEvent);
    q->setAttribute(Qt::WA_InputMethodEnabled);
    q->setFocusPolicy(Qt::StrongFocus);
    q->setMouseTracking(true);
    q->setCursor(Qt::IBeamCursor);
    q->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void TextView::Private::makeLayout()
{
    indicatorMargin = new IndicatorMargin(q, editor);
    lineNumberMargin = new LineNumberMargin(q, editor);
    foldingMargin = new FoldingMargin(q, editor);
    selectionMargin = new SelectionMargin(q, editor);
    auto *const layout = new QGridLayout(editor);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->setSpacing(0);
    QWidget *const columns[] = {
        indicatorMargin, lineNumberMargin, foldingMargin, selectionMargin, q, vbar};
    int column = 0;
    for (QWidget *widget : columns)
        layout->addWidget(widget, 0, column++);
    layout->addWidget(hbar, 1, 0, 1, 5);
}

TextView::TextView(TextEditor *parent) : QWidget(parent), d(std::make_unique<Private>(this))
{
    d->setUpWidget();
    d->editor = parent;
    d->doc = parent->document();
    d->manager = d->doc->manager();
    d->cursor = std::make_unique<EditorCursor>(this);
    d->vbar = new QScrollBar(Qt::Vertical, parent);
    d->hbar = new QScrollBar(Qt::Horizontal, parent);
    d->highlight.reset(TextHighlightManager::highlight(d->manager, QString()));
    hl = d->highlight.get();
    updateFontData();
    d->makeLayout();
    connect(d->hbar, &QScrollBar::valueChanged, this, &TextView::hslide);
    connect(d->vbar, &QScrollBar::valueChanged, this, &TextView::vslide);
    updateMarginsState();
    d->doc->addView(this);
    d->doc->setActiveView(this);
    d->rmbMenu = new QMenu(this);
}

TextView::~TextView()
{
    d->doc->removeView(this);
}

TextEditor *TextView::editor() const
{
    return d->editor;
}

TextDocument *TextView::document() const
{
    return d->doc;
}

TextEditorManager *TextView::manager() const
{
    return d->manager;
}

EditorCursor *TextView::cursor() const
{
    return d->cursor.get();
}

QMenu *TextView::rmbMenu() const
{
    return d->rmbMenu;
}

IndicatorMargin *TextView::indicatorMargin() const
{
    return d->indicatorMargin;
}

SelectionMargin *TextView::selectionMargin() const
{
    return d->selectionMargin;
}

LineNumberMargin *TextView::lineNumberMargin() const
{
    return d->lineNumberMargin;
}

FoldingMargin *TextView::foldingMargin() const
{
    return d->foldingMargin;
}

void TextView::setHighlight(TextHighlight *highlight)
{
    if (highlight == hl)
        return;
    // The new colours are in place before the old ones are deleted: what updateLines()
    // calls may still read them.
    std::unique_ptr<TextHighlight> old(highlight);
    old.swap(d->highlight);
    hl = highlight;
    d->forgetRows();
    d->doc->updateLines();
    d->doc->updateViews();
}

void TextView::setHighlight(const QString &name)
{
    setHighlight(TextHighlightManager::highlight(d->manager, name));
}

void TextView::setHighlightByFileName(const QString &file)
{
    setHighlight(TextHighlightManager::findHighlight(d->manager, file));
}

int TextView::fontHeight() const
{
    return d->fontHeight;
}

int TextView::linePosition(int n) const
{
    return n * d->fontHeight;
}

int TextView::contentsX() const
{
    return d->xPos;
}

int TextView::contentsY() const
{
    return d->yPos;
}

int TextView::tabsWidth() const
{
    return d->tabsWidth;
}

void TextView::setTabsWidth(int width)
{
    d->tabsWidth = width;
    d->forgetRows();
}

int TextView::spaceWidth() const
{
    return d->spaceWidth;
}

void TextView::setSpaceWidth(int width)
{
    d->spaceWidth = width;
}

TextView::ScrollBarMode TextView::vScrollBarMode() const
{
    return d->vScrollBarMode;
}

TextView::ScrollBarMode TextView::hScrollBarMode() const
{
    return d->hScrollBarMode;
}

void TextView::setVScrollBarMode(ScrollBarMode mode)
{
    d->vScrollBarMode = mode;
}

void TextView::setHScrollBarMode(ScrollBarMode mode)
{
    d->hScrollBarMode = mode;
}

void TextView::updateMarginsState()
{
    d->indicatorMargin->setVisible(d->manager->fIndicatorMargin);
    d->selectionMargin->setVisible(d->manager->fSelectionMargin);
    d->lineNumberMargin->setVisible(d->manager->fLineNumberMargin);
    d->foldingMargin->setVisible(d->manager->fFoldingMargin);
}

void TextView::repaintMargins()
{
    d->indicatorMargin->update();
    d->selectionMargin->update();
    d->lineNumberMargin->update();
    d->foldingMargin->update();
}

void TextView::repaintAll()
{
    update();
    repaintMargins();
}

QPoint TextView::cursorPosition() const
{
    return d->cursor->pos();
}

void TextView::moveCursorToLine(int line)
{
    d->cursor->set(line, 0, true);
}

void TextView::notify(Notice notice)
{
    switch (notice) {
    case Notice::Modification:
        d->editor->notifyChange(TextEditor::Modification);
        break;
    case Notice::UndoRedo:
        d->editor->notifyChange(TextEditor::UndoRedo);
        break;
    }
}

void TextView::updateFontData()
{
    const int topLine = d->fontHeight > 0 ? d->yPos / d->fontHeight : 0;
    d->fontAscent = 0;
    d->fontHeight = 1;
    for (int i = 0; i < fontVariants; ++i) {
        const QFontMetrics &metrics = *d->manager->fontData(i).fm;
        d->fontAscent = std::max(d->fontAscent, metrics.ascent());
        d->fontHeight = std::max(d->fontHeight, metrics.height());
    }
    d->spaceWidth = d->manager->width(0, QChar(u' '));
    d->tabsWidth = d->doc->spacesInTab() * d->spaceWidth;
    d->yPos = topLine * d->fontHeight;
    d->forgetRows();
}

void TextView::resizeBuffer()
{
    resizeMarginBuffers();
    d->buffer = makeRowBuffer(*this, d->fontHeight);
}

void TextView::resizeMarginBuffers()
{
    d->indicatorMargin->resizeBuffer();
    d->selectionMargin->resizeBuffer();
    d->lineNumberMargin->resizeBuffer();
    d->foldingMargin->resizeBuffer();
}

bool TextView::event(QEvent *event)
{
    if (event->type() == QEvent::ShortcutOverride &&
        precedesShortcuts(static_cast<QKeyEvent *>(event))) {
        event->accept();
        return true;
    }
    if (event->type() == QEvent::KeyPress) {
        auto *const press = static_cast<QKeyEvent *>(event);
        // The focus would move on.
        if (press->key() == Qt::Key_Tab || press->key() == Qt::Key_Backtab) {
            keyPressEvent(press);
            return true;
        }
    }
    return QWidget::event(event);
}

void TextView::keyPressEvent(QKeyEvent *event)
{
    d->cursor->keyPressEvent(event);
}

void TextView::inputMethodEvent(QInputMethodEvent *event)
{
    d->cursor->typeText(event->commitString());
    event->accept();
}

QVariant TextView::inputMethodQuery(Qt::InputMethodQuery query) const
{
    if (query == Qt::ImCursorRectangle)
        return d->cursor->shape();
    return QWidget::inputMethodQuery(query);
}

void TextView::focusInEvent(QFocusEvent *)
{
    // The document's operations work at the cursor of its active view.
    d->doc->setActiveView(this);
    updateView(true);
    d->cursor->activate();
    emit focusChanged(true);
}

void TextView::focusOutEvent(QFocusEvent *)
{
    d->cursor->deactivate();
    emit focusChanged(false);
}

void TextView::wheelEvent(QWheelEvent *event)
{
    const std::unique_ptr<QWheelEvent> copy(event->clone());
    QApplication::sendEvent(d->vbar, copy.get());
    event->accept();
}

void TextView::resizeEvent(QResizeEvent *)
{
    resizeBuffer();
    updateView(true);
    repaintMargins();
}

} // namespace zvwidgets
