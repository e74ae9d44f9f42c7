#include "zvwidgets/zveditor/highlight/highlightmanager.h"

#include "zvwidgets/zveditor/highlight.h"
#include "zvwidgets/zveditor/highlight/builtindefinitions.h"
#include "zvwidgets/zveditor/highlight/highlightdefinition.h"
#include "zvwidgets/zveditor/highlight/highlightsettings.h"
#include "zvwidgets/zveditor/pattern/filemask.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace zvwidgets {

namespace {

/// Marks an entry of the list of definitions as built-in.
constexpr QLatin1Char builtInMark('+');

/// In the order they are registered; "nohighlight" always comes last.
constexpr const char *builtInKeys[] = {"cfm",   "ch",    "cpp",    "dtml",  "html",   "java", "jsp",
                                       "perl",  "php",   "python", "ruby",  "tex",    "xml",  "db2",
                                       "mysql", "pgsql", "plsql",  "sbsql", "msssql", "sql"};

QLatin1String plainTextName()
{
    return QLatin1String("NoHighlight");
}

/// Hash of \a name, whose remainder decides the order of iteration.
quint32 nameHash(const QString &name)
{
    quint32 hash = 0;
    for (const QChar ch : name) {
        hash = (hash << 4) + ch.cell();
        const quint32 top = hash & 0xf0000000;
        hash ^= top >> 24;
        hash &= ~top;
    }
    return hash;
}

/// File names and marked keys in the order they are to be registered.
QStringList definitionList(const QString &resourcesDir)
{
    QStringList list;
    // An empty name would be the folder the program was started in.
    if (!resourcesDir.isEmpty() && QDir(resourcesDir).exists())
        list = QDir(resourcesDir).entryList(QDir::Files);
    for (const char *key : builtInKeys) {
        if (!list.contains(QLatin1String(key)))
            list.append(builtInMark + QLatin1String(key));
    }
    list.append(builtInMark + QLatin1String("nohighlight"));
    list.removeDuplicates();
    return list;
}

/// Name and masks of an entry of definitionList(); no name if it is not to be used.
HighlightHead headOf(const QString &entry, const QString &resourcesDir)
{
    if (entry.startsWith(builtInMark))
        return peekHighlightHead(qembed_findData(entry.mid(1).toLatin1().constData()));
    HighlightHead head =
        readHighlightHead(readHighlightFile(findHighlightPath(entry, resourcesDir)));
    // What everything falls back to cannot be replaced.
    return head.name == plainTextName() ? HighlightHead() : head;
}

} // namespace

HighlightDataDict::HighlightDataDict() = default;
HighlightDataDict::~HighlightDataDict() = default;

void HighlightDataDict::insert(std::unique_ptr<HighlightData> data)
{
    auto &chain = chains[nameHash(data->name) % chainCount];
    chain.push_back(std::move(data));
}

HighlightData *HighlightDataDict::find(const QString &name) const
{
    const auto &chain = chains[nameHash(name) % chainCount];
    const auto found = std::find_if(chain.rbegin(), chain.rend(),
                                    [&name](const auto &data) { return data->name == name; });
    return found == chain.rend() ? nullptr : found->get();
}

QList<HighlightData *> HighlightDataDict::entries() const
{
    QList<HighlightData *> list;
    for (const auto &chain : chains) {
        for (auto data = chain.rbegin(); data != chain.rend(); ++data)
            list.append(data->get());
    }
    return list;
}

QStringList HighlightDataDict::keys() const
{
    QStringList names;
    for (const HighlightData *data : entries())
        names.append(data->name);
    return names;
}

int HighlightDataDict::count() const
{
    return int(entries().size());
}

std::unique_ptr<HighlightDataDict> TextHighlightManager::buildRegistry(HighlightSettings *settings)
{
    const QString resourcesDir = settings ? settings->resourcesDir() : QString();
    const QSettings *config = settings ? settings->globalConfig() : nullptr;
    auto registry = std::make_unique<HighlightDataDict>();
    for (const QString &entry : definitionList(resourcesDir)) {
        const HighlightHead head = headOf(entry, resourcesDir);
        if (head.name.isEmpty())
            continue;
        auto data = std::make_unique<HighlightData>();
        data->name = head.name;
        data->path = entry.startsWith(builtInMark) ? entry.mid(1) : entry;
        data->mask = highlightSetting(config,
                                      highlightSettingsKey(settings) + QLatin1Char('/') +
                                          head.name + QLatin1String(" wildcards"),
                                      head.wildcards);
        registry->insert(std::move(data));
    }
    return registry;
}

HighlightDataDict &TextHighlightManager::highlights(HighlightSettings *settings)
{
    static const std::unique_ptr<HighlightDataDict> highlightingDict = buildRegistry(settings);
    return *highlightingDict;
}

TextHighlight *TextHighlightManager::findHighlight(HighlightSettings *settings,
                                                   const QString &fileName)
{
    const QString baseName = QFileInfo(fileName).fileName();
    for (const HighlightData *data : highlights(settings).entries()) {
        if (matchesFileMasks(data->mask, baseName))
            return std::make_unique<TextHighlight>(data->path, settings).release();
    }
    return highlight(settings, plainTextName());
}

TextHighlight *TextHighlightManager::highlight(HighlightSettings *settings,
                                               const QString &highlightName)
{
    const HighlightDataDict &registry = highlights(settings);
    const HighlightData *data = highlightName.isEmpty() ? nullptr : registry.find(highlightName);
    if (!data)
        data = registry.find(plainTextName());
    const QString path = data ? data->path : QString();
    return std::make_unique<TextHighlight>(path, settings).release();
}

} // namespace zvwidgets
