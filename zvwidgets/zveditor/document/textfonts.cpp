#include "zvwidgets/zveditor/document/textfonts.h"

#include "zvwidgets/zveditor/document/fontglyphs.h"

#include <QFontDatabase>
#include <QFontInfo>

namespace zvwidgets {

namespace {

constexpr int italicBit = 1;
constexpr int boldBit = 2;

/// Without these advances are fractions that depend on the neighbour, and no sum
/// of them finds a column again.
void setWholeAdvances(QFont *f)
{
    f->setKerning(false);
    f->setHintingPreference(QFont::PreferFullHinting);
}

/// As it is drawn, so that asking loads no other font than the one in use. A
/// family that is unknown needs no loading at all, which takes a millisecond.
bool isInstalled(QFont f)
{
    setWholeAdvances(&f);
    return QFontDatabase::hasFamily(f.family()) && QFontInfo(f).exactMatch();
}

/// Of a family that is not there the toolkit would make a proportional one.
QFont withFixedFallback(QFont f)
{
    if (!isInstalled(f)) {
        f.setStyleHint(QFont::TypeWriter);
        f.setFixedPitch(true);
    }
    return f;
}

} // namespace

FontData::FontData() = default;
FontData::~FontData() = default;

void FontData::set(const QFont &f, bool bold, bool italic)
{
    font = std::make_unique<QFont>(f);
    font->setBold(bold);
    font->setItalic(italic);
    setWholeAdvances(font.get());
    fm = std::make_unique<QFontMetrics>(*font);
    glyphs = std::make_unique<FontGlyphs>(*font);
    width = fm->horizontalAdvance(QLatin1Char('W'));
    if (fm->horizontalAdvance(QLatin1Char('i')) != width)
        width = -1;
}

TextFonts::TextFonts() = default;
TextFonts::~TextFonts() = default;

void TextFonts::replaceFont(const QFont &font)
{
    base = font;
    areMade = false;
}

void TextFonts::make() const
{
    if (areMade)
        return;
    areMade = true;
    const QFont drawn = withFixedFallback(base);
    for (int i = 0; i < variants; ++i)
        fonts[size_t(i)].set(drawn, i & boldBit, i & italicBit);
}

QFont &TextFonts::font(int i)
{
    make();
    return *fonts[size_t(i)].font;
}

const FontData &TextFonts::fontData(int i) const
{
    make();
    return fonts[size_t(i)];
}

int TextFonts::width(int i, QChar c) const
{
    const FontData &data = fontData(i);
    return data.width >= 0 ? data.width : data.glyphs->of(c).advance;
}

int TextFonts::width(int i, const QString &s) const
{
    const FontData &data = fontData(i);
    if (data.width >= 0)
        return int(s.length()) * data.width;
    int sum = 0;
    for (const QChar c : s)
        sum += data.glyphs->of(c).advance;
    return sum;
}

} // namespace zvwidgets
