#pragma once

#include <array>

#ifdef __SSE2__
#include <QtAlgorithms>
#include <emmintrin.h>
#endif

namespace zvwidgets {

/// The units that a scan is looking for; fewer than four are given repeated.
using WantedUnits = std::array<char16_t, 4>;

/// The first place from \a from on, before \a end, that holds one of \a wanted;
/// \a end if none does.
inline int findAnyUnit(const char16_t *units, int from, int end, const WantedUnits &wanted)
{
#ifdef __SSE2__
    constexpr int lanes = 8;
    const __m128i first = _mm_set1_epi16(short(wanted[0]));
    const __m128i second = _mm_set1_epi16(short(wanted[1]));
    const __m128i third = _mm_set1_epi16(short(wanted[2]));
    const __m128i fourth = _mm_set1_epi16(short(wanted[3]));
    for (; end - from >= lanes; from += lanes) {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i *>(units + from));
        const __m128i some =
            _mm_or_si128(_mm_cmpeq_epi16(block, first), _mm_cmpeq_epi16(block, second));
        const __m128i others =
            _mm_or_si128(_mm_cmpeq_epi16(block, third), _mm_cmpeq_epi16(block, fourth));
        const auto mask = quint32(_mm_movemask_epi8(_mm_or_si128(some, others)));
        if (mask != 0)
            return from + int(qCountTrailingZeroBits(mask)) / 2;
    }
#endif
    while (from < end && units[from] != wanted[0] && units[from] != wanted[1] &&
           units[from] != wanted[2] && units[from] != wanted[3])
        ++from;
    return from;
}

/// True if a unit from \a from on, before \a end, is half of a surrogate pair, or would be
/// if it had its other half.
inline bool holdsSurrogate(const char16_t *units, int from, int end)
{
    constexpr char16_t mask = 0xf800;
    constexpr char16_t surrogate = 0xd800;
#ifdef __SSE2__
    constexpr int lanes = 8;
    const __m128i masks = _mm_set1_epi16(short(mask));
    const __m128i wanted = _mm_set1_epi16(short(surrogate));
    for (; end - from >= lanes; from += lanes) {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i *>(units + from));
        if (_mm_movemask_epi8(_mm_cmpeq_epi16(_mm_and_si128(block, masks), wanted)))
            return true;
    }
#endif
    while (from < end && (units[from] & mask) != surrogate)
        ++from;
    return from < end;
}

} // namespace zvwidgets
