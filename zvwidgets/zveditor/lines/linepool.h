#pragma once

#include <cstddef>

namespace zvwidgets {

/// Memory for lines, cut from large slabs: a document of millions of lines is made
/// and freed without asking the heap for each. A slab goes back when its last line
/// dies. Used by one thread at a time.
class LineSlabs
{
public:
    constexpr LineSlabs() = default;
    LineSlabs(const LineSlabs &) = delete;
    LineSlabs &operator=(const LineSlabs &) = delete;

    /// Room for one line of \a size bytes, the same in every call. Never null.
    void *allocate(size_t size);
    /// Takes back what these slabs gave, or others that they took over.
    void release(void *memory);
    /// Takes over all memory of \a other, with the lines in it.
    void adopt(LineSlabs *other);

private:
    struct Cell;
    struct Slab;

    bool isFull(const Slab *slab) const;
    void link(Slab *slab);
    void unlink(Slab *slab);
    Slab *grow();

    Slab *withRoom = nullptr;
    size_t count = 0; ///< of all slabs
    size_t cellSize = 0;
};

/// The memory of the lines of all documents. For the main thread; a thread that
/// makes lines takes slabs of its own for them, which are handed over when it has
/// ended and before the first of the lines dies.
class LinePool
{
public:
    /// As of LineSlabs.
    static void *allocate(size_t size);
    static void release(void *memory);
    static void adopt(LineSlabs *slabs);
};

} // namespace zvwidgets
