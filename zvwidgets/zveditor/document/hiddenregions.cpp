#include "zvwidgets/zveditor/document/hiddenregions.h"

namespace zvwidgets {

void HiddenRegions::clear()
{
    regions.clear();
    shiftedFrom = 0;
    shift = 0;
}

void HiddenRegions::append(int line)
{
    moveShift(regions.size());
    shift = 0;
    if (!regions.empty() && regions.back().end == line - 1)
        regions.back().end = line;
    else
        regions.push_back({line, line});
    shiftedFrom = regions.size();
}

LineRegion HiddenRegions::at(size_t i) const
{
    LineRegion region = regions[i];
    if (i >= shiftedFrom) {
        region.start += shift;
        region.end += shift;
    }
    return region;
}

/// Index of the first region that starts on \a line or below.
size_t HiddenRegions::firstFrom(int line) const
{
    size_t low = 0;
    size_t high = regions.size();
    while (low < high) {
        const size_t middle = low + (high - low) / 2;
        if (at(middle).start < line)
            low = middle + 1;
        else
            high = middle;
    }
    return low;
}

LineRegion HiddenRegions::find(int line) const
{
    const size_t below = firstFrom(line + 1);
    if (below == 0 || at(below - 1).end < line)
        return LineRegion();
    return at(below - 1);
}

void HiddenRegions::moveShift(size_t to)
{
    for (; shiftedFrom < to; ++shiftedFrom) {
        regions[shiftedFrom].start += shift;
        regions[shiftedFrom].end += shift;
    }
    for (; shiftedFrom > to; --shiftedFrom) {
        regions[shiftedFrom - 1].start -= shift;
        regions[shiftedFrom - 1].end -= shift;
    }
}

void HiddenRegions::linesMoved(int line, int count)
{
    const size_t below = firstFrom(line);
    moveShift(below);
    shift += count;
    if (below > 0 && regions[below - 1].end >= line)
        regions[below - 1].end += count;
}

} // namespace zvwidgets
