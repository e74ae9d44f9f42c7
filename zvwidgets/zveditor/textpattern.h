#pragma once

#include <QFlags>
#include <QString>
#include <QStringView>

#include <memory>

namespace zvwidgets {

class PatternAutomaton;

/// A regular expression in the dialect of the highlight definitions: no lazy
/// or possessive quantifiers, no look-behind, no inline options; "." takes any
/// character, "\\xhhhh" is a UTF-16 unit. Of the matches at a place the longest
/// counts, whatever the order of alternatives; in minimal mode the shortest.
///
/// Cheap to copy. Matching reuses memory of the expression: one thread only.
class TextPattern
{
public:
    enum Option
    {
        NoOption = 0,
        CaseInsensitive = 1,
        Minimal = 2
    };
    Q_DECLARE_FLAGS(Options, Option)
    enum class Syntax
    {
        Expression,
        Wildcard ///< "*", "?" and "[...]" alone are special
    };

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
    /// \a text, also with a later \a from. An expression that does not come to
    /// an end within the work limit counts as not found.
    [[nodiscard]] int search(QStringView text, int from = 0, int *length = nullptr) const;
    /// Length of the match that begins at \a column, -1 if none does.
    [[nodiscard]] int match(QStringView text, int column = 0) const;

    /// The table the expression was compiled to; null if it is not valid or
    /// needs what a finite automaton cannot do.
    const PatternAutomaton *automaton() const;

private:
    struct Private;
    std::shared_ptr<const Private> d;
};

Q_DECLARE_OPERATORS_FOR_FLAGS(TextPattern::Options)

} // namespace zvwidgets
