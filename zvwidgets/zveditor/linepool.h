#pragma once

#include <cstddef>

namespace zvwidgets {

/// Memory for the lines of all documents, cut from large slabs: a document of
/// millions of lines is made and freed without asking the heap for each. A slab
/// goes back when its last line dies. For one thread.
class LinePool
{
public:
    /// Room for one line of \a size bytes, the same in every call. Never null.
    static void *allocate(size_t size);
    static void release(void *memory);
};

} // namespace zvwidgets
