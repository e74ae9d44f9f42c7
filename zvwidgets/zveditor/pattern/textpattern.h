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
    /// an end within a fixed limit counts as not found.
    ///
    /// \a work (may be null) is what several calls may spend together, in
    /// characters; it is lowered by what this one could have cost, and with
    /// nothing left nothing is found. An expression with an automaton() is
    /// linear by itself and spends nothing.
    [[nodiscard]] int search(QStringView text, int from = 0, int *length = nullptr,
                             qint64 *work = nullptr) const;
    /// Length of the match that begins at \a column, -1 if none does.
    [[nodiscard]] int match(QStringView text, int column = 0, qint64 *work = nullptr) const;

    /// The table the expression was compiled to; null if it is not valid or
    /// needs what a finite automaton cannot do.
    const PatternAutomaton *automaton() const;
    /// automaton(), or where there is none a table that matches wherever the
    /// expression does and possibly elsewhere; null if there is none either.
    const PatternAutomaton *filter() const;
    /// requiredText() of the expression; empty if it is not valid.
    QString requiredText() const;

private:
    struct Private;
    std::shared_ptr<Private> d;
};

Q_DECLARE_OPERATORS_FOR_FLAGS(TextPattern::Options)

} // namespace zvwidgets
