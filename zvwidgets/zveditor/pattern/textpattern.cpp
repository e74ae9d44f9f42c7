#include "zvwidgets/zveditor/pattern/textpattern.h"

#include "zvwidgets/zveditor/pattern/patternmachine.h"
#include "zvwidgets/zveditor/pattern/patternsearch.h"

namespace zvwidgets {

struct TextPattern::Private
{
    Private(const QString &text, Options wanted);

    std::unique_ptr<PatternMachine> makeMachine(Reading reading) const;

    const QString pattern;
    const Options options;
    std::unique_ptr<PatternMachine> ofUnits;
    std::unique_ptr<PatternMachine> ofCharacters; ///< made when first asked for
};

TextPattern::Private::Private(const QString &text, Options wanted)
    : pattern(text), options(wanted), ofUnits(makeMachine(Reading::Units))
{}

std::unique_ptr<PatternMachine> TextPattern::Private::makeMachine(Reading reading) const
{
    const bool caseInsensitive = options.testFlag(CaseInsensitive);
    const std::unique_ptr<PatternNode> root = parsePattern(pattern, caseInsensitive, reading);
    if (!root)
        return std::make_unique<PatternMachine>();
    return std::make_unique<PatternMachine>(*root, caseInsensitive, options.testFlag(Minimal));
}

TextPattern::TextPattern()
{
    static const auto invalid = std::make_shared<Private>(QStringLiteral("*"), NoOption);
    d = invalid;
}

TextPattern::TextPattern(const QString &pattern, Options options, Syntax syntax)
    : d(std::make_shared<Private>(syntax == Syntax::Wildcard ? wildcardPattern(pattern) : pattern,
                                  options))
{}

bool TextPattern::isValid() const
{
    return d->ofUnits->isValid();
}

QString TextPattern::pattern() const
{
    return d->pattern;
}

TextPattern::Options TextPattern::options() const
{
    return d->options;
}

int TextPattern::search(QStringView text, int from, int *length, PatternBudget *budget) const
{
    PatternSearch search(*this, budget);
    search.setText(text);
    int found = -1;
    const int place = search.find(from, &found);
    if (length)
        *length = found;
    return place;
}

int TextPattern::match(QStringView text, int column, PatternBudget *budget) const
{
    PatternSearch search(*this, budget);
    search.setText(text);
    return search.match(column);
}

PatternMachine *TextPattern::machine(Reading reading) const
{
    if (reading == Reading::Units || !isValid())
        return d->ofUnits.get();
    if (!d->ofCharacters)
        d->ofCharacters = d->makeMachine(Reading::Characters);
    return d->ofCharacters.get();
}

const PatternAutomaton *TextPattern::automaton() const
{
    return d->ofUnits->automaton();
}

const PatternAutomaton *TextPattern::filter() const
{
    return d->ofUnits->filter();
}

QString TextPattern::requiredText() const
{
    const bool caseInsensitive = d->options.testFlag(CaseInsensitive);
    const std::unique_ptr<PatternNode> root =
        parsePattern(d->pattern, caseInsensitive, Reading::Units);
    return root ? zvwidgets::requiredText(*root, caseInsensitive) : QString();
}

} // namespace zvwidgets
