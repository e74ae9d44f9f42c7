#include "zvwidgets/zveditor/highlight/highlightrules.h"

#include <QStringView>

namespace zvwidgets {

HighlightItem::HighlightItem(int attribute, int context, int emptyContext)
    : attr(attribute), ctx(context), empty(emptyContext)
{}

HighlightItem::~HighlightItem() = default;

int HighlightItem::find(const QChar *s, int len) const
{
    int length = -1;
    // Where the match begins is not looked at: the "^" in front of a rule's
    // expression makes it 0, and what that does not reach counts from here all
    // the same.
    (void)regexp.search(QStringView(s, len), 0, &length);
    return length;
}

HighlightUntilItem::HighlightUntilItem(int attribute, int context, int emptyContext,
                                       bool includeMatch, bool takeAll)
    : HighlightItem(attribute, context, emptyContext), inc(includeMatch), full(takeAll)
{}

int HighlightUntilItem::find(const QChar *s, int len) const
{
    int length = 0;
    const int found = regexp.search(QStringView(s, len), 0, &length);
    if (found < 0)
        return full ? len : -1;
    return inc ? found + length : found;
}

HighlightKeyword::HighlightKeyword(int attribute, int context, int emptyContext,
                                   const QStringList &list, bool sensitive)
    : HighlightItem(attribute, context, emptyContext), caseSensitive(sensitive)
{
    for (const QString &word : list)
        dict.insert(word.toLatin1());
}

int HighlightKeyword::find(const QChar *s, int len) const
{
    const int length = HighlightItem::find(s, len);
    if (length <= 0)
        return -1;
    const QString candidate(s, length);
    const QString word = caseSensitive ? candidate : candidate.toLower();
    const bool isLatin1 =
        std::all_of(word.begin(), word.end(), [](QChar ch) { return ch.unicode() <= 0xff; });
    return isLatin1 && dict.contains(word.toLatin1()) ? length : -1;
}

HighlightContext::~HighlightContext()
{
    qDeleteAll(*this);
}

} // namespace zvwidgets
