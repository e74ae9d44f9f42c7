#pragma once

#include <QtGlobal>

#include <vector>

namespace zvwidgets {

/// Places in a long line from which a scan of it can go on, left there by the scan
/// before. After an edit only the text near it is scanned again: from the last
/// place that has not seen the text that changed, to the first one behind it where
/// the scan stands as it did before.
///
/// The scan's owner puts its fields in; this class knows which of the places an
/// edit leaves valid. Columns count UTF-16 units.
class ScanMarks
{
public:
    /// Shorter lines are not worth it.
    static constexpr int longLine = 32 * 1024;
    /// Columns from one place to the next, at least.
    static constexpr int step = 4096;
    /// The reach of a scan that has seen where the text ends.
    static constexpr int wholeText = 0x7fffffff;

    /// What a scan has to know to go on.
    struct Place
    {
        /// Both go on alike if what follows them is the same text.
        bool goesOnAs(const Place &other) const
        {
            return ctx == other.ctx && rule == other.rule && matched == other.matched &&
                   shrinks == other.shrinks;
        }

        int at = 0; ///< column
        int ctx = 0;
        int rule = 0;         ///< the next to ask
        bool matched = false; ///< a rule before it took something
        int shrinks = 0;      ///< characters without a rule so far
        qint64 spent = 0;     ///< of the work that costly rules may do
        int reach = 0;        ///< no text from this column on has been looked at
    };

    /// To be called when \a inserted units take the place of \a removed ones at
    /// \a column.
    void textChanged(int column, int removed, int inserted);
    void clear() { *this = ScanMarks(); }

    // For a scan

    /// Begins a scan that starts in \a ctx, by the scanner known as \a scannerId, not
    /// 0, over a text of \a size units; gives the place to start from.
    Place begin(quint64 scannerId, int ctx, int size);
    /// True if begin() found that there is nothing to scan.
    bool isSettled() const { return settled; }
    /// The column where pass() wants to be called.
    int nextColumn() const { return next; }
    /// Notes that the scan stands at \a place, which it has reached by taking text.
    /// True if the scan before had left it alike, and would have gone on as it did:
    /// the rest is known, and the scan has ended. \a budget is what it may spend.
    bool pass(const Place &place, qint64 budget);
    /// Ends a scan that has gone to its end, in \a ctx.
    void finish(int ctx, qint64 spent, qint64 budget);

    /// The context the last scan ended in.
    int endContext() const { return endCtx; }
    /// Length of the text that was scanned last; 0 if there is none.
    int scannedSize() const { return scannedLength; }
    /// Units at the end that have not changed since then.
    int sameEnd() const { return suffix; }

    /// The places noted, by column.
    const std::vector<Place> &noted() const { return places; }

private:
    void findNext(int at);

    std::vector<Place> places;
    /// Those of the scan before that lie in text that hasn't changed, by their new columns.
    std::vector<Place> behind;
    size_t firstBehind = 0;
    int next = 0;
    bool settled = false;

    quint64 scanner = 0;
    int startCtx = 0;
    int endCtx = 0;
    qint64 spentAtEnd = 0;
    int length = 0;
    int scannedLength = 0;
    int prefix = 0;
    int suffix = 0;
};

} // namespace zvwidgets
