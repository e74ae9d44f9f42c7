#include "zvwidgets/zveditor/pattern/patternautomaton.h"

#include <algorithm>
#include <map>

namespace zvwidgets {

namespace {

using Type = PatternNode::Type;
using Precision = PatternAutomaton::Precision;

constexpr size_t maximumSteps = 2000; ///< of the non-deterministic form
constexpr size_t maximumRows = 400;
constexpr size_t maximumClasses = 200;
constexpr size_t maximumSets = 64;
constexpr size_t maximumLooks = 8;
constexpr size_t maximumLooksOfRow = 3;

} // namespace

/// Turns the tree of an expression into the table. First come steps, a form with
/// free choices; a row of the table then stands for all steps that a text may
/// have reached.
class AutomatonBuilder
{
public:
    AutomatonBuilder(bool minimal, Precision wanted) : precision(wanted)
    {
        result->shortest = minimal;
    }

    std::unique_ptr<PatternAutomaton> build(const PatternNode &root);

private:
    enum class Kind
    {
        Take,
        Split,
        Begin,
        End,
        WordBound,
        NotWordBound,
        Look,     ///< at one unit
        LongLook, ///< as far as it takes
        Match
    };
    enum Previous
    {
        AtBegin,
        AfterOther,
        AfterWord
    };

    struct Step
    {
        Kind kind;
        int next = -1;
        int other = -1;       ///< Split only
        int set = -1;         ///< Take and Look; LongLook: number of the look
        bool negated = false; ///< looks and End
    };
    using Steps = std::vector<int>; ///< sorted
    /// What a row stands for.
    struct State
    {
        Steps steps;
        Previous previous = AfterOther;
        int seen = -1; ///< looks known to hold, as bits; -1 while nothing is known
    };
    struct Closure
    {
        std::vector<int> takes;
        bool matches = false;
    };

    int addStep(Step step);
    int addSet(const UnitSet &set);
    int compile(const PatternNode &node, int next);
    int compileRepeat(const PatternNode &node, int next);
    bool lookTargets(const PatternNode &node, std::vector<const PatternNode *> *targets) const;
    int compileLook(const PatternNode &node, int next);
    int compileLongLook(const PatternNode &node, int next);
    int compileAnything(int next);
    bool makeClasses();
    quint8 classFor(quint64 signature);
    quint64 signature(char16_t unit, quint8 kinds) const;
    bool isIn(int cls, int set) const { return signatures[size_t(cls)] >> set & 1; }
    Closure close(const State &state, int nextClass) const;
    bool holds(const Step &step, const State &state, int nextClass) const;
    std::vector<int> looksOf(const State &state) const;
    quint32 rowFor(const Steps &steps, Previous previous);
    bool fillRows();
    bool addBranch(quint32 row, const std::vector<int> &looks);
    void fillRow(quint32 row);
    void joinBranches();
    bool isTotal(quint32 row) const;
    void orderRows();
    void noteStarts(const PatternNode &root);
    void noteRun(const PatternNode &root);

    std::unique_ptr<PatternAutomaton> result{new PatternAutomaton};
    std::vector<Step> steps;
    std::vector<UnitSet> sets;
    bool supported = true;
    const Precision precision;
    int wordSet = -1;
    std::vector<quint64> signatures; ///< by class; bit n: its units are in set n
    std::map<std::pair<Steps, Previous>, quint32> rows;
    std::vector<State> states;                            ///< by row
    std::map<quint32, PatternAutomaton::Branch> branches; ///< by row; numbers of rows
};

int AutomatonBuilder::addStep(Step step)
{
    if (steps.size() >= maximumSteps)
        supported = false;
    else
        steps.push_back(step);
    return int(steps.size()) - 1;
}

int AutomatonBuilder::addSet(const UnitSet &set)
{
    const auto found = std::find(sets.begin(), sets.end(), set);
    if (found != sets.end())
        return int(found - sets.begin());
    if (sets.size() >= maximumSets) {
        supported = false;
        return 0;
    }
    sets.push_back(set);
    return int(sets.size()) - 1;
}

/// Makes the steps of \a node, which lead on to \a next; returns the first one.
int AutomatonBuilder::compile(const PatternNode &node, int next)
{
    if (!supported)
        return next;
    switch (node.type) {
    case Type::Set:
        return addStep({Kind::Take, next, -1, addSet(node.set)});
    case Type::Sequence:
        for (auto part = node.parts.rbegin(); part != node.parts.rend(); ++part)
            next = compile(**part, next);
        return next;
    case Type::Choice: {
        int entry = compile(*node.parts.back(), next);
        for (auto part = node.parts.rbegin() + 1; part != node.parts.rend(); ++part)
            entry = addStep({Kind::Split, compile(**part, next), entry});
        return entry;
    }
    case Type::Repeat:
        return compileRepeat(node, next);
    case Type::Group:
        return compile(*node.parts.front(), next);
    case Type::Begin:
        result->usesBegin = true;
        return addStep({Kind::Begin, next});
    case Type::End:
        result->usesNext = true;
        return addStep({Kind::End, next});
    case Type::WordBound:
    case Type::NotWordBound:
        result->usesWord = result->usesNext = true;
        wordSet = addSet(UnitSet::ofKind(WordUnit, false));
        return addStep({node.type == Type::WordBound ? Kind::WordBound : Kind::NotWordBound, next});
    case Type::LookAhead:
        return compileLook(node, next);
    case Type::BackReference:
        break;
    }
    supported = supported && precision != Precision::Exact;
    return supported ? compileAnything(next) : next;
}

int AutomatonBuilder::compileAnything(int next)
{
    const int entry = addStep({Kind::Split, -1, next});
    if (!supported)
        return next;
    const int body = addStep({Kind::Take, entry, -1, addSet(UnitSet::any())});
    steps[entry].next = body;
    return entry;
}

int AutomatonBuilder::compileRepeat(const PatternNode &node, int next)
{
    const PatternNode &part = *node.parts.front();
    int entry = next;
    const bool isRough = precision == Precision::Rough && std::max(node.min, node.max) > 1;
    const int min = isRough ? std::min(node.min, 1) : node.min;
    const int max = isRough ? PatternNode::unlimited : node.max;
    if (max == PatternNode::unlimited) {
        entry = addStep({Kind::Split, -1, next});
        if (!supported)
            return next;
        const int body = compile(part, entry);
        steps[entry].next = body;
    }
    for (int i = min; i < max && supported; ++i)
        entry = addStep({Kind::Split, compile(part, entry), next});
    for (int i = 0; i < min && supported; ++i)
        entry = compile(part, entry);
    return entry;
}

/// The alternatives of a look-ahead if each of them is a set or the end of the text.
bool AutomatonBuilder::lookTargets(const PatternNode &node,
                                   std::vector<const PatternNode *> *targets) const
{
    if (node.type == Type::Set || node.type == Type::End) {
        targets->push_back(&node);
        return true;
    }
    const bool single =
        (node.type == Type::Sequence || node.type == Type::Group || node.type == Type::LookAhead) &&
        node.parts.size() == 1;
    return (single || node.type == Type::Choice) &&
           std::all_of(node.parts.begin(), node.parts.end(), [&](const auto &part) {
               return part->type != Type::LookAhead && lookTargets(*part, targets);
           });
}

int AutomatonBuilder::compileLook(const PatternNode &node, int next)
{
    std::vector<const PatternNode *> targets;
    result->usesNext = true;
    if (!lookTargets(node, &targets))
        return compileLongLook(node, next);
    int entry = node.negated ? next : -1;
    for (const PatternNode *target : targets) {
        // None of them must hold, or one of them.
        Step step{Kind::End, node.negated ? entry : next, -1, -1, node.negated};
        if (target->type == Type::Set) {
            step.kind = Kind::Look;
            step.set = addSet(target->set);
        }
        const int look = addStep(step);
        entry = node.negated || entry < 0 ? look : addStep({Kind::Split, look, entry});
    }
    return entry;
}

int AutomatonBuilder::compileLongLook(const PatternNode &node, int next)
{
    auto look = PatternAutomaton::build(*node.parts.front(), true, Precision::Exact);
    if (look && !look->beginSensitive() && result->looks.size() < maximumLooks) {
        result->looks.push_back(std::move(look));
        return addStep({Kind::LongLook, next, -1, int(result->looks.size()) - 1, node.negated});
    }
    supported = supported && precision != Precision::Exact;
    return next;
}

quint64 AutomatonBuilder::signature(char16_t unit, quint8 kinds) const
{
    quint64 bits = 0;
    for (size_t i = 0; i < sets.size(); ++i) {
        const bool isIn =
            unit < UnitSet::asciiCount ? sets[i].contains(unit) : sets[i].containsWide(unit, kinds);
        bits |= quint64(isIn) << i;
    }
    return bits;
}

quint8 AutomatonBuilder::classFor(quint64 signature)
{
    const auto found = std::find(signatures.begin(), signatures.end(), signature);
    if (found != signatures.end())
        return quint8(found - signatures.begin());
    if (signatures.size() >= maximumClasses)
        supported = false;
    else
        signatures.push_back(signature);
    return quint8(signatures.size() - 1);
}

/// Units that no set tells apart share a class.
bool AutomatonBuilder::makeClasses()
{
    for (int unit = 0; unit < UnitSet::asciiCount && supported; ++unit)
        result->asciiClass[unit] = classFor(signature(char16_t(unit), 0));
    auto &bounds = result->bounds;
    bounds.push_back(UnitSet::asciiCount);
    for (const UnitSet &set : sets)
        set.appendBounds(&bounds);
    std::sort(bounds.begin(), bounds.end());
    bounds.erase(std::unique(bounds.begin(), bounds.end()), bounds.end());
    for (const char16_t bound : bounds) {
        for (int kinds = 0; kinds < unitKindCombinations && supported; ++kinds)
            result->wideClasses.push_back(classFor(signature(bound, quint8(kinds))));
    }
    result->endClass = int(signatures.size());
    result->width = quint32(signatures.size()) + 1;
    return supported;
}

bool AutomatonBuilder::holds(const Step &step, const State &state, int nextClass) const
{
    const bool atEnd = nextClass == result->endClass;
    const auto nextIn = [&](int set) { return !atEnd && isIn(nextClass, set); };
    switch (step.kind) {
    case Kind::Begin:
        return state.previous == AtBegin;
    case Kind::End:
        return atEnd != step.negated;
    case Kind::WordBound:
        return (state.previous == AfterWord) != nextIn(wordSet);
    case Kind::NotWordBound:
        return (state.previous == AfterWord) == nextIn(wordSet);
    case Kind::Look:
        return nextIn(step.set) != step.negated;
    case Kind::LongLook:
        return bool(state.seen >> step.set & 1) != step.negated;
    case Kind::Take:
    case Kind::Split:
    case Kind::Match:
        break;
    }
    return true;
}

/// The steps reached from those of \a state without taking a unit.
AutomatonBuilder::Closure AutomatonBuilder::close(const State &state, int nextClass) const
{
    Closure closure;
    std::vector<bool> reached(steps.size());
    std::vector<int> open = state.steps;
    while (!open.empty()) {
        const int current = open.back();
        open.pop_back();
        if (current < 0 || reached[current])
            continue;
        reached[current] = true;
        const Step &step = steps[current];
        if (step.kind == Kind::Match) {
            closure.matches = true;
        } else if (step.kind == Kind::Take) {
            closure.takes.push_back(current);
        } else if (holds(step, state, nextClass)) {
            open.push_back(step.next);
            if (step.kind == Kind::Split)
                open.push_back(step.other);
        }
    }
    return closure;
}

/// The looks that may have to be taken where \a state is reached.
std::vector<int> AutomatonBuilder::looksOf(const State &state) const
{
    std::vector<int> found;
    std::vector<bool> reached(steps.size());
    std::vector<int> open = state.steps;
    while (!open.empty() && !result->looks.empty()) {
        const int current = open.back();
        open.pop_back();
        if (current < 0 || reached[current])
            continue;
        reached[current] = true;
        const Step &step = steps[current];
        if (step.kind == Kind::LongLook)
            found.push_back(step.set);
        if (step.kind != Kind::Take && step.kind != Kind::Match) {
            open.push_back(step.next);
            open.push_back(step.other);
        }
    }
    return found;
}

quint32 AutomatonBuilder::rowFor(const Steps &reached, Previous previous)
{
    if (reached.empty())
        return 0;
    const auto [place, isNew] = rows.emplace(std::pair(reached, previous), quint32(states.size()));
    if (isNew)
        states.push_back({reached, previous, -1});
    return place->second;
}

/// Gives \a row a row of its own for every outcome of its looks.
bool AutomatonBuilder::addBranch(quint32 row, const std::vector<int> &looks)
{
    if (looks.size() > maximumLooksOfRow)
        return false;
    PatternAutomaton::Branch branch{looks, {}};
    for (quint32 outcome = 0; outcome < quint32(1) << looks.size(); ++outcome) {
        State state = states[row];
        state.seen = 0;
        for (size_t i = 0; i < looks.size(); ++i)
            state.seen |= (outcome >> i & 1) << looks[i];
        branch.rows.push_back(quint32(states.size()));
        states.push_back(state);
    }
    branches.emplace(row, branch);
    return true;
}

void AutomatonBuilder::fillRow(quint32 row)
{
    const State state = states[row];
    Closure closure;
    for (int cls = 0; cls <= result->endClass; ++cls) {
        if (cls == 0 || result->usesNext)
            closure = close(state, cls);
        Steps reached;
        if (cls != result->endClass) {
            for (const int take : closure.takes) {
                if (isIn(cls, steps[take].set))
                    reached.push_back(steps[take].next);
            }
        }
        std::sort(reached.begin(), reached.end());
        reached.erase(std::unique(reached.begin(), reached.end()), reached.end());
        const bool word = result->usesWord && cls != result->endClass && isIn(cls, wordSet);
        const quint32 next = rowFor(reached, word ? AfterWord : AfterOther);
        result->table[row * result->width + quint32(cls)] =
            next | (closure.matches ? PatternAutomaton::acceptBit : 0);
    }
}

bool AutomatonBuilder::fillRows()
{
    for (quint32 row = 0; row < states.size(); ++row) {
        if (states.size() > maximumRows)
            return false;
        result->table.resize(size_t(row + 1) * result->width);
        const std::vector<int> looks =
            states[row].seen < 0 ? looksOf(states[row]) : std::vector<int>();
        if (looks.empty())
            fillRow(row);
        else if (!addBranch(row, looks))
            return false;
    }
    joinBranches();
    return true;
}

/// Puts into a row with looks what any of its outcomes could do: who asks what a
/// match can begin with sees that.
void AutomatonBuilder::joinBranches()
{
    for (const auto &[row, branch] : branches) {
        for (quint32 cls = 0; cls < result->width; ++cls) {
            quint32 &joined = result->table[row * result->width + cls];
            for (const quint32 outcome : branch.rows)
                joined |= result->table[outcome * result->width + cls];
        }
    }
}

bool AutomatonBuilder::isTotal(quint32 row) const
{
    const quint32 loop = row | PatternAutomaton::acceptBit;
    const auto first = result->table.begin() + row * result->width;
    return first[result->endClass] == PatternAutomaton::acceptBit && !branches.count(row) &&
           std::all_of(first, first + result->endClass,
                       [loop](quint32 entry) { return entry == loop; });
}

/// Puts the rows that are not just looked up behind all others, those with looks
/// first, then the one that takes everything; and turns numbers into offsets.
void AutomatonBuilder::orderRows()
{
    const quint32 count = quint32(states.size());
    std::vector<quint32> order;
    std::vector<quint32> totals;
    for (quint32 row = 0; row < count; ++row) {
        // Row 0 is where nothing can follow.
        if (row > 0 && totals.empty() && isTotal(row))
            totals.push_back(row);
        else if (!branches.count(row))
            order.push_back(row);
    }
    result->firstBranch = quint32(order.size()) * result->width;
    for (const auto &[row, branch] : branches)
        order.push_back(row);
    result->totalRow =
        totals.empty() ? PatternAutomaton::rowMask : quint32(order.size()) * result->width;
    order.insert(order.end(), totals.begin(), totals.end());
    std::vector<quint32> offsets(count);
    for (quint32 place = 0; place < count; ++place)
        offsets[order[place]] = place * result->width;

    std::vector<quint32> table(result->table.size());
    for (quint32 row = 0; row < count; ++row) {
        for (quint32 cls = 0; cls < result->width; ++cls) {
            const quint32 entry = result->table[row * result->width + cls];
            // Joined entries of a row with looks only tell whether, not where to.
            const quint32 next = entry & PatternAutomaton::rowMask;
            const quint32 target = branches.count(row) ? (next ? 1 : 0) : offsets[next];
            table[offsets[row] + cls] = target | (entry & PatternAutomaton::acceptBit);
        }
    }
    result->table = std::move(table);
    for (auto &[row, branch] : branches) {
        for (quint32 &outcome : branch.rows)
            outcome = offsets[outcome];
        result->branches.push_back(branch);
    }
    for (quint32 *start : {&result->beginRow, &result->afterOtherRow, &result->afterWordRow})
        *start = offsets[*start];
}

std::unique_ptr<PatternAutomaton> AutomatonBuilder::build(const PatternNode &root)
{
    const int match = addStep({Kind::Match});
    const int entry = compile(root, match);
    if (!supported || !makeClasses())
        return nullptr;
    states.emplace_back();
    const Steps start{entry};
    result->beginRow = rowFor(start, result->beginSensitive() ? AtBegin : AfterOther);
    result->afterOtherRow = rowFor(start, AfterOther);
    result->afterWordRow = result->usesWord ? rowFor(start, AfterWord) : result->afterOtherRow;
    if (!fillRows())
        return nullptr;
    orderRows();
    noteStarts(root);
    noteRun(root);
    return std::move(result);
}

void AutomatonBuilder::noteStarts(const PatternNode &root)
{
    const quint32 width = result->width;
    result->occurs.resize(width);
    result->onlyAtBegin = true;
    for (quint32 cls = 0; cls < width; ++cls) {
        const bool occurs =
            result->table[result->afterOtherRow + cls] || result->table[result->afterWordRow + cls];
        result->occurs[cls] = occurs;
        result->onlyAtBegin = result->onlyAtBegin && !occurs;
    }
    const PatternLength length = patternLength(root);
    result->fixed = length.min == length.max ? length.min : -1;
    if (!result->needsAscii())
        return;
    int count = 0;
    for (int unit = 0; unit < UnitSet::asciiCount; ++unit) {
        if (result->canOccur(char16_t(unit))) {
            result->onlyUnit = unit;
            ++count;
        }
    }
    if (count != 1)
        result->onlyUnit = -1;
}

void AutomatonBuilder::noteRun(const PatternNode &root)
{
    const PatternNode *node = &root;
    if (node->type == Type::Sequence && !node->parts.empty()) {
        const size_t first = node->parts.front()->type == Type::Begin ? 1 : 0;
        if (node->parts.size() == first + 1)
            node = node->parts.back().get();
    }
    if (node->type == Type::Repeat && node->min == 1 && node->max == PatternNode::unlimited &&
        node->parts.front()->type == Type::Set && !result->shortest) {
        result->isRun = true;
        result->runSet = node->parts.front()->set;
    }
}

std::unique_ptr<PatternAutomaton> PatternAutomaton::build(const PatternNode &root, bool minimal,
                                                          Precision precision)
{
    return AutomatonBuilder(minimal, precision).build(root);
}

} // namespace zvwidgets
