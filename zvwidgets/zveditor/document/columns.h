#pragma once

#include <QStringView>

namespace zvwidgets {

/// True if \a column stands between the two halves of one character. An edit or the
/// end of a selection there would tear the character apart.
inline bool splitsPair(QStringView text, qsizetype column)
{
    return column > 0 && column < text.size() && text[column].isLowSurrogate() &&
           text[column - 1].isHighSurrogate();
}

} // namespace zvwidgets
