#include "zvwidgets/zveditor/editor/linematcher.h"

#include "zvwidgets/zveditor/pattern/columns.h"
#include "zvwidgets/zveditor/pattern/words.h"

namespace zvwidgets {

namespace {

/// Units of a line that a fixed text is looked for in the time of a step.
constexpr int unitsInStep = 64;

// Such a text holds the unit of an undecodable byte, which half of a pair may equal.
bool startsOrEndsInPair(QStringView text)
{
    return !text.isEmpty() && (text.front().isLowSurrogate() || text.back().isHighSurrogate());
}

TextPattern patternOf(const SearchTerms &terms)
{
    if (terms.kind == SearchTerms::Kind::Text)
        return TextPattern();
    return TextPattern(terms.text,
                       terms.caseSensitive ? TextPattern::NoOption : TextPattern::CaseInsensitive,
                       terms.kind == SearchTerms::Kind::Wildcard ? TextPattern::Syntax::Wildcard
                                                                 : TextPattern::Syntax::Expression);
}

} // namespace

LineMatcher::LineMatcher(const SearchTerms &terms, PatternBudget *spending)
    : kind(terms.kind)
    , whole(terms.wholeWord && terms.kind == SearchTerms::Kind::Text)
    , beginsOrEndsInPair(startsOrEndsInPair(terms.text))
    , literal(terms.text, terms.caseSensitive ? Qt::CaseSensitive : Qt::CaseInsensitive)
    , budget(spending)
    , search(patternOf(terms), spending)
{}

void LineMatcher::setLine(QStringView line)
{
    text = line;
    begin = 0;
    shift = 0;
    if (isExpression())
        search.setText(text);
}

LineMatcher::Hit LineMatcher::find(int from, EmptyAtStart empty)
{
    const int at = from + shift;
    if (at > text.size())
        return {};
    int length = int(literal.length());
    const int found = isExpression() ? findExpression(at, empty, &length) : findText(at);
    return found < 0 ? Hit() : Hit{found - shift, length};
}

int LineMatcher::findExpression(int from, EmptyAtStart empty, int *length)
{
    const int found = search.find(from, length);
    if (found != from || *length > 0 || empty == EmptyAtStart::Counts)
        return found;
    return from < text.size() ? search.find(from + 1, length) : -1;
}

int LineMatcher::findText(int from) const
{
    auto column = int(literal.indexIn(text, from));
    while (column >= 0) {
        const bool parts = partsPair(column);
        if (!parts && (!whole || isWholeWord(column)))
            break;
        column = int(literal.indexIn(text, column + (parts ? 1 : literal.length())));
    }
    const int passed = (column < 0 ? int(text.size()) : column) - from;
    return budget->spend(1 + passed / unitsInStep) ? column : -1;
}

bool LineMatcher::partsPair(int column) const
{
    return beginsOrEndsInPair &&
           (splitsPair(text, column) || splitsPair(text, column + literal.length()));
}

bool LineMatcher::isWholeWord(int column) const
{
    return isWholeSearchWord(text.sliced(begin), column - begin, literal.length());
}

void LineMatcher::setBefore(int column, std::optional<QChar> before)
{
    // Nothing else looks at what it doesn't take.
    if (!isExpression() && !whole)
        return;
    if (shift == 0) {
        shift = 1;
        copy = QLatin1Char(' ');
        copy += text;
        text = copy;
        if (isExpression())
            search.setText(text);
    }
    begin = column + shift;
    if (before) {
        --begin;
        // Not shared with anything, so that the view of it stays valid.
        copy[begin] = *before;
    }
    search.setBegin(begin);
}

} // namespace zvwidgets
