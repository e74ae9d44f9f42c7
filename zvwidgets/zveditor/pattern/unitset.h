#pragma once

#include <QString>

#include <utility>
#include <vector>

namespace zvwidgets {

/// What an expression's classes ask of a UTF-16 unit, as bits.
enum UnitKind : quint8
{
    WordUnit = 1, ///< letter, number or "_"
    DigitUnit = 2,
    SpaceUnit = 4
};
constexpr int unitKindCombinations = 8;

/// The UnitKind bits of \a unit.
quint8 unitKinds(char16_t unit);

/// A set of UTF-16 units: single ones, ranges and kinds, possibly all but these.
/// Units below 128 are looked up in a bitmap, all others through their ranges and
/// kinds, so that a set of "\\w" does not list the letters of the world.
class UnitSet
{
public:
    static constexpr int asciiCount = 128;

    static UnitSet any();
    static UnitSet single(char16_t unit);
    /// The units of a kind, or all others.
    static UnitSet ofKind(UnitKind kind, bool others);

    /// Both ends inclusive, in either order.
    void addRange(char16_t first, char16_t last);
    void addKind(UnitKind kind, bool others);
    /// Adds the other case of each unit; before negate().
    void foldCase();
    /// Turns the set into all units it did not hold; once, at the end.
    void negate();

    bool contains(char16_t unit) const
    {
        if (unit < asciiCount)
            return ascii[unit >> 6] >> (unit & 63) & 1;
        return containsWide(unit, unitKinds(unit));
    }
    /// For a \a unit from 128 on, as if it were of \a kinds.
    bool containsWide(char16_t unit, quint8 kinds) const;
    /// True if it can hold a unit from 128 on; true in doubt.
    bool reachesWide() const { return negated || wideKinds || !ranges.empty(); }
    /// True if it holds every unit from 128 on; false in doubt.
    bool holdsAllWide() const { return negated && !wideKinds && ranges.empty(); }
    /// True if it can hold halves of surrogate pairs; true in doubt.
    bool reachesSurrogates() const;
    /// Appends where membership may change among the units from 128 on: the first
    /// unit of each range and the one after its end.
    void appendBounds(std::vector<char16_t> *bounds) const;
    /// The set in the syntax of PCRE2.
    QString expression() const;

    bool operator==(const UnitSet &other) const;

private:
    void addUnit(char16_t unit);

    quint64 ascii[2] = {0, 0};
    std::vector<std::pair<char16_t, char16_t>> ranges; ///< inclusive, from 128 on
    quint8 wideKinds = 0; ///< bit n: units from 128 on whose kinds are n
    bool negated = false; ///< concerns ranges and wideKinds only
    QString items;        ///< as added, in the syntax of PCRE2
};

} // namespace zvwidgets
