#pragma once

#include <QFlags>
#include <QString>
#include <QStringView>

#include <memory>

namespace zvwidgets {

class PatternAutomaton;
class PatternBudget;
class PatternMachine;

/// A regular expression in the dialect of the highlight definitions: no lazy
/// or possessive quantifiers, no look-behind, no inline options; "." takes any
/// character, "\\xhhhh" is a UTF-16 unit. Of the matches at a place the longest
/// counts, whatever the order of alternatives; in minimal mode the shortest.
///
/// A surrogate pair is one character, which is no letter, digit or space; half a
/// pair without the other half is a character too. PatternSearch searches texts
/// that are searched more than once.
///
/// Cheap to copy. Matching reuses memory of the expression: one thread only.
class TextPattern
{
public:
    enum Option
    {
        NoOption = 0,
        CaseInsensitive = 1,
        Minimal = 2,
        CodeUnits = 4 ///< each half of a surrogate pair is a character
    };
    Q_DECLARE_FLAGS(Options, Option)
    enum class Syntax
    {
        Expression,
        Wildcard ///< "*", "?" and "[...]" alone are special
    };
    /// What a text's characters are.
    enum class Reading
    {
        Units,
        Characters
    };

    /// Steps of a search that is given no budget: a fraction of a second.
    static constexpr qint64 defaultSteps = 16 * 1024 * 1024;

    /// An expression that is not valid and never matches.
    TextPattern();
    explicit TextPattern(const QString &pattern, Options options = NoOption,
                         Syntax syntax = Syntax::Expression);

    /// False if the expression has a fault; such an expression never matches.
    bool isValid() const;
    QString pattern() const;
    Options options() const;

    /// Column of the first match that begins at or after \a from, -1 if there is
    /// none; \a length (may be null) receives its length. "^" is column 0 of
    /// \a text, also with a later \a from. A search that spends the last of
    /// \a budget, or without one more than defaultSteps, finds nothing.
    [[nodiscard]] int search(QStringView text, int from = 0, int *length = nullptr,
                             PatternBudget *budget = nullptr) const;
    /// Length of the match that begins at \a column, -1 if none does.
    [[nodiscard]] int match(QStringView text, int column = 0,
                            PatternBudget *budget = nullptr) const;

    /// What does the matching in texts of that \a reading. Without surrogates in the
    /// text both give the same, and Units is faster. Never null; the expression owns it.
    PatternMachine *machine(Reading reading) const;
    /// Those of the machine for Reading::Units.
    const PatternAutomaton *automaton() const;
    const PatternAutomaton *filter() const;
    /// requiredText() of the expression; empty if it is not valid.
    QString requiredText() const;

private:
    struct Private;
    std::shared_ptr<Private> d;
};

Q_DECLARE_OPERATORS_FOR_FLAGS(TextPattern::Options)

} // namespace zvwidgets
