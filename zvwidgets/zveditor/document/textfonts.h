#pragma once

#include <QFont>
#include <QFontMetrics>
#include <QString>

#include <array>
#include <memory>

namespace zvwidgets {

class FontGlyphs;

/// One variant of the text font with what measuring and drawing needs of it.
/// All variants are set up so that the widths of characters add up to the
/// width of their text.
struct FontData
{
    FontData();
    ~FontData();

    void set(const QFont &f, bool bold, bool italic);

    std::unique_ptr<QFont> font;
    std::unique_ptr<QFontMetrics> fm;
    /// Glyphs and advances of single characters, looked up on first use.
    std::unique_ptr<FontGlyphs> glyphs;
    /// Width of every character of a fixed-pitch font, -1 for a proportional
    /// one. Only "W" and "i" are compared.
    int width = -1;
};

/// The text font in four variants. They are made when one is first asked for, as
/// loading fonts takes milliseconds.
class TextFonts
{
public:
    static constexpr int variants = 4;

    TextFonts();
    ~TextFonts();

    /// The font as it was set. Nothing is drawn with it: its family may be missing.
    QFont &font() { return base; }
    /// Variant \a i, 0 to 3: bit 0 is italic, bit 1 bold. Where the family is missing
    /// it is one of fixed pitch.
    QFont &font(int i);
    const FontData &fontData(int i) const;
    /// Advance in pixels in variant \a i.
    int width(int i, QChar c) const;
    int width(int i, const QString &s) const;

protected:
    /// The variants of \a font, not those of the one before, come from now on.
    void replaceFont(const QFont &font);

private:
    Q_DISABLE_COPY_MOVE(TextFonts)
    void make() const;

    QFont base;
    mutable std::array<FontData, variants> fonts;
    mutable bool areMade = false;
};

} // namespace zvwidgets
