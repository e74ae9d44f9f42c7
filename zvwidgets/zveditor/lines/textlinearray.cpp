#include "zvwidgets/zveditor/lines/textlinearray.h"

#include <algorithm>
#include <utility>

namespace zvwidgets {

void TextLineArray::append(TextLine *line)
{
    insert(size(), line);
}

void TextLineArray::append(const std::vector<TextLine *> &lines)
{
    if (lines.empty())
        return;
    const int count = int(lines.size());
    if (gapEnd - gapStart < count)
        grow(size() + count);
    moveGap(size());
    std::copy(lines.begin(), lines.end(), places.get() + gapStart);
    forgetBlocks(gapStart, gapStart + count - 1);
    gapStart += count;
}

void TextLineArray::insert(int i, TextLine *line)
{
    if (gapStart == gapEnd)
        grow(size() + 1);
    moveGap(i);
    places[size_t(gapStart)] = line;
    forgetBlocks(gapStart, gapStart);
    ++gapStart;
}

void TextLineArray::remove(int i)
{
    moveGap(i);
    TextLine *line = places[size_t(gapEnd)];
    forgetBlocks(gapEnd, gapEnd);
    ++gapEnd;
    if (autoDelete)
        std::unique_ptr<TextLine>{line}.reset();
}

void TextLineArray::clear()
{
    if (autoDelete) {
        for (int i = size() - 1; i >= 0; --i)
            std::unique_ptr<TextLine>{at(i)}.reset();
    }
    places.reset();
    room = 0;
    blockWidths = {};
    gapStart = gapEnd = 0;
}

void TextLineArray::reserve(int lines)
{
    if (lines > int(room))
        grow(lines);
}

void TextLineArray::swap(TextLineArray &other) noexcept
{
    places.swap(other.places);
    std::swap(room, other.room);
    blockWidths.swap(other.blockWidths);
    std::swap(gapStart, other.gapStart);
    std::swap(gapEnd, other.gapEnd);
}

void TextLineArray::widthChanged(int i)
{
    const int slot = int(slotOf(i));
    forgetBlocks(slot, slot);
}

void TextLineArray::allWidthsChanged()
{
    blockWidths.clear();
}

void TextLineArray::moveGap(int i)
{
    const int gap = gapEnd - gapStart;
    TextLine **const lines = places.get();
    if (gap > 0 && i < gapStart) {
        carryWidths(i, gapStart, gap);
        std::move_backward(lines + i, lines + gapStart, lines + gapEnd);
    } else if (gap > 0 && i > gapStart) {
        carryWidths(gapEnd, i + gap, -gap);
        std::move(lines + gapEnd, lines + i + gap, lines + gapStart);
    }
    gapStart = i;
    gapEnd = i + gap;
}

// The lines in slots \a first up to \a last are about to move by \a shift. Where
// they come to lie a block gets the widths of the blocks they come from: too much
// does no harm, as the widest block is always measured again.
void TextLineArray::carryWidths(int first, int last, int shift)
{
    if (blockWidths.empty())
        return;
    const int lowest = (first + shift) / blockSize;
    const int highest = (last - 1 + shift) / blockSize;
    for (int n = 0; n <= highest - lowest; ++n) {
        // No block may be changed before it has been read.
        const int to = shift > 0 ? highest - n : lowest + n;
        const int begin = std::max(to * blockSize - shift, first);
        const int end = std::min((to + 1) * blockSize - shift, last);
        int &width = blockWidths[size_t(to)];
        for (int from = begin / blockSize; from <= (end - 1) / blockSize; ++from) {
            const int other = blockWidths[size_t(from)];
            width = width == unknown || other == unknown ? unknown : std::max(width, other);
        }
    }
}

// The gap lies behind the last line afterwards.
void TextLineArray::grow(int minimum)
{
    moveGap(size());
    room = std::max<size_t>(size_t(minimum), room + room / 2 + 64);
    auto *larger = static_cast<TextLine **>(std::realloc(places.get(), room * sizeof(TextLine *)));
    Q_CHECK_PTR(larger);
    (void)places.release();
    places.reset(larger);
    gapEnd = int(room);
    if (!blockWidths.empty())
        blockWidths.resize(blockCount(), noLines);
}

void TextLineArray::forgetBlocks(int firstSlot, int lastSlot)
{
    if (blockWidths.empty())
        return;
    const int last = std::min(lastSlot / blockSize, int(blockWidths.size()) - 1);
    for (int block = firstSlot / blockSize; block <= last; ++block)
        blockWidths[size_t(block)] = unknown;
}

} // namespace zvwidgets
