#include "zvwidgets/zveditor/pattern/patternsearch.h"

#include "zvwidgets/zveditor/pattern/columns.h"
#include "zvwidgets/zveditor/pattern/patternmachine.h"
#include "zvwidgets/zveditor/pattern/unitscan.h"

#include <algorithm>

namespace zvwidgets {

namespace {

/// Places a table is asked about between two looks at the budget.
constexpr int chunkSize = 64 * 1024;
/// What looking at a text without the filter may cost: more than most expressions need.
constexpr qint64 baseAllowance = 4096;
constexpr qint64 allowancePerUnit = 16;

} // namespace

PatternSearch::PatternSearch(const TextPattern &expression, PatternBudget *spending)
    : pattern(expression)
    , shared(spending)
    , own(TextPattern::defaultSteps)
    , budget(shared ? shared : &own)
{}

void PatternSearch::setText(QStringView text)
{
    units = text.utf16();
    begin = 0;
    end = int(text.size());
    hasPairs = !pattern.options().testFlag(TextPattern::CodeUnits) && holdsSurrogate(units, 0, end);
    machine =
        pattern.machine(hasPairs ? TextPattern::Reading::Characters : TextPattern::Reading::Units);
    memo.clear();
    if (!shared)
        own = PatternBudget(TextPattern::defaultSteps);
    memo.budget = budget;
}

bool PatternSearch::isInsidePair(int column) const
{
    return splitsPair(QStringView(units + begin, units + end), column - begin);
}

int PatternSearch::find(int from, int *length, int limit)
{
    *length = -1;
    if (!machine->isValid() || from < begin || from > end)
        return -1;
    limit = std::min(limit, end + 1);
    int foundEnd = 0;
    int place = findPlace(from, limit, &foundEnd);
    while (hasPairs && place >= 0 && (isInsidePair(place) || isInsidePair(foundEnd)))
        place = place + 1 < limit ? findPlace(place + 1, limit, &foundEnd) : -1;
    if (place >= 0)
        *length = foundEnd - place;
    return place;
}

int PatternSearch::match(int column)
{
    if (!machine->isValid() || column < begin || column > end)
        return -1;
    if (const PatternAutomaton *const table = machine->automaton()) {
        const int foundEnd = table->matchEnd({units, begin, end}, column, &memo);
        return foundEnd < 0 ? -1 : foundEnd - column;
    }
    PatternMachine::Effort effort{*budget, PatternBudget::unlimited};
    return machine->match(QStringView(units + begin, end - begin), column - begin, &effort);
}

int PatternSearch::findPlace(int from, int limit, int *foundEnd)
{
    if (const PatternAutomaton *const table = machine->automaton())
        return findByTable(*table, from, limit, foundEnd);
    int candidate = from;
    if (machine->filter()) {
        candidate = findByTable(*machine->filter(), from, limit, foundEnd);
        if (candidate < 0)
            return -1;
    }
    const qint64 allowance = machine->filter()
                                 ? baseAllowance + allowancePerUnit * (end - candidate)
                                 : PatternBudget::unlimited;
    PatternMachine::Effort effort{*budget, allowance};
    const QStringView text(units + begin, end - begin);
    int length = 0;
    const int found = machine->search(text, candidate - begin, &length, &effort);
    if (effort.isOver)
        return budget->isSpent() ? -1 : findByCandidates(candidate, limit, foundEnd);
    *foundEnd = begin + found + length;
    return found < 0 ? -1 : begin + found;
}

int PatternSearch::findByTable(const PatternAutomaton &table, int from, int limit, int *foundEnd)
{
    const PatternAutomaton::Subject subject{units, begin, end};
    while (from < limit) {
        const int stop = limit - from > chunkSize ? from + chunkSize : limit;
        const int found = table.searchBefore(subject, from, stop, foundEnd, &memo);
        if (!budget->spend((found < 0 ? stop : found) - from + 1))
            return -1;
        if (found >= 0 || table.beginOnly())
            return found;
        from = stop;
    }
    return -1;
}

/// Tries the places alone where the filter matches: \a candidate is the first.
int PatternSearch::findByCandidates(int candidate, int limit, int *foundEnd)
{
    const QStringView text(units + begin, end - begin);
    while (candidate >= 0) {
        PatternMachine::Effort effort{*budget, PatternBudget::unlimited};
        const int length = machine->match(text, candidate - begin, &effort);
        if (effort.isOver)
            return -1;
        if (length >= 0) {
            *foundEnd = candidate + length;
            return candidate;
        }
        candidate = findByTable(*machine->filter(), candidate + 1, limit, foundEnd);
    }
    return -1;
}

} // namespace zvwidgets
