#pragma once

#include "zvwidgets/zveditor/pattern/patternautomaton.h"

#include <QStringView>

#include <memory>

namespace zvwidgets {

class PatternBudget;

/// The tree of an expression made ready to be matched: by a table, or where a table
/// would be large or cannot express it by going through a text in every way there is.
/// Matching reuses memory of the machine: one thread only.
class PatternMachine
{
public:
    /// Not valid.
    PatternMachine();
    /// \a root comes from parsePattern() with the same \a caseInsensitive.
    PatternMachine(const PatternNode &root, bool caseInsensitive, bool minimal);
    ~PatternMachine();

    bool isValid() const { return valid; }
    /// Null if matching goes by search() and match().
    const PatternAutomaton *automaton() const { return table.get(); }
    /// automaton(), or a table that matches wherever the expression does and possibly
    /// elsewhere; null if there is none.
    const PatternAutomaton *filter() const { return table ? table.get() : upper.get(); }

    /// What a call of search() or match() may cost, and whether it came to that.
    struct Effort
    {
        PatternBudget &budget;
        qint64 allowance; ///< steps of this call alone
        bool isOver = false;
    };
    /// Where the first match from \a from on begins, -1 if there is none or the effort
    /// is over. Only for a valid expression without automaton().
    int search(QStringView text, int from, int *length, Effort *effort);
    /// Length of the match at \a column; otherwise as search().
    int match(QStringView text, int column, Effort *effort);

private:
    struct Code;

    void compile(const PatternNode &root, bool caseInsensitive, bool minimal);
    int run(QStringView text, int from, quint32 flags, Effort *effort, int *length);

    bool valid = false;
    std::unique_ptr<PatternAutomaton> table;
    std::unique_ptr<PatternAutomaton> upper;
    std::unique_ptr<Code> code;
};

} // namespace zvwidgets
