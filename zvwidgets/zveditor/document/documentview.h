#pragma once

#include <QPoint>
#include <QRect>

class QObject;

namespace zvwidgets {

struct LineRegion;
class TextHighlight;
class TextView;

/// A view as the document sees it: what it asks its views and tells them. The
/// document knows nothing of widgets. TextView is the one that is shown.
class DocumentView
{
public:
    enum class Notice
    {
        Modification, ///< the text changed, or its modified flag
        UndoRedo      ///< what can be undone or done again changed
    };

    DocumentView() = default;

    /// Itself; the document only hands it on.
    virtual TextView *textView() = 0;
    /// The undo manager finds the document by the focus of this.
    virtual QObject *focusObject() = 0;

    /// x is the column, y the line.
    virtual QPoint cursorPosition() const = 0;
    /// Moves the cursor and scrolls to it. \a select extends the selection to
    /// there; otherwise the selection is cleared, except during a drag.
    virtual void setCursorPosition(int line, int column, bool select) = 0;
    /// Places the cursor at the start of \a line and leaves the selection alone.
    virtual void moveCursorToLine(int line) = 0;
    /// From \a from, which stays the anchor of later moves, to \a to; a surrogate pair
    /// is taken whole. Shows at the next updateView().
    virtual void setSelection(const QPoint &from, const QPoint &to) = 0;

    /// Content y of the row with key \a n, in pixels.
    virtual int linePosition(int n) const = 0;
    /// Distance of tab stops in pixels.
    virtual int tabsWidth() const = 0;
    /// Sets the tab stops \a blanks of the plain font apart.
    virtual void setTabStops(int blanks) = 0;
    /// Measures the manager's fonts anew and keeps the line at the top. resizeBuffer()
    /// and a repaint have to follow.
    virtual void updateFontData() = 0;
    /// Fits the row pixmaps of the view and its margins to width and line height.
    virtual void resizeBuffer() = 0;

    /// Lines the document has changed since the last updateView().
    virtual void setUpdateRegion(const LineRegion &region) = 0;
    /// Asks for a repaint of the rows that changed. \a newDocGeometry adjusts
    /// the scroll bars.
    virtual void updateView(bool newDocGeometry) = 0;
    virtual void repaintMargins() = 0;
    /// The margins too.
    virtual void repaintAll() = 0;
    virtual void notify(Notice notice) = 0;

    /// A pair of points in document order, x the column and y the line.
    QRect selected{QPoint(0, 0), QPoint(0, 0)};
    /// Never null while a document has this view, which owns it.
    TextHighlight *hl = nullptr;

protected:
    ~DocumentView() = default;

private:
    Q_DISABLE_COPY_MOVE(DocumentView)
};

} // namespace zvwidgets
