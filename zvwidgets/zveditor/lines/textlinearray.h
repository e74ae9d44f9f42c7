#pragma once

#include "zvwidgets/zveditor/textline.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <vector>

namespace zvwidgets {

/// The lines of a document in order, kept in a gap buffer: inserting and
/// removing where the last change was costs nothing that grows with the file.
///
/// The largest line width is kept for each block of slots, so that the widest
/// line is found again without looking at every line.
class TextLineArray
{
public:
    TextLineArray() = default;
    TextLineArray(const TextLineArray &) = delete;
    TextLineArray &operator=(const TextLineArray &) = delete;
    ~TextLineArray() { clear(); }

    /// Exchanges the lines, not autoDelete.
    void swap(TextLineArray &other) noexcept;

    int size() const { return int(room) - (gapEnd - gapStart); }
    int count() const { return size(); }
    bool isEmpty() const { return size() == 0; }
    TextLine *at(int i) const { return places[slotOf(i)]; }
    TextLine *operator[](int i) const { return at(i); }

    void append(TextLine *line);
    void append(const std::vector<TextLine *> &lines);
    /// Inserts before line \a i, 0 to size().
    void insert(int i, TextLine *line);
    /// Takes line \a i out, deleting it if autoDelete is set.
    void remove(int i);
    /// Takes all lines out, deleting them if autoDelete is set.
    void clear();
    void setAutoDelete(bool on) { autoDelete = on; }
    /// Makes room for \a lines lines in all.
    void reserve(int lines);

    /// Has to be called when the width of line \a i may have changed.
    void widthChanged(int i);
    /// Has to be called when the width of every line may have changed.
    void allWidthsChanged();
    /// The first of the widest lines by \a widthOf, a function of a line, and
    /// its width in \a width; null and -1 for an empty array.
    template <typename WidthOf>
    TextLine *widest(const WidthOf &widthOf, int *width);

    /// Off at construction: the document deletes its lines itself.
    bool autoDelete = false;

private:
    static constexpr int blockSize = 1024;
    // Instead of the width of a block:
    static constexpr int unknown = -1;
    static constexpr int noLines = -2;

    size_t slotOf(int i) const { return size_t(i < gapStart ? i : i + (gapEnd - gapStart)); }
    void moveGap(int i);
    void carryWidths(int first, int last, int shift);
    void grow(int minimum);
    size_t blockCount() const { return (room + blockSize - 1) / blockSize; }
    void forgetBlocks(int firstSlot, int lastSlot);
    template <typename WidthOf>
    int measureBlock(int block, const WidthOf &widthOf, TextLine **widestLine) const;

    struct FreePlaces
    {
        void operator()(TextLine **memory) const { std::free(memory); }
    };

    /// From the C heap, which makes it larger without copying it.
    std::unique_ptr<TextLine *[], FreePlaces> places;
    size_t room = 0; ///< number of places
    /// Upper bounds; empty if none is known.
    std::vector<int> blockWidths;
    int gapStart = 0;
    int gapEnd = 0;
};

template <typename WidthOf>
int TextLineArray::measureBlock(int block, const WidthOf &widthOf, TextLine **widestLine) const
{
    const int last = qMin((block + 1) * blockSize, int(room));
    int width = -1;
    for (int slot = block * blockSize; slot < last; ++slot) {
        if (slot >= gapStart && slot < gapEnd)
            continue;
        const int w = widthOf(places[size_t(slot)]);
        if (w > width) {
            width = w;
            *widestLine = places[size_t(slot)];
        }
    }
    return width == -1 ? noLines : width;
}

template <typename WidthOf>
TextLine *TextLineArray::widest(const WidthOf &widthOf, int *width)
{
    *width = -1;
    if (isEmpty())
        return nullptr;
    blockWidths.resize(blockCount(), unknown);
    TextLine *line = nullptr;
    for (size_t block = 0; block < blockWidths.size(); ++block) {
        if (blockWidths[block] == unknown)
            blockWidths[block] = measureBlock(int(block), widthOf, &line);
    }
    // A line may have moved to another block, or have become narrower without a
    // word to us, so the winner is measured again and has to keep its place.
    for (;;) {
        const auto best = std::max_element(blockWidths.begin(), blockWidths.end());
        const int measured = measureBlock(int(best - blockWidths.begin()), widthOf, &line);
        if (measured == *best) {
            *width = measured;
            return line;
        }
        *best = measured;
    }
}

} // namespace zvwidgets
