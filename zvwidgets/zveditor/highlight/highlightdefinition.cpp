#include "zvwidgets/zveditor/highlight/highlightdefinition.h"

#include "zvwidgets/zveditor/highlight/builtindefinitions.h"
#include "zvwidgets/zveditor/highlight/highlightscanner.h"
#include "zvwidgets/zveditor/pattern/patternsyntax.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QXmlStreamReader>

#include <algorithm>
#include <optional>

namespace zvwidgets {

namespace {

constexpr qint64 maximumFileSize = 8 * 1024 * 1024;

/// A child of one of the sections and what stands in it.
struct Section
{
    struct Child
    {
        QString name;
        QXmlStreamAttributes attributes;
        QList<QXmlStreamAttributes> rules; ///< attributes of its own children
    };
    QList<Child> children;

    /// Number of the child called \a name, 0 if there is none.
    int numberOf(const QString &name) const
    {
        const auto found = std::find_if(children.begin(), children.end(),
                                        [&name](const Child &child) { return child.name == name; });
        return found == children.end() ? 0 : int(found - children.begin());
    }
};

/// The parts of the document that mean something.
struct Document
{
    QXmlStreamAttributes root;
    QHash<QString, Section> sections; ///< of several alike the first
};

QString value(const QXmlStreamAttributes &attributes, const char *name)
{
    return attributes.value(QLatin1String(name)).toString();
}

Section readSection(QXmlStreamReader &xml)
{
    Section section;
    while (xml.readNextStartElement()) {
        Section::Child child{xml.name().toString(), xml.attributes(), {}};
        while (xml.readNextStartElement()) {
            child.rules.append(xml.attributes());
            xml.skipCurrentElement();
        }
        if (section.children.size() < HighlightDefinition::tableSize)
            section.children.append(child);
    }
    return section;
}

/// Nothing if \a data is not well-formed.
std::optional<Document> readDocument(const QByteArray &data)
{
    QXmlStreamReader xml(data);
    xml.setNamespaceProcessing(false);
    Document document;
    if (!xml.readNextStartElement())
        return {};
    document.root = xml.attributes();
    while (xml.readNextStartElement()) {
        const QString name = xml.name().toString();
        const Section section = readSection(xml);
        if (!document.sections.contains(name))
            document.sections.insert(name, section);
    }
    while (!xml.atEnd())
        xml.readNext();
    return xml.hasError() ? std::nullopt : std::optional(document);
}

/// \a pattern bound to the present position. "^" alone would bind only the first of
/// several alternatives, and the length of a match of another one further on would
/// be taken from here.
QString anchored(const QString &pattern)
{
    // A group must not make an expression of one whose own brackets don't match.
    if (!pattern.contains(QLatin1Char('|')) ||
        !parsePattern(pattern, false, TextPattern::Reading::Units))
        return QLatin1Char('^') + pattern;
    return QLatin1String("^(?:") + pattern + QLatin1Char(')');
}

/// Makes the rules of a section; expressions that occur again are shared.
class RuleReader
{
public:
    RuleReader(const Section &section, const Section &itemSection, bool readItems)
        : contexts(section), items(itemSection), withItems(readItems)
    {}

    HighlightDefinition::Contexts read()
    {
        HighlightDefinition::Contexts result;
        for (const Section::Child &child : contexts.children) {
            auto context = std::make_unique<HighlightContext>();
            for (const QXmlStreamAttributes &rule : child.rules)
                context->append(readRule(rule).release());
            result.push_back(std::move(context));
        }
        return result;
    }

private:
    int target(const QXmlStreamAttributes &rule, const char *name) const
    {
        return rule.hasAttribute(QLatin1String(name)) ? contexts.numberOf(value(rule, name)) : -1;
    }

    std::unique_ptr<HighlightItem> readRule(const QXmlStreamAttributes &rule);
    TextPattern expression(const QString &pattern, TextPattern::Options options);

    const Section &contexts;
    const Section &items;
    const bool withItems;
    QHash<std::pair<QString, int>, TextPattern> expressions;
};

std::unique_ptr<HighlightItem> RuleReader::readRule(const QXmlStreamAttributes &rule)
{
    const QString mode = value(rule, "mode");
    const bool until = mode.contains(QLatin1String("until"));
    const int attribute = withItems ? items.numberOf(value(rule, "item")) : 0;
    const int next = target(rule, "lineEndContent");
    const int empty = target(rule, "emptyContent");
    std::unique_ptr<HighlightItem> item;
    if (rule.hasAttribute(QLatin1String("keyword"))) {
        const QStringList words =
            value(rule, "keyword").split(QLatin1Char(' '), Qt::SkipEmptyParts);
        const bool sensitive = value(rule, "caseSensitive") != QLatin1String("false");
        item = std::make_unique<HighlightKeyword>(attribute, next, empty, words, sensitive);
    } else if (until) {
        const bool include = !mode.contains(QLatin1String("exclude"));
        const bool full = mode.contains(QLatin1String("allowfull"));
        item = std::make_unique<HighlightUntilItem>(attribute, next, empty, include, full);
    } else {
        item = std::make_unique<HighlightItem>(attribute, next, empty);
    }
    // A line keeps an attribute for each unit.
    TextPattern::Options options = TextPattern::CodeUnits;
    options.setFlag(TextPattern::CaseInsensitive, mode.contains(QLatin1String("noCaseSensitive")));
    options.setFlag(TextPattern::Minimal, mode.contains(QLatin1String("minimal")));
    const QString pattern = value(rule, "regexp");
    item->regexp = expression(until ? pattern : anchored(pattern), options);
    return item;
}

TextPattern RuleReader::expression(const QString &pattern, TextPattern::Options options)
{
    const auto key = std::pair(pattern, options.toInt());
    const auto known = expressions.constFind(key);
    if (known != expressions.constEnd())
        return *known;
    return *expressions.insert(key, TextPattern(pattern, options));
}

bool keepNotes(const HighlightDefinition::Contexts &contexts)
{
    return std::any_of(contexts.begin(), contexts.end(), [](const auto &context) {
        return std::any_of(context->begin(), context->end(), [](const HighlightItem *item) {
            return item->regexp.isValid() && !item->regexp.automaton();
        });
    });
}

QByteArray definitionData(const QString &name, const QString &resourcesDir)
{
    if (!resourcesDir.isEmpty()) {
        const QByteArray file = readHighlightFile(findHighlightPath(name, resourcesDir));
        if (!file.isNull())
            return file;
    }
    const QByteArray builtIn = qembed_findData(name.toLatin1().constData());
    return builtIn.isEmpty() ? qembed_findData("nohighlight") : builtIn;
}

} // namespace

QString findHighlightPath(const QString &name, const QString &resourceDir)
{
    return QFileInfo(QDir(resourceDir), name).filePath();
}

HighlightDefinition::HighlightDefinition() = default;
HighlightDefinition::~HighlightDefinition() = default;

HighlightHead readHighlightHead(const QByteArray &xml)
{
    const std::optional<Document> document = readDocument(xml);
    if (!document)
        return {};
    return {value(document->root, "name"), value(document->root, "wildcards")};
}

HighlightHead peekHighlightHead(const QByteArray &xml)
{
    QXmlStreamReader reader(xml);
    reader.setNamespaceProcessing(false);
    if (!reader.readNextStartElement())
        return {};
    return {value(reader.attributes(), "name"), value(reader.attributes(), "wildcards")};
}

std::shared_ptr<const HighlightDefinition> readHighlightDefinition(const QByteArray &xml)
{
    auto definition = std::make_shared<HighlightDefinition>();
    const Document document = readDocument(xml).value_or(Document());
    definition->name = value(document.root, "name");
    const Section items = document.sections.value(QStringLiteral("Items"));
    for (const Section::Child &child : items.children)
        definition->items.append({child.name, value(child.attributes, "style"),
                                  value(child.attributes, "color"),
                                  value(child.attributes, "bgcolor")});
    const Section contents = document.sections.value(QStringLiteral("Contents"));
    const Section breaks = document.sections.value(QStringLiteral("Break"));
    definition->contents = RuleReader(contents, items, true).read();
    definition->breaks = RuleReader(breaks, items, false).read();
    definition->canShareBreaks = !keepNotes(definition->breaks);
    definition->contentScanner = std::make_unique<HighlightScanner>(definition->contents);
    definition->breakScanner = std::make_unique<HighlightScanner>(definition->breaks);
    return definition;
}

QByteArray readHighlightFile(const QString &path)
{
    // Opening a pipe would wait for a writer.
    const QFileInfo info(path);
    QFile file(path);
    if (!info.isFile() || info.size() > maximumFileSize || !file.open(QIODevice::ReadOnly))
        return {};
    const QByteArray data = file.read(maximumFileSize);
    return data.isNull() ? QByteArray("") : data;
}

std::shared_ptr<const HighlightDefinition> highlightDefinition(const QString &name,
                                                               const QString &resourcesDir)
{
    static QHash<QString, std::shared_ptr<const HighlightDefinition>> cache;
    std::shared_ptr<const HighlightDefinition> &known = cache[name];
    if (!known)
        known = readHighlightDefinition(definitionData(name, resourcesDir));
    return known;
}

} // namespace zvwidgets
