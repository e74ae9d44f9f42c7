#pragma once

#include "zvwidgets/zveditor/lineregion.h"

#include <QPoint>
#include <QRect>
#include <QWidget>

#include <memory>

class QMenu;
class QScrollBar;

namespace zvwidgets {

class EditorCursor;
class FoldingMargin;
class IndicatorMargin;
class LineNumberMargin;
class SelectionMargin;
class TextDocument;
class TextEditor;
class TextEditorManager;
class TextHighlight;

/// The widget in which a document's text is drawn and in which keys and the
/// mouse arrive. It lives in a TextEditor, shows the editor's document, and owns
/// the cursor, the margins, the scroll bars and the highlight.
///
/// A document position is (line, column), as a QPoint x = column and y = line. A
/// content position is in pixels; contentsX() and contentsY() are the scroll
/// offsets. A row key is content y divided by the line height: the first row on
/// screen has the number of its line as key, and keys count up from there.
class TextView : public QWidget
{
    Q_OBJECT
public:
    enum ScrollBarMode
    {
        Auto = 0,
        AlwaysOff = 1,
        AlwaysOn = 2
    };

    explicit TextView(TextEditor *parent);
    ~TextView() override;

    TextEditor *editor() const;
    TextDocument *document() const;
    TextEditorManager *manager() const;
    EditorCursor *cursor() const;
    /// The context menu, filled by the application.
    QMenu *rmbMenu() const;

    TextHighlight *highlight() const { return hl; }
    /// Takes ownership and scans the whole document with it.
    void setHighlight(TextHighlight *highlight);
    void setHighlight(const QString &name);
    void setHighlightByFileName(const QString &file);

    // Geometry, in pixels

    int lineHeight() const;
    int fontHeight() const;
    int fontAscent() const;
    int linePosition(int n) const;
    int contentsX() const;
    int contentsY() const;
    int tabsWidth() const;
    void setTabsWidth(int width);
    int spaceWidth() const;
    void setSpaceWidth(int width);
    /// The line shown at content position \a y.
    int lineNumber(int y) const;
    /// Document position, x = column, of a content position.
    QPoint screenPosToDoc(int x, int y);
    QPoint screenPosToDoc(const QPoint &pos);
    /// Content position of a document position.
    QPoint docPosToScreen(int column, int line);
    QPoint docPosToScreen(const QPoint &pos);

    ScrollBarMode vScrollBarMode() const;
    virtual void setVScrollBarMode(ScrollBarMode mode);
    ScrollBarMode hScrollBarMode() const;
    virtual void setHScrollBarMode(ScrollBarMode mode);

    IndicatorMargin *indicatorMargin() const;
    SelectionMargin *selectionMargin() const;
    LineNumberMargin *lineNumberMargin() const;
    FoldingMargin *foldingMargin() const;
    void updateMarginsState();
    void repaintMargins();

    // Updating

    void setUpdateRegion(const LineRegion &region);
    void updateFontData();
    void resizeBuffer();
    void resizeMarginBuffers();
    /// Works out what each row shows. Costs nothing if nothing changed.
    void updateLinesList();
    void updateView(bool newDocGeometry);
    void ensureCursorVisible();
    void centerCursor(int line, int column);

    // Selection: top left is its start, bottom right its end, x = column, kept in
    // document order and not normalised.

    QRect selection() const { return selected; }
    bool hasSelection() const;
    void setSelection(const QPoint &from, const QPoint &to);
    void clearSelection();
    bool inSelected(int line, int column) const;
    /// Until unlockSelection() moves and clearSelection() keep the selection.
    void lockSelection();
    void unlockSelection();
    /// The whole move: selection, wanted column, cursor, notice.
    void setCursorPosition(int line, int column, bool select);
    /// The selection's side of a move.
    void setCursorPositionInternal(int line, int column, bool select);

    QVariant inputMethodQuery(Qt::InputMethodQuery query) const override;

    QRect selected;
    /// Owned.
    TextHighlight *hl = nullptr;

public slots:
    void scrollX(int dx);
    void scrollY(int dy);
    void hslide(int value);
    void vslide(int value);

signals:
    void focusChanged(bool on);

protected:
    bool event(QEvent *e) override;
    void focusInEvent(QFocusEvent *e) override;
    void focusOutEvent(QFocusEvent *e) override;
    void keyPressEvent(QKeyEvent *e) override;
    void inputMethodEvent(QInputMethodEvent *e) override;
    void wheelEvent(QWheelEvent *e) override;
    void mousePressEvent(QMouseEvent *e) override;
    void mouseMoveEvent(QMouseEvent *e) override;
    void mouseReleaseEvent(QMouseEvent *e) override;
    void mouseDoubleClickEvent(QMouseEvent *e) override;
    void paintEvent(QPaintEvent *e) override;
    void resizeEvent(QResizeEvent *e) override;

private:
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace zvwidgets
