#pragma once

#include "zvwidgets/zveditor/highlight/highlightrules.h"
#include "zvwidgets/zveditor/highlight/keywordtable.h"
#include "zvwidgets/zveditor/lines/scanmarks.h"
#include "zvwidgets/zveditor/pattern/patternautomaton.h"

#include <QStringList>
#include <QStringView>

#include <array>
#include <memory>
#include <utility>
#include <vector>

namespace zvwidgets {

/// The rule lists of one section in a form made for speed. It gives what walking
/// the lists with HighlightItem::find would give, but a rule that cannot match at
/// the next character is not asked, rules of the same expression share its result,
/// and a scan that has looked through a stretch does not look through it again.
/// The cost of a line grows linearly with its length and always has an end.
///
/// Keeps notes on the line at hand: not reentrant, one thread only.
class HighlightScanner
{
public:
    using Contexts = std::vector<std::unique_ptr<HighlightContext>>;

    explicit HighlightScanner(const Contexts &contexts);
    ~HighlightScanner();

    /// The context at the end of \a text, which begins in \a ctx. With \a marks,
    /// which may be null, only what changed since the last such call is looked at.
    int follow(int ctx, QStringView text, ScanMarks *marks = nullptr);
    /// Writes the attributes of \a text, which begins in \a ctx, into \a attributes,
    /// which holds a zero for each character; with \a marks, what the last such call
    /// wrote for each character that hasn't changed since, and anything for others.
    void colour(int ctx, QStringView text, qint8 *attributes, ScanMarks *marks = nullptr);

    /// Expressions that cost so much on some line that they were given up there, each
    /// the first time it happened.
    bool hasDroppedRules() const { return !droppedRules.isEmpty(); }
    QStringList takeDroppedRules() { return std::exchange(droppedRules, {}); }

private:
    struct Pattern;
    struct Rule;
    struct Context;

    static void noteStops(Pattern *pattern);
    int addPattern(const TextPattern &regexp);
    std::unique_ptr<Context> makeContext(const HighlightContext &source);
    Rule makeRule(const HighlightItem &item, Context *context);
    void addWords(const HighlightKeyword &item, Rule *rule, Context *context);
    void makeBlocks(Context *context) const;
    void makeDispatch(Context *context) const;
    void makePresence(Context *context) const;
    bool canAct(const Rule &rule, int unit) const;
    void noteShrinking(const Rule &rule, Context *context) const;

    const Context *contextAt(int ctx) const;
    void begin(QStringView text);
    ScanMarks::Place start(int ctx, ScanMarks *marks);
    bool pass(ScanMarks *marks, ScanMarks::Place place);
    void finish(int ctx, ScanMarks *marks) const;
    int reachAt(int at) const;
    int take(const Context &context, int *index, int at);
    int takeUntil(const Context &context, const Rule &rule, int at);
    int takeKeyword(const Context &context, int *index, int at);
    template <typename Attempt>
    int tryCostly(Pattern &pattern, const Attempt &attempt);
    int matchLength(Pattern &pattern, int at);
    int runLength(Pattern &pattern, int at);
    int search(Pattern &pattern, int at, int *foundEnd);
    int searchTable(Pattern &pattern, const PatternAutomaton &automaton, int at, int *foundEnd);
    bool isAbsent(const Context &context, const Rule &rule, int at);
    void refresh(Pattern &pattern) const;
    bool shrink(const Context &context, int at);

    std::vector<std::unique_ptr<Pattern>> patterns;
    std::vector<std::unique_ptr<Context>> contexts;

    const char16_t *units = nullptr; ///< of the line at hand
    int end = 0;                     ///< of the text the rules see
    quint64 lineStamp = 0;           ///< tells notes on this line from older ones
    quint64 textStamp = 0;           ///< as lineStamp, but for a text cut shorter too
    qint64 work = 0;                 ///< steps that costly rules may still spend on this line
    qint64 budget = 0;               ///< what they may spend on it in all
    int farthest = 0;                ///< as a reach: what is noted nowhere else
    QStringList droppedRules;

    const quint64 id;   ///< tells the marks of this scanner from those of others
    int shortReach = 0; ///< the largest of all patterns
};

} // namespace zvwidgets
