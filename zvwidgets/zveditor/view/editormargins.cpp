#include "zvwidgets/zveditor/editormargins.h"

#include "zvwidgets/zveditor/document/selectionrect.h"
#include "zvwidgets/zveditor/textdoc.h"
#include "zvwidgets/zveditor/textfolding.h"
#include "zvwidgets/zveditor/textline.h"
#include "zvwidgets/zveditor/textmanager.h"
#include "zvwidgets/zveditor/textview.h"
#include "zvwidgets/zveditor/view/rowbuffer.h"

#include <QCoreApplication>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QWheelEvent>

#include <algorithm>

namespace zvwidgets {

namespace {

constexpr QColor marginColor(240, 240, 240);
constexpr QColor dotColor(0, 128, 128);
constexpr QColor addFoldColor(64, 64, 64);
/// Pixels left free at both sides of a line number.
constexpr int numberBorder = 3;

// Filled rectangles stay one logical pixel wide on a screen of any ratio,
// where a drawn line would straddle two.
void verticalLine(QPainter *painter, int x, int y0, int y1)
{
    painter->fillRect(x, y0, 1, y1 - y0 + 1, painter->pen().color());
}

void horizontalLine(QPainter *painter, int y, int x0, int x1)
{
    painter->fillRect(x0, y, x1 - x0 + 1, 1, painter->pen().color());
}

/// Every second pixel of the margin's right edge, counted from the top of the
/// content, so that the line stays even whatever the scroll position.
void dottedLine(QPainter *painter, int x, int contentY, int height)
{
    for (int y = contentY % 2 == 0 ? 0 : 1; y < height; y += 2)
        painter->fillRect(x, y, 1, 1, painter->pen().color());
}

} // namespace

Margin::Margin(TextView *textView, QWidget *parent)
    : QWidget(parent), view(textView), document(textView->document()), manager(textView->manager())
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
}

Margin::~Margin() = default;

void Margin::resizeBuffer()
{
    buffer = makeRowBuffer(*this, view->lineHeight());
    if (sizeHint().width() != width())
        updateGeometry();
}

void Margin::resizeEvent(QResizeEvent *)
{
    resizeBuffer();
}

void Margin::wheelEvent(QWheelEvent *event)
{
    const std::unique_ptr<QWheelEvent> copy(event->clone());
    QCoreApplication::sendEvent(view, copy.get());
    event->accept();
}

bool Margin::ensureBuffer()
{
    if (!buffer || buffer->devicePixelRatio() != devicePixelRatioF())
        resizeBuffer();
    return view->lineHeight() > 0;
}

int Margin::lineAt(int y) const
{
    return std::max(view->lineNumber(view->contentsY() + y), 0);
}

int Margin::rowTop(int y) const
{
    const int height = view->lineHeight();
    return (view->contentsY() + y) / height * height - view->contentsY();
}

int Margin::lastLineTop() const
{
    return view->docPosToScreen(0, document->lastLine()).y() - view->contentsY();
}

QSize IndicatorMargin::sizeHint() const
{
    return {18, 0};
}

void IndicatorMargin::paintEvent(QPaintEvent *event)
{
    if (!ensureBuffer())
        return;
    view->updateLinesList();
    const QRect r = event->rect();
    const int h = view->lineHeight();
    const int lastY = lastLineTop();
    QPainter screen(this);
    for (int y = rowTop(r.y()); y < r.y() + r.height(); y += h) {
        paintRow(lineAt(y));
        screen.drawPixmap(0, y, *buffer);
        if (y > lastY)
            shownBelow = document->lineOf(document->lastLine())->linePixmap();
    }
}

/// Below the text lineAt() answers the last line, whose icon so repeats there;
/// this is meant.
void IndicatorMargin::paintRow(int line)
{
    const int h = view->lineHeight();
    QPainter painter(buffer.get());
    painter.setBrushOrigin(0, -view->contentsY());
    painter.fillRect(0, 0, width() - 2, h, palette().window());
    painter.fillRect(width() - 2, 0, 1, h, palette().color(QPalette::Light));
    painter.fillRect(width() - 1, 0, 1, h, palette().color(QPalette::Dark));
    if (line > document->lastLine())
        return;
    const QPixmap *icon = document->lineOf(line)->linePixmap();
    if (!icon || icon->isNull())
        return;
    const QSize size = icon->deviceIndependentSize().toSize();
    painter.drawPixmap((width() - size.width() - 2) / 2, (h - size.height()) / 2, *icon);
}

QSize LineNumberMargin::sizeHint() const
{
    return {manager->width(0, QStringLiteral("10000")) + 2 * numberBorder, 0};
}

void LineNumberMargin::paintEvent(QPaintEvent *event)
{
    if (!ensureBuffer())
        return;
    view->updateLinesList();
    const QRect r = event->rect();
    const int h = view->lineHeight();
    const int lastY = lastLineTop();
    QPainter screen(this);
    int previous = -1;
    for (int y = rowTop(0); y < r.y() + r.height(); y += h) {
        const int line = y <= lastY + 1 ? lineAt(y) : -1;
        if (r.y() < y + h) {
            paintRow(view->contentsY() + y, line == previous ? -1 : line);
            screen.drawPixmap(0, y, *buffer);
        }
        if (line >= 0)
            previous = line;
    }
}

/// \a line of -1 leaves the row without a number.
void LineNumberMargin::paintRow(int contentY, int line)
{
    const int h = view->lineHeight();
    QPainter painter(buffer.get());
    painter.fillRect(0, 0, width(), h, manager->normalBackgroundColor);
    painter.setPen(dotColor);
    painter.setFont(manager->font(0));
    dottedLine(&painter, width() - 1, contentY, h);
    if (line < 0)
        return;
    // Not clipped to the text's rectangle: of a sixth digit as much is to be seen as
    // there is room for.
    painter.drawText(numberBorder, 0, width() - 2 * numberBorder, h,
                     Qt::AlignRight | Qt::AlignVCenter | Qt::TextDontClip,
                     QString::number(line + 1));
}

QSize FoldingMargin::sizeHint() const
{
    return {13, 0};
}

void FoldingMargin::paintEvent(QPaintEvent *event)
{
    if (!ensureBuffer())
        return;
    view->updateLinesList();
    const QRect r = event->rect();
    const int h = view->lineHeight();
    const int lastY = lastLineTop();
    QPainter screen(this);
    QPainter painter(buffer.get());
    // Set once: the pen a row leaves colours the dots and boxes below it,
    // which is meant. Rows above the event's are painted for its sake.
    painter.setPen(dotColor);
    for (int y = rowTop(0); y < r.y() + r.height(); y += h) {
        const bool touched = r.y() < y + h;
        if (touched) {
            painter.fillRect(0, 0, width(), h, marginColor);
            dottedLine(&painter, width() - 1, view->contentsY() + y, h);
        }
        if (y <= lastY + 1)
            paintRow(&painter, lineAt(y));
        if (touched)
            screen.drawPixmap(0, y, *buffer);
    }
}

void FoldingMargin::paintRow(QPainter *painter, int line) const
{
    if (showAddFoldArea(line)) {
        paintAddFoldRow(painter, line);
        return;
    }
    const TextLine *textLine = document->lineOf(line);
    if (textLine->isFoldingStart) {
        paintFoldStart(painter, line);
        return;
    }
    if (textLine->foldingLevel > 0) {
        const bool foldEnds = document->folding()->isLastLineOfFold(line);
        paintFoldLine(painter, textLine->foldingLevel, foldEnds, 0, view->lineHeight());
    }
}

void FoldingMargin::paintAddFoldRow(QPainter *painter, int line) const
{
    const int h = view->lineHeight();
    const int m = h / 2;
    const QRect selected = ordered(view->selection());
    painter->fillRect(0, 0, 12, h, Qt::white);
    painter->setPen(addFoldColor);
    verticalLine(painter, 0, 0, h - 1);
    verticalLine(painter, 12, 0, h - 1);
    if (line == (selected.top() + selected.bottom()) / 2) {
        horizontalLine(painter, m, 4, 8);
        verticalLine(painter, 6, m - 2, m + 2);
    }
    if (line == selected.top())
        horizontalLine(painter, 0, 0, 12);
    if (line == selected.bottom())
        horizontalLine(painter, h - 1, 0, 12);
}

void FoldingMargin::paintFoldStart(QPainter *painter, int line) const
{
    const int h = view->lineHeight();
    const int m = h / 2;
    const TextLine *textLine = document->lineOf(line);
    painter->fillRect(2, m - 4, 9, 9, painter->pen().color());
    painter->fillRect(3, m - 3, 7, 7, Qt::white);
    horizontalLine(painter, m, 4, 8);
    if (textLine->isFolded)
        verticalLine(painter, 6, m - 2, m + 2);
    paintFoldLine(painter, textLine->foldingLevel, textLine->isFolded, m + 5, h);
    if (line == 0)
        return;
    const int levelAbove = document->lineOf(line - 1)->foldingLevel;
    if (levelAbove > 0)
        paintFoldLine(painter, levelAbove, false, 0, m - 4);
}

void FoldingMargin::paintFoldLine(QPainter *painter, int level, bool last, int y0, int y1) const
{
    painter->setPen(Qt::black);
    const int depth = std::min(level, 3);
    for (int i = 1; i <= depth; ++i)
        verticalLine(painter, 3 * i, y0, y1);
    if (last)
        horizontalLine(painter, y1 - 1, 3 * depth, 12);
}

QRgb FoldingMargin::dotsBelow(int line, QRgb above) const
{
    if (showAddFoldArea(line))
        return addFoldColor.rgb();
    const TextLine *const textLine = document->lineOf(line);
    const bool hasMark = textLine->isFoldingStart || textLine->foldingLevel > 0;
    return hasMark ? QColor(Qt::black).rgb() : above;
}

bool FoldingMargin::showAddFoldArea(int line) const
{
    const QRect selected = ordered(view->selection());
    return selected.height() > 2 && line >= selected.top() && line <= selected.bottom();
}

void FoldingMargin::mousePressEvent(QMouseEvent *event)
{
    view->updateLinesList();
    const int line = std::min(lineAt(event->position().toPoint().y()), document->lastLine());
    TextFolding *folding = document->folding();
    if (showAddFoldArea(line)) {
        const QRect selected = ordered(view->selection());
        folding->createFold(selected.top(), selected.bottom());
        view->clearSelection();
        return;
    }
    if (document->lineOf(line)->foldingLevel == 0)
        return;
    if (event->button() == Qt::LeftButton)
        folding->toggleFold(line);
    else
        folding->removeFold(line);
}

QSize SelectionMargin::sizeHint() const
{
    return {16, 0};
}

void SelectionMargin::paintEvent(QPaintEvent *event)
{
    if (!ensureBuffer())
        return;
    buffer->fill(marginColor);
    const QRect r = event->rect();
    QPainter screen(this);
    for (int y = rowTop(r.y()); y < r.y() + r.height(); y += view->lineHeight())
        screen.drawPixmap(0, y, *buffer);
}

void SelectionMargin::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    const int line = lineAt(event->position().toPoint().y());
    if (line > document->lastLine())
        return;
    view->setCursorPosition(line, 0, false);
    moveBehind(line, true);
    doSelect = true;
    start = line;
    last = line;
    upOrDown = false;
}

void SelectionMargin::mouseMoveEvent(QMouseEvent *event)
{
    if (!doSelect)
        return;
    // Below the margin the view knows no rows and would name the last line of
    // the document; the lowest row scrolls on by itself.
    const int y = std::min(event->position().toPoint().y(), height() - 1);
    const int line = lineAt(y);
    if (line > document->lastLine() || line == last)
        return;
    if (upOrDown && line >= start) {
        upOrDown = false;
        view->setCursorPosition(start, 0, false);
    }
    if (!upOrDown && line < start) {
        upOrDown = true;
        moveBehind(start, false);
    }
    if (upOrDown)
        view->setCursorPosition(line, 0, true);
    else
        moveBehind(line, true);
    last = line;
}

void SelectionMargin::mouseReleaseEvent(QMouseEvent *)
{
    doSelect = false;
}

void SelectionMargin::moveBehind(int line, bool select)
{
    // The line a drag began at may have been removed meanwhile.
    const int lastLine = document->lastLine();
    if (line >= lastLine)
        view->setCursorPosition(lastLine, document->textLength(lastLine), select);
    else
        view->setCursorPosition(line + 1, 0, select);
}

} // namespace zvwidgets
