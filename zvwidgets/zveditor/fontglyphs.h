#pragma once

#include <QChar>
#include <QFontMetrics>
#include <QRawFont>

#include <array>
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
        qint32 advance = 0;
    };

    explicit FontGlyphs(const QFont &font);

    const Glyph &of(QChar c)
    {
        const std::unique_ptr<Page> &page = pages[c.row()];
        return page ? (*page)[c.cell()] : load(c.row())[c.cell()];
    }
    const QRawFont &rawFont() const { return raw; }

private:
    using Page = std::array<Glyph, 256>;

    const Page &load(uchar row);

    QRawFont raw;
    QFontMetrics metrics;
    std::array<std::unique_ptr<Page>, 256> pages;
};

} // namespace zvwidgets
