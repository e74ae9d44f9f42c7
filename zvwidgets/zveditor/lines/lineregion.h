#pragma once

namespace zvwidgets {

/// An inclusive range of line numbers; both ends are -1 while it is empty.
struct LineRegion
{
    int start = -1;
    int end = -1;

    void clear() { start = end = -1; }
    bool isEmpty() const { return start == -1; }

    /// Grows to hold lines \a s to \a e; an \a e of -1 means \a s alone.
    void expand(int s, int e)
    {
        if (start == -1 || start >= s)
            start = s;
        if (e == -1)
            e = s;
        if (end == -1 || e > end)
            end = e;
    }

    void expand(const LineRegion &other)
    {
        if (!other.isEmpty())
            expand(other.start, other.end);
    }

    /// Keeps what lies in lines \a s to \a e; empty if nothing does.
    void intersect(int s, int e)
    {
        start = start > s ? start : s;
        end = end < e ? end : e;
        if (end < start)
            clear();
    }
};

} // namespace zvwidgets
