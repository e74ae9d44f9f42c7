#include "zvwidgets/zveditor/pattern/patternautomaton.h"

#include "zvwidgets/zveditor/pattern/patternbudget.h"

#include <QStringView>

#include <algorithm>

namespace zvwidgets {

namespace {

/// A scan longer than this is noted at every place that is a multiple of it.
constexpr int checkpointDistance = 32;

} // namespace

void PatternMemo::clear()
{
    if (!ends.isEmpty())
        ends = {};
    reach = 0;
    for (PatternMemo &memo : looks)
        memo.clear();
}

quint8 PatternAutomaton::wideClass(char16_t unit) const
{
    const auto bound = std::upper_bound(bounds.begin(), bounds.end(), unit);
    const size_t interval = size_t(bound - bounds.begin()) - 1;
    return wideClasses[interval * unitKindCombinations + unitKinds(unit)];
}

bool PatternAutomaton::canTakeWide() const
{
    return std::any_of(wideClasses.begin(), wideClasses.end(),
                       [this](quint8 cls) { return table[beginRow + cls] & rowMask; });
}

bool PatternAutomaton::needsAscii() const
{
    return !occurs[endClass] && std::none_of(wideClasses.begin(), wideClasses.end(),
                                             [this](quint8 cls) { return occurs[cls]; });
}

quint32 PatternAutomaton::startRow(const Subject &subject, int at) const
{
    if (at == subject.begin)
        return beginRow;
    if (usesWord && unitKinds(subject.text[at - 1]) & WordUnit)
        return afterWordRow;
    return afterOtherRow;
}

/// The row that stands for \a row at \a at once it is looked ahead.
quint32 PatternAutomaton::lookedRow(const Subject &subject, quint32 row, int at,
                                    PatternMemo *memo) const
{
    const Branch &branch = branches[(row - firstBranch) / width];
    if (memo && memo->looks.empty()) {
        memo->looks.resize(looks.size());
        for (PatternMemo &lookMemo : memo->looks)
            lookMemo.budget = memo->budget;
    }
    quint32 seen = 0;
    for (size_t i = 0; i < branch.looks.size(); ++i) {
        const size_t look = size_t(branch.looks[i]);
        PatternMemo *lookMemo = memo ? &memo->looks[look] : nullptr;
        if (looks[look]->matchEnd(subject, at, lookMemo) >= 0)
            seen |= quint32(1) << i;
    }
    return branch.rows[seen];
}

int PatternAutomaton::matchEnd(const Subject &subject, int at, PatternMemo *memo) const
{
    quint32 row = startRow(subject, at);
    int last = -1;
    const int pause = memo ? std::min(subject.end, at + checkpointDistance) : subject.end;
    for (int i = at;; ++i) {
        if (row >= firstBranch) {
            if (row == totalRow)
                return shortest ? i : subject.end;
            row = lookedRow(subject, row, i, memo);
        }
        if (i >= pause)
            break;
        const quint32 entry = table[row + classOf(subject.text[i])];
        if (entry & acceptBit) {
            last = i;
            if (shortest)
                return last;
        }
        row = entry & rowMask;
        if (row == 0)
            return last;
    }
    if (pause < subject.end)
        return longScan(subject, pause, row, last, memo);
    return table[row + quint32(endClass)] & acceptBit ? subject.end : last;
}

/// Goes on with a scan that has got to \a at and to \a row.
int PatternAutomaton::longScan(const Subject &subject, int at, quint32 row, int last,
                               PatternMemo *memo) const
{
    std::vector<std::pair<quint64, int>> passed; ///< key and place of checkpoints
    int found = -1;
    int i = at;
    for (;; ++i) {
        if (row >= firstBranch) {
            if (row == totalRow) {
                found = shortest ? i : subject.end;
                i = found;
                break;
            }
            row = lookedRow(subject, row, i, memo);
        }
        if (i % checkpointDistance == 0) {
            if (memo->budget && !memo->budget->spend(checkpointDistance))
                return -1;
            const quint64 key = quint64(row) << 32 | quint32(i / checkpointDistance);
            const auto known = memo->ends.constFind(key);
            if (known != memo->ends.constEnd()) {
                found = *known < 0 ? found : *known;
                break;
            }
            passed.emplace_back(key, i);
        }
        const bool atEnd = i >= subject.end;
        const quint32 entry = table[row + (atEnd ? quint32(endClass) : classOf(subject.text[i]))];
        if (entry & acceptBit)
            found = i;
        row = entry & rowMask;
        if (row == 0 || (shortest && found >= 0))
            break;
    }
    for (const auto &[key, place] : passed)
        memo->ends.insert(key, found >= place ? found : -1);
    memo->reach = std::max(memo->reach, i + 1);
    return found < 0 ? last : found;
}

int PatternAutomaton::shortReach() const
{
    int behind = 0;
    for (const auto &look : looks)
        behind = std::max(behind, look->shortReach());
    return checkpointDistance + 1 + behind;
}

int PatternAutomaton::reachOf(const PatternMemo &memo)
{
    int reach = memo.reach;
    for (const PatternMemo &look : memo.looks)
        reach = std::max(reach, reachOf(look));
    return reach;
}

/// The first place from \a from on, not the text's start, where a match may begin;
/// \a limit if there is none in front of it.
int PatternAutomaton::nextCandidate(const Subject &subject, int from, int limit) const
{
    const int stop = std::min(limit, subject.end);
    if (onlyUnit >= 0) {
        const QStringView rest(subject.text + from, stop - from);
        const qsizetype found = rest.indexOf(QChar(char16_t(onlyUnit)));
        return found < 0 ? limit : from + int(found);
    }
    while (from < stop && !occurs[classOf(subject.text[from])])
        ++from;
    return from < subject.end || occurs[endClass] ? from : limit;
}

int PatternAutomaton::searchBefore(const Subject &subject, int from, int limit, int *foundEnd,
                                   PatternMemo *memo) const
{
    if (from == subject.begin) {
        *foundEnd = matchEnd(subject, from, memo);
        if (*foundEnd >= 0)
            return from;
        ++from;
    }
    if (onlyAtBegin)
        return -1;
    while (from < limit) {
        from = nextCandidate(subject, from, limit);
        if (from >= limit)
            break;
        *foundEnd = matchEnd(subject, from, memo);
        if (*foundEnd >= 0)
            return from;
        ++from;
    }
    return -1;
}

} // namespace zvwidgets
