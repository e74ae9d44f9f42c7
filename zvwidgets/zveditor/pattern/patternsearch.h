#pragma once

#include "zvwidgets/zveditor/pattern/patternautomaton.h"
#include "zvwidgets/zveditor/pattern/patternbudget.h"
#include "zvwidgets/zveditor/pattern/textpattern.h"

#include <QStringView>

namespace zvwidgets {

/// Searches one text after the other for an expression, each from one place after the
/// other: what was found out about a text serves all searches in it, so that all
/// matches of a table's expression together cost what the text is long.
class PatternSearch
{
    Q_DISABLE_COPY_MOVE(PatternSearch)
public:
    /// \a spending is not owned; null gives each text a budget of its own, which bounds
    /// the time to a fraction of a second.
    explicit PatternSearch(const TextPattern &expression, PatternBudget *spending = nullptr);

    /// What is searched from now on. It is not copied and has to stay; only what lies
    /// in front of all later searches may change.
    void setText(QStringView text);
    /// Makes \a column the place where "^" matches, and with it the first of the text.
    void setBegin(int column) { begin = column; }

    /// Column of the first match that begins at or after \a from and in front of
    /// \a limit, -1 if there is none or the budget is spent; \a length receives its
    /// length. Where there is no table a match may begin at or after \a limit too.
    /// Without TextPattern::CodeUnits no match begins or ends inside a surrogate pair.
    [[nodiscard]] int find(int from, int *length, int limit = wholeText);
    /// Length of the match that begins at \a column, -1 if none does.
    [[nodiscard]] int match(int column);

    static constexpr int wholeText = std::numeric_limits<int>::max();

private:
    int findPlace(int from, int limit, int *end);
    int findByTable(const PatternAutomaton &table, int from, int limit, int *end);
    int findByCandidates(int candidate, int limit, int *end);
    bool isInsidePair(int column) const;

    TextPattern pattern;
    PatternBudget *const shared;
    PatternBudget own;
    PatternBudget *budget;
    PatternMachine *machine = nullptr;
    PatternMemo memo; ///< of the machine's filter() on the text
    const char16_t *units = nullptr;
    int begin = 0;
    int end = 0;
    bool hasPairs = false;
};

} // namespace zvwidgets
