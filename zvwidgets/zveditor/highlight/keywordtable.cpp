#include "zvwidgets/zveditor/highlight/keywordtable.h"

#include <QChar>

#include <cstring>

namespace zvwidgets {

namespace {

constexpr int longestHashed = 256;

quint32 mixed(quint32 hash, quint8 unit)
{
    return hash * 31 + unit;
}

quint32 spread(quint32 hash)
{
    return hash ^ hash >> 11;
}

} // namespace

int KeywordTable::addList(const QSet<QByteArray> &words)
{
    for (const QByteArray &word : words) {
        if (!word.isEmpty() && word.size() <= longestHashed)
            add(word, quint64(1) << lists);
    }
    return lists++;
}

void KeywordTable::add(const QByteArray &word, quint64 mask)
{
    if (used * 2 >= entries.size())
        grow();
    quint32 hash = 0;
    for (const char unit : word)
        hash = mixed(hash, quint8(unit));
    Entry &entry = place(hash, word.constData(), quint32(word.size()));
    if (entry.length == 0) {
        entry = {hash, quint32(word.size()), quint32(text.size()), 0};
        text += word;
        longest = std::max(longest, entry.length);
        ++used;
    }
    entry.mask |= mask;
}

void KeywordTable::grow()
{
    std::vector<Entry> old = std::move(entries);
    entries = std::vector<Entry>(old.empty() ? 16 : old.size() * 2);
    for (const Entry &entry : old) {
        if (entry.length)
            place(entry.hash, text.constData() + entry.offset, entry.length) = entry;
    }
}

/// The entry of a word, or the free one where it belongs.
KeywordTable::Entry &KeywordTable::place(quint32 hash, const char *word, quint32 length)
{
    const size_t last = entries.size() - 1;
    size_t i = spread(hash) & last;
    while (entries[i].length &&
           (entries[i].hash != hash || entries[i].length != length ||
            std::memcmp(text.constData() + entries[i].offset, word, length) != 0))
        i = (i + 1) & last;
    return entries[i];
}

quint64 KeywordTable::find(const char16_t *candidate, int length) const
{
    if (length <= 0 || quint32(length) > longest)
        return 0;
    char word[longestHashed];
    quint32 hash = 0;
    for (int i = 0; i < length; ++i) {
        char16_t unit = candidate[i];
        if (lowerCandidate)
            unit = unit < 128 ? (unit >= u'A' && unit <= u'Z' ? unit | 0x20 : unit)
                              : QChar::toLower(char32_t(unit));
        if (unit > 0xff)
            return 0;
        word[i] = char(unit);
        hash = mixed(hash, quint8(unit));
    }
    const size_t last = entries.size() - 1;
    size_t i = spread(hash) & last;
    while (entries[i].length) {
        const Entry &entry = entries[i];
        if (entry.hash == hash && entry.length == quint32(length) &&
            std::memcmp(text.constData() + entry.offset, word, size_t(length)) == 0)
            return entry.mask;
        i = (i + 1) & last;
    }
    return 0;
}

} // namespace zvwidgets
