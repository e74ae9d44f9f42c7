#pragma once

#include <QChar>
#include <QFont>
#include <QFontMetrics>
#include <QRawFont>

#include <array>
#include <limits>
#include <memory>

namespace zvwidgets {

/// Glyph and advance of each character of one font by itself, looked up once.
/// Text laid out from these stands where it was measured, character by
/// character, and needs no shaping.
class FontGlyphs
{
public:
    struct Glyph
    {
        /// 0 if the character cannot be drawn by itself: it isn't in the font,
        /// is half a character, or joins or reorders with its neighbours.
        quint32 index = 0;
        /// In pixels.
        qint32 advance = notLoaded;
    };

    explicit FontGlyphs(const QFont &textFont);

    const Glyph &of(QChar c)
    {
        const std::unique_ptr<Page> &page = pages[c.row()];
        if (page && (*page)[c.cell()].advance != notLoaded)
            return (*page)[c.cell()];
        return load(c);
    }
    const QRawFont &rawFont();

private:
    using Page = std::array<Glyph, 256>;

    static constexpr qint32 notLoaded = std::numeric_limits<qint32>::min();

    const Glyph &load(QChar c);

    const QFont font;
    const QFontMetrics metrics;
    /// Invalid until it is first needed.
    QRawFont raw;
    std::array<std::unique_ptr<Page>, 256> pages;
};

} // namespace zvwidgets
