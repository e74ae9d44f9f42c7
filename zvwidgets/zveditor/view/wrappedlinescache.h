#pragma once

#include "zvwidgets/zveditor/textdoc.h"

#include <QHash>
#include <QString>

#include <vector>

namespace zvwidgets {

/// Remembers where the rows of a wrapped text end, for one width and way of
/// wrapping. The text itself is the key: equal lines share an entry, and an
/// edited line simply looks up another one.
class WrappedLinesCache
{
public:
    using Ends = std::vector<int>;

    /// A text longer than this is not worth its memory.
    static constexpr int longestText = 64 * 1024;

    void setWidth(int newWidth);
    void setWrapMode(bool newWrap, wrapMode newMode);
    void clear();

    /// The end of each row in order, null if the text isn't known. Valid until
    /// the next call of another operation.
    const Ends *find(const QString &text) const;
    /// The stored entry, valid as that of find().
    const Ends *insert(const QString &text, Ends ends);
    int count() const { return int(lines.size()); }

private:
    int width = -1;
    bool wrap = false;
    wrapMode mode = wrapLine;
    QHash<QString, Ends> lines;
    qsizetype characters = 0;
    /// Where the rows of a text that is too long to be kept are handed out.
    Ends unkept;
};

} // namespace zvwidgets
