#include "app/ctags/textlines.h"

#include <algorithm>
#include <utility>

namespace vesk {

TextLines::TextLines(QStringView text) : length(text.size()), isStarted(true)
{
    for (qsizetype at = text.indexOf(u'\n'); at >= 0; at = text.indexOf(u'\n', at + 1))
        lineEnds.append(at);
}

void TextLines::append(qsizetype lineLength)
{
    if (std::exchange(isStarted, true))
        lineEnds.append(length++);
    length += lineLength;
}

/// The start of the text for a line before it, and its end for one after it.
qsizetype TextLines::startOf(int line) const
{
    if (line <= 0)
        return 0;
    return line <= lineEnds.size() ? lineEnds[line - 1] + 1 : length;
}

int TextLines::lastPos(int line) const
{
    const qsizetype start = startOf(line);
    if (start + 1 >= length)
        return int(start + 1);
    // The end of an empty line is passed over.
    const auto end = std::lower_bound(lineEnds.begin(), lineEnds.end(), start + 1);
    return int(end == lineEnds.end() ? length : *end - 1);
}

int TextLines::endOf(int line) const
{
    const qsizetype start = startOf(line);
    const bool isEmpty = std::binary_search(lineEnds.begin(), lineEnds.end(), start);
    return isEmpty ? int(start) : lastPos(line);
}

int TextLines::lineOf(int pos) const
{
    return int(std::upper_bound(lineEnds.begin(), lineEnds.end(), qMax(pos, 0)) - lineEnds.begin());
}

} // namespace vesk
