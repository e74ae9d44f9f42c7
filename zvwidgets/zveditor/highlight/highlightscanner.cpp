#include "zvwidgets/zveditor/highlight/highlightscanner.h"

#include "zvwidgets/zveditor/pattern/patternbudget.h"
#include "zvwidgets/zveditor/pattern/patternmachine.h"
#include "zvwidgets/zveditor/pattern/unitscan.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <limits>
#include <map>

namespace zvwidgets {

namespace {

/// What rules that are not linear by themselves may spend on a line, in steps of a
/// PatternBudget: enough for any line written by hand, and a few milliseconds.
constexpr qint64 baseWork = 256 * 1024;
constexpr qint64 workPerUnit = 4;
/// Steps that trying such a rule costs at least.
constexpr qint64 tryCost = 8;
/// Characters that are passed in the time of a step where tables do the matching.
constexpr int passedInStep = 8;
constexpr int nowhere = std::numeric_limits<int>::max();
constexpr int asciiCount = UnitSet::asciiCount;
/// Stands for all units from 128 on where rules are chosen by the next character.
constexpr int wideUnit = asciiCount;
constexpr int trackedRules = 32;

quint64 nextId()
{
    static std::atomic<quint64> last = 0;
    return ++last;
}

/// Most tokens are shorter than the call of a library function is worth.
inline void fill(qint8 *to, qint8 value, int count)
{
    constexpr int shortCount = 8;
    if (count > shortCount) {
        std::memset(to, value, size_t(count));
        return;
    }
    for (int i = 0; i < count; ++i)
        to[i] = value;
}

} // namespace

/// An expression and what is known of it on the line at hand.
struct HighlightScanner::Pattern
{
    TextPattern regexp;
    const PatternAutomaton *automaton = nullptr; ///< null: matched by regexp
    const PatternAutomaton *filter = nullptr;    ///< as TextPattern::filter()
    const UnitSet *run = nullptr;
    std::array<bool, asciiCount> inRun{};
    bool hasStops = false; ///< the run ends at one of a few units alone
    WantedUnits stops{};
    bool anchored = false;   ///< matches at the present position or not at all
    bool wasDropped = false; ///< used up the work of some line

    quint64 lineStamp = 0;
    int runBegin = 0; ///< the last run found
    int runEnd = 0;

    quint64 textStamp = 0;
    int searchFrom = 0; ///< from here on the first match is at searchFound
    int searchFound = 0;
    int searchEnd = 0;
    PatternMemo memo;
};

struct HighlightScanner::Rule
{
    enum class Kind : quint8
    {
        Match,
        Run,  ///< a match is a run of units of one set
        Unit, ///< a match is a single unit
        Keyword,
        Until,
        Rest ///< a scan for the end of the line
    };
    Kind kind = Kind::Match;
    bool inc = false;
    bool full = false;
    qint8 attr = 0;
    qint16 ctx = -1;
    qint16 empty = -1;
    int pattern = 0;
    int words = -1;   ///< Keyword: index of the table
    int tracked = -1; ///< Until: bit in the presence masks
    quint64 list = 0; ///< Keyword: bit of its list
    /// Keyword: the last of the rules from this one on that look at the same
    /// candidate in the same table, and their lists; one look-up answers for all.
    int blockEnd = 0;
    quint64 blockLists = 0;
};

struct HighlightScanner::Context
{
    /// A word table and its answer for the last candidate asked for.
    struct Words
    {
        int pattern = 0;
        KeywordTable table;
        quint64 lineStamp = 0;
        int at = 0;
        int length = 0;
        quint64 lists = 0;
        std::vector<int> rules; ///< by number of the list
    };

    int firstRule(char16_t unit) const { return nextRule(unit, 0); }
    /// The first rule from \a from on that has to be asked in front of \a unit.
    int nextRule(char16_t unit, int from) const
    {
        const int cls = unitClass[unit < asciiCount ? unit : wideUnit];
        return next[size_t(cls) * size_t(count + 1) + size_t(from)];
    }

    int count = 0;
    std::vector<Rule> rules;
    std::array<quint8, asciiCount + 1> unitClass{};
    std::vector<int> next; ///< by class, then rule; `count` for none
    mutable std::vector<Words> words;
    bool shrinkMatters = false; ///< a failure can turn into a match in a shorter text
    bool shrinkCosts = false;   ///< asking again may cost what the text is long

    /// Bit n: a match of the rule tracked under n can begin with the unit.
    std::array<quint32, asciiCount> starts{};
    int tracked = 0;
    mutable quint64 presenceStamp = 0;
    mutable quint32 present = 0;
};

HighlightScanner::HighlightScanner(const Contexts &source) : id(nextId())
{
    for (const auto &context : source)
        contexts.push_back(makeContext(*context));
    for (const auto &pattern : patterns) {
        if (pattern->filter)
            shortReach = std::max(shortReach, pattern->filter->shortReach());
    }
}

HighlightScanner::~HighlightScanner() = default;

int HighlightScanner::addPattern(const TextPattern &regexp)
{
    const auto found =
        std::find_if(patterns.begin(), patterns.end(), [&regexp](const auto &pattern) {
            return pattern->regexp.pattern() == regexp.pattern() &&
                   pattern->regexp.options() == regexp.options();
        });
    if (found != patterns.end())
        return int(found - patterns.begin());
    auto pattern = std::make_unique<Pattern>();
    pattern->regexp = regexp;
    pattern->automaton = regexp.automaton();
    pattern->filter = regexp.filter();
    pattern->anchored = pattern->filter && pattern->filter->beginOnly();
    if (pattern->anchored && pattern->automaton)
        pattern->run = pattern->automaton->run();
    if (pattern->run) {
        // "\w+" and "[\w_]+" are the same run and share what is known of it.
        const auto same =
            std::find_if(patterns.begin(), patterns.end(), [run = pattern->run](const auto &other) {
                return other->run && *other->run == *run;
            });
        if (same != patterns.end())
            return int(same - patterns.begin());
        for (int unit = 0; unit < asciiCount; ++unit)
            pattern->inRun[unit] = pattern->run->contains(char16_t(unit));
        noteStops(pattern.get());
    }
    patterns.push_back(std::move(pattern));
    return int(patterns.size()) - 1;
}

void HighlightScanner::noteStops(Pattern *pattern)
{
    size_t count = 0;
    for (int unit = 0; unit < asciiCount; ++unit) {
        if (pattern->inRun[unit])
            continue;
        if (count == pattern->stops.size())
            return;
        std::fill(pattern->stops.begin() + count++, pattern->stops.end(), char16_t(unit));
    }
    pattern->hasStops = count > 0 && pattern->run->holdsAllWide();
}

std::unique_ptr<HighlightScanner::Context>
HighlightScanner::makeContext(const HighlightContext &source)
{
    auto context = std::make_unique<Context>();
    for (const HighlightItem *item : source)
        context->rules.push_back(makeRule(*item, context.get()));
    context->count = int(context->rules.size());
    for (const Rule &rule : context->rules)
        noteShrinking(rule, context.get());
    makeBlocks(context.get());
    makeDispatch(context.get());
    makePresence(context.get());
    return context;
}

HighlightScanner::Rule HighlightScanner::makeRule(const HighlightItem &item, Context *context)
{
    Rule rule;
    rule.attr = qint8(item.attr);
    rule.ctx = qint16(item.ctx);
    rule.empty = qint16(item.empty);
    rule.pattern = addPattern(item.regexp);
    const Pattern &pattern = *patterns[rule.pattern];
    if (const auto *keyword = dynamic_cast<const HighlightKeyword *>(&item)) {
        rule.kind = Rule::Kind::Keyword;
        addWords(*keyword, &rule, context);
    } else if (const auto *until = dynamic_cast<const HighlightUntilItem *>(&item)) {
        const bool isEnd = item.regexp.isValid() && item.regexp.pattern() == QLatin1String("$");
        rule.kind = isEnd ? Rule::Kind::Rest : Rule::Kind::Until;
        rule.inc = until->inc;
        rule.full = until->full;
    } else if (pattern.run) {
        rule.kind = Rule::Kind::Run;
    } else if (pattern.anchored && pattern.automaton && pattern.automaton->fixedLength() == 1 &&
               !pattern.automaton->endSensitive()) {
        rule.kind = Rule::Kind::Unit;
    }
    return rule;
}

void HighlightScanner::addWords(const HighlightKeyword &item, Rule *rule, Context *context)
{
    auto &words = context->words;
    auto found = std::find_if(words.begin(), words.end(), [&](const Context::Words &group) {
        return group.pattern == rule->pattern &&
               group.table.lowersCandidate() != item.caseSensitive &&
               group.table.listCount() < KeywordTable::maximumLists;
    });
    if (found == words.end()) {
        words.push_back({rule->pattern, KeywordTable(!item.caseSensitive), 0, 0, 0, 0, {}});
        found = words.end() - 1;
    }
    rule->words = int(found - words.begin());
    rule->list = quint64(1) << found->table.addList(item.dict);
    found->rules.push_back(int(context->rules.size()));
}

void HighlightScanner::makeBlocks(Context *context) const
{
    for (int i = context->count - 1; i >= 0; --i) {
        Rule &rule = context->rules[size_t(i)];
        rule.blockEnd = i;
        rule.blockLists = rule.list;
        if (rule.kind != Rule::Kind::Keyword || rule.empty >= 0 || i + 1 == context->count)
            continue;
        const Rule &next = context->rules[size_t(i) + 1];
        if (next.kind == Rule::Kind::Keyword && next.words == rule.words && next.empty < 0) {
            rule.blockEnd = next.blockEnd;
            rule.blockLists |= next.blockLists;
        }
    }
}

/// False only if \a rule is sure to fail, with no consequence, in front of \a unit.
bool HighlightScanner::canAct(const Rule &rule, int unit) const
{
    const Pattern &pattern = *patterns[rule.pattern];
    if (rule.empty >= 0 || rule.kind == Rule::Kind::Until || rule.kind == Rule::Kind::Rest)
        return true;
    if (!pattern.anchored)
        return pattern.regexp.isValid();
    return unit == wideUnit ? pattern.filter->canTakeWide()
                            : pattern.filter->canTake(char16_t(unit));
}

void HighlightScanner::makeDispatch(Context *context) const
{
    std::map<std::vector<quint64>, quint8> classes; ///< by the rules acting, as bits
    for (int unit = 0; unit <= wideUnit; ++unit) {
        std::vector<quint64> acting(size_t(context->count) / 64 + 1);
        for (int i = 0; i < context->count; ++i)
            acting[size_t(i) / 64] |= quint64(canAct(context->rules[size_t(i)], unit)) << i % 64;
        const auto [place, isNew] = classes.emplace(acting, quint8(classes.size()));
        context->unitClass[unit] = place->second;
        if (!isNew)
            continue;
        const size_t base = context->next.size();
        context->next.resize(base + size_t(context->count) + 1, context->count);
        for (int i = context->count - 1; i >= 0; --i) {
            const bool acts = acting[size_t(i) / 64] >> i % 64 & 1;
            context->next[base + size_t(i)] = acts ? i : context->next[base + size_t(i) + 1];
        }
    }
}

/// Scans that need a certain character somewhere in the line are told by one pass
/// over it that they need not begin, if there are several of them.
void HighlightScanner::makePresence(Context *context) const
{
    for (Rule &rule : context->rules) {
        const PatternAutomaton *automaton = patterns[rule.pattern]->automaton;
        if (rule.kind != Rule::Kind::Until || context->tracked == trackedRules || !automaton ||
            automaton->beginSensitive() || !automaton->needsAscii())
            continue;
        rule.tracked = context->tracked;
        for (int unit = 0; unit < asciiCount; ++unit) {
            if (automaton->canOccur(char16_t(unit)))
                context->starts[unit] |= quint32(1) << context->tracked;
        }
        ++context->tracked;
    }
    if (context->tracked < 2) {
        for (Rule &rule : context->rules)
            rule.tracked = -1;
    }
}

void HighlightScanner::noteShrinking(const Rule &rule, Context *context) const
{
    const Pattern &pattern = *patterns[rule.pattern];
    const PatternAutomaton *automaton = pattern.automaton;
    if (rule.kind == Rule::Kind::Keyword) {
        context->shrinkMatters = true;
        context->shrinkCosts = context->shrinkCosts || !pattern.run;
        return;
    }
    const bool until = rule.kind == Rule::Kind::Until;
    const bool stays = automaton && !automaton->endSensitive() && (until || pattern.anchored) &&
                       (!until || rule.inc || (!rule.full && automaton->fixedLength() >= 0));
    if (stays || rule.kind == Rule::Kind::Rest || !pattern.regexp.isValid())
        return;
    context->shrinkMatters = true;
    context->shrinkCosts = true;
}

const HighlightScanner::Context *HighlightScanner::contextAt(int ctx) const
{
    return ctx >= 0 && size_t(ctx) < contexts.size() ? contexts[size_t(ctx)].get() : nullptr;
}

void HighlightScanner::begin(QStringView text)
{
    units = text.utf16();
    end = int(text.size());
    ++lineStamp;
    ++textStamp;
    budget = baseWork + workPerUnit * end;
    work = budget;
    farthest = 0;
}

/// The place where a scan has to start; nowhere in particular if it need not.
inline ScanMarks::Place HighlightScanner::start(int ctx, ScanMarks *marks)
{
    ScanMarks::Place place;
    place.ctx = ctx;
    place.rule = -1;
    if (marks) {
        place = marks->begin(id, ctx, end);
        work -= place.spent;
    }
    if (place.rule < 0) {
        const Context *context = contextAt(ctx);
        place.rule = context && end > 0 ? context->firstRule(units[0]) : 0;
    }
    return place;
}

bool HighlightScanner::pass(ScanMarks *marks, ScanMarks::Place place)
{
    place.spent = budget - work;
    place.reach = place.shrinks > 0 ? ScanMarks::wholeText : reachAt(place.at);
    return marks->pass(place, budget);
}

void HighlightScanner::finish(int ctx, ScanMarks *marks) const
{
    marks->finish(ctx, budget - work, budget);
}

/// The reach of all that was found out on the way to \a at.
int HighlightScanner::reachAt(int at) const
{
    int reach = std::max(farthest, at + shortReach);
    for (const auto &pattern : patterns) {
        if (pattern->lineStamp == lineStamp)
            reach = std::max(reach, pattern->runEnd + 1);
        if (pattern->textStamp == textStamp)
            reach = std::max(reach, PatternAutomaton::reachOf(pattern->memo));
    }
    return reach > end ? ScanMarks::wholeText : reach;
}

inline int HighlightScanner::runLength(Pattern &pattern, int at)
{
    if (pattern.lineStamp == lineStamp && pattern.runBegin <= at && at < pattern.runEnd)
        return std::min(pattern.runEnd, end) - at;
    int i = at;
    if (pattern.hasStops) {
        i = findAnyUnit(units, at, end, pattern.stops);
    } else {
        while (i < end &&
               (units[i] < asciiCount ? pattern.inRun[units[i]] : pattern.run->contains(units[i])))
            ++i;
    }
    pattern.lineStamp = lineStamp;
    pattern.runBegin = at;
    pattern.runEnd = i;
    return i - at;
}

/// Number of units the rule \a index takes at \a at; not above 0 if it fails. Of rules
/// that share a look-up \a index becomes the one it decides: the first that takes
/// something, or else the last.
inline int HighlightScanner::take(const Context &context, int *index, int at)
{
    const Rule &rule = context.rules[size_t(*index)];
    Pattern &pattern = *patterns[size_t(rule.pattern)];
    switch (rule.kind) {
    case Rule::Kind::Unit:
        return pattern.automaton->canTake(units[at]) ? 1 : 0;
    case Rule::Kind::Run:
        return runLength(pattern, at);
    case Rule::Kind::Match:
        return matchLength(pattern, at);
    case Rule::Kind::Keyword:
        return takeKeyword(context, index, at);
    case Rule::Kind::Until:
        return takeUntil(context, rule, at);
    case Rule::Kind::Rest:
        break;
    }
    return end - at;
}

int HighlightScanner::follow(int ctx, QStringView text, ScanMarks *marks)
{
    begin(text);
    const ScanMarks::Place first = start(ctx, marks);
    if (marks && marks->isSettled())
        return marks->endContext();
    ctx = first.ctx;
    int at = first.at;
    int i = first.rule;
    bool advanced = first.matched;
    int mark = marks ? marks->nextColumn() : nowhere;
    size_t handOvers = 0;
    const Context *context = contextAt(ctx);
    while (context && at < end) {
        if (at >= mark) {
            if (pass(marks, {at, ctx, i, advanced}))
                return marks->endContext();
            mark = marks->nextColumn();
        }
        if (i == context->count) {
            // A list in which nothing matches would be walked for ever.
            if (!advanced)
                break;
            advanced = false;
            i = context->firstRule(units[at]);
            continue;
        }
        const int length = take(*context, &i, at);
        const Rule &rule = context->rules[size_t(i)];
        if (length > 0) {
            at += length;
            advanced = true;
            handOvers = 0;
        } else if (rule.empty >= 0 && ++handOvers > contexts.size()) {
            // The contexts only hand over to each other.
            break;
        }
        const int target = length > 0 ? rule.ctx : rule.empty;
        if (target >= 0) {
            ctx = target;
            context = contextAt(ctx);
            advanced = false;
        }
        if (context && at < end)
            i = context->nextRule(units[at], target >= 0 ? 0 : i + 1);
    }
    if (marks)
        finish(ctx, marks);
    return ctx;
}

void HighlightScanner::colour(int ctx, QStringView text, qint8 *attributes, ScanMarks *marks)
{
    begin(text);
    const ScanMarks::Place first = start(ctx, marks);
    if (marks && marks->isSettled())
        return;
    ctx = first.ctx;
    int at = first.at;
    int i = first.rule;
    int shrinks = first.shrinks;
    bool matched = first.matched;
    int mark = marks ? marks->nextColumn() : nowhere;
    size_t handOvers = 0;
    const Context *context = contextAt(ctx);
    while (context && at < end) {
        if (at >= mark) {
            if (pass(marks, {at, ctx, i, matched, shrinks}))
                return;
            mark = marks->nextColumn();
        }
        if (i == context->count) {
            // The text the rules see stays where it is and loses its last character,
            // while the character without a rule keeps attribute 0.
            if (!matched) {
                if (!shrink(*context, at))
                    break;
                attributes[at + shrinks] = 0;
                ++shrinks;
                handOvers = 0;
            }
            matched = false;
            if (at < end)
                i = context->firstRule(units[at]);
            continue;
        }
        const int length = take(*context, &i, at);
        const Rule &rule = context->rules[size_t(i)];
        if (length > 0) {
            if (rule.attr != 0 || marks)
                fill(attributes + at + shrinks, rule.attr, length);
            at += length;
            matched = true;
            handOvers = 0;
        } else if (rule.empty >= 0 && ++handOvers > contexts.size()) {
            break;
        }
        const int target = length > 0 ? rule.ctx : rule.empty;
        if (target >= 0) {
            ctx = target;
            context = contextAt(ctx);
            matched = false;
        }
        if (context && at < end)
            i = context->nextRule(units[at], target >= 0 ? 0 : i + 1);
    }
    if (marks) {
        std::fill(attributes + at + shrinks, attributes + text.size(), qint8(0));
        finish(ctx, marks);
    }
}

/// Takes the last character from the text the rules see; false if nothing in it
/// can match any more.
bool HighlightScanner::shrink(const Context &context, int at)
{
    if (!context.shrinkMatters || work <= 0)
        return false;
    --end;
    if (context.shrinkCosts) {
        ++textStamp;
        work -= 1 + (end - at) / passedInStep;
    }
    return true;
}

/// Forgets what was noted on another text.
void HighlightScanner::refresh(Pattern &pattern) const
{
    if (pattern.textStamp == textStamp)
        return;
    pattern.textStamp = textStamp;
    pattern.searchFrom = nowhere;
    pattern.memo.clear();
}

/// What \a attempt finds for an expression that a table cannot match, -1 for nothing. When
/// the line's work is used up such expressions find nothing more in it.
template <typename Attempt>
int HighlightScanner::tryCostly(Pattern &pattern, const Attempt &attempt)
{
    PatternMachine *const machine = pattern.regexp.machine(TextPattern::Reading::Units);
    if (work <= 0 || !machine->isValid())
        return -1;
    PatternBudget spending(work - tryCost);
    PatternMachine::Effort effort{spending, PatternBudget::unlimited};
    const int found = attempt(machine, &effort);
    work = spending.remaining();
    if (work <= 0 && !pattern.wasDropped) {
        pattern.wasDropped = true;
        droppedRules.append(pattern.regexp.pattern());
    }
    return work <= 0 ? -1 : found;
}

int HighlightScanner::matchLength(Pattern &pattern, int at)
{
    if (pattern.run)
        return runLength(pattern, at);
    refresh(pattern);
    int foundEnd = 0;
    if (pattern.anchored) {
        foundEnd = pattern.filter->matchEnd({units, at, end}, at, &pattern.memo);
        if (foundEnd == end)
            farthest = nowhere;
        if (pattern.automaton || foundEnd <= at)
            return foundEnd - at;
        farthest = nowhere;
        return tryCostly(pattern, [&](PatternMachine *machine, PatternMachine::Effort *effort) {
            return machine->match(QStringView(units + at, end - at), 0, effort);
        });
    }
    const int found = search(pattern, at, &foundEnd);
    return found < 0 ? -1 : foundEnd - found;
}

/// The first match from \a at on, -1 if there is none.
int HighlightScanner::search(Pattern &pattern, int at, int *foundEnd)
{
    if (pattern.filter) {
        const int candidate = searchTable(pattern, *pattern.filter, at, foundEnd);
        if (candidate < 0 || pattern.automaton) {
            farthest = candidate < 0 ? nowhere : std::max(farthest, *foundEnd + shortReach);
            return candidate;
        }
    }
    farthest = nowhere;
    int length = 0;
    const auto find = [&](PatternMachine *machine, PatternMachine::Effort *effort) {
        return machine->search(QStringView(units + at, end - at), 0, &length, effort);
    };
    const int found = tryCostly(pattern, find);
    *foundEnd = at + found + length;
    return found < 0 ? -1 : at + found;
}

int HighlightScanner::searchTable(Pattern &pattern, const PatternAutomaton &automaton, int at,
                                  int *foundEnd)
{
    const PatternAutomaton::Subject subject{units, at, end};
    int from = at;
    if (automaton.beginSensitive()) {
        // Here the text begins; what is found further on does not depend on that.
        *foundEnd = automaton.matchEnd(subject, at, &pattern.memo);
        if (*foundEnd >= 0)
            return at;
        ++from;
    }
    if (pattern.searchFrom > from || from > pattern.searchFound) {
        pattern.searchFrom = from;
        const int found = automaton.search(subject, from, &pattern.searchEnd, &pattern.memo);
        pattern.searchFound = found < 0 ? nowhere : found;
    }
    *foundEnd = pattern.searchEnd;
    return pattern.searchFound == nowhere ? -1 : pattern.searchFound;
}

/// True if a character that a match needs is nowhere in the line.
bool HighlightScanner::isAbsent(const Context &context, const Rule &rule, int at)
{
    if (rule.tracked < 0)
        return false;
    if (context.presenceStamp != lineStamp) {
        quint32 seen = 0;
        for (int i = at; i < end; ++i) {
            if (units[i] < asciiCount)
                seen |= context.starts[units[i]];
        }
        context.presenceStamp = lineStamp;
        context.present = seen;
    }
    return !(context.present >> rule.tracked & 1);
}

int HighlightScanner::takeUntil(const Context &context, const Rule &rule, int at)
{
    Pattern &pattern = *patterns[rule.pattern];
    int foundEnd = 0;
    int found = -1;
    if (isAbsent(context, rule, at)) {
        farthest = nowhere;
    } else {
        refresh(pattern);
        found = search(pattern, at, &foundEnd);
    }
    if (found < 0)
        return rule.full ? end - at : -1;
    return (rule.inc ? foundEnd : found) - at;
}

int HighlightScanner::takeKeyword(const Context &context, int *index, int at)
{
    const Rule &rule = context.rules[size_t(*index)];
    *index = rule.blockEnd;
    const int length = matchLength(*patterns[size_t(rule.pattern)], at);
    if (length <= 0)
        return -1;
    Context::Words &words = context.words[size_t(rule.words)];
    if (words.lineStamp != lineStamp || words.at != at || words.length != length) {
        words.lineStamp = lineStamp;
        words.at = at;
        words.length = length;
        words.lists = words.table.find(units + at, length);
    }
    const quint64 lists = words.lists & rule.blockLists;
    if (!lists)
        return -1;
    *index = words.rules[size_t(qCountTrailingZeroBits(lists))];
    return length;
}

} // namespace zvwidgets
