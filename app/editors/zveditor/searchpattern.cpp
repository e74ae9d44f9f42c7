#include "app/editors/zveditor/searchpattern.h"

#include "zvwidgets/zveditor/textpattern.h"

namespace vesk {

struct SearchPattern::Private
{
    zvwidgets::TextPattern pattern;
};

SearchPattern::SearchPattern() : d(std::make_unique<Private>())
{}

SearchPattern::SearchPattern(const QString &pattern, Qt::CaseSensitivity sensitivity)
    : d(std::make_unique<Private>())
{
    using zvwidgets::TextPattern;
    d->pattern =
        TextPattern(pattern, sensitivity == Qt::CaseSensitive ? TextPattern::NoOption
                                                              : TextPattern::CaseInsensitive);
}

SearchPattern::~SearchPattern() = default;
SearchPattern::SearchPattern(SearchPattern &&other) noexcept = default;
SearchPattern &SearchPattern::operator=(SearchPattern &&other) noexcept = default;

qsizetype SearchPattern::search(QStringView text, qsizetype from, qsizetype *length) const
{
    int matched = 0;
    const int at = d->pattern.search(text, int(from), &matched);
    *length = matched;
    return at;
}

} // namespace vesk
