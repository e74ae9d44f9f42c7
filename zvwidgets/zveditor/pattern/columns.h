#pragma once

#include <QStringView>

#include <algorithm>

namespace zvwidgets {

/// True if \a column stands between the two halves of one character. An edit or the
/// end of a selection there would tear the character apart. A lone half is a
/// character of its own.
inline bool splitsPair(QStringView text, qsizetype column)
{
    return column > 0 && column < text.size() && text[column].isLowSurrogate() &&
           text[column - 1].isHighSurrogate();
}

/// Visual column after \a c, which is at visual column \a visual.
inline int visualColumnAfter(int visual, QChar c, int spacesInTab)
{
    return c == u'\t' ? visual + spacesInTab - visual % spacesInTab : visual + 1;
}

/// Visual column of \a column, which may lie past the end of the text.
inline int visualColumn(QStringView text, int column, int spacesInTab)
{
    int visual = 0;
    for (const QChar c : text.first(std::min(qsizetype(column), text.size())))
        visual = visualColumnAfter(visual, c, spacesInTab);
    return visual + std::max(0, column - int(text.size()));
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
