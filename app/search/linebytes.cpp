#include "app/search/linebytes.h"

#include <bit>
#include <cerrno>
#include <cstring>
#include <unistd.h>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace vesk {

namespace {

int countLineFeeds(const char *data, const char *end)
{
    int count = 0;
#ifdef __SSE2__
    const __m128i lineFeed = _mm_set1_epi8('\n');
    for (; end - data >= qsizetype(sizeof(__m128i)); data += sizeof(__m128i)) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i *>(data));
        const int mask = _mm_movemask_epi8(_mm_cmpeq_epi8(bytes, lineFeed));
        count += std::popcount(unsigned(mask));
    }
#endif
    for (; data < end; ++data)
        count += *data == '\n';
    return count;
}

} // namespace

namespace LineBytes {

bool isAscii(const char *data, qsizetype size)
{
    qsizetype i = 0;
    quint64 word = 0;
    for (; i + 8 <= size; i += 8) {
        quint64 next;
        memcpy(&next, data + i, 8);
        word |= next;
    }
    for (; i < size; ++i)
        word |= quint64(uchar(data[i]));
    return (word & 0x8080808080808080U) == 0;
}

qsizetype readFully(int fd, char *data, qsizetype size)
{
    qsizetype done = 0;
    while (done < size) {
        const ssize_t got = ::read(fd, data + done, size_t(size - done));
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            break;
        done += got;
    }
    return done;
}

int countLineEnds(const char *data, qsizetype size)
{
    int count = 0;
    const char *const end = data + size;
    if (!memchr(data, '\r', size_t(size)))
        return countLineFeeds(data, end);
    for (const char *p = data; p < end; ++p)
        count += *p == '\n' || (*p == '\r' && (p + 1 == end || p[1] != '\n'));
    return count;
}

const char *lineStart(const char *data, const char *at)
{
    for (const char end : {'\n', '\r'}) {
        if (const void *const found = memrchr(data, end, size_t(at - data)))
            data = static_cast<const char *>(found) + 1;
    }
    return data;
}

const char *lineEnd(const char *at, const char *end)
{
    for (const char mark : {'\n', '\r'}) {
        if (const void *const found = memchr(at, mark, size_t(end - at)))
            end = static_cast<const char *>(found);
    }
    return end;
}

const char *nextLine(const char *at, const char *end)
{
    if (at == end)
        return at;
    return at + ((*at == '\r' && at + 1 < end && at[1] == '\n') ? 2 : 1);
}

qsizetype wholeLines(const char *data, qsizetype size)
{
    for (qsizetype i = size - 1; i >= 0; --i) {
        if (data[i] == '\n' || (data[i] == '\r' && i + 1 < size))
            return i + 1;
    }
    return 0;
}

qsizetype characterStart(const char *data, qsizetype at)
{
    for (qsizetype start = at; start > 0 && start > at - 4; --start) {
        if ((uchar(data[start]) & 0xc0) != 0x80)
            return start;
    }
    return at;
}

} // namespace LineBytes

bool MultiByteFinder::feed(const char *data, qsizetype size)
{
    constexpr qsizetype step = 4096;
    for (qsizetype at = 0; at < size && !isFound; at += step) {
        const qsizetype end = qMin(at + step, size);
        if (following == 0 && LineBytes::isAscii(data + at, end - at))
            continue;
        for (qsizetype i = at; i < end && !isFound; ++i)
            take(uchar(data[i]));
    }
    return isFound;
}

void MultiByteFinder::take(uchar byte)
{
    if (following > 0 && byte >= lowest && byte <= highest) {
        lowest = 0x80;
        highest = 0xbf;
        isFound = --following == 0;
        return;
    }
    begin(byte);
}

void MultiByteFinder::begin(uchar byte)
{
    const bool isLead = byte >= 0xc2 && byte <= 0xf4;
    following = !isLead ? 0 : byte >= 0xf0 ? 3 : byte >= 0xe0 ? 2 : 1;
    // Overlong forms, surrogates and what lies beyond Unicode.
    lowest = byte == 0xe0 ? 0xa0 : byte == 0xf0 ? 0x90 : 0x80;
    highest = byte == 0xed ? 0x9f : byte == 0xf4 ? 0x8f : 0xbf;
}

} // namespace vesk
