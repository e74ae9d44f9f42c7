#include "zvwidgets/zveditor/pattern/patternsyntax.h"

#include <QChar>
#include <QStringList>

#include <algorithm>
#include <optional>

namespace zvwidgets {

namespace {

using Type = PatternNode::Type;
using NodePtr = std::unique_ptr<PatternNode>;
using Reading = TextPattern::Reading;

constexpr int maximumDepth = 200;
constexpr int maximumRepeat = 1024;

/// What a backslash and the characters after it stand for.
struct Escape
{
    enum class Kind
    {
        Unit,
        Set,
        WordBound,
        NotWordBound,
        BackReference
    };
    Kind kind = Kind::Unit;
    char16_t unit = 0;
    UnitKind unitKind = WordUnit;
    bool others = false;
    int number = 0;
};

int hexValue(char16_t unit)
{
    if (unit >= u'0' && unit <= u'9')
        return unit - u'0';
    const char16_t lower = unit | 0x20;
    return lower >= u'a' && lower <= u'f' ? lower - u'a' + 10 : -1;
}

NodePtr makeNode(Type type)
{
    return std::make_unique<PatternNode>(type);
}

/// Characters beyond the units, both ends of each range inclusive.
using PairRanges = std::vector<std::pair<char32_t, char32_t>>;

constexpr char16_t firstHigh = 0xd800;
constexpr char16_t firstLow = 0xdc00;
constexpr char16_t lastHigh = firstLow - 1;
constexpr char16_t lastLow = 0xdfff;
constexpr char32_t firstBeyondUnits = 0x10000;

NodePtr makeSet(UnitSet set)
{
    NodePtr node = makeNode(Type::Set);
    node->set = std::move(set);
    return node;
}

NodePtr makeRange(char16_t first, char16_t last)
{
    UnitSet set;
    set.addRange(first, last);
    return makeSet(std::move(set));
}

template <typename... Nodes>
NodePtr makeOf(Type type, Nodes... nodes)
{
    NodePtr made = makeNode(type);
    (made->parts.push_back(std::move(nodes)), ...);
    return made;
}

NodePtr makeLook(NodePtr part, bool negated)
{
    NodePtr look = makeOf(Type::LookAhead, std::move(part));
    look->negated = negated;
    return look;
}

NodePtr makePair(char16_t high, char16_t firstOfLows, char16_t lastOfLows)
{
    return makeOf(Type::Sequence, makeRange(high, high), makeRange(firstOfLows, lastOfLows));
}

/// Appends to \a choice the surrogate pairs of the characters from \a first to \a last.
void addPairs(PatternNode *choice, char32_t first, char32_t last)
{
    const char16_t high = QChar::highSurrogate(first);
    const char16_t low = QChar::lowSurrogate(first);
    const char16_t endHigh = QChar::highSurrogate(last);
    const char16_t endLow = QChar::lowSurrogate(last);
    if (high == endHigh) {
        choice->parts.push_back(makePair(high, low, endLow));
        return;
    }
    choice->parts.push_back(makePair(high, low, lastLow));
    if (high + 1 < endHigh)
        choice->parts.push_back(makeOf(Type::Sequence,
                                       makeRange(char16_t(high + 1), char16_t(endHigh - 1)),
                                       makeRange(firstLow, lastLow)));
    choice->parts.push_back(makePair(endHigh, firstLow, endLow));
}

/// One character that is in \a set, or as a pair in \a pairs; \a others tells that the
/// set, which is negated already, and the pairs are those that it must not be.
NodePtr makeCharacter(const UnitSet &set, const PairRanges &pairs, bool others)
{
    const bool takesAnyPair = set.contains(firstHigh) && set.contains(lastLow);
    const bool takesSurrogates = takesAnyPair || set.reachesSurrogates();
    if (!takesSurrogates && pairs.empty())
        return makeSet(set);
    NodePtr choice = makeNode(Type::Choice);
    choice->parts.push_back(
        makeOf(Type::Sequence, makeLook(makeRange(firstHigh, lastLow), true), makeSet(set)));
    NodePtr listed = makeNode(Type::Choice);
    for (const auto &[first, last] : pairs)
        addPairs(others ? listed.get() : choice.get(), first, last);
    if (takesAnyPair) {
        NodePtr pair =
            makeOf(Type::Sequence, makeRange(firstHigh, lastHigh), makeRange(firstLow, lastLow));
        if (!listed->parts.empty())
            pair->parts.insert(pair->parts.begin(), makeLook(std::move(listed), true));
        choice->parts.push_back(std::move(pair));
    }
    if (takesSurrogates) {
        choice->parts.push_back(makeOf(Type::Sequence,
                                       makeLook(makeRange(firstHigh, lastHigh), false),
                                       makeSet(set), makeLook(makeRange(firstLow, lastLow), true)));
        // A low half that is met here has no high one: that would have taken it.
        choice->parts.push_back(
            makeOf(Type::Sequence, makeLook(makeRange(firstLow, lastLow), false), makeSet(set)));
    }
    return makeOf(Type::Group, std::move(choice));
}

class Parser
{
public:
    Parser(QStringView text, bool caseInsensitive, Reading wanted)
        : pattern(text), fold(caseInsensitive), reading(wanted)
    {}

    NodePtr parse()
    {
        NodePtr root = choice(0);
        const bool whole = root && pos == pattern.size();
        return whole && highestReference <= captures ? std::move(root) : nullptr;
    }

private:
    bool atEnd() const { return pos >= pattern.size(); }
    char16_t peek() const { return atEnd() ? u'\0' : pattern[pos].unicode(); }
    bool take(char16_t unit)
    {
        if (atEnd() || peek() != unit)
            return false;
        ++pos;
        return true;
    }

    NodePtr choice(int depth);
    NodePtr sequence(int depth);
    NodePtr factor(int depth);
    NodePtr atom(int depth);
    NodePtr group(int depth);
    NodePtr escapeAtom();
    NodePtr setAtom();
    NodePtr finishSet(UnitSet set, bool others, const PairRanges &pairs = {}) const;
    NodePtr pairOr(char16_t unit);
    bool takeLow(char16_t high, char32_t *character);
    std::optional<Escape> escape();
    std::optional<char16_t> number(int base, int digits, char16_t highest);
    bool repeat(int *min, int *max);
    bool bounds(int *min, int *max);
    std::optional<int> count(int missing);

    const QStringView pattern;
    const bool fold;
    const Reading reading;
    qsizetype pos = 0;
    int captures = 0;
    int highestReference = 0;
};

NodePtr Parser::choice(int depth)
{
    if (depth > maximumDepth)
        return nullptr;
    NodePtr first = sequence(depth);
    if (!first || peek() != u'|' || atEnd())
        return first;
    NodePtr node = makeNode(Type::Choice);
    node->parts.push_back(std::move(first));
    while (take(u'|')) {
        NodePtr next = sequence(depth);
        if (!next)
            return nullptr;
        node->parts.push_back(std::move(next));
    }
    return node;
}

NodePtr Parser::sequence(int depth)
{
    NodePtr node = makeNode(Type::Sequence);
    while (!atEnd() && peek() != u'|' && peek() != u')') {
        NodePtr part = factor(depth);
        if (!part)
            return nullptr;
        node->parts.push_back(std::move(part));
    }
    return node;
}

NodePtr Parser::factor(int depth)
{
    NodePtr part = atom(depth);
    int min = 0;
    int max = 0;
    const qsizetype before = pos;
    if (!part || !repeat(&min, &max))
        return pos == before ? std::move(part) : nullptr;
    NodePtr node = makeNode(Type::Repeat);
    node->parts.push_back(std::move(part));
    node->min = min;
    node->max = max;
    return node;
}

NodePtr Parser::atom(int depth)
{
    switch (peek()) {
    case u'*':
    case u'+':
    case u'?':
    case u'{':
    case u'}':
        return nullptr;
    case u'(':
        return group(depth);
    case u'[':
        return setAtom();
    case u'\\':
        return escapeAtom();
    case u'^':
        ++pos;
        return makeNode(Type::Begin);
    case u'$':
        ++pos;
        return makeNode(Type::End);
    case u'.':
        ++pos;
        return finishSet(UnitSet(), true);
    }
    return pairOr(pattern[pos++].unicode());
}

/// Reads the other half of a pair that begins with \a high, if it comes next.
bool Parser::takeLow(char16_t high, char32_t *character)
{
    if (!QChar::isHighSurrogate(high) || atEnd())
        return false;
    const qsizetype before = pos;
    char16_t low = pattern[pos++].unicode();
    if (low == u'\\') {
        const std::optional<Escape> found = escape();
        low = found && found->kind == Escape::Kind::Unit ? found->unit : 0;
    }
    if (!QChar::isLowSurrogate(low)) {
        pos = before;
        return false;
    }
    *character = QChar::surrogateToUcs4(high, low);
    return true;
}

/// The character that \a unit, which has been read, begins.
NodePtr Parser::pairOr(char16_t unit)
{
    char32_t character = 0;
    if (!takeLow(unit, &character))
        return finishSet(UnitSet::single(unit), false);
    NodePtr choice = makeNode(Type::Choice);
    addPairs(choice.get(), character, character);
    return makeOf(Type::Group, std::move(choice->parts.front()));
}

NodePtr Parser::finishSet(UnitSet set, bool others, const PairRanges &pairs) const
{
    if (fold)
        set.foldCase();
    if (others)
        set.negate();
    if (reading == Reading::Characters)
        return makeCharacter(set, pairs, others);
    return makeSet(std::move(set));
}

NodePtr Parser::group(int depth)
{
    ++pos;
    NodePtr node = makeNode(Type::Group);
    if (!take(u'?')) {
        node->number = ++captures;
    } else if (take(u'=') || take(u'!')) {
        node->type = Type::LookAhead;
        node->negated = pattern[pos - 1] == u'!';
    } else if (!take(u':')) {
        return nullptr;
    }
    NodePtr inner = choice(depth + 1);
    if (!inner || !take(u')'))
        return nullptr;
    node->parts.push_back(std::move(inner));
    return node;
}

NodePtr Parser::escapeAtom()
{
    ++pos;
    const std::optional<Escape> found = escape();
    if (!found)
        return nullptr;
    switch (found->kind) {
    case Escape::Kind::Unit:
        return pairOr(found->unit);
    case Escape::Kind::Set:
        return finishSet(UnitSet::ofKind(found->unitKind, found->others), false);
    case Escape::Kind::WordBound:
        return makeNode(Type::WordBound);
    case Escape::Kind::NotWordBound:
        return makeNode(Type::NotWordBound);
    case Escape::Kind::BackReference:
        break;
    }
    NodePtr node = makeNode(Type::BackReference);
    node->number = found->number;
    highestReference = std::max(highestReference, found->number);
    return node;
}

std::optional<char16_t> Parser::number(int base, int digits, char16_t highest)
{
    int value = 0;
    for (int i = 0; i < digits && !atEnd(); ++i) {
        const int digit = hexValue(peek());
        if (digit < 0 || digit >= base)
            break;
        value = value * base + digit;
        ++pos;
    }
    if (value > highest)
        return {};
    return char16_t(value);
}

/// Reads on behind a backslash.
std::optional<Escape> Parser::escape()
{
    if (atEnd())
        return {};
    Escape result;
    const char16_t unit = pattern[pos++].unicode();
    const auto setOf = [&result, unit](UnitKind kind) {
        result.kind = Escape::Kind::Set;
        result.unitKind = kind;
        result.others = unit < u'a';
        return result;
    };
    const auto numbered = [&result](std::optional<char16_t> value) -> std::optional<Escape> {
        if (!value)
            return {};
        result.unit = *value;
        return result;
    };
    static constexpr std::u16string_view names = u"afnrtv";
    static constexpr std::u16string_view units = u"\a\f\n\r\t\v";
    if (const auto i = names.find(unit); i != names.npos) {
        result.unit = units[i];
        return result;
    }
    switch (unit) {
    case u'd':
    case u'D':
        return setOf(DigitUnit);
    case u's':
    case u'S':
        return setOf(SpaceUnit);
    case u'w':
    case u'W':
        return setOf(WordUnit);
    case u'b':
        result.kind = Escape::Kind::WordBound;
        return result;
    case u'B':
        result.kind = Escape::Kind::NotWordBound;
        return result;
    case u'0':
        return numbered(number(8, 3, 0xff));
    case u'x':
        return numbered(number(16, 4, 0xffff));
    }
    result.unit = unit;
    if (unit >= u'1' && unit <= u'9') {
        --pos;
        result.kind = Escape::Kind::BackReference;
        result.number = number(10, 4, 9999).value_or(0);
    }
    return result;
}

NodePtr Parser::setAtom()
{
    ++pos;
    UnitSet set;
    PairRanges pairs;
    const bool others = take(u'^');
    const auto add = [&set, &pairs](char32_t first, char32_t last) {
        if (first > last)
            std::swap(first, last);
        if (last < firstBeyondUnits) {
            set.addRange(char16_t(first), char16_t(last));
            return;
        }
        pairs.emplace_back(std::max(first, firstBeyondUnits), last);
        // Halves of pairs are no characters of such a range.
        if (first < firstHigh)
            set.addRange(char16_t(first), firstHigh - 1);
        if (first < firstBeyondUnits)
            set.addRange(char16_t(std::max<char32_t>(first, lastLow + 1)), 0xffff);
    };
    // A character is held back until it is known not to begin a range.
    char32_t held = 0;
    enum
    {
        Nothing,
        Unit,
        Range
    } holding = Nothing;
    const auto flush = [&] {
        if (holding == Range)
            add(u'-', u'-');
        if (holding != Nothing)
            add(held, held);
        holding = Nothing;
    };
    do {
        if (atEnd())
            return nullptr;
        if (peek() == u'-' && holding == Unit) {
            ++pos;
            holding = Range;
            continue;
        }
        std::optional<Escape> part = Escape();
        part->unit = pattern[pos++].unicode();
        if (part->unit == u'\\')
            part = escape();
        if (!part)
            return nullptr;
        if (part->kind == Escape::Kind::Set) {
            flush();
            set.addKind(part->unitKind, part->others);
            continue;
        }
        if (part->kind == Escape::Kind::WordBound)
            part->unit = u'\b';
        else if (part->kind != Escape::Kind::Unit)
            return nullptr;
        char32_t character = part->unit;
        if (reading == Reading::Characters)
            takeLow(part->unit, &character);
        if (holding == Range) {
            add(held, character);
            holding = Nothing;
            continue;
        }
        flush();
        held = character;
        holding = Unit;
    } while (peek() != u']' || atEnd());
    flush();
    ++pos;
    return finishSet(std::move(set), others, pairs);
}

/// Reads a quantifier; false, without moving, if there is none, false behind its
/// start if it has a fault.
bool Parser::repeat(int *min, int *max)
{
    *min = 0;
    *max = PatternNode::unlimited;
    if (take(u'*'))
        return true;
    if (take(u'+')) {
        *min = 1;
        return true;
    }
    if (take(u'?')) {
        *max = 1;
        return true;
    }
    return take(u'{') && bounds(min, max);
}

bool Parser::bounds(int *min, int *max)
{
    const bool hasDigit = hexValue(peek()) >= 0;
    const std::optional<int> low = count(0);
    if (!low || (!hasDigit && peek() != u','))
        return false;
    *min = *low;
    *max = *low;
    if (take(u',')) {
        const std::optional<int> high = count(PatternNode::unlimited);
        if (!high)
            return false;
        *max = *high;
    }
    return take(u'}') && (*max == PatternNode::unlimited || *max >= *min);
}

std::optional<int> Parser::count(int missing)
{
    if (peek() < u'0' || peek() > u'9')
        return missing;
    int value = 0;
    while (peek() >= u'0' && peek() <= u'9') {
        value = value * 10 + (peek() - u'0');
        ++pos;
        if (value > maximumRepeat)
            return {};
    }
    return value;
}

bool isSingleUnit(const PatternNode &node)
{
    if (node.type == Type::Set)
        return true;
    return (node.type == Type::Group || node.type == Type::Sequence) && node.parts.size() == 1 &&
           isSingleUnit(*node.parts.front());
}

QString quantifier(const PatternNode &node)
{
    if (node.max == PatternNode::unlimited)
        return QStringLiteral("{%1,}").arg(node.min);
    return QStringLiteral("{%1,%2}").arg(node.min).arg(node.max);
}

} // namespace

NodePtr parsePattern(QStringView pattern, bool caseInsensitive, TextPattern::Reading reading)
{
    return Parser(pattern, caseInsensitive, reading).parse();
}

QString wildcardPattern(const QString &wildcard)
{
    QString result;
    qsizetype i = 0;
    const auto copySet = [&] {
        result += QLatin1Char('[');
        if (i < wildcard.size() && wildcard[i] == u'^')
            result += wildcard[i++];
        const qsizetype first = i;
        while (i < wildcard.size() && (wildcard[i] != u']' || i == first)) {
            if (wildcard[i] == u'\\')
                result += QLatin1Char('\\');
            result += wildcard[i++];
        }
    };
    while (i < wildcard.size()) {
        const QChar ch = wildcard[i++];
        if (ch == u'*') {
            result += QStringLiteral(".*");
        } else if (ch == u'?') {
            result += QLatin1Char('.');
        } else if (ch == u'[') {
            copySet();
        } else {
            if (QStringView(u"$()+.\\^{|}").contains(ch))
                result += QLatin1Char('\\');
            result += ch;
        }
    }
    return result;
}

QString pcrePattern(const PatternNode &node)
{
    QStringList parts;
    for (const NodePtr &part : node.parts)
        parts += pcrePattern(*part);
    switch (node.type) {
    case Type::Set:
        return node.set.expression();
    case Type::Sequence:
        return parts.join(QString());
    case Type::Choice:
        return parts.join(QLatin1Char('|'));
    case Type::Repeat:
        if (node.parts.front()->type == Type::Set)
            return parts.front() + quantifier(node) + QStringLiteral("(?C)");
        return QStringLiteral("(?:(?C)") + parts.front() + QLatin1Char(')') + quantifier(node);
    case Type::Group:
        return (node.number ? QStringLiteral("(") : QStringLiteral("(?:")) + parts.front() +
               QLatin1Char(')');
    case Type::Begin:
        return QStringLiteral("^");
    case Type::End:
        return QStringLiteral("$");
    case Type::WordBound:
        return QStringLiteral("\\b");
    case Type::NotWordBound:
        return QStringLiteral("\\B");
    case Type::LookAhead:
        return (node.negated ? QStringLiteral("(?!") : QStringLiteral("(?=")) + parts.front() +
               QLatin1Char(')');
    case Type::BackReference:
        break;
    }
    constexpr int highestCallout = 255;
    const int callout = node.number <= highestCallout ? node.number : 0;
    return QStringLiteral("(?C%1)\\g{%2}").arg(callout).arg(node.number);
}

bool orderMatters(const PatternNode &node)
{
    if (node.type == Type::Choice)
        return true;
    if (node.type == Type::Repeat && !isSingleUnit(*node.parts.front()))
        return true;
    return std::any_of(node.parts.begin(), node.parts.end(),
                       [](const NodePtr &part) { return orderMatters(*part); });
}

bool contains(const PatternNode &node, Type type)
{
    return node.type == type ||
           std::any_of(node.parts.begin(), node.parts.end(),
                       [type](const NodePtr &part) { return contains(*part, type); });
}

PatternLength patternLength(const PatternNode &node)
{
    constexpr int unlimited = PatternNode::unlimited;
    // Lengths beyond this are as good as unbounded and would overflow.
    constexpr int countable = 1 << 20;
    if (node.type == Type::Set)
        return {1, 1};
    if (node.type == Type::LookAhead)
        return {0, 0};
    if (node.type == Type::BackReference)
        return {0, unlimited};
    PatternLength sum;
    for (size_t i = 0; i < node.parts.size(); ++i) {
        const PatternLength part = patternLength(*node.parts[i]);
        const bool bounded = sum.max != unlimited && part.max != unlimited;
        if (node.type == Type::Choice) {
            sum.min = i == 0 ? part.min : std::min(sum.min, part.min);
            sum.max = bounded ? std::max(sum.max, part.max) : unlimited;
        } else {
            sum.min = std::min(sum.min + part.min, countable);
            sum.max = bounded ? sum.max + part.max : unlimited;
        }
    }
    if (node.type == Type::Repeat) {
        sum.min = int(std::min<qint64>(qint64(sum.min) * node.min, countable));
        if (sum.max != 0)
            sum.max = sum.max == unlimited || node.max == unlimited
                          ? unlimited
                          : int(std::min<qint64>(qint64(sum.max) * node.max, countable));
    }
    if (sum.max > countable / 2)
        sum.max = unlimited;
    return sum;
}

namespace {

/// The one unit below 128 that \a set holds, as requiredText() gives it; 0 if there
/// is none or are several.
char16_t requiredUnit(const UnitSet &set, bool caseInsensitive)
{
    if (!caseInsensitive && set.reachesWide())
        return 0;
    char16_t only = 0;
    for (char16_t unit = 0; unit < UnitSet::asciiCount; ++unit) {
        if (!set.contains(unit))
            continue;
        const bool isUpper = unit >= u'A' && unit <= u'Z';
        const char16_t folded = caseInsensitive && isUpper ? char16_t(unit | 0x20) : unit;
        if (unit == 0 || (only != 0 && only != folded))
            return 0;
        only = folded;
    }
    return only;
}

/// Collects the texts that stand one behind the other in every match.
struct RequiredText
{
    void visit(const PatternNode &node);
    void endRun();

    const bool caseInsensitive;
    QString run;
    QString longest;
};

void RequiredText::endRun()
{
    if (run.size() > longest.size())
        longest = run;
    run.clear();
}

void RequiredText::visit(const PatternNode &node)
{
    switch (node.type) {
    case Type::Set:
        if (const char16_t unit = requiredUnit(node.set, caseInsensitive))
            run += QChar(unit);
        else
            endRun();
        return;
    case Type::Sequence:
    case Type::Group:
        for (const NodePtr &part : node.parts)
            visit(*part);
        return;
    case Type::Repeat:
        if (node.min > 0)
            visit(*node.parts.front());
        if (node.min != 1 || node.max != 1)
            endRun();
        return;
    case Type::Choice:
    case Type::BackReference:
        endRun();
        return;
    case Type::Begin:
    case Type::End:
    case Type::WordBound:
    case Type::NotWordBound:
    case Type::LookAhead:
        // These take nothing: what stands around them is adjacent.
        return;
    }
}

} // namespace

QString requiredText(const PatternNode &node, bool caseInsensitive)
{
    RequiredText required{caseInsensitive, {}, {}};
    required.visit(node);
    required.endRun();
    return required.longest;
}

} // namespace zvwidgets
