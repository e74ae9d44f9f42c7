#pragma once

#include "zvwidgets/zveditor/textline.h"

#include <QStringView>

#include <array>
#include <vector>

namespace zvwidgets {

class LineSlabs;
class TextLineArray;

/// Lines in the order of the text, and what ended them. A line names its end only
/// if it is not firstEnd.
struct CutLines
{
    CutLines() = default;
    CutLines(CutLines &&) = default;
    CutLines &operator=(CutLines &&) = delete;
    ~CutLines();

    /// Makes \a end what firstEnd is.
    void nameEndsAfter(LineEnd end);

    /// Owned.
    std::vector<TextLine *> lines;
    /// What ended the first line, LineEnd::Document if nothing did yet.
    LineEnd firstEnd = LineEnd::Document;
    /// How many lines had each end.
    std::array<int, 4> ends{};
    /// The text stopped before the end of the last line.
    bool isLastOpen = false;
};

/// Collects text in blocks that many lines share and cuts it into lines that refer
/// to their part of the block. Used by one thread.
class LineCutter
{
public:
    /// Lines come from \a slabs, or for null from the pool of the main thread.
    explicit LineCutter(LineSlabs *slabs) : lineSlabs(slabs) {}
    LineCutter(const LineCutter &) = delete;
    LineCutter &operator=(const LineCutter &) = delete;

    /// Where the lines from now on go. At the start, and behind the end of a line.
    void setTarget(CutLines *lines) { target = lines; }

    /// Room for at least \a wanted characters; what was written there is
    /// announced by advance().
    QChar *room(qsizetype wanted)
    {
        if (capacity - used < wanted)
            newBlock(wanted);
        return reinterpret_cast<QChar *>(text() + used);
    }
    qsizetype roomLeft() const { return capacity - used; }

    void advance(qsizetype written)
    {
        used += written;
        cut(false);
    }

    /// Hands out what follows the last line end, if there is anything.
    void finish();

private:
    char16_t *text() { return block.data(); }
    void newBlock(qsizetype wanted);
    void cut(bool atEnd);
    void addLine(qsizetype end);
    void noteEnd(LineEnd end);
    void settleReferences();

    LineSlabs *const lineSlabs;
    CutLines *target = nullptr;
    QStringPrivate block;
    qsizetype capacity = 0;
    qsizetype used = 0;
    qsizetype lineStart = 0;
    qsizetype searched = 0;
    /// Of the unfinished line, as far as it was searched.
    bool hasTab = false;
    /// Lines that refer to the block and are not counted there yet.
    int references = 0;
};

/// Puts the names that lines have for their ends right once all of a text is known,
/// and returns the end most of them have. \a firstEnd and \a ends as in CutLines.
LineEnd settleLineEnds(TextLineArray *lines, LineEnd firstEnd, const std::array<int, 4> &ends);

/// True if there are lines and the text did not stop before the end of the last one.
bool areAllEnded(const TextLineArray &lines, const std::array<int, 4> &ends);

} // namespace zvwidgets
