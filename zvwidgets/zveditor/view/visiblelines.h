#pragma once

#include <cstddef>
#include <vector>

namespace zvwidgets {

/// What one row on screen shows: columns \a startPos up to, not including,
/// \a endPos of a line. An empty line has 0 and 1.
struct VisibleLine
{
    int line = 0;
    int startPos = 0;
    int endPos = 0;
    /// Pixels a row that continues its line is moved to the right.
    int xShift = 0;

    bool operator==(const VisibleLine &) const = default;
};

/// The rows from the top of a view on, under consecutive keys.
class VisibleLines
{
public:
    void clear(int newFirstKey)
    {
        rows.clear();
        first = newFirstKey;
    }
    void append(const VisibleLine &row) { rows.push_back(row); }

    bool isEmpty() const { return rows.empty(); }
    int count() const { return int(rows.size()); }
    bool contains(int key) const { return key >= first && key - first < count(); }
    const VisibleLine &at(int key) const { return rows[size_t(key - first)]; }
    int firstKey() const { return first; }
    int lastKey() const { return first + count() - 1; }
    /// From the top on.
    const std::vector<VisibleLine> &list() const { return rows; }

private:
    int first = 0;
    std::vector<VisibleLine> rows;
};

} // namespace zvwidgets
