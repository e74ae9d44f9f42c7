#include "app/editors/zveditor/searchpattern.h"

#include "zvwidgets/zveditor/pattern/patternautomaton.h"
#include "zvwidgets/zveditor/pattern/textpattern.h"

namespace vesk {

using zvwidgets::PatternAutomaton;
using zvwidgets::TextPattern;

struct SearchPattern::Private
{
    TextPattern pattern;
    QStringView text;
    zvwidgets::PatternMemo memo; ///< of text
};

SearchPattern::SearchPattern() : d(std::make_unique<Private>())
{}

SearchPattern::SearchPattern(const QString &pattern, Qt::CaseSensitivity sensitivity)
    : d(std::make_unique<Private>())
{
    d->pattern =
        TextPattern(pattern, sensitivity == Qt::CaseSensitive ? TextPattern::NoOption
                                                              : TextPattern::CaseInsensitive);
}

SearchPattern::~SearchPattern() = default;
SearchPattern::SearchPattern(SearchPattern &&other) noexcept = default;
SearchPattern &SearchPattern::operator=(SearchPattern &&other) noexcept = default;

void SearchPattern::setText(QStringView text)
{
    d->text = text;
    d->memo.clear();
}

qsizetype SearchPattern::search(qsizetype from, qsizetype limit, qsizetype *length)
{
    int found = -1;
    const PatternAutomaton *const automaton = d->pattern.automaton();
    if (!automaton) {
        const int at = d->pattern.search(d->text, int(from), &found);
        *length = found;
        return at;
    }
    const PatternAutomaton::Subject subject{d->text.utf16(), 0, int(d->text.size())};
    const int at = automaton->searchBefore(subject, int(from), int(limit), &found, &d->memo);
    *length = found - at;
    return at;
}

QString SearchPattern::requiredText() const
{
    return d->pattern.requiredText();
}

} // namespace vesk
