#include "app/editors/zveditor/searchpattern.h"

#include "zvwidgets/zveditor/pattern/patternsearch.h"
#include "zvwidgets/zveditor/pattern/words.h"

namespace vesk {

using zvwidgets::PatternBudget;
using zvwidgets::PatternSearch;
using zvwidgets::TextPattern;

struct SearchPattern::Private
{
    Private(const TextPattern &expression, GoOn goOn)
        : pattern(expression)
        , budget(PatternBudget::unlimited, std::move(goOn))
        , search(pattern, &budget)
    {}

    const TextPattern pattern;
    PatternBudget budget;
    PatternSearch search;
};

SearchPattern::SearchPattern() : d(std::make_unique<Private>(TextPattern(), GoOn()))
{}

SearchPattern::SearchPattern(const QString &pattern, Qt::CaseSensitivity sensitivity, GoOn goOn)
    : d(std::make_unique<Private>(TextPattern(pattern, sensitivity == Qt::CaseSensitive
                                                           ? TextPattern::NoOption
                                                           : TextPattern::CaseInsensitive),
                                  std::move(goOn)))
{}

SearchPattern::~SearchPattern() = default;
SearchPattern::SearchPattern(SearchPattern &&other) noexcept = default;
SearchPattern &SearchPattern::operator=(SearchPattern &&other) noexcept = default;

void SearchPattern::setText(QStringView text)
{
    d->search.setText(text);
}

qsizetype SearchPattern::search(qsizetype from, qsizetype limit, qsizetype *length)
{
    int found = -1;
    const int at = d->search.find(int(from), &found, int(limit));
    *length = found;
    return at;
}

bool SearchPattern::wasStopped() const
{
    return d->budget.wasStopped();
}

QString SearchPattern::requiredText() const
{
    return d->pattern.requiredText();
}

bool isWholeWord(QStringView text, qsizetype column, qsizetype length)
{
    return zvwidgets::isWholeSearchWord(text, column, length);
}

} // namespace vesk
