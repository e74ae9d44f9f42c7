#include "zvwidgets/zveditor/document/fontglyphs.h"
#include "zvwidgets/zveditor/document/selectionrect.h"
#include "zvwidgets/zveditor/editorcursor.h"
#include "zvwidgets/zveditor/highlight.h"
#include "zvwidgets/zveditor/highlight/highlightmanager.h"
#include "zvwidgets/zveditor/textdoc.h"
#include "zvwidgets/zveditor/textmanager.h"
#include "zvwidgets/zveditor/view/textview_p.h"

#include <QGlyphRun>
#include <QPaintEvent>

#include <algorithm>
#include <utility>

namespace zvwidgets {

namespace {

/// From this length on it pays to find out which columns of a row are on screen.
constexpr int longRow = 512;
constexpr QChar tab = u'\t';
constexpr char16_t zeroWidthJoiner = 0x200d;

} // namespace

int TextView::paintCount()
{
    return Private::paintCount;
}

void TextView::paintEvent(QPaintEvent *event)
{
    updateLinesList();
    if (!d->ensureBuffer())
        return;
    const int bottom = event->rect().bottom() + 1;
    QPainter painter(this);
    int y = linePosition(d->visibleLines.firstKey()) - d->yPos;
    for (int key = d->visibleLines.firstKey(); y < bottom && d->visibleLines.contains(key);
         ++key, y += d->fontHeight) {
        const QRect missing =
            event->region().intersected(QRect(0, y, width(), d->fontHeight)).boundingRect();
        if (missing.isEmpty())
            continue;
        // Where pixels are no whole ones, the neighbours are touched too.
        d->wantedPixels = {missing.left() - 1, missing.right() + 2};
        const VisibleLine row = d->visibleLines.at(key);
        d->xPos -= row.xShift;
        d->paintLine(this, row.line, row.startPos, row.endPos);
        d->xPos += row.xShift;
        painter.drawPixmap(0, y, *d->buffer);
    }
    // Rectangle by rectangle: filling what bounds them is slower by far.
    for (const QRect &missing : event->region()) {
        if (y <= missing.bottom())
            d->paintEmptyArea(&painter, missing.adjusted(0, std::max(y - missing.y(), 0), 0, 0));
    }
    d->cursor->draw(painter);
}

/// False as long as there is nothing to paint a row into.
bool TextView::Private::ensureBuffer()
{
    // The window may have come to a screen of another pixel ratio.
    if (buffer && !qFuzzyCompare(buffer->devicePixelRatio(), q->devicePixelRatioF()))
        q->resizeBuffer();
    return buffer != nullptr;
}

void TextView::Private::paintEmptyArea(QPainter *painter, const QRect &area) const
{
    painter->fillRect(area, manager->normalBackgroundColor);
}

bool TextView::Private::wantsWholeRow() const
{
    return wantedPixels.start <= 0 && wantedPixels.end >= q->width();
}

/// Draws what is wanted of one row into the buffer. Cursor and selection are those
/// of \a view.
void TextView::Private::paintLine(TextView *view, int line, int from, int to)
{
    ++paintCount;
    if (!buffer)
        return;
    TextLine *const textLine = doc->lineOf(line);
    if (!textLine->isHighlighted())
        q->hl->highlight(textLine);
    paint.begin(buffer.get());
    if (!wantsWholeRow())
        paint.setClipRect(wantedPixels.start, 0, wantedPixels.end - wantedPixels.start, fontHeight);
    fillRow(manager->normalBackgroundColor);
    paint.translate(leftEdge - xPos, 0);
    const int end = std::min(to, textLine->textLength());
    if (end == 0 && line >= 2)
        paintInheritedBackground(line);
    const RowPart part = visiblePart(line, from, end);
    // Backgrounds do not all begin where their text does, so that they depend on all
    // that stands left of them.
    paintBackgrounds(*textLine, end - from < longRow ? RowPart{from, end, 0} : part, from);
    paintLineColor(view, line);
    if (view->hasSelection())
        paintSelection(view, line, from);
    if (manager->fIndentationGuides)
        paintGuides(*textLine, from, part.end);
    paintText(*textLine, part);
    paint.resetTransform();
    if (textLine->isFoldingStart && textLine->isFolded)
        paint.fillRect(0, fontHeight - 1, q->width(), 1, QColor(50, 50, 50));
    paint.end();
}

/// Columns of a row that have to be drawn. A row of millions of characters is
/// on screen with a few of them only, and after scrolling sideways most of what is
/// on screen was there before.
TextView::Private::RowPart TextView::Private::visiblePart(int line, int from, int end) const
{
    if (from > 0 || (xPos == 0 && end - from < longRow && wantsWholeRow()))
        return {from, end, 0};
    // A character wider than its place may reach into the view.
    const int slack = 2 * fontHeight;
    const int left = std::max(xPos + wantedPixels.start - slack, 0);
    int start = std::clamp(doc->textLength(line, left) - 1, 0, end);
    int last = std::min(doc->textLength(line, xPos + wantedPixels.end + slack) + 1, end);
    if (start < last)
        widenToPlainText(*doc->lineOf(line), from, end, &start, &last);
    return {start, last, doc->textWidth(line, start)};
}

/// Characters that are laid out together look different when they are parted, so
/// the part begins and ends between two that never are.
void TextView::Private::widenToPlainText(const TextLine &line, int from, int to, int *start,
                                         int *end) const
{
    const auto isPlain = [&line](int column) {
        const QChar c = line.at(column);
        return (c >= u' ' && c < u'\x7f') || c == tab;
    };
    const int first = std::max(from, *start - longRow);
    const int last = std::min(to, *end + longRow);
    while (*start > first && !(isPlain(*start - 1) && isPlain(*start)))
        --*start;
    while (*end < last && !(isPlain(*end - 1) && isPlain(*end)))
        ++*end;
}

void TextView::Private::fillRow(const QColor &color)
{
    paint.save();
    paint.resetTransform();
    paint.fillRect(0, 0, q->width(), fontHeight, color);
    paint.restore();
}

void TextView::Private::fillToRightEdge(int x, const QColor &color)
{
    const int right = q->width() + xPos - leftEdge;
    if (x < right)
        paint.fillRect(x, 0, right - x, fontHeight, color);
}

/// A block's colour goes on over the blank lines in it. Lines 0 and 1 inherit
/// none, which is meant.
void TextView::Private::paintInheritedBackground(int line)
{
    if (!highlightHasBackgrounds())
        return;
    // Rows come from top to bottom, and looking up through many blank lines
    // should happen only once for all of them.
    const bool goesOn = inherited.line == line - 1 && inherited.revision == doc->revision();
    int above = goesOn && line > 2 ? inherited.source : line - 1;
    while (above > 1 && doc->lineOf(above)->isEmpty())
        --above;
    inherited = {line, above, doc->revision()};
    TextLine *const source = doc->lineOf(above);
    if (source->isEmpty())
        return;
    if (!source->isHighlighted())
        q->hl->highlight(source);
    const TextAttribute *const attribute =
        q->hl->attribute(source->attribute(unsigned(source->textLength() - 1)));
    if (attribute->usebg)
        fillRow(attribute->bgcolor);
}

bool TextView::Private::highlightHasBackgrounds() const
{
    TextAttribute *const *const list = q->hl->attributeList;
    for (int i = 0; i < TextHighlight::tableSize && list[i]; ++i) {
        if (list[i]->usebg)
            return true;
    }
    return false;
}

/// The run that starts at column \a start and ends before \a end.
TextRun TextView::Private::runAt(const TextLine &line, int start, int end, RunEnd kind) const
{
    const int number = line.attribute(unsigned(start));
    TextRun run{start, start, q->hl->attribute(number)};
    while (run.end < end && line.attribute(unsigned(run.end)) == number &&
           (kind == RunEnd::Attribute || line.at(run.end) != tab))
        ++run.end;
    return run;
}

int TextView::Private::runWidth(const TextLine &line, const TextRun &run) const
{
    const int font = run.attribute->fontType;
    const FontData &data = manager->fontData(font);
    if (data.width >= 0)
        return (run.end - run.start) * data.width;
    int width = 0;
    for (int column = run.start; column < run.end; ++column)
        width += data.glyphs->of(line.at(column)).advance;
    return width;
}

int TextView::Private::nextTabStop(int x) const
{
    return tabsWidth > 0 ? x + tabsWidth - x % tabsWidth : x;
}

/// A run with a background colours the rest of the row too; only a later run
/// with one covers that.
void TextView::Private::paintBackgrounds(const TextLine &line, const RowPart &part, int from)
{
    if (!highlightHasBackgrounds())
        return;
    for (int column = part.start - 1; column >= from; --column) {
        const TextAttribute *const attribute = q->hl->attribute(line.attribute(unsigned(column)));
        if (!attribute->usebg)
            continue;
        fillRow(attribute->bgcolor);
        break;
    }
    int x = part.x;
    for (int column = part.start; column < part.end;) {
        const TextRun run = runAt(line, column, part.end, RunEnd::Attribute);
        const int start = x;
        x += runWidth(line, run);
        column = run.end;
        if (column < part.end && line.at(column) == tab) {
            x = nextTabStop(x);
            ++column;
        }
        if (run.attribute->usebg)
            fillToRightEdge(start, run.attribute->bgcolor);
    }
}

/// Covers the backgrounds of the text, which is meant.
void TextView::Private::paintLineColor(const TextView *view, int line)
{
    const QColor &current = manager->currentLineColor;
    const QColor own = doc->lineOf(line)->lineColor();
    if (line == view->cursor()->line() && current.isValid() &&
        current != manager->normalBackgroundColor)
        fillRow(current);
    else if (own.isValid())
        fillRow(own);
}

/// On screen a box over several lines also shows what a stream would fill,
/// which is meant.
void TextView::Private::paintSelection(const TextView *view, int line, int from)
{
    QPoint a = view->selected.topLeft();
    QPoint b = view->selected.bottomRight();
    if (b.y() < a.y() || (b.y() == a.y() && b.x() < a.x()))
        std::swap(a, b);
    if (line < a.y() || line > b.y())
        return;
    const QColor &color = manager->selectedBackgroundColor;
    int x0 = doc->textWidth(line, a.x());
    const int w = doc->textWidth(line, b.x()) - x0;
    x0 -= doc->textWidth(line, from);
    // At the start of a row the fill takes the free edge too.
    const int edge = x0 == 0 ? leftEdge : 0;
    if (manager->fVerticalSelection || a.y() == b.y()) {
        const QRect box(QPoint(x0 - edge, 0), QSize(w + edge, fontHeight));
        // A box may be drawn from right to left.
        paint.fillRect(w < 0 ? QRect(x0 + w, 0, -w, fontHeight) : box, color);
    }
    if (a.y() < line && b.y() == line && w + x0 > 0)
        paint.fillRect(-leftEdge, 0, w + x0 + leftEdge, fontHeight, color);
    if (a.y() == line && b.y() > line)
        fillToRightEdge(x0 - edge, color);
    if (a.y() < line && b.y() > line)
        fillRow(color);
}

/// Guides stand in the blanks that begin the line, as far as they share an
/// attribute; a tab ends them.
void TextView::Private::paintGuides(const TextLine &line, int from, int end)
{
    const int tabWidth = doc->spacesInTab();
    const int number = line.attribute(unsigned(from));
    const int right = q->width() + xPos;
    if (end <= from || line.firstChar() == 0)
        return;
    int blanks = from;
    while (blanks < end && line.at(blanks).isSpace() && line.at(blanks) != tab &&
           line.attribute(unsigned(blanks)) == number)
        ++blanks;
    int p = 0;
    for (int c = from; c < blanks && p < right; c += tabWidth - c % tabWidth) {
        if (c != 0 && c % tabWidth == 0)
            paint.fillRect(p, 0, 1, fontHeight, QColor(0xf0, 0xc0, 0xc0));
        p = nextTabStop(p);
    }
}

void TextView::Private::paintText(const TextLine &line, const RowPart &part)
{
    int x = part.x;
    for (int column = part.start; column < part.end;) {
        const TextRun run = runAt(line, column, part.end, RunEnd::AttributeOrTab);
        drawRun(line, run, x);
        x += runWidth(line, run);
        column = run.end;
        if (column < part.end && line.at(column) == tab) {
            x = nextTabStop(x);
            ++column;
        }
    }
}

/// Every character goes where it was measured. Those that have a glyph of their
/// own need no layout; what is between them gets one for each stretch.
void TextView::Private::drawRun(const TextLine &line, const TextRun &run, int x)
{
    const FontData &data = manager->fontData(run.attribute->fontType);
    paint.setPen(run.attribute->color);
    glyphIndexes.clear();
    glyphPositions.clear();
    for (int column = run.start; column < run.end;) {
        const int next = stretchEnd(line, column, run.end, *data.glyphs);
        if (next > column) {
            const TextRun stretch{column, next, run.attribute};
            const int width = runWidth(line, stretch);
            drawStretch(QStringView(line).sliced(column, next - column), x, width, *data.font);
            x += width;
            column = next;
            continue;
        }
        const FontGlyphs::Glyph &glyph = data.glyphs->of(line.at(column));
        if (!line.at(column).isSpace()) {
            glyphIndexes.push_back(glyph.index);
            glyphPositions.emplace_back(x, 0);
        }
        x += data.width >= 0 ? data.width : glyph.advance;
        ++column;
    }
    if (glyphIndexes.empty())
        return;
    QGlyphRun glyphs;
    glyphs.setRawFont(data.glyphs->rawFont());
    glyphs.setRawData(glyphIndexes.data(), glyphPositions.data(), int(glyphIndexes.size()));
    paint.drawGlyphRun(QPointF(0, fontAscent - 1), glyphs);
}

/// End of the characters from \a column on that have to be laid out together;
/// \a column itself if that one can be drawn alone.
int TextView::Private::stretchEnd(const TextLine &line, int column, int end,
                                  FontGlyphs &glyphs) const
{
    const auto needsLayout = [&line, &glyphs, end](int at) {
        return glyphs.of(line.at(at)).index == 0 || (at + 1 < end && line.at(at + 1).isMark());
    };
    while (column < end && needsLayout(column)) {
        ++column;
        while (column < end && (line.at(column).isMark() || line.at(column) == zeroWidthJoiner))
            ++column;
    }
    return column;
}

/// A fallback font may be wider than the text was measured: it is condensed.
void TextView::Private::drawStretch(QStringView text, int x, int width, const QFont &font)
{
    const QString string = text.toString();
    const int natural = QFontMetrics(font).horizontalAdvance(string);
    paint.setFont(font);
    if (natural <= width) {
        paint.drawText(x, fontAscent - 1, string);
        return;
    }
    if (width <= 0)
        return;
    paint.save();
    paint.translate(x, 0);
    paint.scale(double(width) / natural, 1);
    paint.drawText(0, fontAscent - 1, string);
    paint.restore();
}

} // namespace zvwidgets
