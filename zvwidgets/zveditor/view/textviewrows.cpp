#include "zvwidgets/zveditor/editorcursor.h"
#include "zvwidgets/zveditor/textdoc.h"
#include "zvwidgets/zveditor/textfolding.h"
#include "zvwidgets/zveditor/view/textview_p.h"

#include <algorithm>

namespace zvwidgets {

namespace {

/// Pixels that rows of wrapped text leave free at the right.
constexpr int wrapMargin = 8;
/// A row that continues a line is indented like it as long as at least this
/// much is left for text, and by smallShift otherwise.
constexpr int leastRowWidth = 100;
constexpr int smallShift = 16;
/// No view is as high as that; rows of a text of megabytes that lie further down
/// cannot come to be seen.
constexpr size_t mostRows = 4096;

} // namespace

TextView::Private::RowsStamp TextView::Private::rowsStamp() const
{
    return {doc->revision(), q->width(),     q->height(),       yPos,
            fontHeight,      doc->getWrap(), doc->getWrapMode()};
}

void TextView::updateLinesList()
{
    const Private::RowsStamp stamp = d->rowsStamp();
    if (d->rowsValid && stamp == d->stamp)
        return;
    d->stamp = stamp;
    d->rowsValid = true;
    d->wrappedLinesCache.setWidth(width());
    d->wrappedLinesCache.setWrapMode(d->doc->getWrap(), d->doc->getWrapMode());
    int line = d->yPos / d->fontHeight;
    d->visibleLines.clear(line);
    const int rows = (height() + d->fontHeight - 1) / d->fontHeight;
    const TextFolding *const folding = d->doc->folding();
    for (line = folding->visibleLineFrom(line);
         d->visibleLines.count() < rows && line <= d->doc->lastLine();
         line = folding->visibleLineFrom(line + 1))
        d->appendRows(line);
}

void TextView::Private::appendRows(int line)
{
    const int length = doc->textLength(line);
    if (length == 0) {
        visibleLines.append({line, 0, 1, 0});
        return;
    }
    if (!doc->getWrap()) {
        visibleLines.append({line, 0, length, 0});
        return;
    }
    const TextLine &text = *doc->lineOf(line);
    const WrappedLinesCache::Ends *ends = wrappedLinesCache.find(text);
    const bool isKnown = ends != nullptr;
    const int shift = !isKnown || ends->size() > 1 ? wrapShift(line) : 0;
    if (!isKnown)
        ends = wrappedLinesCache.insert(text, wrapEnds(line, shift));
    int start = 0;
    for (const int end : *ends) {
        visibleLines.append({line, start, end, start > 0 ? shift : 0});
        start = end;
    }
}

/// Rows that continue a line are indented like it, unless that leaves too
/// little room.
int TextView::Private::wrapShift(int line) const
{
    const int first = doc->lineOf(line)->firstChar();
    const int shift = doc->textWidth(line, first == -1 ? doc->textLength(line) : first);
    const int width = q->width();
    const int rest = width - shift;
    return rest < leastRowWidth || rest < width / 4 ? smallShift : shift;
}

WrappedLinesCache::Ends TextView::Private::wrapEnds(int line, int shift) const
{
    WrappedLinesCache::Ends ends;
    const int length = doc->textLength(line);
    const int width = q->width() - wrapMargin;
    const size_t limit = length > WrappedLinesCache::longestText ? mostRows : size_t(length);
    int end = doc->nextWrapPos(line, width, 0);
    for (int start = 0; start < length && ends.size() < limit;) {
        // Whatever the width, every row takes something, or there were no end.
        start = std::max(end, start + 1);
        ends.push_back(start);
        end = doc->nextWrapPos(line, width - shift, start);
    }
    return ends;
}

int TextView::lineNumber(int y) const
{
    const int key = y / d->fontHeight;
    if (d->visibleLines.contains(key))
        return d->visibleLines.at(key).line;
    if (key > d->visibleLines.lastKey() || key > d->doc->lastLine())
        return d->doc->lastLine();
    qDebug("visibleLines dosn't contain line %d", key);
    return key;
}

QPoint TextView::screenPosToDoc(int x, int y) const
{
    const int key = y / d->fontHeight;
    if (key < 0)
        return {0, 0};
    const VisibleLines &rows = d->visibleLines;
    if (rows.contains(key)) {
        const VisibleLine &row = rows.at(key);
        const int base = d->doc->textWidth(row.line, row.startPos);
        const int inRow = row.xShift < x ? x - row.xShift : 1;
        return {d->doc->textLength(row.line, base + inRow), row.line};
    }
    int line = d->doc->lastLine();
    if (!rows.isEmpty())
        line = rows.at(std::clamp(key, rows.firstKey(), rows.lastKey())).line;
    const TextLine *const nearest = d->doc->lineOf(line);
    if (nearest->isFoldingStart && nearest->isFolded)
        line = d->doc->folding()->visibleLineFrom(line + 1) - 1;
    return {d->doc->textLength(line), line};
}

QPoint TextView::docPosToScreen(int column, int line) const
{
    if (line < 0)
        return {0, line * d->fontHeight};
    TextDocument *const doc = d->doc;
    line = doc->folding()->visibleLineUpTo(std::min(line, doc->lastLine()));
    const VisibleLines &rows = d->visibleLines;
    const int length = doc->textLength(line);
    int extra = 0;
    int previous = -1;
    for (int key = rows.firstKey(); rows.contains(key) && rows.at(key).line <= line; ++key) {
        const VisibleLine &row = rows.at(key);
        if (row.line == previous)
            extra += d->fontHeight;
        previous = row.line;
        if (row.line != line || column < row.startPos)
            continue;
        if (column < row.endPos || row.endPos >= length) {
            const int x = doc->textWidth(line, column) - doc->textWidth(line, row.startPos);
            return {x + row.xShift, key * d->fontHeight};
        }
    }
    return {doc->textWidth(line, column), line * d->fontHeight + extra};
}

} // namespace zvwidgets
