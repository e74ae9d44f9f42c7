#include "zvwidgets/zveditor/editorcursor.h"
#include "zvwidgets/zveditor/editormargins.h"
#include "zvwidgets/zveditor/textdoc.h"
#include "zvwidgets/zveditor/textfolding.h"
#include "zvwidgets/zveditor/textline.h"
#include "zvwidgets/zveditor/textmanager.h"
#include "zvwidgets/zveditor/view/textview_p.h"

#include <QScrollBar>
#include <QSignalBlocker>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace zvwidgets {

namespace {

/// Takes the cursor off the view while something moves under it.
class CursorHidden
{
public:
    explicit CursorHidden(EditorCursor *textCursor) : cursor(textCursor)
    {
        cursor->setEnabled(false);
    }
    ~CursorHidden() { cursor->setEnabled(true); }

private:
    Q_DISABLE_COPY_MOVE(CursorHidden)
    EditorCursor *const cursor;
};

void disableBar(QScrollBar *bar, TextView::ScrollBarMode mode)
{
    bar->setRange(0, 0);
    bar->setEnabled(false);
    bar->setVisible(mode == TextView::AlwaysOn);
}

} // namespace

void TextView::Private::forgetRows()
{
    rowsValid = false;
    wrappedLinesCache.clear();
}

void TextView::setUpdateRegion(const LineRegion &region)
{
    d->updateRegion = region;
    d->cutBlankRun(region);
}

void TextView::updateView(bool newDocGeometry)
{
    if (!d->buffer)
        return;
    updateLinesList();
    const CursorHidden hidden(d->cursor.get());
    if (newDocGeometry) {
        d->updateHorizontalBar();
        d->updateVerticalBar();
        d->clampVertically();
        if (d->clampHorizontally()) {
            updateView(true);
            return;
        }
    }
    d->update.expand(d->updateRegion);
    if (d->update.end > d->doc->lastLine()) {
        update();
        repaintMargins();
        d->noteRows();
    } else {
        const int first = lineNumber(d->yPos);
        d->update.intersect(first, lineNumber(d->fontHeight * first + height() - 1));
        if (!d->update.isEmpty())
            d->updateChangedLines(d->update);
    }
    d->update.clear();
    d->updateRegion.clear();
}

/// Holds the cursor wherever it stands: after the end of the longest line, and in the
/// free space after that.
int TextView::Private::scrollableWidth() const
{
    int width = doc->documentWidth();
    if (cursor->column() > doc->textLength(cursor->line()))
        width = std::max(width, doc->textWidth(cursor->line(), cursor->column()));
    return width + leftEdge + spaceWidth;
}

void TextView::Private::updateHorizontalBar()
{
    const QSignalBlocker blocker(hbar);
    const int over = scrollableWidth() - q->width();
    if (doc->getWrap()) {
        if (xPos != 0)
            q->update();
        xPos = 0;
        disableBar(hbar, hScrollBarMode);
        return;
    }
    if (over < 1) {
        disableBar(hbar, hScrollBarMode);
        return;
    }
    hbar->setRange(0, over);
    hbar->setValue(xPos);
    hbar->setSingleStep(fontHeight);
    hbar->setPageStep(q->width());
    hbar->setEnabled(true);
    hbar->setVisible(hScrollBarMode != AlwaysOff);
}

void TextView::Private::updateVerticalBar()
{
    const QSignalBlocker blocker(vbar);
    const int documentHeight = doc->documentHeight();
    if (documentHeight - q->height() < 1) {
        disableBar(vbar, vScrollBarMode);
        return;
    }
    // The last line can be scrolled up to the middle of the view.
    vbar->setRange(0, (documentHeight - q->height() / 2) / fontHeight + 1);
    vbar->setValue(yPos / fontHeight);
    vbar->setSingleStep(1);
    vbar->setPageStep(q->height() / fontHeight + 1);
    vbar->setEnabled(true);
    vbar->setVisible(vScrollBarMode != AlwaysOff);
}

/// Lines went while the view was below them: the bar could not reach its place.
/// Wrapped text may need a line further down than the bar goes.
void TextView::Private::clampVertically()
{
    const int most = doc->getWrap() ? doc->lastLine() : vbar->maximum();
    if (yPos / fontHeight <= most)
        return;
    yPos = most * fontHeight;
    q->scrollY(0);
}

bool TextView::Private::clampHorizontally()
{
    const int width = scrollableWidth();
    if (xPos <= 0 || width - xPos >= q->width())
        return false;
    const int old = xPos;
    xPos = std::max(width - q->width(), 0);
    q->scrollX(old - xPos);
    return true;
}

/// Asks for a repaint of the rows of \a changed, and of all that shows something else
/// than before.
void TextView::Private::updateChangedLines(const LineRegion &changed)
{
    ShownPage page = presentPage();
    int y = 0;
    for (size_t n = 0; n < page.prevUpdatedlines.size(); ++n, y += fontHeight) {
        const ShownPage::Row &shown = page.prevUpdatedlines[n];
        const int line = shown.visible.line;
        const bool isChanged = line >= changed.start && line <= changed.end;
        if (isChanged || !shownPage.hasRow(n, shown))
            updateBand(y, fontHeight);
    }
    // A key in a short text leaves what is below it as it is.
    shownPage.rest.icon = indicatorMargin->iconBelow();
    if (page.rest != shownPage.rest)
        updateBand(y, std::max(q->height() - y, 0));
    shownPage = std::move(page);
}

ShownPage TextView::Private::presentPage() const
{
    const std::vector<VisibleLine> &rows = visibleLines.list();
    ShownPage page;
    page.prevUpdatedlines.reserve(rows.size());
    QRgb dots = 0;
    for (const VisibleLine &visible : rows) {
        const bool endsFold = doc->folding()->isLastLineOfFold(visible.line);
        page.prevUpdatedlines.push_back({visible, dots, endsFold});
        dots = foldingMargin->dotsBelow(visible.line, dots);
    }
    page.rest.top = int(rows.size()) * fontHeight;
    page.rest.background = manager->normalBackgroundColor.rgb();
    page.rest.dots = dots;
    page.rest.icon = doc->lineOf(doc->lastLine())->linePixmap();
    return page;
}

void TextView::Private::updateBand(int y, int height) const
{
    q->update(0, y, q->width(), height);
    indicatorMargin->update(0, y, indicatorMargin->width(), height);
    selectionMargin->update(0, y, selectionMargin->width(), height);
    lineNumberMargin->update(0, y, lineNumberMargin->width(), height);
    foldingMargin->update(0, y, foldingMargin->width(), height);
}

/// To be called when all rows are about to be painted.
void TextView::Private::noteRows()
{
    q->updateLinesList();
    shownPage = presentPage();
}

/// Trailing blanks go when the cursor has left their line, past the undo
/// history, which is meant.
void TextView::Private::stripLeftLine() const
{
    const bool hasLeft = cursor->line() != cursorLine && cursorLine <= doc->lastLine();
    if (hasLeft && manager->fRemoveSpaces && !doc->isReadOnly() &&
        doc->lineOf(cursorLine)->removeSpaces())
        doc->updateLine(cursorLine);
}

void TextView::ensureCursorVisible()
{
    d->stripLeftLine();
    d->cursorLine = d->cursor->line();
    const CursorHidden hidden(d->cursor.get());
    updateLinesList();
    if (docPosToScreen(d->cursor->pos()).y() < d->yPos)
        d->scrollToRow(docPosToScreen(d->cursor->pos()).y());
    else
        d->scrollDownToCursor();
    d->scrollToColumn(docPosToScreen(d->cursor->pos()).x());
    updateView(true);
}

/// Where wrapped text below the view ends up is a guess, so one step may fall
/// short; but the line itself has to stay in view.
void TextView::Private::scrollDownToCursor()
{
    const int lowest = q->height() - 2 * fontHeight;
    int old = -1;
    int wanted = q->docPosToScreen(cursor->pos()).y() - lowest;
    while (wanted > yPos && yPos > old) {
        old = yPos;
        scrollToRow(std::min(wanted, q->linePosition(cursorLine)));
        wanted = q->docPosToScreen(cursor->pos()).y() - lowest;
    }
}

void TextView::Private::scrollToRow(int top)
{
    const int old = yPos;
    yPos = std::max(top, 0) / fontHeight * fontHeight;
    if (yPos != old)
        q->scrollY(old - yPos);
}

void TextView::Private::scrollToColumn(int x)
{
    if (doc->getWrap()) {
        xPos = 0;
        return;
    }
    const int old = xPos;
    const int left = std::max(x - spaceWidth, 0);
    if (left < xPos)
        xPos = left;
    else if (x + spaceWidth > xPos + q->width())
        xPos = x - q->width() + spaceWidth;
    if (xPos != old)
        q->scrollX(old - xPos);
}

void TextView::centerCursor(int line, int column)
{
    updateLinesList();
    const int half = (lineNumber(d->yPos + height() - 1) - lineNumber(d->yPos)) / 2;
    // Both edges of what is to be seen, then what is to be in the middle.
    setCursorPosition(line - half, 0, false);
    setCursorPosition(line + half, 0, false);
    setCursorPosition(line, column, false);
}

void TextView::scrollX(int dx)
{
    if (d->doc->getWrap())
        return;
    const double ratio = devicePixelRatioF();
    // Parts of pixels cannot be moved.
    if (std::abs(dx) >= width() || ratio != std::floor(ratio)) {
        update();
        return;
    }
    // Below the text nothing is to be moved.
    updateLinesList();
    scroll(dx, 0, QRect(0, 0, width(), d->visibleLines.count() * d->fontHeight) & rect());
}

void TextView::scrollY(int)
{
    const int top = std::clamp(d->yPos / d->fontHeight, 0, d->doc->lastLine());
    const int line = d->doc->folding()->visibleLineUpTo(top);
    d->yPos = line * d->fontHeight;
    updateLinesList();
    update();
    repaintMargins();
    d->noteRows();
}

void TextView::hslide(int value)
{
    const CursorHidden hidden(d->cursor.get());
    const int dx = d->xPos - value;
    d->xPos = value;
    scrollX(dx);
}

void TextView::vslide(int value)
{
    const CursorHidden hidden(d->cursor.get());
    d->yPos = value * d->fontHeight;
    scrollY(0);
}

} // namespace zvwidgets
