#include "zvwidgets/zveditor/document/fontglyphs.h"
#include "zvwidgets/zveditor/document/selectionrect.h"
#include "zvwidgets/zveditor/editorcursor.h"
#include "zvwidgets/zveditor/highlight.h"
#include "zvwidgets/zveditor/highlight/textattribute.h"
#include "zvwidgets/zveditor/pattern/columns.h"
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
/// On one character. More of them nobody can tell apart, and no text that is made
/// for reading has them; but each takes its time to be laid out.
constexpr int mostMarks = 30;

QString withFewMarks(QStringView text)
{
    QString result;
    int marks = 0;
    for (const QChar c : text) {
        marks = c.isMark() ? marks + 1 : 0;
        if (marks <= mostMarks)
            result += c;
    }
    return result;
}

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
        const PixelRange wanted{missing.left() - 1, missing.right() + 2};
        const VisibleLine &row = d->visibleLines.at(key);
        d->paintLine(this, row.line, row.startPos, row.endPos, row.xShift, wanted);
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

/// Draws what is wanted of one row into the buffer. Cursor and selection are those
/// of \a view.
void TextView::Private::paintLine(TextView *view, int line, int from, int to, int xShift,
                                  PixelRange wanted)
{
    ++paintCount;
    if (!buffer)
        return;
    TextLine *const textLine = doc->lineOf(line);
    if (!textLine->isHighlighted())
        q->hl->highlight(textLine);
    paint.begin(buffer.get());
    const bool isWhole = wanted.start <= 0 && wanted.end >= q->width();
    if (!isWhole)
        paint.setClipRect(wanted.start, 0, wanted.end - wanted.start, fontHeight);
    const int end = std::min(to, textLine->textLength());
    const int left = leftEdge + xShift - xPos;
    paint.translate(left, 0);
    paintRow({paint, *view, *textLine, line, from, end, left, wanted, isWhole});
    paint.end();
}

void TextView::Private::paintRow(const RowPaint &row)
{
    fillRow(row, manager->normalBackgroundColor);
    if (row.end == 0 && row.line >= 2)
        paintInheritedBackground(row);
    const RowPart part = visiblePart(row);
    // Backgrounds do not all begin where their text does, so that they depend on all
    // that stands left of them.
    paintBackgrounds(row, row.end - row.from < longRow ? RowPart{row.from, row.end, 0} : part);
    paintLineColor(row);
    if (row.view.hasSelection())
        paintSelection(row);
    if (manager->fIndentationGuides)
        paintGuides(row, part.end);
    paintText(row, part);
    if (row.text.isFoldingStart && row.text.isFolded)
        row.painter.fillRect(-row.left, fontHeight - 1, q->width(), 1, QColor(50, 50, 50));
}

/// Columns of a row that have to be drawn. A row of millions of characters is
/// on screen with a few of them only, and after scrolling sideways most of what is
/// on screen was there before.
TextView::Private::RowPart TextView::Private::visiblePart(const RowPaint &row) const
{
    const bool isShort = row.end - row.from < longRow;
    if (row.from > 0 || (row.left == leftEdge && isShort && row.isWhole))
        return {row.from, row.end, 0};
    // A character wider than its place may reach into the view.
    const int slack = 2 * fontHeight;
    const int left = std::max(row.wanted.start - row.left - slack, 0);
    const int right = row.wanted.end - row.left + slack;
    int start = std::clamp(doc->textLength(row.line, left) - 1, 0, row.end);
    int last = std::min(doc->textLength(row.line, right) + 1, row.end);
    if (start < last)
        widenToPlainText(row.text, row.from, row.end, &start, &last);
    return {start, last, doc->textWidth(row.line, start)};
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

void TextView::Private::fillRow(const RowPaint &row, const QColor &color) const
{
    row.painter.fillRect(-row.left, 0, q->width(), fontHeight, color);
}

void TextView::Private::fillToRightEdge(const RowPaint &row, int x, const QColor &color) const
{
    const int right = q->width() - row.left;
    if (x < right)
        row.painter.fillRect(x, 0, right - x, fontHeight, color);
}

/// A block's colour continues across the blank lines in it. Lines 0 and 1 inherit
/// none, which is meant.
void TextView::Private::paintInheritedBackground(const RowPaint &row)
{
    if (!highlightHasBackgrounds())
        return;
    TextLine *const source = doc->lineOf(lineAboveBlanks(row.line));
    if (source->isEmpty())
        return;
    if (!source->isHighlighted())
        q->hl->highlight(source);
    const TextAttribute *const attribute =
        q->hl->attribute(source->attribute(unsigned(source->textLength() - 1)));
    if (attribute->usebg)
        fillRow(row, attribute->bgcolor);
}

/// The nearest line above the blank \a line that isn't blank, line 1 at the top. Millions
/// of blank lines are walked over once, not at each painting of one of them.
int TextView::Private::lineAboveBlanks(int line)
{
    if (blankRun.revision != doc->revision())
        blankRun = {0, -1, doc->revision()};
    const auto isKnown = [this](int at) { return at >= blankRun.first && at <= blankRun.last; };
    if (isKnown(line))
        return blankRun.first - 1;
    int above = line - 1;
    while (above > 1 && !isKnown(above) && doc->lineOf(above)->isEmpty())
        --above;
    if (isKnown(above)) {
        blankRun.last = std::max(blankRun.last, line);
        return blankRun.first - 1;
    }
    blankRun = {above + 1, line, doc->revision()};
    return above;
}

/// Keeps of the blank lines known those above \a changed.
void TextView::Private::cutBlankRun(const LineRegion &changed)
{
    blankRun.revision = doc->revision();
    // The line above the blank ones may have become one.
    const bool isTouched = changed.end >= blankRun.first - 1 && changed.start <= blankRun.last;
    if (!changed.isEmpty() && isTouched)
        blankRun.last = changed.start - 1;
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
/// with one covers that. The way to a tab stop after it keeps what it had.
void TextView::Private::paintBackgrounds(const RowPaint &row, const RowPart &part) const
{
    if (!highlightHasBackgrounds())
        return;
    for (int column = part.start - 1; column >= row.from; --column) {
        const TextAttribute *const attribute =
            q->hl->attribute(row.text.attribute(unsigned(column)));
        if (!attribute->usebg)
            continue;
        fillRow(row, attribute->bgcolor);
        break;
    }
    int x = part.x;
    for (int column = part.start; column < part.end;) {
        const TextRun run = runAt(row.text, column, part.end, RunEnd::Attribute);
        const int width = runWidth(row.text, run);
        if (run.attribute->usebg)
            row.painter.fillRect(x, 0, width, fontHeight, run.attribute->bgcolor);
        x += width;
        column = run.end;
        if (column < part.end && row.text.at(column) == tab) {
            x = nextTabStop(x);
            ++column;
        }
        if (run.attribute->usebg)
            fillToRightEdge(row, x, run.attribute->bgcolor);
    }
}

/// Covers the backgrounds of the text, which is meant.
void TextView::Private::paintLineColor(const RowPaint &row) const
{
    const QColor &current = manager->currentLineColor;
    const QColor own = row.text.lineColor();
    if (row.line == row.view.cursor()->line() && current.isValid() &&
        current != manager->normalBackgroundColor)
        fillRow(row, current);
    else if (own.isValid())
        fillRow(row, own);
}

/// On screen a box over several lines also shows what a stream would fill,
/// which is meant.
void TextView::Private::paintSelection(const RowPaint &row) const
{
    QPoint a = row.view.selected.topLeft();
    QPoint b = row.view.selected.bottomRight();
    if (b.y() < a.y() || (b.y() == a.y() && b.x() < a.x()))
        std::swap(a, b);
    if (row.line < a.y() || row.line > b.y())
        return;
    const QColor &color = manager->selectedBackgroundColor;
    int x0 = doc->textWidth(row.line, a.x());
    const int w = doc->textWidth(row.line, b.x()) - x0;
    x0 -= doc->textWidth(row.line, row.from);
    // At the start of a row the fill takes the free edge too.
    const int edge = x0 == 0 ? leftEdge : 0;
    if (manager->fVerticalSelection || a.y() == b.y()) {
        // A box may be drawn from right to left.
        const ColumnRange columns =
            wholeCharacters(row.text, {std::min(a.x(), b.x()), std::max(a.x(), b.x())});
        const int left =
            doc->textWidth(row.line, columns.from) - doc->textWidth(row.line, row.from);
        const int right = doc->textWidth(row.line, columns.to) - doc->textWidth(row.line, row.from);
        const int start = a.x() <= b.x() && left == 0 ? -leftEdge : left;
        row.painter.fillRect(start, 0, right - start, fontHeight, color);
    }
    if (a.y() < row.line && b.y() == row.line && w + x0 > 0)
        row.painter.fillRect(-leftEdge, 0, w + x0 + leftEdge, fontHeight, color);
    if (a.y() == row.line && b.y() > row.line)
        fillToRightEdge(row, x0 - edge, color);
    if (a.y() < row.line && b.y() > row.line)
        fillRow(row, color);
}

/// Guides stand in the blanks that begin the line, as far as they share an
/// attribute; a tab ends them. Drawn up to column \a end.
void TextView::Private::paintGuides(const RowPaint &row, int end) const
{
    const int tabWidth = doc->spacesInTab();
    const int number = row.text.attribute(unsigned(row.from));
    const int right = q->width() - row.left;
    if (end <= row.from || row.text.firstChar() == 0)
        return;
    int blanks = row.from;
    while (blanks < end && row.text.at(blanks).isSpace() && row.text.at(blanks) != tab &&
           row.text.attribute(unsigned(blanks)) == number)
        ++blanks;
    int p = 0;
    for (int c = row.from; c < blanks && p < right; c += tabWidth - c % tabWidth) {
        if (c != 0 && c % tabWidth == 0)
            row.painter.fillRect(p, 0, 1, fontHeight, QColor(0xf0, 0xc0, 0xc0));
        p = nextTabStop(p);
    }
}

void TextView::Private::paintText(const RowPaint &row, const RowPart &part)
{
    int x = part.x;
    for (int column = part.start; column < part.end;) {
        const TextRun run = runAt(row.text, column, part.end, RunEnd::AttributeOrTab);
        drawRun(row, run, x);
        x += runWidth(row.text, run);
        column = run.end;
        if (column < part.end && row.text.at(column) == tab) {
            x = nextTabStop(x);
            ++column;
        }
    }
}

/// Draws every character where it was measured. Those that have a glyph of their
/// own need no layout; what is between them gets one for each stretch.
void TextView::Private::drawRun(const RowPaint &row, const TextRun &run, int x)
{
    const TextLine &line = row.text;
    const FontData &data = manager->fontData(run.attribute->fontType);
    row.painter.setPen(run.attribute->color);
    glyphIndexes.clear();
    glyphPositions.clear();
    for (int column = run.start; column < run.end;) {
        const int next = stretchEnd(line, column, run.end, *data.glyphs);
        if (next > column) {
            const TextRun stretch{column, next, run.attribute};
            const int width = runWidth(line, stretch);
            const QStringView text = QStringView(line).sliced(column, next - column);
            drawStretch(row, text, x, width, *data.font);
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
    row.painter.drawGlyphRun(QPointF(0, fontAscent - 1), glyphs);
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
void TextView::Private::drawStretch(const RowPaint &row, QStringView text, int x, int width,
                                    const QFont &font) const
{
    const QString string = withFewMarks(text);
    const int natural = QFontMetrics(font).horizontalAdvance(string);
    row.painter.setFont(font);
    if (natural <= width) {
        row.painter.drawText(x, fontAscent - 1, string);
        return;
    }
    if (width <= 0)
        return;
    row.painter.save();
    row.painter.translate(x, 0);
    row.painter.scale(double(width) / natural, 1);
    row.painter.drawText(0, fontAscent - 1, string);
    row.painter.restore();
}

} // namespace zvwidgets
