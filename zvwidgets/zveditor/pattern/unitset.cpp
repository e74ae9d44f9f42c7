#include "zvwidgets/zveditor/pattern/unitset.h"

#include <QChar>

#include <algorithm>
#include <array>

namespace zvwidgets {

namespace {

quint8 computeKinds(char16_t unit)
{
    const QChar ch(unit);
    quint8 kinds = 0;
    if (ch.isLetterOrNumber() || ch == QLatin1Char('_'))
        kinds |= WordUnit;
    if (ch.isDigit())
        kinds |= DigitUnit;
    if (ch.isSpace())
        kinds |= SpaceUnit;
    return kinds;
}

QString escaped(char16_t unit)
{
    return QStringLiteral("\\x{%1}").arg(uint(unit), 0, 16);
}

} // namespace

quint8 unitKinds(char16_t unit)
{
    // Made when the first unit from 128 on is met, which may be never.
    static const std::vector<quint8> table = [] {
        std::vector<quint8> kinds(0x10000);
        for (int i = 0; i < 0x10000; ++i)
            kinds[i] = computeKinds(char16_t(i));
        return kinds;
    }();
    return table[unit];
}

UnitSet UnitSet::any()
{
    UnitSet set;
    set.negate();
    return set;
}

UnitSet UnitSet::single(char16_t unit)
{
    UnitSet set;
    set.addRange(unit, unit);
    return set;
}

UnitSet UnitSet::ofKind(UnitKind kind, bool others)
{
    UnitSet set;
    set.addKind(kind, others);
    return set;
}

void UnitSet::addUnit(char16_t unit)
{
    if (unit < asciiCount)
        ascii[unit >> 6] |= quint64(1) << (unit & 63);
    else
        ranges.emplace_back(unit, unit);
}

void UnitSet::addRange(char16_t first, char16_t last)
{
    if (first > last)
        std::swap(first, last);
    for (int unit = first; unit <= last && unit < asciiCount; ++unit)
        addUnit(char16_t(unit));
    if (last >= asciiCount)
        ranges.emplace_back(std::max<char16_t>(first, asciiCount), last);
    items += escaped(first);
    if (first != last)
        items += QLatin1Char('-') + escaped(last);
}

void UnitSet::addKind(UnitKind kind, bool others)
{
    for (int unit = 0; unit < asciiCount; ++unit) {
        if (bool(computeKinds(char16_t(unit)) & kind) != others)
            addUnit(char16_t(unit));
    }
    for (int kinds = 0; kinds < unitKindCombinations; ++kinds) {
        if (bool(kinds & kind) != others)
            wideKinds |= quint8(1 << kinds);
    }
    const char letter = kind == WordUnit ? 'w' : kind == DigitUnit ? 'd' : 's';
    items += QLatin1Char('\\');
    items += QLatin1Char(others ? char(letter - 'a' + 'A') : letter);
}

void UnitSet::foldCase()
{
    const auto fold = [this](char16_t unit) {
        const char16_t lower = QChar::toLower(char32_t(unit));
        const char16_t upper = QChar::toUpper(char32_t(unit));
        if (lower != unit)
            addUnit(lower);
        if (upper != unit)
            addUnit(upper);
    };
    const auto wide = ranges;
    for (int unit = 0; unit < asciiCount; ++unit) {
        if (contains(char16_t(unit)))
            fold(char16_t(unit));
    }
    for (const auto &[first, last] : wide) {
        for (int unit = first; unit <= last; ++unit)
            fold(char16_t(unit));
    }
}

void UnitSet::negate()
{
    ascii[0] = ~ascii[0];
    ascii[1] = ~ascii[1];
    negated = true;
}

bool UnitSet::containsWide(char16_t unit, quint8 kinds) const
{
    const bool listed = (wideKinds >> kinds & 1) ||
                        std::any_of(ranges.begin(), ranges.end(), [unit](const auto &range) {
                            return range.first <= unit && unit <= range.second;
                        });
    return listed != negated;
}

bool UnitSet::reachesSurrogates() const
{
    // They are of no kind.
    if (negated || (wideKinds & 1))
        return true;
    return std::any_of(ranges.begin(), ranges.end(), [](const auto &range) {
        return range.first <= 0xdfff && 0xd800 <= range.second;
    });
}

void UnitSet::appendBounds(std::vector<char16_t> *bounds) const
{
    for (const auto &[first, last] : ranges) {
        bounds->push_back(first);
        if (last != 0xffff)
            bounds->push_back(char16_t(last + 1));
    }
}

QString UnitSet::expression() const
{
    if (items.isEmpty())
        return QStringLiteral("[\\s\\S]");
    return QLatin1Char('[') + (negated ? QStringLiteral("^") : QString()) + items +
           QLatin1Char(']');
}

bool UnitSet::operator==(const UnitSet &other) const
{
    return ascii[0] == other.ascii[0] && ascii[1] == other.ascii[1] && ranges == other.ranges &&
           wideKinds == other.wideKinds && negated == other.negated;
}

} // namespace zvwidgets
