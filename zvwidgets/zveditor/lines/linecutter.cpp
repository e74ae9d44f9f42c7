#include "zvwidgets/zveditor/lines/linecutter.h"

#include "zvwidgets/zveditor/lines/linepool.h"
#include "zvwidgets/zveditor/lines/textlinearray.h"
#include "zvwidgets/zveditor/pattern/unitscan.h"

#include <algorithm>
#include <new>
#include <numeric>
#include <utility>

namespace zvwidgets {

namespace {

constexpr qsizetype blockCapacity = 32 * 1024;
// A longer line has its text alone, so that changing its neighbours gives their
// memory back.
constexpr qsizetype longLine = blockCapacity / 2;

int sum(const std::array<int, 4> &ends)
{
    return std::accumulate(ends.begin(), ends.end(), 0);
}

constexpr WantedUnits endUnits = {u'\n', u'\r', u'\n', u'\r'};
constexpr WantedUnits endUnitsAndTab = {u'\n', u'\r', u'\t', u'\t'};

} // namespace

CutLines::~CutLines()
{
    for (TextLine *const line : lines)
        std::unique_ptr<TextLine>{line}.reset();
}

void CutLines::nameEndsAfter(LineEnd end)
{
    const LineEnd former = std::exchange(firstEnd, end);
    if (former == end)
        return;
    const auto ended = lines.end() - (isLastOpen && !lines.empty() ? 1 : 0);
    for (auto line = lines.begin(); line != ended; ++line) {
        if ((*line)->lineEnd() == LineEnd::Document)
            (*line)->setLineEnd(former);
        else if ((*line)->lineEnd() == end)
            (*line)->setLineEnd(LineEnd::Document);
    }
}

void LineCutter::finish()
{
    cut(true);
    if (lineStart < used) {
        addLine(used);
        target->isLastOpen = true;
        lineStart = searched = used;
        hasTab = false;
    }
    settleReferences();
}

void LineCutter::newBlock(qsizetype wanted)
{
    const qsizetype unfinished = used - lineStart;
    // Growing by half again keeps the copying of a long line linear.
    const qsizetype needed = unfinished + std::max(wanted, unfinished / 2);
    const qsizetype size = std::max(blockCapacity, needed);
    // One more for the null character behind the last line.
    QStringPrivate fresh(QTypedArrayData<char16_t>::allocate(size + 1));
    Q_CHECK_PTR(fresh.data());
    std::copy_n(text() + lineStart, unfinished, fresh.data());
    block = std::move(fresh);
    capacity = size;
    used = unfinished;
    searched -= lineStart;
    lineStart = 0;
}

// A carriage return at the very end waits for what follows it.
void LineCutter::cut(bool atEnd)
{
    while (searched < used) {
        const qsizetype at = searched + findAnyUnit(text() + searched, 0, int(used - searched),
                                                    hasTab ? endUnits : endUnitsAndTab);
        searched = at;
        if (at == used)
            break;
        const char16_t unit = text()[at];
        if (unit == u'\t') {
            hasTab = true;
            ++searched;
            continue;
        }
        const bool isCr = unit == u'\r';
        if (isCr && at + 1 == used && !atEnd)
            break;
        const bool isCrLf = isCr && at + 1 < used && text()[at + 1] == u'\n';
        addLine(at);
        noteEnd(isCrLf ? LineEnd::CrLf : isCr ? LineEnd::Cr : LineEnd::Lf);
        lineStart = searched = at + (isCrLf ? 2 : 1);
        hasTab = false;
    }
    settleReferences();
}

// The null character behind the text takes the place of the line end: a QString
// promises one.
void LineCutter::addLine(qsizetype end)
{
    const qsizetype length = end - lineStart;
    char16_t *const start = text() + lineStart;
    const bool fillsBlock = 2 * length > capacity;
    QString lineText;
    if (length > longLine && !fillsBlock) {
        lineText = QString(reinterpret_cast<const QChar *>(start), length);
    } else if (length > 0) {
        start[length] = 0;
        ++references;
        lineText = QString(QStringPrivate(block.d_ptr(), start, length));
    }
    void *const memory =
        lineSlabs ? lineSlabs->allocate(sizeof(TextLine)) : LinePool::allocate(sizeof(TextLine));
    auto *const line = ::new (memory) TextLine(std::move(lineText));
    line->setMayHaveTabs(hasTab);
    target->lines.push_back(line);
}

// Most files know one line end, and then no line has to name it.
void LineCutter::noteEnd(LineEnd end)
{
    if (target->firstEnd == LineEnd::Document)
        target->firstEnd = end;
    ++target->ends[size_t(end)];
    if (end != target->firstEnd)
        target->lines.back()->setLineEnd(end);
}

// Counting each line by itself would take as long as finding it.
void LineCutter::settleReferences()
{
    if (references > 0)
        block.d_ptr()->ref_.fetchAndAddRelaxed(std::exchange(references, 0));
}

LineEnd settleLineEnds(TextLineArray *lines, LineEnd firstEnd, const std::array<int, 4> &ends)
{
    if (firstEnd == LineEnd::Document)
        return LineEnd::Lf;
    LineEnd mostCommon = firstEnd;
    for (const LineEnd end : {LineEnd::Lf, LineEnd::CrLf, LineEnd::Cr}) {
        if (ends[size_t(end)] > ends[size_t(mostCommon)])
            mostCommon = end;
    }
    if (mostCommon == firstEnd)
        return mostCommon;
    // The last line has no end if the text stopped before.
    const int ended = sum(ends);
    for (int i = 0; i < ended; ++i) {
        TextLine *line = lines->at(i);
        if (line->lineEnd() == LineEnd::Document)
            line->setLineEnd(firstEnd);
        else if (line->lineEnd() == mostCommon)
            line->setLineEnd(LineEnd::Document);
    }
    return mostCommon;
}

bool areAllEnded(const TextLineArray &lines, const std::array<int, 4> &ends)
{
    return !lines.isEmpty() && sum(ends) == lines.size();
}

} // namespace zvwidgets
