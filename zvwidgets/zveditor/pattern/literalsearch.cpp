#include "zvwidgets/zveditor/pattern/literalsearch.h"

#include <algorithm>
#include <bit>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace zvwidgets {

namespace {

#ifdef __SSE2__
/// Units looked at in one step.
constexpr qsizetype stepSize = 8;

/// One of up to three units, in every lane.
struct Lanes
{
    explicit Lanes(const char16_t *units)
        : a(_mm_set1_epi16(short(units[0])))
        , b(_mm_set1_epi16(short(units[1])))
        , c(_mm_set1_epi16(short(units[2])))
    {}
    __m128i equal(const QChar *place) const
    {
        const __m128i text = _mm_loadu_si128(reinterpret_cast<const __m128i *>(place));
        const __m128i ab = _mm_or_si128(_mm_cmpeq_epi16(text, a), _mm_cmpeq_epi16(text, b));
        return _mm_or_si128(ab, _mm_cmpeq_epi16(text, c));
    }

    __m128i a;
    __m128i b;
    __m128i c;
};
#endif

} // namespace

LiteralSearch::LiteralSearch(const QString &text, Qt::CaseSensitivity cs)
    : needle(text), sensitivity(cs)
{
    if (needle.isEmpty())
        return;
    if (cs == Qt::CaseSensitive) {
        const char16_t f = needle.front().unicode();
        const char16_t l = needle.back().unicode();
        first = {{f, f, f}};
        last = {{l, l, l}};
        direct = true;
        return;
    }
    direct = alternativesOf(needle.front(), &first) && alternativesOf(needle.back(), &last);
}

/// False for characters that may have more equals than fit, which are those
/// outside ASCII. Two letters have a third equal there.
bool LiteralSearch::alternativesOf(QChar c, Alternatives *out)
{
    constexpr char16_t kelvinSign = 0x212a;
    constexpr char16_t longS = 0x017f;
    if (c.unicode() > 127)
        return false;
    const char16_t lower = c.toLower().unicode();
    const char16_t upper = c.toUpper().unicode();
    const char16_t third = lower == u'k' ? kelvinSign : lower == u's' ? longS : upper;
    *out = {{lower, upper, third}};
    return true;
}

bool LiteralSearch::matchesAt(const QChar *place) const
{
    return QStringView(place, needle.size()).compare(needle, sensitivity) == 0;
}

qsizetype LiteralSearch::indexIn(QStringView line, qsizetype from) const
{
    if (needle.isEmpty() || from < 0 || from > line.size() - needle.size())
        return -1;
    return direct ? scan(line, from) : line.indexOf(needle, from, sensitivity);
}

/// Compares the needle only where both its first and its last character fit.
qsizetype LiteralSearch::scan(QStringView line, qsizetype from) const
{
    const QChar *const begin = line.data();
    const qsizetype tail = needle.size() - 1;
    const qsizetype lastStart = line.size() - needle.size();
    qsizetype column = from;
#ifdef __SSE2__
    const Lanes firstLanes(first.units);
    const Lanes lastLanes(last.units);
    for (; column + stepSize - 1 <= lastStart; column += stepSize) {
        const __m128i both =
            _mm_and_si128(firstLanes.equal(begin + column), lastLanes.equal(begin + column + tail));
        // Two bits for each unit.
        auto mask = unsigned(_mm_movemask_epi8(both));
        while (mask != 0) {
            const int unit = std::countr_zero(mask) / 2;
            if (matchesAt(begin + column + unit))
                return column + unit;
            mask &= ~(3U << (2 * unit));
        }
    }
#endif
    const auto fits = [](const Alternatives &alternatives, QChar c) {
        return std::find(std::begin(alternatives.units), std::end(alternatives.units),
                         c.unicode()) != std::end(alternatives.units);
    };
    for (; column <= lastStart; ++column) {
        if (fits(first, begin[column]) && fits(last, begin[column + tail]) &&
            matchesAt(begin + column))
            return column;
    }
    return -1;
}

} // namespace zvwidgets
