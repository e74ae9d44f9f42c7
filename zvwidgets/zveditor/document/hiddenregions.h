#pragma once

#include "zvwidgets/zveditor/lines/lineregion.h"

#include <cstddef>
#include <vector>

namespace zvwidgets {

/// Regions of lines in ascending order, none touching the next. Following an edit
/// costs what lies between it and the edit before, not the number of regions.
class HiddenRegions
{
public:
    void clear();
    /// Adds \a line, which lies below all others.
    void append(int line);
    /// The region that holds \a line; empty if there is none.
    LineRegion find(int line) const;
    /// To be told when a line came in before \a line, which is a \a count of 1, or
    /// when line \a line went, which is a count of -1.
    void linesMoved(int line, int count);

private:
    LineRegion at(size_t i) const;
    size_t firstFrom(int line) const;
    void moveShift(size_t to);

    std::vector<LineRegion> regions;
    /// The regions from \a shiftedFrom on are noted as they were before they moved
    /// by \a shift lines.
    size_t shiftedFrom = 0;
    int shift = 0;
};

} // namespace zvwidgets
