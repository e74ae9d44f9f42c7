#include "zvwidgets/zveditor/pattern/textpattern.h"

#include "zvwidgets/zveditor/pattern/patternautomaton.h"

#define PCRE2_CODE_UNIT_WIDTH 16
#include <pcre2.h>

namespace zvwidgets {

namespace {

constexpr quint32 matchLimit = 1000000;
constexpr quint32 depthLimit = 20000;
constexpr quint32 heapLimit = 65536; ///< KiB
/// Cost of a call besides the characters it looks at, in characters.
constexpr qint64 callCost = 64;
/// Cost of a call that came to a limit.
constexpr qint64 limitCost = 8 * qint64(matchLimit);
constexpr int workspaceSize = 4096;

struct Freer
{
    void operator()(pcre2_code_16 *code) const { pcre2_code_free_16(code); }
    void operator()(pcre2_match_data_16 *data) const { pcre2_match_data_free_16(data); }
    void operator()(pcre2_match_context_16 *context) const { pcre2_match_context_free_16(context); }
    void operator()(pcre2_jit_stack_16 *stack) const { pcre2_jit_stack_free_16(stack); }
};
template <typename T>
using Owner = std::unique_ptr<T, Freer>;

pcre2_match_context_16 *limits()
{
    static const Owner<pcre2_jit_stack_16> stack(
        pcre2_jit_stack_create_16(32 * 1024, 1024 * 1024, nullptr));
    static const Owner<pcre2_match_context_16> context = [] {
        Owner<pcre2_match_context_16> made(pcre2_match_context_create_16(nullptr));
        pcre2_set_match_limit_16(made.get(), matchLimit);
        pcre2_set_depth_limit_16(made.get(), depthLimit);
        pcre2_set_heap_limit_16(made.get(), heapLimit);
        if (stack)
            pcre2_jit_stack_assign_16(made.get(), nullptr, stack.get());
        return made;
    }();
    return context.get();
}

} // namespace

struct TextPattern::Private
{
    /// How the matcher has to be asked so that the longest match counts.
    enum class Way
    {
        Automaton,
        Backtracking,
        AllPaths
    };

    Private(const QString &text, Options wanted);
    void compile(const PatternNode &root);
    int find(QStringView text, int from, bool anchored, int *length, qint64 *work);
    int run(QStringView text, int from, quint32 flags);

    const QString pattern;
    const Options options;
    bool valid = false;
    Way way = Way::Automaton;
    std::unique_ptr<PatternAutomaton> automaton;
    std::unique_ptr<PatternAutomaton> filter; ///< null if there is an automaton
    Owner<pcre2_code_16> code;
    Owner<pcre2_match_data_16> found;
    std::vector<int> workspace; ///< of Way::AllPaths
};

TextPattern::Private::Private(const QString &text, Options wanted) : pattern(text), options(wanted)
{
    const std::unique_ptr<PatternNode> root =
        parsePattern(pattern, options.testFlag(CaseInsensitive));
    if (!root)
        return;
    automaton = PatternAutomaton::build(*root, options.testFlag(Minimal));
    valid = bool(automaton);
    if (automaton)
        return;
    filter = PatternAutomaton::build(*root, false, PatternAutomaton::Precision::Upper);
    compile(*root);
}

void TextPattern::Private::compile(const PatternNode &root)
{
    const bool minimal = options.testFlag(Minimal);
    const bool refers = zvwidgets::contains(root, PatternNode::Type::BackReference);
    way = !refers && (minimal || orderMatters(root)) ? Way::AllPaths : Way::Backtracking;
    quint32 flags = PCRE2_UCP | PCRE2_DOTALL | PCRE2_DOLLAR_ENDONLY | PCRE2_NO_AUTO_POSSESS;
    if (options.testFlag(CaseInsensitive))
        flags |= PCRE2_CASELESS;
    if (minimal && way == Way::Backtracking)
        flags |= PCRE2_UNGREEDY;
    const QString text = pcrePattern(root);
    int error = 0;
    PCRE2_SIZE errorOffset = 0;
    code.reset(pcre2_compile_16(reinterpret_cast<PCRE2_SPTR16>(text.utf16()),
                                PCRE2_SIZE(text.size()), flags, &error, &errorOffset, nullptr));
    if (!code)
        return;
    // Without the just-in-time compiler matching falls back to the interpreter by itself.
    if (way == Way::Backtracking)
        pcre2_jit_compile_16(code.get(), PCRE2_JIT_COMPLETE);
    else
        workspace.resize(workspaceSize);
    found.reset(pcre2_match_data_create_from_pattern_16(code.get(), nullptr));
    valid = bool(found);
}

/// Where the match begins, a negative number if there is none.
int TextPattern::Private::run(QStringView text, int from, quint32 flags)
{
    // An empty view may have no data at all, which the matcher takes for an error.
    const char16_t *units = text.isEmpty() ? u"" : text.utf16();
    const auto *subject = reinterpret_cast<PCRE2_SPTR16>(units);
    const auto length = PCRE2_SIZE(text.size());
    int result = 0;
    if (way == Way::AllPaths) {
        if (options.testFlag(Minimal))
            flags |= PCRE2_DFA_SHORTEST;
        result = pcre2_dfa_match_16(code.get(), subject, length, PCRE2_SIZE(from), flags,
                                    found.get(), limits(), workspace.data(), workspace.size());
    } else {
        result = pcre2_match_16(code.get(), subject, length, PCRE2_SIZE(from), flags, found.get(),
                                limits());
        if (result == PCRE2_ERROR_JIT_STACKLIMIT)
            result = pcre2_match_16(code.get(), subject, length, PCRE2_SIZE(from),
                                    flags | PCRE2_NO_JIT, found.get(), limits());
    }
    // Zero tells that there were more matches than room; the first is there.
    return result < 0 ? result : int(pcre2_get_ovector_pointer_16(found.get())[0]);
}

int TextPattern::Private::find(QStringView text, int from, bool anchored, int *length, qint64 *work)
{
    if (!valid || from < 0 || from > text.size() || (work && *work <= 0))
        return -1;
    const int place = run(text, from, anchored ? PCRE2_ANCHORED : 0);
    if (place >= 0)
        *length = int(pcre2_get_ovector_pointer_16(found.get())[1]) - place;
    if (work) {
        const bool limitReached = place < 0 && place != PCRE2_ERROR_NOMATCH;
        const qint64 looked = place < 0 ? text.size() - from : place + *length - from;
        *work -= callCost + looked + (limitReached ? limitCost : 0);
    }
    return place < 0 ? -1 : place;
}

TextPattern::TextPattern()
{
    static const auto invalid = std::make_shared<Private>(QStringLiteral("*"), NoOption);
    d = invalid;
}

TextPattern::TextPattern(const QString &pattern, Options options, Syntax syntax)
    : d(std::make_shared<Private>(syntax == Syntax::Wildcard ? wildcardPattern(pattern) : pattern,
                                  options))
{}

bool TextPattern::isValid() const
{
    return d->valid;
}

QString TextPattern::pattern() const
{
    return d->pattern;
}

TextPattern::Options TextPattern::options() const
{
    return d->options;
}

int TextPattern::search(QStringView text, int from, int *length, qint64 *work) const
{
    int found = 0;
    int place = -1;
    if (!d->automaton) {
        place = d->find(text, from, false, &found, work);
    } else if (from >= 0 && from <= text.size()) {
        PatternMemo memo;
        const PatternAutomaton::Subject subject{text.utf16(), 0, int(text.size())};
        place = d->automaton->search(subject, from, &found, &memo);
        found -= place;
    }
    if (length)
        *length = place < 0 ? -1 : found;
    return place;
}

int TextPattern::match(QStringView text, int column, qint64 *work) const
{
    int length = -1;
    if (!d->automaton)
        return d->find(text, column, true, &length, work) < 0 ? -1 : length;
    if (column < 0 || column > text.size())
        return -1;
    const PatternAutomaton::Subject subject{text.utf16(), 0, int(text.size())};
    const int end = d->automaton->matchEnd(subject, column, nullptr);
    return end < 0 ? -1 : end - column;
}

const PatternAutomaton *TextPattern::automaton() const
{
    return d->automaton.get();
}

const PatternAutomaton *TextPattern::filter() const
{
    return d->automaton ? d->automaton.get() : d->filter.get();
}

QString TextPattern::requiredText() const
{
    const bool caseInsensitive = d->options.testFlag(CaseInsensitive);
    const std::unique_ptr<PatternNode> root = parsePattern(d->pattern, caseInsensitive);
    return root ? zvwidgets::requiredText(*root, caseInsensitive) : QString();
}

} // namespace zvwidgets
