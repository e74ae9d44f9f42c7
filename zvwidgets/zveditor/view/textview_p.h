#pragma once

#include "zvwidgets/zveditor/textview.h"
#include "zvwidgets/zveditor/view/visiblelines.h"
#include "zvwidgets/zveditor/view/wrappedlinescache.h"

#include <QPainter>
#include <QPixmap>
#include <QStringView>

#include <tuple>
#include <vector>

class QGridLayout;
class QScrollBar;

namespace zvwidgets {

class FontGlyphs;
struct TextAttribute;
class TextHighlight;
class TextLine;

/// Space left of the text, in pixels.
constexpr int leftEdge = 2;

/// A stretch of one row whose characters share an attribute.
struct TextRun
{
    int start = 0;
    int end = 0; ///< exclusive
    const TextAttribute *attribute = nullptr;
};

/// All that the view and the margins show besides what the document tags when it
/// changes. Whatever a row or the area below the rows comes to depend on belongs here.
struct ShownPage
{
    struct Row
    {
        VisibleLine visible;
        /// Colour of the dots in the folding margin, which the marks above decide.
        QRgb dots = 0;
        /// The foot of a fold is drawn here; the line below decides that too.
        bool endsFold = false;

        bool operator==(const Row &) const = default;
    };

    /// What the area below the last row depends on.
    struct Rest
    {
        int top = 0; ///< pixels from the top of the view
        QRgb background = 0;
        QRgb dots = 0;
        /// The icon of the last line, which repeats there.
        const QPixmap *icon = nullptr;

        bool operator==(const Rest &) const = default;
    };

    /// The row at this place is as it was.
    bool hasRow(size_t n, const Row &row) const
    {
        return n < prevUpdatedlines.size() && prevUpdatedlines[n] == row;
    }

    std::vector<Row> prevUpdatedlines;
    Rest rest;
};

/// A part of a row, in pixels of the view; \a end exclusive.
struct PixelRange
{
    int start = 0;
    int end = 0;
};

/// A row while it is painted.
struct RowPaint
{
    /// Its origin lies where the text of the row begins.
    QPainter &painter;
    /// Gives cursor and selection.
    const TextView &view;
    const TextLine &text;
    int line = 0;
    int from = 0; ///< first column
    int end = 0;  ///< column, exclusive, at most the length of the text
    /// From the left edge of the view to the text, in pixels; negative if that begins
    /// left of the view.
    int left = 0;
    PixelRange wanted;
    bool isWhole = true; ///< all of the row is wanted
};

/// What the sources of the view share.
struct TextView::Private
{
    explicit Private(TextView *view);
    ~Private();

    void setUpWidget() const;
    void makeLayout();

    // Rows

    /// All that the rows depend on; equal ones give equal rows.
    using RowsStamp = std::tuple<unsigned, int, int, int, int, bool, wrapMode>;

    RowsStamp rowsStamp() const;
    /// For what the stamp doesn't hold: the measures of fonts and tabs.
    void forgetRows();
    void appendRows(int line);
    int wrapShift(int line) const;
    WrappedLinesCache::Ends wrapEnds(int line, int shift) const;

    // Update

    void updateHorizontalBar();
    void updateVerticalBar();
    bool clampHorizontally();
    void clampVertically();
    int scrollableWidth() const;
    void updateChangedLines(const LineRegion &changed);
    void updateBand(int y, int height) const;
    ShownPage presentPage() const;
    void noteRows();
    void stripLeftLine() const;
    void scrollToRow(int top);
    void scrollDownToCursor();
    void scrollToColumn(int x);

    // Painting

    /// Columns of a row, \a end exclusive, and the place of the first.
    struct RowPart
    {
        int start = 0;
        int end = 0;
        int x = 0;
    };
    enum class RunEnd
    {
        Attribute,
        AttributeOrTab,
    };

    bool ensureBuffer();
    void paintLine(TextView *view, int line, int from, int to, int xShift, PixelRange wanted);
    void paintRow(const RowPaint &row);
    void paintEmptyArea(QPainter *painter, const QRect &area) const;
    RowPart visiblePart(const RowPaint &row) const;
    void widenToPlainText(const TextLine &line, int from, int to, int *start, int *end) const;
    void fillRow(const RowPaint &row, const QColor &color) const;
    void fillToRightEdge(const RowPaint &row, int x, const QColor &color) const;
    bool highlightHasBackgrounds() const;
    void paintInheritedBackground(const RowPaint &row);
    int lineAboveBlanks(int line);
    void cutBlankRun(const LineRegion &changed);
    void paintBackgrounds(const RowPaint &row, const RowPart &part) const;
    void paintLineColor(const RowPaint &row) const;
    void paintSelection(const RowPaint &row) const;
    void paintGuides(const RowPaint &row, int end) const;
    void paintText(const RowPaint &row, const RowPart &part);
    TextRun runAt(const TextLine &line, int start, int end, RunEnd kind) const;
    int runWidth(const TextLine &line, const TextRun &run) const;
    int nextTabStop(int x) const;
    void drawRun(const RowPaint &row, const TextRun &run, int x);
    int stretchEnd(const TextLine &line, int column, int end, FontGlyphs &glyphs) const;
    void drawStretch(const RowPaint &row, QStringView text, int x, int width,
                     const QFont &font) const;

    // Selection and mouse

    void widen(QPoint *first, QPoint *second) const;
    bool splitsCharacter(const QPoint &position) const;
    void markSelection();
    void publishSelection() const;
    QPoint positionAt(const QPoint &local) const;
    void keepPosition(const QMouseEvent *event, const QPoint &position);
    void pressLeft(const QMouseEvent *event);
    bool dragOver(const QMouseEvent *event, const QPoint &position);
    void scrollWithPointer(const QPoint &local) const;
    void drop();

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

    // Kept from a press or a drag; x is the column, y the line.
    QPoint keptPosition;
    Qt::KeyboardModifiers bnModifiers;
    Qt::MouseButtons bnButtons;

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
    /// As of the last update.
    ShownPage shownPage;
    ScrollBarMode hScrollBarMode = Auto;
    ScrollBarMode vScrollBarMode = AlwaysOn;
    QScrollBar *hbar = nullptr;
    QScrollBar *vbar = nullptr;
    int xPos = 0;
    int yPos = 0;
    /// Lines the document has changed.
    LineRegion updateRegion;
    QMenu *rmbMenu = nullptr;
    /// Lines known to be blank, and the revision of the document for which that holds.
    struct
    {
        int first = 0;
        int last = -1;
        unsigned revision = 0;
    } blankRun;
    // Of the run being drawn; kept for their memory.
    std::vector<quint32> glyphIndexes;
    std::vector<QPointF> glyphPositions;

    /// Rows drawn by all views.
    static inline int paintCount = 0;
};

} // namespace zvwidgets
