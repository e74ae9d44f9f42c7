#pragma once

#include "zvwidgets/zveditor/pattern/columns.h"

#include <QPoint>
#include <QRect>

#include <limits>

namespace zvwidgets {

// A selection is a QRect used as a pair of points, x the column and y the line,
// from its start to its end and not ordered. QRect's own idea of emptiness,
// containing and normalizing counts the right and bottom edges differently and
// must not be asked.

/// \a rect with its ends put in order, column and line each by itself.
inline QRect ordered(const QRect &rect)
{
    return QRect(QPoint(qMin(rect.left(), rect.right()), qMin(rect.top(), rect.bottom())),
                 QPoint(qMax(rect.left(), rect.right()), qMax(rect.top(), rect.bottom())));
}

/// True if nothing is selected.
inline bool isEmptySelection(const QRect &rect)
{
    return rect.topLeft() == rect.bottomRight();
}

/// True if column and line grow the same way from start to end, so that the
/// left column of the ordered rectangle belongs to its first line.
inline bool runsDiagonally(const QRect &rect)
{
    return (rect.width() > 0) == (rect.height() > 0);
}

/// A selection with its ends in document order.
struct TextSelection
{
    /// With \a box it is a box of columns, as one within a line is anyway.
    TextSelection(const QRect &rect, bool box)
        : first(ordered(rect).top())
        , last(ordered(rect).bottom())
        , isBox(box || first == last)
        , start(isBox || runsDiagonally(rect) ? ordered(rect).left() : ordered(rect).right())
        , end(isBox || runsDiagonally(rect) ? ordered(rect).right() : ordered(rect).left())
    {}

    /// What is selected of \a line; the end of a line that is selected to its very end
    /// lies past all text.
    ColumnRange columnsOf(int line) const
    {
        if (line < first || line > last)
            return {};
        const bool toEnd = !isBox && line < last;
        return {isBox || line == first ? start : 0, toEnd ? std::numeric_limits<int>::max() : end};
    }
    bool contains(int line, int column) const
    {
        const ColumnRange columns = columnsOf(line);
        return column >= columns.from && column < columns.to;
    }

    int first;
    int last; ///< inclusive
    bool isBox;
    int start; ///< column in the first line, or left one of the box
    int end;   ///< column in the last line, or right one of the box, exclusive
};

} // namespace zvwidgets
