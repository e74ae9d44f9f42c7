#include "zvwidgets/zveditor/highlight.h"

#include "zvwidgets/zveditor/highlight/highlightscanner.h"
#include "zvwidgets/zveditor/highlight/highlightsettings.h"
#include "zvwidgets/zveditor/highlight/textattribute.h"
#include "zvwidgets/zveditor/textline.h"

#include <QSettings>

#include <algorithm>

namespace zvwidgets {

TextHighlight::TextHighlight(const QString &name, HighlightSettings *from)
    : contextList{}
    , ctnList{}
    , attributeList{}
    , settings(from)
    , definition(highlightDefinition(name, settings ? settings->resourcesDir() : QString()))
{
    hname = definition->name;
    createItemData();
    for (size_t i = 0; i < definition->breaks.size(); ++i)
        ctnList[i] = definition->breaks[i].get();
    for (size_t i = 0; i < definition->contents.size(); ++i)
        contextList[i] = definition->contents[i].get();
}

TextHighlight::~TextHighlight()
{
    qDeleteAll(std::begin(attributeList), std::end(attributeList));
}

void TextHighlight::createItemData()
{
    const QSettings *config = settings ? settings->globalConfig() : nullptr;
    const QString prefix = highlightSettingsKey(settings) + QLatin1Char('/') + hname;
    int number = 0;
    for (const HighlightDefinition::Item &item : definition->items) {
        const auto read = [&](const char *field, const QString &fromDefinition) {
            if (hname.isEmpty())
                return fromDefinition;
            return highlightSetting(config,
                                    prefix + QLatin1Char('/') + item.name + QLatin1Char('/') +
                                        QLatin1String(field),
                                    fromDefinition);
        };
        auto attribute = std::make_unique<TextAttribute>();
        const QString style = read("style", item.style);
        const QString background = read("bgcolor", item.bgcolor);
        attribute->itemName = item.name;
        attribute->color = QColor(read("color", item.color));
        attribute->usebg = !background.isEmpty();
        if (attribute->usebg)
            attribute->bgcolor = QColor(background);
        attribute->fontType =
            (style.contains(QLatin1Char('b')) ? 2 : 0) + (style.contains(QLatin1Char('i')) ? 1 : 0);
        attributeList[number++] = attribute.release();
    }
}

int TextHighlight::doHighlight(int ctx, TextLine *textLine)
{
    textLine->resetHighlight(ctx);
    HighlightScanner *const scanner = definition->breakScanner.get();
    const int end = scanner->follow(ctx, QStringView(*textLine), textLine->contextMarks());
    if (scanner->hasDroppedRules())
        tellDropped(scanner);
    return end;
}

/// Each expression is told once, however many views and lines it is dropped in.
void TextHighlight::tellDropped(HighlightScanner *scanner) const
{
    const QStringList expressions = scanner->takeDroppedRules();
    for (const QString &expression : expressions) {
        if (!settings || definition->droppedRules.contains(expression))
            continue;
        definition->droppedRules.insert(expression);
        settings->ruleDropped(hname, expression);
    }
}

void TextHighlight::highlight(TextLine *textLine)
{
    if (textLine->textLength() > 0) {
        ScanMarks *const marks = textLine->colourMarks();
        qint8 *const attributes =
            marks ? textLine->attributesForUpdate() : textLine->attributesForWrite();
        HighlightScanner *const scanner = definition->contentScanner.get();
        scanner->colour(textLine->highlightContext(), QStringView(*textLine), attributes, marks);
        if (scanner->hasDroppedRules())
            tellDropped(scanner);
    }
    textLine->doneHighlight();
}

TextAttribute *TextHighlight::attribute(int n) const
{
    static TextAttribute plain;
    // A line keeps a number in a signed byte.
    if (TextAttribute *found = attributeList[n & (tableSize - 1)])
        return found;
    return attributeList[0] ? attributeList[0] : &plain;
}

} // namespace zvwidgets
