#include "zvwidgets/zveditor/lines/keptbytes.h"

#include <QByteArray>
#include <QChar>
#include <QIODevice>

#include <algorithm>
#include <cstring>

namespace zvwidgets {

namespace {

constexpr qint64 bytesPerRead = 64 * 1024;

/// What starts at some place of the bytes.
struct Sequence
{
    enum class Kind
    {
        Character,
        BadByte,
        CutShort ///< may become a character with more bytes
    };

    Kind kind;
    int length = 1; ///< bytes
    char32_t code = 0;
};

// The second byte is what excludes overlong forms, surrogates and what is past the
// last character.
Sequence sequenceAt(const uchar *bytes, const uchar *end)
{
    using Kind = Sequence::Kind;
    const uchar lead = bytes[0];
    if (lead < 0x80)
        return {Kind::Character, 1, lead};
    if (lead < 0xC2 || lead > 0xF4)
        return {Kind::BadByte};
    const int length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    uchar low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    uchar high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    char32_t code = lead & (0x7F >> length);
    for (int i = 1; i < length; ++i) {
        if (bytes + i == end)
            return {Kind::CutShort};
        if (bytes[i] < low || bytes[i] > high)
            return {Kind::BadByte};
        code = code << 6 | (bytes[i] & 0x3F);
        low = 0x80;
        high = 0xBF;
    }
    return {Kind::Character, length, code};
}

/// The end of the plain letters that \a next starts with, found several at a time.
const uchar *asciiEnd(const uchar *next, const uchar *end)
{
    constexpr quint64 highBits = 0x8080808080808080;
    quint64 word = 0;
    for (; end - next >= qptrdiff(sizeof word); next += sizeof word) {
        std::memcpy(&word, next, sizeof word);
        if (word & highBits)
            break;
    }
    while (next != end && *next < 0x80)
        ++next;
    return next;
}

QChar *append(QChar *out, const Sequence &sequence, uchar byte)
{
    if (sequence.kind == Sequence::Kind::BadByte) {
        *out++ = QChar(char16_t(keptByteBase + byte));
        return out;
    }
    for (const char16_t unit : QChar::fromUcs4(sequence.code))
        *out++ = QChar(unit);
    return out;
}

} // namespace

QChar *KeepingDecoder::appendToBuffer(QChar *out, QByteArrayView bytes)
{
    const auto *next = reinterpret_cast<const uchar *>(bytes.data());
    const uchar *const end = next + bytes.size();
    while (pendingCount > 0 && next != end) {
        pending[size_t(pendingCount++)] = *next++;
        out = appendPending(out, false);
    }
    while (next != end) {
        const uchar *const plainEnd = asciiEnd(next, end);
        while (next != plainEnd)
            *out++ = QLatin1Char(char(*next++));
        if (next == end)
            break;
        const Sequence sequence = sequenceAt(next, end);
        if (sequence.kind == Sequence::Kind::CutShort) {
            pendingCount = int(end - next);
            std::copy(next, end, pending.begin());
            break;
        }
        out = append(out, sequence, *next);
        next += sequence.length;
    }
    return out;
}

QChar *KeepingDecoder::finish(QChar *out)
{
    return appendPending(out, true);
}

QChar *KeepingDecoder::appendPending(QChar *out, bool isLast)
{
    while (pendingCount > 0) {
        const uchar *const start = pending.data();
        Sequence sequence = sequenceAt(start, start + pendingCount);
        if (sequence.kind == Sequence::Kind::CutShort) {
            if (!isLast)
                break;
            sequence = {Sequence::Kind::BadByte};
        }
        out = append(out, sequence, *start);
        pendingCount -= sequence.length;
        std::copy_n(start + sequence.length, pendingCount, pending.begin());
    }
    return out;
}

bool hasMultiByteCharacter(QIODevice &device)
{
    QByteArray buffer(bytesPerRead, Qt::Uninitialized);
    qint64 kept = 0;
    for (;;) {
        const qint64 got = device.read(buffer.data() + kept, buffer.size() - kept);
        if (got <= 0)
            return false;
        const auto *next = reinterpret_cast<const uchar *>(buffer.constData());
        const uchar *const end = next + kept + got;
        kept = 0;
        while ((next = asciiEnd(next, end)) != end) {
            const Sequence sequence = sequenceAt(next, end);
            if (sequence.kind == Sequence::Kind::Character)
                return true;
            if (sequence.kind == Sequence::Kind::CutShort) {
                kept = end - next;
                break;
            }
            ++next;
        }
        std::copy_n(next, kept, reinterpret_cast<uchar *>(buffer.data()));
    }
}

} // namespace zvwidgets
