#include "zvwidgets/zveditor/textfolding.h"

#include "qtundo/src/qtundo.h"
#include "zvwidgets/zveditor/document/hiddenregions.h"
#include "zvwidgets/zveditor/document/textdoc_p.h"

#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

namespace zvwidgets {

namespace {

/// No line; lies behind all lines.
constexpr int none = std::numeric_limits<int>::max();

/// What the lines so far do to the next one.
struct Hiding
{
    bool isVisible = true;
    /// Level of the closed fold that hides it.
    int closeFoldLevel = 0;

    /// Goes over \a line; true if it shows.
    bool pass(const TextLine &line);
};

bool Hiding::pass(const TextLine &line)
{
    const bool isStart = line.isFoldingStart;
    const bool isClosed = isStart && line.isFolded;
    const int level = line.foldingLevel;
    if (isVisible) {
        isVisible = !isClosed;
        if (isClosed)
            closeFoldLevel = level;
        return true;
    }
    const bool shows = level < closeFoldLevel || (level == closeFoldLevel && isStart);
    // A closed fold that ends the hidden lines from a lower level shows its
    // lines all the same, which is meant: it closes at its next toggling.
    isVisible = shows && (level < closeFoldLevel || !isClosed);
    return shows;
}

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
        if (!around.empty() && around.back() < info.lastLine)
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
    /// What the closed folds hide. A closed fold may hide most of a large document,
    /// and no key or paint should walk through that.
    HiddenRegions hidden;

    // Each edit that opens or removes a fold would have to pass over all lines below.
    // A macro of many such edits only looks at the lines it comes to, in the state
    // that those passes would have left them in, and passes over the rest at its end.

    /// Whether lines from here on show is not known, and what hides this one.
    int unknownFrom = none;
    Hiding hiding;
    /// From here on lines are as before the folds that were removed with their first
    /// line. Meaningless while removedLevels is empty.
    int levelsFrom = 0;
    /// What the levels of those folds were down there, ascending: of two folds around
    /// a line the inner one has the higher level.
    std::vector<int> removedLevels;
    /// All folds that begin above this line and reach it are open.
    int openFrom = none;

    /// Hidden, or the first line of a closed fold.
    bool isShut(int line) const;
    bool isBehind() const { return unknownFrom != none; }
    void settleLevels(int line);
    void look(int line);
    void forgetFrom(int line, const Hiding &before);
    Hiding hidingOf(int line) const;
    int openAround(int line);
    void removeFoldsFrom(int line);
    void forget();

    bool hasLine(int line) const { return line >= 0 && line <= doc->lastLine(); }
    int level(int line) const { return doc->lineOf(line)->foldingLevel; }
    int levelAbove(int line) const { return line > 0 ? level(line - 1) : 0; }
    bool crossesFold(int firstLine, int lastLine) const;
    int findStart(int line, const TextFolding *folding) const;
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

/// The region that holds \a line, which is hidden. Found line by line where the
/// noted ones don't fit the lines as they are now.
LineRegion TextFolding::Private::hiddenRegion(int line) const
{
    const auto isHidden = [this](int i) { return hasLine(i) && !doc->lineOf(i)->isFoldVisible; };
    LineRegion region{line, line};
    const LineRegion noted = hidden.find(line);
    if (!noted.isEmpty() && isHidden(noted.start) && isHidden(noted.end))
        region = noted;
    while (isHidden(region.start - 1))
        --region.start;
    while (isHidden(region.end + 1))
        ++region.end;
    return region;
}

void TextFolding::Private::hideLines()
{
    Hiding state;
    bool anyFold = false;
    const int last = doc->lastLine();
    hidden.clear();
    for (int i = 0; i <= last; ++i) {
        TextLine *const line = doc->lineOf(i);
        anyFold = anyFold || line->isFoldingStart;
        line->isFoldVisible = state.pass(*line);
        if (!line->isFoldVisible)
            hidden.append(i);
    }
    mayHaveFolds = anyFold;
}

/// Brings the levels up to \a line up to date.
void TextFolding::Private::settleLevels(int line)
{
    line = std::min(line, doc->lastLine());
    for (; !removedLevels.empty() && levelsFrom <= line; ++levelsFrom) {
        TextLine *const inner = doc->lineOf(levelsFrom);
        const int level = inner->foldingLevel;
        const int highest = inner->isFoldingStart ? level - 1 : level;
        while (!removedLevels.empty() && removedLevels.back() > highest)
            removedLevels.pop_back();
        inner->foldingLevel = level - int(removedLevels.size());
    }
    if (levelsFrom > doc->lastLine())
        removedLevels.clear();
}

/// Brings \a line and all above it up to date.
void TextFolding::Private::look(int line)
{
    settleLevels(line);
    if (line < unknownFrom)
        return;
    for (; unknownFrom < line; ++unknownFrom) {
        TextLine *const each = doc->lineOf(unknownFrom);
        each->isFoldVisible = hiding.pass(*each);
    }
    // What the line does to the next one may change yet.
    Hiding state = hiding;
    doc->lineOf(line)->isFoldVisible = state.pass(*doc->lineOf(line));
}

bool TextFolding::Private::isShut(int line) const
{
    const TextLine &each = *doc->lineOf(line);
    return !each.isFoldVisible || (each.isFoldingStart && each.isFolded);
}

/// Notes that lines from \a line on may show or not, and what hides that one.
void TextFolding::Private::forgetFrom(int line, const Hiding &before)
{
    if (line > unknownFrom)
        return;
    unknownFrom = line;
    hiding = before;
}

/// What the lines above \a line, which are known, do to it.
Hiding TextFolding::Private::hidingOf(int line) const
{
    const auto at = [this](int i) -> const TextLine & { return *doc->lineOf(i); };
    // What a closed fold's first line does depends on the line above it.
    int first = line;
    while (first > 0 && at(first - 1).isFoldVisible && isShut(first - 1))
        --first;
    Hiding state;
    if (first > 0 && !at(first - 1).isFoldVisible) {
        int hider = first - 1;
        while (hider > 0 && !at(hider).isFoldVisible)
            --hider;
        state = {false, level(hider)};
    }
    for (; first < line; ++first)
        state.pass(at(first));
    return state;
}

/// Opens all folds around \a line, which is known. Returns the first line below
/// which others may show now.
int TextFolding::Private::openAround(int line)
{
    const int top = openFrom <= line ? openFrom : 0;
    int topmost = -1;
    int curFoldingLevel = level(line);
    for (int i = line; i >= top && curFoldingLevel > 0; --i) {
        TextLine *const start = doc->lineOf(i);
        if (!start->isFoldingStart || start->foldingLevel < curFoldingLevel)
            continue;
        // Several folds may begin on one line and share its flags: all those
        // above the level of the line before it.
        const int outer = std::min(levelAbove(i), start->foldingLevel - 1);
        if (curFoldingLevel <= outer)
            continue;
        if (start->isFolded && start->isFoldVisible)
            topmost = i;
        start->isFolded = false;
        curFoldingLevel = outer;
    }
    openFrom = line;
    return topmost;
}

/// Removes the folds that begin on \a line, as removeFold() would one after the
/// other, but leaves the lines below as they are for now.
void TextFolding::Private::removeFoldsFrom(int line)
{
    TextLine *const start = doc->lineOf(line);
    const int level = start->foldingLevel;
    const int outer = std::min(levelAbove(line), level - 1);
    int around = int(removedLevels.size());
    const bool isInside =
        around == 0 || (levelsFrom == line + 1 && removedLevels.back() <= outer + around);
    if (!isInside) {
        settleLevels(doc->lastLine());
        around = 0;
    }
    levelsFrom = line + 1;
    for (int each = outer + 1; each <= level; ++each)
        removedLevels.push_back(each + around);
    start->isFoldingStart = false;
    start->isFolded = false;
    start->foldingLevel = outer;
}

/// Leaves nothing to be done for lines that are about to change all at once.
void TextFolding::Private::forget()
{
    unknownFrom = none;
    openFrom = none;
    removedLevels.clear();
}

/// Keeps the cursor out of hidden text.
void TextFolding::Private::placeCursor(int line) const
{
    if (DocumentView *const view = doc->d->view)
        view->moveCursorToLine(line);
}

TextFolding::TextFolding(TextDocument *doc) : QObject(doc), d(std::make_unique<Private>(doc))
{}

TextFolding::~TextFolding() = default;

bool TextFolding::createFold(int firstLine, int lastLine)
{
    TextDocument *const doc = d->doc;
    update();
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
    update();
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
    update();
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

void TextFolding::lineWillGo(int line)
{
    if (!d->hasLine(line) || !d->mayHaveFolds)
        return;
    d->look(line);
    const bool isBelowHidden = line > 0 && line < d->doc->lastLine() &&
                               d->doc->lineOf(line + 1)->isFoldingStart && d->isShut(line - 1);
    const bool isStart = d->doc->lineOf(line)->isFoldingStart && d->level(line) > 0;
    if (!isStart && !isBelowHidden)
        return;
    // Lines below may show now, or be hidden by what ended on this line.
    const Hiding before = line < d->unknownFrom ? d->hidingOf(line) : d->hiding;
    if (isStart)
        d->removeFoldsFrom(line);
    // The folds of the hidden lines may reach the line below then.
    if (isBelowHidden)
        d->openFrom = none;
    d->forgetFrom(line, before);
}

void TextFolding::openFold(int line)
{
    update();
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
    update();
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
    d->forget();
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
    d->settleLevels(d->doc->lastLine());
    d->forget();
    if (d->mayHaveFolds)
        d->hideLines();
    d->doc->tagAll();
    d->doc->updateViews();
    repaintViews();
}

bool TextFolding::settle()
{
    d->openFrom = none;
    if (!d->isBehind())
        return false;
    d->settleLevels(d->doc->lastLine());
    d->forget();
    d->hideLines();
    d->doc->tagAll();
    return true;
}

void TextFolding::update() const
{
    if (d->isBehind())
        d->doc->folding()->updateLinesVisibility();
}

void TextFolding::repaintViews() const
{
    for (DocumentView *const view : std::as_const(d->doc->d->views))
        view->repaintAll();
}

void TextFolding::ensureLineVisible(int line)
{
    if (!d->hasLine(line) || !d->mayHaveFolds)
        return;
    d->look(line);
    if (!d->isShut(line))
        return;

    int from = d->openAround(line);
    Hiding after;
    if (from < 0) {
        // What hides the line is none of the folds around it.
        for (from = line; !d->doc->lineOf(from)->isFoldVisible;)
            --from;
        after = {false, d->level(from)};
    }
    d->forgetFrom(from + 1, after);
    if (!d->doc->undoStack()->isExecuting())
        updateLinesVisibility();
}

int TextFolding::visibleLineFrom(int line) const
{
    update();
    const bool isHidden = d->hasLine(line) && !d->doc->lineOf(line)->isFoldVisible;
    return isHidden ? d->hiddenRegion(line).end + 1 : line;
}

int TextFolding::visibleLineUpTo(int line) const
{
    update();
    const bool isHidden = d->hasLine(line) && !d->doc->lineOf(line)->isFoldVisible;
    return isHidden ? std::max(d->hiddenRegion(line).start - 1, 0) : line;
}

void TextFolding::linesMoved(int line, int count)
{
    d->hidden.linesMoved(line, count);
    if (d->unknownFrom > line && d->isBehind())
        d->unknownFrom += count;
    if (d->openFrom > line && d->openFrom != none)
        d->openFrom += count;
    // A new line got the level that the one above it has now.
    if (d->levelsFrom > line || (d->levelsFrom == line && count > 0))
        d->levelsFrom += count;
}

void TextFolding::linesReplaced()
{
    d->forget();
    d->hidden.clear();
    d->mayHaveFolds = false;
}

bool TextFolding::isLastLineOfFold(int line) const
{
    update();
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
    update();
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
    // First lines of the folds around the line, from the outermost.
    std::vector<int> starts;
    const auto innermost = [&] { return parentLevel + int(starts.size()); };
    const auto closeFolds = [&](int line, int highest) {
        for (; !starts.empty() && innermost() > highest; starts.pop_back()) {
            const bool isOpened = !d->doc->lineOf(starts.back())->isFolded;
            foldersState.append({isOpened, starts.back(), line - 1});
        }
    };
    int line = startLine;
    do
        starts.push_back(startLine);
    while (d->level(startLine) > innermost());
    for (++line; line <= d->doc->lastLine(); ++line) {
        const TextLine *const inner = d->doc->lineOf(line);
        closeFolds(line, inner->isFoldingStart ? inner->foldingLevel - 1 : inner->foldingLevel);
        if (starts.empty())
            break;
        while (inner->foldingLevel > innermost())
            starts.push_back(line);
    }
    closeFolds(line, parentLevel);
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
