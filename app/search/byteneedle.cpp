#include "app/search/byteneedle.h"

#include <bit>
#include <cstring>
#include <string_view>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace vesk {

namespace {

/// What tells an upper case letter of ASCII from the lower case one.
constexpr uchar caseBit = 0x20;

/// Much more would only cost time where nearly all fits.
constexpr qsizetype longest = 64;

/// The bits to set in a byte before it is compared with \a c, whatever its case.
uchar caseBits(char c)
{
    return c >= 'a' && c <= 'z' ? caseBit : 0;
}

/// How often \a c is met in texts and sources, roughly: 0 for what is rare.
qsizetype frequency(char c)
{
    constexpr std::string_view fromRareToCommon = "xkvwg*=.,);(hybfmpu-dcl_snirotae ";
    return qsizetype(fromRareToCommon.find(c) + 1);
}

#ifdef __SSE2__
constexpr qsizetype stepSize = sizeof(__m128i);

/// Bytes of \a place that are \a wanted once the bits of \a letterCase are set.
__m128i equal(const char *place, __m128i wanted, __m128i letterCase)
{
    const __m128i text = _mm_loadu_si128(reinterpret_cast<const __m128i *>(place));
    return _mm_cmpeq_epi8(_mm_or_si128(text, letterCase), wanted);
}
#endif

} // namespace

ByteNeedle::ByteNeedle(const QByteArray &text, Case letters)
    : needle((letters == Case::Ignored ? text.toLower() : text).left(longest))
    , ignoresCase(letters == Case::Ignored)
{
    for (qsizetype i = 1; i < needle.size(); ++i) {
        if (frequency(needle[i]) < frequency(needle[rarest]))
            rarest = i;
    }
    // Another one, if there is another.
    second = rarest == 0 ? needle.size() - 1 : 0;
    for (qsizetype i = 0; i < needle.size(); ++i) {
        if (i != rarest && frequency(needle[i]) < frequency(needle[second]))
            second = i;
    }
}

bool ByteNeedle::isAt(const char *place) const
{
    if (!ignoresCase)
        return memcmp(place, needle.constData(), size_t(needle.size())) == 0;
    for (const char wanted : needle) {
        const char c = *place++;
        const bool isUpper = c >= 'A' && c <= 'Z';
        if (char(isUpper ? c | caseBit : c) != wanted)
            return false;
    }
    return true;
}

const char *ByteNeedle::findIn(const char *data, qsizetype size) const
{
    if (size < needle.size())
        return nullptr;
    const char *place = data;
    const char *const end = data + size - needle.size() + 1; // of where it can begin
#ifdef __SSE2__
    // Compared only where the two bytes fit that seldom do.
    const auto bitsFor = [this](char c) { return char(ignoresCase ? caseBits(c) : 0); };
    const __m128i wanted1 = _mm_set1_epi8(needle[rarest]);
    const __m128i wanted2 = _mm_set1_epi8(needle[second]);
    const __m128i bits1 = _mm_set1_epi8(bitsFor(needle[rarest]));
    const __m128i bits2 = _mm_set1_epi8(bitsFor(needle[second]));
    for (; end - place >= stepSize; place += stepSize) {
        const __m128i both = _mm_and_si128(equal(place + rarest, wanted1, bits1),
                                           equal(place + second, wanted2, bits2));
        for (auto mask = unsigned(_mm_movemask_epi8(both)); mask != 0; mask &= mask - 1) {
            const char *const candidate = place + std::countr_zero(mask);
            if (isAt(candidate))
                return candidate;
        }
    }
#endif
    for (; place < end; ++place) {
        if (isAt(place))
            return place;
    }
    return nullptr;
}

} // namespace vesk
