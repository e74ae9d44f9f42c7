#include "zvwidgets/zveditor/textlinearray.h"

#include <utility>

namespace zvwidgets {

void TextLineArray::append(TextLine *line)
{
    insert(size(), line);
}

void TextLineArray::insert(int i, TextLine *line)
{
    if (gapStart == gapEnd)
        grow(size() + 1);
    moveGap(i);
    slots_[size_t(gapStart)] = line;
    forgetBlocks(gapStart, gapStart);
    ++gapStart;
}

void TextLineArray::remove(int i)
{
    moveGap(i);
    TextLine *line = slots_[size_t(gapEnd)];
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
    slots_ = {};
    blockWidths = {};
    gapStart = gapEnd = 0;
}

void TextLineArray::reserve(int lines)
{
    if (lines > int(slots_.size()))
        grow(lines);
}

void TextLineArray::swap(TextLineArray &other) noexcept
{
    slots_.swap(other.slots_);
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
    if (i == gapStart)
        return;
    const auto begin = slots_.begin();
    if (i < gapStart) {
        forgetBlocks(i, gapEnd - 1);
        std::move_backward(begin + i, begin + gapStart, begin + gapEnd);
        gapEnd -= gapStart - i;
    } else {
        const int lines = i - gapStart;
        forgetBlocks(gapStart, gapEnd + lines - 1);
        std::move(begin + gapEnd, begin + gapEnd + lines, begin + gapStart);
        gapEnd += lines;
    }
    gapStart = i;
}

// The gap lies behind the last line afterwards.
void TextLineArray::grow(int minimum)
{
    moveGap(size());
    const size_t room = std::max<size_t>(size_t(minimum), slots_.size() + slots_.size() / 2 + 64);
    slots_.resize(room);
    gapEnd = int(room);
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
