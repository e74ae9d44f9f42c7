#include "zvwidgets/zveditor/textdoc.h"

#include "qtundo/src/qtundo.h"
#include "zvwidgets/zveditor/document/textdoc_p.h"
#include "zvwidgets/zveditor/highlight.h"
#include "zvwidgets/zveditor/pattern/columns.h"
#include "zvwidgets/zveditor/textcommands.h"
#include "zvwidgets/zveditor/textfolding.h"

#include <algorithm>
#include <utility>

namespace zvwidgets {

void TextDocument::Private::freeLines()
{
    longestLine = nullptr;
    pendingScan.clear();
    columnMarks.clear();
    if (folding)
        folding->linesReplaced();
    contents.setAutoDelete(true);
    contents.clear();
    contents.setAutoDelete(false);
}

void TextDocument::Private::reset()
{
    q->tagAll();
    undoStack->clear();
    freeLines();
    q->m_insertLine(0);
    longestLine = nullptr;
    q->updateLine(0);
    for (DocumentView *each : std::as_const(views))
        each->setCursorPosition(0, 0, false);
}

bool TextDocument::Private::isExecuting() const
{
    return undoStack->isExecuting();
}

void TextDocument::Private::run(const TextEdit &edit, const QString &text)
{
    if (!undoStack->hasOpenMacro()) {
        undoStack->push(command(edit, text));
        return;
    }
    CmdBatch *batch = openBatch();
    if (!batch) {
        batch = new CmdBatch(q);
        undoStack->push(batch);
    }
    batch->run(edit, text);
}

// The command that does \a edit by itself.
QtCommand *TextDocument::Private::command(const TextEdit &edit, const QString &text) const
{
    switch (edit.kind) {
    case TextEdit::Kind::Insert:
        return new CmdInsert(q, edit.line, edit.column, text);
    case TextEdit::Kind::Remove:
        return new CmdRemove(q, edit.line, edit.column, edit.length);
    case TextEdit::Kind::MakeLine:
        return new CmdMakeLine(q, edit.line);
    case TextEdit::Kind::RemoveLine:
        return new CmdRemoveLine(q, edit.line);
    case TextEdit::Kind::SetLineEnd:
        break;
    }
    return nullptr;
}

// The batch that the open macro ends with; null if it ends with something else,
// or if the clean state would grow with the batch.
CmdBatch *TextDocument::Private::openBatch() const
{
    QtCommand *const last = undoStack->current();
    const bool isBatch = last && last->metaObject() == &CmdBatch::staticMetaObject;
    return isBatch && !undoStack->isClean() ? static_cast<CmdBatch *>(last) : nullptr;
}

void TextDocument::Private::rescan(int start, int end)
{
    for (int line = start; line <= end; ++line)
        markForScan(line);
    if (start == 0 && end == q->lastLine()) {
        longestLine = nullptr;
        contents.allWidthsChanged();
    }
    // The line below is looked at too, as its start may have changed.
    if (start <= end)
        q->tagLines(start, std::min(end + 1, q->lastLine()));
    if (!isExecuting())
        scanPending();
}

void TextDocument::Private::markForScan(int line)
{
    TextLine *textLine = contents[line];
    textLine->setNeedsScan(true);
    // The colouring is void at once, the context follows with the scan.
    textLine->resetHighlight(textLine->highlightContext());
    pendingScan.expand(line, -1);
}

void TextDocument::Private::linesInserted(int line)
{
    folding->linesMoved(line, 1);
    if (pendingScan.start >= line)
        ++pendingScan.start;
    if (pendingScan.end >= line)
        ++pendingScan.end;
}

void TextDocument::Private::linesRemoved(int line)
{
    folding->linesMoved(line, -1);
    if (pendingScan.start > line)
        --pendingScan.start;
    if (pendingScan.end >= line)
        --pendingScan.end;
    if (pendingScan.end < pendingScan.start)
        pendingScan.clear();
}

// The views' highlights are chained, each starting in the context that the one
// before it ended in.
int TextDocument::Private::scan(TextLine *line, int ctx) const
{
    for (const DocumentView *each : views)
        ctx = each->hl->doHighlight(ctx, line);
    return ctx;
}

// A line that needs no scan was last scanned from the context stored in the line
// above it. So a scan goes on below the lines that need one for as long as the
// stored context changes, and leaves every line as if all had been scanned.
void TextDocument::Private::scanPending()
{
    if (pendingScan.isEmpty()) {
        if (!longestLine)
            findLongest();
        return;
    }
    const LineRegion region = std::exchange(pendingScan, LineRegion());
    const int last = contents.size() - 1;
    int ctx = region.start > 0 ? contents[region.start - 1]->context() : 0;
    bool changed = false;
    int line = region.start;
    for (; line <= last && (line <= region.end || changed); ++line) {
        TextLine *textLine = contents[line];
        const int before = textLine->context();
        if (!textLine->needsScan() && !changed) {
            ctx = before;
            continue;
        }
        ctx = scan(textLine, ctx);
        textLine->setContext(ctx);
        changed = ctx != before;
        if (textLine->needsScan()) {
            textLine->setNeedsScan(false);
            takeWidth(line);
        }
    }
    if (!longestLine)
        findLongest();
    q->tagLines(region.start, std::min(line, last));
}

// The measuring half of updateMaxLength() for a line whose number is known.
// Where that would look at all lines it only forgets the longest one.
void TextDocument::Private::takeWidth(int line)
{
    contents.widthChanged(line);
    if (!longestLine)
        return;
    TextLine *textLine = contents[line];
    const int width = q->lineWidth(textLine);
    if (width > q->maxLength) {
        newDocGeometry = true;
        longestLine = textLine;
        q->maxLength = width;
    } else if (textLine == longestLine) {
        longestLine = nullptr;
    }
}

// To be called when fonts or tab stops changed.
void TextDocument::Private::updateGeometry()
{
    longestLine = nullptr;
    columnMarks.clear();
    contents.allWidthsChanged();
    q->updateMaxLength(nullptr);
    for (DocumentView *each : std::as_const(views))
        each->resizeBuffer();
    q->tagAll();
    q->updateViews();
}

TextDocument::TextDocument(DocumentHost *host)
    : shouldWrap(host->fLineWrap)
    , wordBound(QStringLiteral(" \"'\\:;,./?!`"))
    , d(std::make_unique<Private>(this, host))
{
    d->undoStack = new QtUndoStack(this);
    connect(d->undoStack, &QtUndoStack::commandExecuted, this, &TextDocument::macroExecuted);
    d->folding = new TextFolding(this);
    d->spacesInTab = std::clamp(host->wantedTabWidth, 1, 16);
    clear();
    d->newDocGeometry = false;
}

TextDocument::~TextDocument()
{
    // What is left of a document while its children go sends nothing any more.
    d->undoStack->disconnect(this);
}

void TextDocument::addView(DocumentView *view)
{
    d->views.append(view);
    d->columnMarks.clear();
}

void TextDocument::removeView(DocumentView *view)
{
    d->views.removeAll(view);
    d->columnMarks.clear();
    if (d->associatedViews.removeAll(view))
        QtUndoManager::manager()->disassociateView(view->focusObject());
    if (d->view == view)
        d->view = d->views.isEmpty() ? nullptr : d->views.constFirst();
}

QList<TextView *> TextDocument::views() const
{
    QList<TextView *> shown;
    for (DocumentView *view : std::as_const(d->views))
        shown.append(view->textView());
    return shown;
}

TextView *TextDocument::activeView() const
{
    return d->view ? d->view->textView() : nullptr;
}

void TextDocument::setActiveView(DocumentView *view)
{
    if (view != d->view)
        d->columnMarks.clear();
    d->view = view;
    if (!view || d->associatedViews.contains(view))
        return;
    d->associatedViews.append(view);
    QtUndoManager::manager()->associateView(view->focusObject(), d->undoStack);
}

TextEditorManager *TextDocument::manager() const
{
    return d->m->textEditorManager();
}

QtUndoStack *TextDocument::undoStack() const
{
    return d->undoStack;
}

TextFolding *TextDocument::folding() const
{
    return d->folding;
}

bool TextDocument::isModified() const
{
    return d->modified;
}

void TextDocument::setModified(bool on)
{
    documentChanged(on);
}

bool TextDocument::isReadOnly() const
{
    return d->readonly;
}

void TextDocument::setReadOnly(bool on)
{
    d->readonly = on;
}

int TextDocument::spacesInTab() const
{
    return d->spacesInTab;
}

void TextDocument::setSpacesInTab(int n)
{
    d->spacesInTab = std::clamp(n, 1, 16);
    for (DocumentView *view : std::as_const(d->views))
        view->setTabStops(d->spacesInTab);
    d->updateGeometry();
}

void TextDocument::setWrap(bool on)
{
    if (on == shouldWrap)
        return;
    shouldWrap = on;
    tagAll();
    d->newDocGeometry = true;
    updateViews();
}

int TextDocument::marked(int line) const
{
    return lineOf(line)->marked();
}

void TextDocument::setMarked(int line, int m)
{
    lineOf(line)->setMarked(m);
    for (DocumentView *view : std::as_const(d->views))
        view->repaintMargins();
}

void TextDocument::clear()
{
    d->reset();
    documentChanged(false);
}

QString TextDocument::text() const
{
    qsizetype length = lastLine();
    for (int line = 0; line <= lastLine(); ++line)
        length += lineOf(line)->size();
    QString whole;
    whole.reserve(length);
    for (int line = 0; line <= lastLine(); ++line) {
        if (line > 0)
            whole.append(QLatin1Char('\n'));
        whole.append(*lineOf(line));
    }
    return whole;
}

int TextDocument::lastLine() const
{
    return d->contents.size() - 1;
}

TextLine *TextDocument::lineOf(int line) const
{
    return d->contents[line];
}

int TextDocument::textLength(int line) const
{
    return lineOf(line)->textLength();
}

unsigned TextDocument::revision() const
{
    return d->revision;
}

void TextDocument::tagLine(int line)
{
    ++d->revision;
    d->updateRegion.expand(line, -1);
}

void TextDocument::tagLines(int start, int end)
{
    ++d->revision;
    d->updateRegion.expand(start, end);
}

void TextDocument::tagAll()
{
    ++d->revision;
    d->updateRegion.expand(0, std::max(0, lastLine()));
}

void TextDocument::updateLine(int line, int fromColumn)
{
    d->cutMarks(lineOf(line), fromColumn);
    d->rescan(line, line);
}

void TextDocument::updateLines(int startLine, int endLine)
{
    d->columnMarks.clear();
    d->rescan(std::max(0, startLine), std::min(std::max(0, endLine), lastLine()));
}

void TextDocument::updateLines()
{
    updateLines(0, lastLine());
}

void TextDocument::updateMaxLength(TextLine *textLine)
{
    // Which line it is isn't known here.
    if (textLine)
        d->contents.allWidthsChanged();
    const int width = textLine ? lineWidth(textLine) : -1;
    if (d->longestLine && textLine && width > maxLength) {
        d->newDocGeometry = true;
        d->longestLine = textLine;
        maxLength = width;
    } else if (!d->longestLine || textLine == d->longestLine) {
        d->findLongest();
    }
}

void TextDocument::updateViews()
{
    d->scanPending();
    for (DocumentView *view : std::as_const(d->views)) {
        view->setUpdateRegion(d->updateRegion);
        view->updateView(d->newDocGeometry);
    }
    d->newDocGeometry = false;
    d->updateRegion.clear();
}

void TextDocument::updateFontData()
{
    for (DocumentView *view : std::as_const(d->views))
        view->updateFontData();
    d->updateGeometry();
}

void TextDocument::documentChanged(bool isModified)
{
    const auto notify = [this] {
        for (DocumentView *view : std::as_const(d->views))
            view->notify(DocumentView::Notice::Modification);
    };
    notify();
    if (d->modified != isModified) {
        d->modified = isModified;
        notify();
    }
    updateViews();
}

void TextDocument::macroBegin(const QString &description)
{
    d->undoStack->push(
        new QtCommand(QtCommand::MacroBegin, stepDescription(QLatin1String(), description), true));
}

void TextDocument::macroBegin(const QString &description, int line, int column)
{
    macroBegin(description);
    cmdInsert(line, column, QString());
}

void TextDocument::macroEnd()
{
    if (d->undoStack->hasOpenMacro()) {
        if (CmdBatch *const batch = d->openBatch())
            batch->squeeze();
    }
    d->undoStack->push(new QtCommand(QtCommand::MacroEnd, QString(), false));
}

void TextDocument::macroEnd(int line, int column)
{
    cmdInsert(line, column, QString());
    macroEnd();
}

void TextDocument::setMacroCursorPosition(int line, int column)
{
    d->macroCursorLine = line;
    d->macroCursorColumn = column;
}

void TextDocument::macroExecuted()
{
    const bool foldsChanged = d->folding->settle();
    d->scanPending();
    DocumentView *const view = d->view;
    if (view && d->macroCursorLine != -1 && d->macroCursorColumn != -1) {
        const int line = std::exchange(d->macroCursorLine, -1);
        view->setCursorPosition(line, std::exchange(d->macroCursorColumn, -1), false);
    }
    if (view)
        view->notify(DocumentView::Notice::UndoRedo);
    documentChanged(true);
    if (foldsChanged)
        d->folding->repaintViews();
}

void TextDocument::cmdInsert(int line, int column, const QString &text)
{
    d->run({TextEdit::Kind::Insert, LineEnd::Document, line, d->wholeColumn(line, column)}, text);
}

void TextDocument::cmdRemove(int line, int column, int length)
{
    ColumnRange columns{column, column + std::max(0, length)};
    if (length > 0)
        columns = wholeCharacters(*lineOf(line), columns);
    d->run({TextEdit::Kind::Remove, LineEnd::Document, line, columns.from, columns.length()});
}

void TextDocument::cmdReplace(int line, int column, int length, const QString &text)
{
    column = d->wholeColumn(line, column);
    macroBegin(QLatin1String("replace text with ") + text);
    if (length > 0)
        cmdRemove(line, column, length);
    if (!text.isEmpty())
        cmdInsert(line, column, text);
    macroEnd(line, column + int(text.length()));
}

void TextDocument::cmdInsertLineBreak(int line, int column)
{
    column = d->wholeColumn(line, column);
    macroBegin(QStringLiteral("insert line break"));
    makeLine(line + 1);
    if (column < textLength(line)) {
        const QString tail = QStringView(*lineOf(line)).sliced(column).toString();
        cmdInsert(line + 1, 0, tail);
        cmdRemove(line, column, int(tail.length()));
    }
    macroEnd(line + 1, 0);
}

void TextDocument::cmdRemoveLineBreak(int line)
{
    macroBegin(QStringLiteral("remove line break"));
    const int column = textLength(line);
    const TextLine *next = lineOf(line + 1);
    const LineEnd lowerEnd = next->lineEnd();
    const bool isBlank = lineOf(line)->firstChar() == -1;
    if (isBlank) {
        cmdInsert(line, column, QStringView(*next).toString());
    } else {
        // The join takes the indentation of the next line away, and its trailing
        // blanks too, which is meant.
        const QString stripped = QStringView(*next).trimmed().toString();
        const int first = next->firstChar();
        cmdRemove(line + 1, 0, first == -1 ? next->textLength() : first);
        cmdInsert(line, column, stripped);
    }
    removeLine(line + 1);
    // It is the upper line's break that went.
    if (lineOf(line)->lineEnd() != lowerEnd)
        d->run({TextEdit::Kind::SetLineEnd, lowerEnd, line});
    macroEnd(line, column);
}

void TextDocument::makeLine(int line)
{
    d->run({TextEdit::Kind::MakeLine, LineEnd::Document, line});
}

void TextDocument::removeLine(int line)
{
    d->run({TextEdit::Kind::RemoveLine, LineEnd::Document, line});
}

void TextDocument::m_insertLine(int line)
{
    auto made = std::make_unique<TextLine>();
    // A new line that a closed fold would hide opens it.
    d->folding->ensureLineVisible(line - 1);
    const TextLine *above = line > 0 ? lineOf(line - 1) : nullptr;
    // The line joins the fold of the line above it; with the context of that
    // line at both ends it changes nothing for the lines below.
    if (above) {
        made->foldingLevel = above->foldingLevel;
        made->setContext(above->context());
        made->resetHighlight(above->context());
    }
    // The new line break is one like that of the line it parts.
    if (!d->contents.isEmpty())
        made->setLineEnd(lineOf(std::max(0, line - 1))->lineEnd());
    d->contents.insert(line, made.release());
    d->linesInserted(line);
    d->newDocGeometry = true;
    d->markForScan(line);
    tagLines(line, lastLine());
    if (!d->isExecuting())
        d->scanPending();
}

void TextDocument::m_removeLine(int line)
{
    d->folding->ensureLineVisible(line);
    d->folding->lineWillGo(line);
    const std::unique_ptr<TextLine> removed(lineOf(line));
    if (removed.get() == d->longestLine)
        d->longestLine = nullptr;
    d->columnMarks.remove(removed.get());
    d->contents.remove(line);
    d->linesRemoved(line);
    d->newDocGeometry = true;
    const int ctx = line > 0 ? lineOf(line - 1)->context() : 0;
    if (line <= lastLine() && ctx != removed->context())
        d->markForScan(line);
    tagLines(std::min(line, lastLine()), lastLine());
    if (!d->isExecuting())
        d->scanPending();
}

} // namespace zvwidgets
