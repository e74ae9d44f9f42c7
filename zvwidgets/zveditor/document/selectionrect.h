#pragma once

#include <QPoint>
#include <QRect>

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

} // namespace zvwidgets
