#pragma once

#include "zvwidgets/zveditor/pattern/textpattern.h"
#include "zvwidgets/zveditor/pattern/unitset.h"

#include <QString>
#include <QStringView>

#include <memory>
#include <vector>

namespace zvwidgets {

/// A part of an expression, owner of the parts it is made of.
struct PatternNode
{
    enum class Type
    {
        Set, ///< one unit of `set`; the others have no set
        Sequence,
        Choice,
        Repeat, ///< `min` to `max` times its one part
        Group,  ///< one part, captured if `number` is above 0
        Begin,
        End,
        WordBound,
        NotWordBound,
        LookAhead, ///< its one part, looked at but not taken
        BackReference
    };
    static constexpr int unlimited = -1;

    explicit PatternNode(Type kind) : type(kind) {}

    Type type;
    std::vector<std::unique_ptr<PatternNode>> parts;
    UnitSet set;
    int min = 0;
    int max = 0;          ///< unlimited for no bound
    int number = 0;       ///< of the capture, from 1
    bool negated = false; ///< LookAhead only
};

/// The tree of the expression \a pattern; null if it has a fault. With
/// Reading::Characters it takes no half of a surrogate pair in a text where it
/// begins at no such half.
std::unique_ptr<PatternNode> parsePattern(QStringView pattern, bool caseInsensitive,
                                          TextPattern::Reading reading);

/// The expression that stands for the wildcard text \a wildcard.
QString wildcardPattern(const QString &wildcard);

/// The tree in the syntax of PCRE2; sets are written without folding their case. It has
/// a callout in each repetition, and one with the number of the group, or 0 if that is
/// too large, at each back-reference.
QString pcrePattern(const PatternNode &node);

/// True if the first match in order of preference may differ from the longest.
bool orderMatters(const PatternNode &node);

/// True if \a node or a part of it is of \a type.
bool contains(const PatternNode &node, PatternNode::Type type);

/// Fewest and most units a match takes; most is PatternNode::unlimited where
/// there is no bound.
struct PatternLength
{
    int min = 0;
    int max = 0;
};
PatternLength patternLength(const PatternNode &node);

/// A text of units below 128 that every match of \a node holds, the longest that
/// is easily seen; empty if there is none. With \a caseInsensitive it is in lower
/// case, and holds for subjects without units from 128 on if their case is ignored.
QString requiredText(const PatternNode &node, bool caseInsensitive);

} // namespace zvwidgets
