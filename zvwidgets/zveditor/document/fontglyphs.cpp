#include "zvwidgets/zveditor/document/fontglyphs.h"

namespace zvwidgets {

namespace {

bool standsAlone(QChar c)
{
    if (c.isSurrogate() || c.isMark())
        return false;
    switch (c.category()) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return false;
    default:
        break;
    }
    switch (c.direction()) {
    case QChar::DirR:
    case QChar::DirAL:
        return false;
    default:
        break;
    }
    // Above here are scripts whose letters change with their neighbours.
    switch (c.script()) {
    case QChar::Script_Common:
    case QChar::Script_Latin:
    case QChar::Script_Greek:
    case QChar::Script_Cyrillic:
    case QChar::Script_Armenian:
    case QChar::Script_Georgian:
    case QChar::Script_Han:
    case QChar::Script_Hiragana:
    case QChar::Script_Katakana:
    case QChar::Script_Bopomofo:
        return true;
    default:
        return false;
    }
}

} // namespace

FontGlyphs::FontGlyphs(const QFont &textFont) : font(textFont), metrics(textFont)
{}

const QRawFont &FontGlyphs::rawFont()
{
    if (!raw.isValid())
        raw = QRawFont::fromFont(font);
    return raw;
}

// One by one: most fonts are asked for a few dozen characters, and a character
// that the font lacks is looked for in all others.
const FontGlyphs::Glyph &FontGlyphs::load(QChar c)
{
    std::unique_ptr<Page> &page = pages[c.row()];
    if (!page)
        page = std::make_unique<Page>();
    Glyph &glyph = (*page)[c.cell()];
    glyph.advance = metrics.horizontalAdvance(c);
    int count = 1;
    if (standsAlone(c) && !rawFont().glyphIndexesForChars(&c, 1, &glyph.index, &count))
        glyph.index = 0;
    return glyph;
}

} // namespace zvwidgets
