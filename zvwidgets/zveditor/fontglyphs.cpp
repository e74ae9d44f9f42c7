#include "zvwidgets/zveditor/fontglyphs.h"

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

FontGlyphs::FontGlyphs(const QFont &font) : raw(QRawFont::fromFont(font)), metrics(font)
{}

const FontGlyphs::Page &FontGlyphs::load(uchar row)
{
    auto page = std::make_unique<Page>();
    for (int cell = 0; cell < int(page->size()); ++cell) {
        const QChar c(cell, row);
        Glyph &glyph = (*page)[size_t(cell)];
        glyph.advance = metrics.horizontalAdvance(c);
        int count = 1;
        if (standsAlone(c) && !raw.glyphIndexesForChars(&c, 1, &glyph.index, &count))
            glyph.index = 0;
    }
    pages[row] = std::move(page);
    return *pages[row];
}

} // namespace zvwidgets
