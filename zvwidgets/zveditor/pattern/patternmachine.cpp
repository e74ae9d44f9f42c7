#include "zvwidgets/zveditor/pattern/patternmachine.h"

#include "zvwidgets/zveditor/pattern/patternbudget.h"

#include <algorithm>

#define PCRE2_CODE_UNIT_WIDTH 16
#include <pcre2.h>

namespace zvwidgets {

namespace {

/// Bounds of one attempt at one place. The steps are counted by callouts; these bound
/// what happens between two of them.
constexpr quint32 matchLimit = 10000000;
constexpr quint32 depthLimit = 20000;
constexpr quint32 heapLimit = 65536; ///< KiB
constexpr int workspaceSize = 4096;
/// Units of a back-reference that are compared in the time of a step.
constexpr int comparedInStep = 8;
/// Steps that one callout takes where all paths are followed: some 300 ns to the 10 of a
/// step.
constexpr qint64 pathCost = 32;

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
    thread_local const Owner<pcre2_jit_stack_16> stack(
        pcre2_jit_stack_create_16(32 * 1024, 1024 * 1024, nullptr));
    thread_local const Owner<pcre2_match_context_16> context = [] {
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

/// Counts what a call does from callout to callout.
struct Meter
{
    PatternMachine::Effort *effort;
    PCRE2_SIZE last;
    qint64 calloutCost;
};

qint64 comparedUnits(const pcre2_callout_block_16 &block)
{
    const quint32 group = block.callout_number;
    if (group == 0 || group >= block.capture_top)
        return 0;
    const PCRE2_SIZE *const ends = block.offset_vector + 2 * size_t(group);
    return ends[0] < ends[1] && ends[1] != PCRE2_UNSET ? qint64(ends[1] - ends[0]) : 0;
}

int count(pcre2_callout_block_16 *block, void *data)
{
    auto *const meter = static_cast<Meter *>(data);
    const PCRE2_SIZE at = block->current_position;
    const PCRE2_SIZE passed = at > meter->last ? at - meter->last : meter->last - at;
    const qint64 steps =
        meter->calloutCost + qint64(passed) + comparedUnits(*block) / comparedInStep;
    meter->last = at;
    PatternMachine::Effort &effort = *meter->effort;
    effort.allowance -= steps;
    if (effort.budget.spend(steps) && effort.allowance > 0)
        return 0;
    effort.isOver = true;
    return PCRE2_ERROR_CALLOUT;
}

} // namespace

struct PatternMachine::Code
{
    Owner<pcre2_code_16> code;
    Owner<pcre2_match_data_16> found;
    /// Follows all ways at once, because the longest match may not be the first.
    bool allPaths = false;
    quint32 flags = 0;
    std::vector<int> workspace; ///< of allPaths
};

PatternMachine::PatternMachine(const PatternNode &root, bool caseInsensitive, bool minimal)
{
    table = PatternAutomaton::build(root, minimal);
    valid = bool(table);
    if (table)
        return;
    upper = PatternAutomaton::build(root, false, PatternAutomaton::Precision::Upper);
    if (!upper)
        upper = PatternAutomaton::build(root, false, PatternAutomaton::Precision::Rough);
    compile(root, caseInsensitive, minimal);
}

PatternMachine::PatternMachine() = default;
PatternMachine::~PatternMachine() = default;

void PatternMachine::compile(const PatternNode &root, bool caseInsensitive, bool minimal)
{
    code = std::make_unique<Code>();
    const bool refers = zvwidgets::contains(root, PatternNode::Type::BackReference);
    code->allPaths = !refers && (minimal || orderMatters(root));
    quint32 flags = PCRE2_UCP | PCRE2_DOTALL | PCRE2_DOLLAR_ENDONLY | PCRE2_NO_AUTO_POSSESS;
    if (caseInsensitive)
        flags |= PCRE2_CASELESS;
    if (minimal && !code->allPaths)
        flags |= PCRE2_UNGREEDY;
    const QString text = pcrePattern(root);
    int error = 0;
    PCRE2_SIZE errorOffset = 0;
    code->code.reset(pcre2_compile_16(reinterpret_cast<PCRE2_SPTR16>(text.utf16()),
                                      PCRE2_SIZE(text.size()), flags, &error, &errorOffset,
                                      nullptr));
    if (!code->code)
        return;
    // Without the just-in-time compiler matching falls back to the interpreter by itself.
    if (!code->allPaths)
        pcre2_jit_compile_16(code->code.get(), PCRE2_JIT_COMPLETE);
    else
        code->workspace.resize(workspaceSize);
    if (code->allPaths && minimal)
        code->flags = PCRE2_DFA_SHORTEST;
    code->found.reset(pcre2_match_data_create_from_pattern_16(code->code.get(), nullptr));
    valid = bool(code->found);
}

int PatternMachine::run(QStringView text, int from, quint32 flags, Effort *effort, int *length)
{
    // An empty view may have no data at all, which the matcher takes for an error.
    const char16_t *units = text.isEmpty() ? u"" : text.utf16();
    const auto *subject = reinterpret_cast<PCRE2_SPTR16>(units);
    const auto size = PCRE2_SIZE(text.size());
    const auto start = PCRE2_SIZE(from);
    Meter meter{effort, start, code->allPaths ? pathCost : 1};
    pcre2_match_context_16 *const context = limits();
    pcre2_set_callout_16(context, count, &meter);
    pcre2_match_data_16 *const found = code->found.get();
    flags |= code->flags;
    int result = 0;
    if (code->allPaths) {
        result = pcre2_dfa_match_16(code->code.get(), subject, size, start, flags, found, context,
                                    code->workspace.data(), code->workspace.size());
    } else {
        result = pcre2_match_16(code->code.get(), subject, size, start, flags, found, context);
        if (result == PCRE2_ERROR_JIT_STACKLIMIT)
            result = pcre2_match_16(code->code.get(), subject, size, start, flags | PCRE2_NO_JIT,
                                    found, context);
    }
    // What was looked at since the last callout, or without any.
    if (!effort->isOver && !effort->budget.spend(1))
        effort->isOver = true;
    // Zero tells that there were more matches than room; the first is there.
    if (result < 0 || effort->isOver)
        return -1;
    const PCRE2_SIZE *const ends = pcre2_get_ovector_pointer_16(found);
    *length = int(ends[1]) - int(ends[0]);
    return int(ends[0]);
}

int PatternMachine::search(QStringView text, int from, int *length, Effort *effort)
{
    return run(text, from, 0, effort, length);
}

int PatternMachine::match(QStringView text, int column, Effort *effort)
{
    int length = -1;
    return run(text, column, PCRE2_ANCHORED, effort, &length) < 0 ? -1 : length;
}

} // namespace zvwidgets
