#pragma once

#include "zvwidgets/zveditor/pattern/patternsyntax.h"

#include <QHash>

#include <array>
#include <memory>
#include <vector>

namespace zvwidgets {

class PatternBudget;

/// What long scans of one text have found, so that no stretch is scanned twice
/// from the same state. Belongs to one automaton, one text and one end of it.
struct PatternMemo
{
    void clear();

    QHash<quint64, int> ends;       ///< row and checkpoint to end of match, -1 for none
    int reach = 0;                  ///< no text from here on was looked at
    std::vector<PatternMemo> looks; ///< of what is looked ahead for
    /// Spent by long scans, if there is one; a scan that spends the last of it fails.
    PatternBudget *budget = nullptr;
};

/// An expression as a deterministic table: one look-up per character, the end of
/// the longest (in minimal mode the shortest) match falls out of a single pass.
/// Immutable after it is built.
class PatternAutomaton
{
public:
    enum class Precision
    {
        Exact,
        /// Matches wherever the expression does, and possibly elsewhere: what the
        /// table cannot express is taken to hold.
        Upper,
        /// As Upper, and counted repetitions are taken to have no bound.
        Rough
    };

    /// Null if the expression has, with Precision::Exact, back-references, or if its
    /// table would be large.
    static std::unique_ptr<PatternAutomaton> build(const PatternNode &root, bool minimal,
                                                   Precision precision = Precision::Exact);

    /// A text from \a begin up to, not including, \a end; "^" is \a begin.
    struct Subject
    {
        const char16_t *text = nullptr;
        int begin = 0;
        int end = 0;
    };

    /// Where the match that begins at \a at ends, -1 if none does. \a memo may be
    /// null; with it the cost over all places is linear.
    int matchEnd(const Subject &subject, int at, PatternMemo *memo) const;
    /// The first place from \a from on where a match begins, -1 if there is none;
    /// \a foundEnd receives where it ends.
    int search(const Subject &subject, int from, int *foundEnd, PatternMemo *memo) const
    {
        return searchBefore(subject, from, subject.end + 1, foundEnd, memo);
    }
    /// As search(), for a match that begins in front of \a limit, at most the end + 1.
    int searchBefore(const Subject &subject, int from, int limit, int *foundEnd,
                     PatternMemo *memo) const;

    /// A match can begin at the start of the text alone.
    bool beginOnly() const { return onlyAtBegin; }
    /// Whether a match begins at a place may depend on its being the text's start.
    bool beginSensitive() const { return usesBegin || usesWord; }
    /// A failure may turn into a match when the text is cut shorter.
    bool endSensitive() const { return usesNext; }
    /// A match at the start of the text can take \a unit as its first character.
    bool canTake(char16_t unit) const { return table[beginRow + classOf(unit)] & rowMask; }
    /// As canTake() for some unit from 128 on.
    bool canTakeWide() const;
    /// A match, an empty one too, can begin in front of \a unit (below 128), not
    /// at the start of the text.
    bool canOccur(char16_t unit) const { return occurs[classOf(unit)]; }
    /// A match cannot be empty and cannot begin with a unit from 128 on.
    bool needsAscii() const;
    /// The set S if the expression is S+, also behind "^"; null otherwise.
    const UnitSet *run() const { return isRun ? &runSet : nullptr; }
    /// The length of every match, -1 if it varies.
    int fixedLength() const { return fixed; }
    /// Units from its start on that matchEnd() may look at without a note of it in
    /// PatternMemo::reach, but for a match that goes up to the end of the text.
    int shortReach() const;
    /// No text from here on was looked at for what \a memo holds.
    static int reachOf(const PatternMemo &memo);

private:
    friend class AutomatonBuilder;
    PatternAutomaton() = default;

    static constexpr quint32 acceptBit = 0x80000000;
    static constexpr quint32 rowMask = 0x7fffffff;

    /// A row where it depends on what follows how to go on.
    struct Branch
    {
        std::vector<int> looks;
        std::vector<quint32> rows; ///< by outcome, bit n for the n-th of looks
    };

    quint8 classOf(char16_t unit) const
    {
        return unit < UnitSet::asciiCount ? asciiClass[unit] : wideClass(unit);
    }
    quint8 wideClass(char16_t unit) const;
    quint32 startRow(const Subject &subject, int at) const;
    quint32 lookedRow(const Subject &subject, quint32 row, int at, PatternMemo *memo) const;
    int longScan(const Subject &subject, int at, quint32 row, int last, PatternMemo *memo) const;
    int nextCandidate(const Subject &subject, int from, int limit) const;

    std::array<quint8, UnitSet::asciiCount> asciiClass{};
    std::vector<char16_t> bounds;    ///< sorted; where classes of units from 128 on change
    std::vector<quint8> wideClasses; ///< by interval of bounds, then kinds
    int endClass = 0;                ///< stands for the end of the text; classes are below
    /// By row and class: the offset of the next row, 0 if no match can follow, and
    /// whether a match may end in front of the character.
    std::vector<quint32> table;
    quint32 width = 0;            ///< entries of a row
    quint32 firstBranch = 0;      ///< rows from here on have a branch each, but for totalRow
    quint32 totalRow = rowMask;   ///< takes everything up to the end
    std::vector<Branch> branches; ///< by row from firstBranch on
    std::vector<std::unique_ptr<PatternAutomaton>> looks;
    quint32 beginRow = 0; ///< offsets into the table
    quint32 afterOtherRow = 0;
    quint32 afterWordRow = 0;
    std::vector<quint8> occurs; ///< by class, as a bool
    int onlyUnit = -1;          ///< the one unit a match can begin with, or -1
    UnitSet runSet;
    bool shortest = false;
    bool usesBegin = false;
    bool usesWord = false;
    bool usesNext = false;
    bool onlyAtBegin = false;
    bool isRun = false;
    int fixed = -1;
};

} // namespace zvwidgets
