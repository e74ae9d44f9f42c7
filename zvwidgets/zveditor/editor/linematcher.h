#pragma once

#include "zvwidgets/zveditor/pattern/literalsearch.h"
#include "zvwidgets/zveditor/pattern/patternsearch.h"

#include <QString>
#include <QStringView>

#include <optional>

namespace zvwidgets {

/// What a search in a document looks for.
struct SearchTerms
{
    enum class Kind
    {
        Text,
        Expression,
        Wildcard
    };
    bool operator==(const SearchTerms &other) const = default;

    QString text;
    Kind kind = Kind::Text;
    bool caseSensitive = false;
    bool wholeWord = false; ///< Kind::Text only
};

/// Whether a match of nothing counts where a search begins.
enum class EmptyAtStart
{
    Counts,
    IsPassed
};

/// Finds the matches of a search in one line after the other.
class LineMatcher
{
    Q_DISABLE_COPY_MOVE(LineMatcher)
public:
    struct Hit
    {
        int end() const { return column + length; }
        bool isFound() const { return column >= 0; }

        int column = -1;
        int length = 0;
    };

    /// \a spending is not owned; when it is spent nothing is found any more.
    LineMatcher(const SearchTerms &terms, PatternBudget *spending);

    /// What is looked at from now on. It is not copied and has to stay.
    void setLine(QStringView line);
    /// The first match that begins at or after \a from.
    [[nodiscard]] Hit find(int from, EmptyAtStart empty);
    /// From now on the line is searched as if \a before were what stands left of
    /// \a column, or if it is null as if the line began there: what did stand there was
    /// replaced.
    void setBefore(int column, std::optional<QChar> before);

private:
    bool isExpression() const { return kind != SearchTerms::Kind::Text; }
    int findExpression(int from, EmptyAtStart empty, int *length);
    int findText(int from) const;
    bool isWholeWord(int column) const;
    bool partsPair(int column) const;

    const SearchTerms::Kind kind;
    const bool whole;
    const bool beginsOrEndsInPair; ///< of the text: with a half that may be one of a pair
    const LiteralSearch literal;
    PatternBudget *const budget;
    PatternSearch search;
    QStringView text;
    int begin = 0;
    QString copy;  ///< of the line behind one unit, once setBefore() was called
    int shift = 0; ///< of the line's columns in the copy
};

} // namespace zvwidgets
