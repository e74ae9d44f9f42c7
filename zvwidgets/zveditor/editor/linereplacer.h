#pragma once

#include "zvwidgets/zveditor/editor/linematcher.h"

#include <QPoint>
#include <QString>

namespace zvwidgets {

class TextDocument;

/// Puts a text in the place of matches, in all of a line by one removal and one
/// insertion, so that a line of any length costs one walk along it. Works by the
/// document's commands: call it inside a macro.
class LineReplacer
{
public:
    /// Tabs of \a newText are replaced by blanks up to the tab stop if \a expandTabs.
    LineReplacer(TextDocument *document, const QString &newText, bool expandTabs);

    /// Replaces one match.
    void replace(int line, const LineMatcher::Hit &hit);
    /// Replaces in \a line the matches from \a from on that end at or before \a limit.
    /// Returns the number of lines that took the place of this one.
    int replaceIn(int line, LineMatcher *matcher, int from, int limit, EmptyAtStart empty);

    int count() const { return hits; }
    /// x = column, y = line: behind the last replacement.
    QPoint place() const { return lastPlace; }

private:
    void append(QString *out, QStringView text);
    void appendReplacement(QString *out);
    void advance(QChar c);
    int exchange(int line, int column, int length, const QString &out);

    TextDocument *const doc;
    /// A copy, as a literal would be copied for each command that holds it.
    const QString replacement;
    const bool expand;
    const bool breaks;
    int visual = 0; ///< visual column of what comes next, if tabs are expanded
    int hits = 0;
    QPoint lastPlace;
};

} // namespace zvwidgets
