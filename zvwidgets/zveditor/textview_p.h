#pragma once

#include "zvwidgets/zveditor/textview.h"
#include "zvwidgets/zveditor/visiblelines.h"
#include "zvwidgets/zveditor/wrappedlinescache.h"

#include <QPainter>
#include <QPixmap>

#include <array>
#include <tuple>

class QGridLayout;
class QScrollBar;

namespace zvwidgets {

struct TextAttribute;
class TextHighlight;
class TextLine;

/// A stretch of one row whose characters share an attribute.
struct TextRun
{
    int start = 0;
    int end = 0; ///< exclusive
    const TextAttribute *attribute = nullptr;
};

/// What the sources of the view share.
struct TextView::Private
{
    explicit Private(TextView *view) : q(view) {}

    // Construction

    void setUpWidget() const;
    void makeLayout();

    // Rows

    /// All that the rows depend on; equal ones give equal rows.
    using RowsStamp = std::tuple<unsigned, int, int, int, int, bool, wrapMode>;

    RowsStamp rowsStamp() const;
    void forgetRows() { rowsValid = false; }
    int appendRows(int line);
    int wrapShift(int line, int width) const;
    WrappedLinesCache::Ends wrapEnds(int line, int width, int shift) const;
    int lastHiddenLineBelow(int line) const;
    QPoint columnInRow(const VisibleLine &row, int x) const;

    // Update

    void updateHorizontalBar();
    void updateVerticalBar();
    bool clampHorizontally();
    void updateRows(int first, int last);
    void updateBand(int y, int height) const;
    void stripLeftLine() const;

    // Painting. The painter of a row works in the pixels of the row buffer, its
    // origin lies where column 0 of the line would be.

    bool ensureBuffer();
    void paintLine(TextView *view, int line, int from, int to);
    void paintEmptyArea(QPainter *painter, const QRect &area) const;
    void fillRow(const QColor &color) const;
    void fillColumns(int x, int width, const QColor &color) const;
    void fillToRightEdge(int x, const QColor &color) const;
    void paintInheritedBackground(int line) const;
    void paintBackgrounds(const TextLine &line, int from, int end) const;
    void paintLineColor(const TextView *view, int lineNumber) const;
    void paintSelection(const TextView *view, int line, int from) const;
    void paintText(const TextLine &line, int from, int end) const;
    void paintGuides(const TextLine &line, const TextRun &run, int x) const;
    /// \a withTabs lets a run go on over a tab of the same attribute.
    TextRun runAt(const TextLine &line, int start, int end, bool withTabs) const;
    int runWidth(const TextLine &line, const TextRun &run, int from, int to) const;
    void drawRun(const TextLine &line, const TextRun &run, int x) const;
    void drawCluster(QStringView cluster, int x, int width, const QFont &font) const;
    int nextTabStop(int x) const;
    bool isRightOfView(int x) const;

    // Selection and mouse

    void markSelection();
    void publishSelection() const;
    void press(const QMouseEvent *event);
    void showMenu(const QPoint &globalPos) const;
    void dragOver(const QPoint &pos);
    void scrollWithPointer(const QPoint &local) const;
    void drop();
    QPoint positionAt(const QMouseEvent *event) const;
    bool isOutside(int line) const;

    TextView *const q;
    TextEditor *editor = nullptr;
    TextDocument *doc = nullptr;
    TextEditorManager *manager = nullptr;
    std::unique_ptr<EditorCursor> cursor;
    std::unique_ptr<TextHighlight> highlight;
    /// Reused for every row, so painting a row must not be re-entered.
    QPainter paint;
    /// One row of the view, in device pixels.
    std::unique_ptr<QPixmap> buffer;
    int spaceWidth = 0;
    int tabsWidth = 0;
    int fontHeight = 0;
    int fontAscent = 0;

    // Kept from a press or a drag.
    int row = 0;
    int col = 0;
    Qt::KeyboardModifiers bnModifiers;
    Qt::MouseButtons bnButtons;
    int prevX = 0;
    int prevY = 0;

    /// Where the cursor stood at the last ensureCursorVisible().
    int cursorLine = 0;
    QPoint selectionStart; ///< the end that stays
    QPoint selectionEnd;   ///< the end that moves
    bool selectionLocked = false;
    /// Lines the view has changed itself.
    LineRegion update;
    IndicatorMargin *indicatorMargin = nullptr;
    SelectionMargin *selectionMargin = nullptr;
    LineNumberMargin *lineNumberMargin = nullptr;
    FoldingMargin *foldingMargin = nullptr;
    bool mousePressed = false;
    bool startDrag = false;
    bool endDrag = false;
    VisibleLines visibleLines;
    RowsStamp stamp;
    bool rowsValid = false;
    WrappedLinesCache wrappedLinesCache;
    /// The line each row from the top showed at the last partial update.
    std::array<int, 4096> prevUpdatedlines;
    ScrollBarMode hScrollBarMode = Auto;
    ScrollBarMode vScrollBarMode = AlwaysOn;
    QScrollBar *hbar = nullptr;
    QScrollBar *vbar = nullptr;
    int xPos = 0;
    int yPos = 0;
    /// Lines the document has changed.
    LineRegion updateRegion;
    QMenu *rmbMenu = nullptr;
};

} // namespace zvwidgets
