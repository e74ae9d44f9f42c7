#pragma once

#include "zvwidgets/zveditor/document/documentview.h"
#include "zvwidgets/zveditor/lines/lineregion.h"

#include <QPoint>
#include <QRect>
#include <QWidget>

#include <memory>

class QMenu;

namespace zvwidgets {

class EditorCursor;
class FoldingMargin;
class IndicatorMargin;
class LineNumberMargin;
class SelectionMargin;
class TextDocument;
class TextEditor;
class TextEditorManager;

/// The widget that draws the text of one document and takes mouse and keys. It
/// lays out itself, its margins and its scroll bars inside the editor that is
/// its parent, and owns the cursor and the selection.
///
/// Content coordinates are pixels of the whole text, those of the widget plus
/// contentsX() and contentsY(). The content is cut into rows of lineHeight();
/// a row's key is its content y divided by that. The first row on screen has
/// the number of its line as key, and keys count on from there through rows of
/// wrapped lines and past folded ones. So a key is a line's number at the top
/// of the view only, and the vertical scroll bar counts lines.
class TextView : public QWidget, public DocumentView
{
    Q_OBJECT
public:
    enum ScrollBarMode
    {
        Auto = 0,
        AlwaysOff = 1,
        AlwaysOn = 2,
    };

    explicit TextView(TextEditor *parent);
    ~TextView() override;

    TextEditor *editor() const;
    TextDocument *document() const;
    TextEditorManager *manager() const;
    EditorCursor *cursor() const;
    /// Shown at a right click if the application put something in.
    QMenu *rmbMenu() const;
    IndicatorMargin *indicatorMargin() const;
    SelectionMargin *selectionMargin() const;
    LineNumberMargin *lineNumberMargin() const;
    FoldingMargin *foldingMargin() const;

    TextHighlight *highlight() const { return hl; }
    /// Takes \a highlight over and colours the document anew.
    void setHighlight(TextHighlight *highlight);
    void setHighlight(const QString &name);
    void setHighlightByFileName(const QString &file);

    // Metrics, in pixels

    int lineHeight() const { return fontHeight(); }
    int fontHeight() const;
    int linePosition(int n) const override;
    int contentsX() const;
    int contentsY() const;
    int tabsWidth() const override;
    void setTabsWidth(int width);
    /// Of a blank in the plain font.
    int spaceWidth() const;
    void setSpaceWidth(int width);

    ScrollBarMode vScrollBarMode() const;
    ScrollBarMode hScrollBarMode() const;
    /// Takes effect at the next updateView(true), as the other one does.
    virtual void setVScrollBarMode(ScrollBarMode mode);
    virtual void setHScrollBarMode(ScrollBarMode mode);

    /// Shows or hides the margins by the manager's flags.
    void updateMarginsState();
    void repaintMargins() override;

    // Rows. updateLinesList() has to be called before coordinates are turned
    // into each other; it is cheap if nothing has changed.

    void updateLinesList();
    /// Line of the row at content \a y; the last line below the text.
    int lineNumber(int y) const;
    /// x is the column, y the line. Below the text, and in what a closed fold
    /// hides, the end of the nearest line.
    QPoint screenPosToDoc(int x, int y) const;
    QPoint screenPosToDoc(const QPoint &p) const { return screenPosToDoc(p.x(), p.y()); }
    /// Content coordinates of the upper left corner of a character. For a
    /// position above or below the rows on screen only a guess that lies on
    /// the same side.
    QPoint docPosToScreen(int column, int line) const;
    QPoint docPosToScreen(const QPoint &p) const { return docPosToScreen(p.x(), p.y()); }

    // Update

    void updateFontData() override;
    void resizeBuffer() override;
    void resizeMarginBuffers();
    void setUpdateRegion(const LineRegion &region) override;
    void updateView(bool newDocGeometry) override;
    /// Scrolls to the cursor. Where the cursor has left a line this strips its
    /// trailing blanks, if the manager says so, past the undo history.
    void ensureCursorVisible();
    /// Puts the cursor to \a line, \a column and that to the middle of the view.
    void centerCursor(int line, int column);

    // Selection

    /// A pair of points in document order, x the column and y the line.
    QRect selection() const { return selected; }
    bool hasSelection() const;
    void setSelection(const QPoint &from, const QPoint &to) override;
    /// Does nothing but tell that there was a change while the selection is
    /// locked.
    void clearSelection();
    /// False for the column at which the selection ends.
    bool inSelected(int line, int column) const;
    /// While it is locked nothing clears the selection. Does not nest.
    void lockSelection();
    void unlockSelection();
    void setCursorPosition(int line, int column, bool select) override;
    /// What a move of the cursor does to the selection; the cursor must still
    /// be where it was.
    void setCursorPositionInternal(int line, int column, bool select);

    /// Number of rows that all views have painted so far.
    static int paintCount();

    QVariant inputMethodQuery(Qt::InputMethodQuery query) const override;

signals:
    void focusChanged(bool hasFocus);

public slots:
    /// Moves what is shown by \a dx pixels to the right; contentsX() has to be changed
    /// before. Nothing happens in wrapped text.
    void scrollX(int dx);
    /// Takes the new place from contentsY(); \a dy is not looked at.
    void scrollY(int dy);
    /// Scrolls to contents x \a value, in pixels.
    void hslide(int value);
    /// Scrolls to line \a value.
    void vslide(int value);

protected:
    bool event(QEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void inputMethodEvent(QInputMethodEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    TextView *textView() override { return this; }
    QObject *focusObject() override { return this; }
    QPoint cursorPosition() const override;
    void moveCursorToLine(int line) override;
    void setTabStops(int blanks) override { setTabsWidth(spaceWidth() * blanks); }
    void repaintAll() override;
    void notify(Notice notice) override;

    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace zvwidgets
