#pragma once

#include <QByteArray>
#include <QSet>
#include <QtGlobal>

#include <vector>

namespace zvwidgets {

/// The word lists of up to 64 rules that look at the same candidate, in one table:
/// a single look-up tells which of the lists hold it.
class KeywordTable
{
public:
    static constexpr int maximumLists = 64;

    /// \a lowered lists are looked up by the candidate in lower case.
    explicit KeywordTable(bool lowered) : lowerCandidate(lowered) {}

    bool lowersCandidate() const { return lowerCandidate; }
    int listCount() const { return lists; }
    /// Adds a list of Latin-1 words and returns its number.
    int addList(const QSet<QByteArray> &words);
    /// The lists that hold the \a length units at \a candidate: bit n for list n.
    quint64 find(const char16_t *candidate, int length) const;

private:
    struct Entry
    {
        quint32 hash = 0;
        quint32 length = 0; ///< 0 for a free place
        quint32 offset = 0; ///< into text
        quint64 mask = 0;
    };

    void add(const QByteArray &word, quint64 mask);
    void grow();
    Entry &place(quint32 hash, const char *word, quint32 length);

    const bool lowerCandidate;
    int lists = 0;
    quint32 longest = 0;
    quint32 used = 0;
    std::vector<Entry> entries; ///< a power of two, open addressing
    QByteArray text;            ///< the words one after the other
};

} // namespace zvwidgets
