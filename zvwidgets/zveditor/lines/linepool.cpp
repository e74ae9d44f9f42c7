#include "zvwidgets/zveditor/lines/linepool.h"

#include <QtGlobal>

#include <cstdint>
#include <cstdlib>
#include <new>

// The sanitizer can only tell the use of a dead line if each has memory of its own.
#if defined(__SANITIZE_ADDRESS__)
#define VESK_POOL_LINES 0
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VESK_POOL_LINES 0
#endif
#endif
#ifndef VESK_POOL_LINES
#define VESK_POOL_LINES 1
#endif

namespace zvwidgets {

namespace {

constinit LineSlabs pool;

} // namespace

#if VESK_POOL_LINES

namespace {

constexpr size_t slabSize = 256 * 1024;
/// Left to the heap for its own notes, so that slabs can lie side by side.
constexpr size_t heapNotes = 64;
constexpr size_t slabEnd = slabSize - heapNotes;
constexpr size_t firstCell = 64;

} // namespace

struct LineSlabs::Cell
{
    Cell *next;
};

/// Stands at the start of its memory, which lies at a multiple of slabSize, so
/// that the address of a cell tells its slab.
struct LineSlabs::Slab
{
    Slab *next; ///< of those with room
    Slab *previous;
    Cell *free;   ///< given back
    size_t fresh; ///< offset of the cells never used
    size_t used;
};

bool LineSlabs::isFull(const Slab *slab) const
{
    return !slab->free && slab->fresh + cellSize > slabEnd;
}

void LineSlabs::link(Slab *slab)
{
    slab->next = withRoom;
    slab->previous = nullptr;
    if (withRoom)
        withRoom->previous = slab;
    withRoom = slab;
}

void LineSlabs::unlink(Slab *slab)
{
    (slab->previous ? slab->previous->next : withRoom) = slab->next;
    if (slab->next)
        slab->next->previous = slab->previous;
}

LineSlabs::Slab *LineSlabs::grow()
{
    static_assert(sizeof(Slab) <= firstCell);
    void *memory = nullptr;
    if (posix_memalign(&memory, slabSize, slabEnd) != 0)
        throw std::bad_alloc();
    ++count;
    Slab *slab = new (memory) Slab{nullptr, nullptr, nullptr, firstCell, 0};
    link(slab);
    return slab;
}

void *LineSlabs::allocate(size_t size)
{
    Q_ASSERT(cellSize == 0 || cellSize == size);
    cellSize = size;
    Slab *slab = withRoom ? withRoom : grow();
    void *cell = slab->free;
    if (cell) {
        slab->free = slab->free->next;
    } else {
        cell = reinterpret_cast<char *>(slab) + slab->fresh;
        slab->fresh += size;
    }
    ++slab->used;
    if (isFull(slab))
        unlink(slab);
    return cell;
}

void LineSlabs::release(void *memory)
{
    const auto address = reinterpret_cast<uintptr_t>(memory);
    Slab *slab = reinterpret_cast<Slab *>(static_cast<char *>(memory) - address % slabSize);
    if (isFull(slab))
        link(slab);
    slab->free = new (memory) Cell{slab->free};
    // The last slab stays: a single line comes and goes often.
    if (--slab->used == 0 && count > 1) {
        unlink(slab);
        --count;
        std::free(slab);
    }
}

void LineSlabs::adopt(LineSlabs *other)
{
    if (other->count == 0)
        return;
    Q_ASSERT(cellSize == 0 || cellSize == other->cellSize);
    cellSize = other->cellSize;
    count += other->count;
    while (Slab *slab = other->withRoom) {
        other->unlink(slab);
        link(slab);
    }
    other->count = 0;
}

#else

void *LineSlabs::allocate(size_t size)
{
    return ::operator new(size);
}

void LineSlabs::release(void *memory)
{
    ::operator delete(memory);
}

void LineSlabs::adopt(LineSlabs *)
{}

#endif

void *LinePool::allocate(size_t size)
{
    return pool.allocate(size);
}

void LinePool::release(void *memory)
{
    pool.release(memory);
}

void LinePool::adopt(LineSlabs *slabs)
{
    pool.adopt(slabs);
}

} // namespace zvwidgets
