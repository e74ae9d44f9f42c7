#pragma once

#include <QStringView>

namespace zvwidgets {

/// True if \a column stands between the two halves of one character. An edit or the
/// end of a selection there would tear the character apart. A lone half is a
/// character of its own.
inline bool splitsPair(QStringView text, qsizetype column)
{
    return column > 0 && column < text.size() && text[column].isLowSurrogate() &&
           text[column - 1].isHighSurrogate();
}

/// Half-open range of columns.
struct ColumnRange
{
    int from = 0;
    int to = 0;

    int length() const { return to - from; }
};

/// \a range widened so that it parts no character. An empty one, which may lie past
/// the end of the text, only moves to the start of the character that it parts.
inline ColumnRange wholeCharacters(QStringView text, ColumnRange range)
{
    const bool isEmpty = range.to <= range.from;
    if (splitsPair(text, range.from))
        --range.from;
    if (splitsPair(text, range.to))
        range.to += isEmpty ? -1 : 1;
    return range;
}

} // namespace zvwidgets
