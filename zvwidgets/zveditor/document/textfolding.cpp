#include "zvwidgets/zveditor/textfolding.h"

#include "zvwidgets/zveditor/editorcursor.h"
#include "zvwidgets/zveditor/lines/lineregion.h"
#include "zvwidgets/zveditor/textdoc.h"
#include "zvwidgets/zveditor/textview.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

namespace zvwidgets {

namespace {

/// A saved state nested deeper was not made by hand; subFolders() recurses once
/// for each level.
constexpr int maxSavedDepth = 1000;

/// The entries that fit into a document up to \a lastLine, clipped to it, in
/// the order of \a list. Of two that cross the one that begins later goes.
FoldersState fitting(const FoldersState &list, int lastLine)
{
    FoldersState clipped;
    for (const FolderInfo &info : list) {
        if (info.firstLine < 0 || info.firstLine > lastLine || info.lastLine < info.firstLine)
            continue;
        clipped.append({info.isOpened, info.firstLine, std::min(info.lastLine, lastLine)});
    }

    // Sorted so that a fold comes after all that may contain it.
    std::vector<int> order(size_t(clipped.size()));
    for (size_t i = 0; i < order.size(); ++i)
        order[i] = int(i);
    std::stable_sort(order.begin(), order.end(), [&clipped](int a, int b) {
        const FolderInfo &left = clipped.at(a);
        const FolderInfo &right = clipped.at(b);
        return std::pair(left.firstLine, -left.lastLine) <
               std::pair(right.firstLine, -right.lastLine);
    });

    std::vector<int> around;
    std::vector<bool> fits(order.size());
    for (const int i : order) {
        const FolderInfo &info = clipped.at(i);
        while (!around.empty() && around.back() < info.firstLine)
            around.pop_back();
        const bool crosses = !around.empty() && around.back() < info.lastLine;
        if (crosses || around.size() >= size_t(maxSavedDepth))
            continue;
        around.push_back(info.lastLine);
        fits[size_t(i)] = true;
    }

    FoldersState result;
    for (int i = 0; i < clipped.size(); ++i) {
        if (fits[size_t(i)])
            result.append(clipped.at(i));
    }
    return result;
}

} // namespace

struct TextFolding::Private
{
    explicit Private(TextDocument *document) : doc(document) {}

    TextDocument *const doc;
    /// Set while many folds are restored at once.
    bool lockUpdateLinesVisibility = false;
    /// False only if no line is a fold start and none is hidden. Spares a
    /// document without folds, which may be a large one, the passes over it.
    bool mayHaveFolds = false;
    /// What the closed folds hide, in order. A closed fold may hide most of a
    /// large document, and no key or paint should walk through that.
    std::vector<LineRegion> hidden;

    bool hasLine(int line) const { return line >= 0 && line <= doc->lastLine(); }
    int level(int line) const { return doc->lineOf(line)->foldingLevel; }
    int levelAbove(int line) const { return line > 0 ? level(line - 1) : 0; }
    bool crossesFold(int firstLine, int lastLine) const;
    int findStart(int line, const TextFolding *folding) const;
    void noteHidden(int line);
    LineRegion hiddenRegion(int line) const;
    void hideLines();
    void placeCursor(int line) const;
};

/// Whether a fold over the lines, whose first and last have the same level,
/// would cut another one in two.
bool TextFolding::Private::crossesFold(int firstLine, int lastLine) const
{
    // Depth of the deepest fold that holds all the lines, as far as the lines
    // below the first can tell.
    int depth = level(firstLine);
    for (int i = firstLine + 1; i <= lastLine; ++i) {
        const TextLine *const line = doc->lineOf(i);
        depth = std::min(depth, line->foldingLevel - (line->isFoldingStart ? 1 : 0));
    }
    // Only folds that begin on the first line can lie inside the new one.
    const int outer = doc->lineOf(firstLine)->isFoldingStart
                          ? std::min(levelAbove(firstLine), level(firstLine) - 1)
                          : level(firstLine);
    if (depth < outer)
        return true;
    if (depth == level(lastLine) || lastLine == doc->lastLine())
        return false;
    // Whatever goes deeper has to end on the last line.
    const TextLine *const below = doc->lineOf(lastLine + 1);
    return below->foldingLevel - (below->isFoldingStart ? 1 : 0) > depth;
}

/// findFirstFoldLine() that reports a failure.
int TextFolding::Private::findStart(int line, const TextFolding *folding) const
{
    const int first = folding->findFirstFoldLine(line);
    if (first == -1)
        qDebug("hm, can't find the start of folding");
    return first;
}

/// To be called with one line after the other from the top.
void TextFolding::Private::noteHidden(int line)
{
    if (!hidden.empty() && hidden.back().end == line - 1)
        hidden.back().end = line;
    else
        hidden.push_back({line, line});
}

/// The region that holds \a line, which is hidden. Found line by line where the
/// noted ones don't fit the lines as they are now.
LineRegion TextFolding::Private::hiddenRegion(int line) const
{
    const auto isHidden = [this](int i) { return hasLine(i) && !doc->lineOf(i)->isFoldVisible; };
    const auto behind = std::partition_point(
        hidden.begin(), hidden.end(), [line](const LineRegion &r) { return r.start <= line; });
    LineRegion region{line, line};
    if (behind != hidden.begin() && std::prev(behind)->end >= line) {
        const LineRegion &noted = *std::prev(behind);
        if (isHidden(noted.start) && isHidden(noted.end))
            region = noted;
    }
    while (isHidden(region.start - 1))
        --region.start;
    while (isHidden(region.end + 1))
        ++region.end;
    return region;
}

void TextFolding::Private::hideLines()
{
    bool isVisible = true;
    bool anyFold = false;
    int closeFoldLevel = 0;
    const int last = doc->lastLine();
    hidden.clear();
    for (int i = 0; i <= last; ++i) {
        TextLine *const line = doc->lineOf(i);
        const bool isStart = line->isFoldingStart;
        const bool isClosed = isStart && line->isFolded;
        anyFold = anyFold || isStart;
        if (isVisible) {
            line->isFoldVisible = true;
            isVisible = !isClosed;
            if (isClosed)
                closeFoldLevel = line->foldingLevel;
            continue;
        }
        const int lineLevel = line->foldingLevel;
        const bool shows = lineLevel < closeFoldLevel || (lineLevel == closeFoldLevel && isStart);
        line->isFoldVisible = shows;
        if (!shows)
            noteHidden(i);
        // A closed fold that ends the hidden lines from a lower level shows its
        // lines all the same, which is meant: it closes at its next toggling.
        isVisible = shows && (lineLevel < closeFoldLevel || !isClosed);
    }
    mayHaveFolds = anyFold;
}

/// Keeps the cursor out of hidden text.
void TextFolding::Private::placeCursor(int line) const
{
    if (TextView *const view = doc->activeView())
        view->cursor()->set(line, 0, true);
}

TextFolding::TextFolding(TextDocument *doc) : QObject(doc), d(std::make_unique<Private>(doc))
{}

TextFolding::~TextFolding() = default;

bool TextFolding::createFold(int firstLine, int lastLine)
{
    TextDocument *const doc = d->doc;
    if (firstLine < 0 || firstLine >= doc->lastLine() || firstLine >= lastLine) {
        qDebug("Can't create fold for firstLine >= lastLine");
        return false;
    }
    lastLine = std::min(lastLine, doc->lastLine());
    if (d->level(firstLine) != d->level(lastLine) || d->crossesFold(firstLine, lastLine)) {
        qDebug("Can't create intersected fold");
        return false;
    }

    TextLine *const first = doc->lineOf(firstLine);
    first->isFoldingStart = true;
    first->isFolded = true;
    for (int i = firstLine; i <= lastLine; ++i)
        ++doc->lineOf(i)->foldingLevel;
    d->mayHaveFolds = true;
    updateLinesVisibility();
    d->placeCursor(firstLine);
    return true;
}

int TextFolding::findFirstFoldLine(int line) const
{
    if (!d->hasLine(line))
        return -1;
    const TextLine *const start = d->doc->lineOf(line);
    if (start->isFoldingStart)
        return line;
    const int level = start->foldingLevel;
    // Above a line of lower level there are only folds that have ended.
    for (int i = line - 1; i >= 0 && d->level(i) >= level && level > 0; --i) {
        const TextLine *const candidate = d->doc->lineOf(i);
        if (candidate->isFoldingStart && candidate->foldingLevel == level)
            return i;
    }
    return -1;
}

void TextFolding::removeFold(int line)
{
    TextDocument *const doc = d->doc;
    if (!d->hasLine(line) || d->level(line) == 0)
        return;
    const int firstLine = d->findStart(line, this);
    if (firstLine == -1)
        return;

    TextLine *const first = doc->lineOf(firstLine);
    const int curFoldingLevel = first->foldingLevel;
    // Otherwise the flags also serve an outer fold that begins on this line.
    if (d->levelAbove(firstLine) >= curFoldingLevel - 1) {
        first->isFoldingStart = false;
        first->isFolded = false;
    }
    --first->foldingLevel;
    for (int i = firstLine + 1; i <= doc->lastLine(); ++i) {
        TextLine *const inner = doc->lineOf(i);
        const bool isNext = inner->isFoldingStart && inner->foldingLevel == curFoldingLevel;
        if (isNext || inner->foldingLevel < curFoldingLevel)
            break;
        --inner->foldingLevel;
    }
    updateLinesVisibility();
}

void TextFolding::removeFoldsStartingAt(int line)
{
    if (!d->hasLine(line))
        return;
    const TextLine *const start = d->doc->lineOf(line);
    while (start->isFoldingStart && start->foldingLevel > 0)
        removeFold(line);
}

void TextFolding::openFold(int line)
{
    const int first = d->findStart(line, this);
    if (first == -1)
        return;
    d->doc->lineOf(first)->isFolded = false;
    updateLinesVisibility();
    d->placeCursor(first);
}

void TextFolding::closeFold(int line)
{
    openFold(line);
}

void TextFolding::toggleFold(int line)
{
    const int first = d->findStart(line, this);
    if (first == -1)
        return;
    TextLine *const start = d->doc->lineOf(first);
    start->isFolded = !start->isFolded;
    updateLinesVisibility();
    d->placeCursor(first);
}

void TextFolding::clearAllFolds()
{
    const int last = d->mayHaveFolds ? d->doc->lastLine() : -1;
    for (int i = 0; i <= last; ++i) {
        TextLine *const line = d->doc->lineOf(i);
        line->isFoldingStart = false;
        line->isFolded = false;
        line->foldingLevel = 0;
        line->isFoldVisible = true;
    }
    d->mayHaveFolds = false;
    d->hidden.clear();
    updateLinesVisibility();
}

void TextFolding::updateLinesVisibility()
{
    if (d->lockUpdateLinesVisibility)
        return;
    if (d->mayHaveFolds)
        d->hideLines();
    d->doc->tagAll();
    d->doc->updateViews();
    const QList<TextView *> views = d->doc->views();
    for (TextView *const view : views) {
        view->update();
        view->repaintMargins();
    }
}

void TextFolding::ensureLineVisible(int line)
{
    if (!d->hasLine(line))
        return;
    const TextLine *const target = d->doc->lineOf(line);
    if (target->isFoldVisible && !(target->isFoldingStart && target->isFolded))
        return;

    int curFoldingLevel = target->foldingLevel;
    for (int i = line; i >= 0 && curFoldingLevel > 0; --i) {
        TextLine *const start = d->doc->lineOf(i);
        if (!start->isFoldingStart || start->foldingLevel < curFoldingLevel)
            continue;
        // Several folds may begin on one line and share its flags: all those
        // above the level of the line before it.
        const int outer = std::min(d->levelAbove(i), start->foldingLevel - 1);
        if (curFoldingLevel <= outer)
            continue;
        start->isFolded = false;
        curFoldingLevel = outer;
    }
    updateLinesVisibility();
}

int TextFolding::visibleLineFrom(int line) const
{
    const bool isHidden = d->hasLine(line) && !d->doc->lineOf(line)->isFoldVisible;
    return isHidden ? d->hiddenRegion(line).end + 1 : line;
}

int TextFolding::visibleLineUpTo(int line) const
{
    const bool isHidden = d->hasLine(line) && !d->doc->lineOf(line)->isFoldVisible;
    return isHidden ? std::max(d->hiddenRegion(line).start - 1, 0) : line;
}

void TextFolding::linesMoved(int line, int count)
{
    for (LineRegion &region : d->hidden) {
        if (region.start >= line)
            region.start += count;
        if (region.end >= line)
            region.end += count;
    }
}

bool TextFolding::isLastLineOfFold(int line) const
{
    if (line < 1 || !d->hasLine(line))
        return false;
    const int level = d->level(line);
    if (line == d->doc->lastLine())
        return level != 0;
    const TextLine *const next = d->doc->lineOf(line + 1);
    return level > next->foldingLevel || (level == next->foldingLevel && next->isFoldingStart);
}

FoldersState TextFolding::foldersState() const
{
    FoldersState result;
    if (!d->mayHaveFolds)
        return result;
    for (int line = 0; line <= d->doc->lastLine(); ++line) {
        if (d->doc->lineOf(line)->isFoldingStart)
            line = subFolders(line, 0, result);
    }
    return result;
}

int TextFolding::subFolders(int startLine, int parentLevel, FoldersState &foldersState) const
{
    const int level = parentLevel + 1;
    int line = startLine;
    if (d->level(startLine) > level)
        line = subFolders(startLine, level, foldersState);
    for (++line; line <= d->doc->lastLine(); ++line) {
        const TextLine *const inner = d->doc->lineOf(line);
        if (inner->foldingLevel < level || (inner->foldingLevel == level && inner->isFoldingStart))
            break;
        if (inner->foldingLevel > level)
            line = subFolders(line, level, foldersState);
    }
    const bool isOpened = !d->doc->lineOf(startLine)->isFolded;
    foldersState.append({isOpened, startLine, line - 1});
    return line - 1;
}

void TextFolding::setFolderstState(const QList<FolderInfo> &list)
{
    d->lockUpdateLinesVisibility = true;
    clearAllFolds();
    const FoldersState folds = fitting(list, d->doc->lastLine());
    // Steps of the level from line to line, so that the cost does not grow with
    // the number of folds around a line.
    std::vector<int> steps(folds.isEmpty() ? 0 : size_t(d->doc->lastLine()) + 2);
    for (const FolderInfo &info : folds) {
        TextLine *const first = d->doc->lineOf(info.firstLine);
        first->isFoldingStart = true;
        first->isFolded = !info.isOpened;
        ++steps[size_t(info.firstLine)];
        --steps[size_t(info.lastLine) + 1];
    }
    int level = 0;
    for (size_t i = 0; i + 1 < steps.size(); ++i) {
        level += steps[i];
        d->doc->lineOf(int(i))->foldingLevel = level;
    }
    d->mayHaveFolds = !folds.isEmpty();
    d->lockUpdateLinesVisibility = false;
    updateLinesVisibility();
}

} // namespace zvwidgets
