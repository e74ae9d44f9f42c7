#include "zvwidgets/zveditor/highlight/highlightmanager.h"

#include "zvwidgets/zveditor/highlight.h"
#include "zvwidgets/zveditor/highlight/highlightdefinition.h"
#include "zvwidgets/zveditor/pattern/filemask.h"
#include "zvwidgets/zveditor/textmanager.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QResource>
#include <QSettings>

#include <algorithm>

// Outside of the namespace: the macro declares a function of the resource file.
static void initHighlightResource()
{
    Q_INIT_RESOURCE(highlight);
}

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

std::unique_ptr<HighlightDataDict> TextHighlightManager::buildRegistry(TextEditorManager *manager)
{
    const QString resourcesDir = manager ? manager->resourcesDir() : QString();
    const QSettings *settings = manager ? manager->globalConfig() : nullptr;
    auto registry = std::make_unique<HighlightDataDict>();
    for (const QString &entry : definitionList(resourcesDir)) {
        const HighlightHead head = headOf(entry, resourcesDir);
        if (head.name.isEmpty())
            continue;
        auto data = std::make_unique<HighlightData>();
        data->name = head.name;
        data->path = entry.startsWith(builtInMark) ? entry.mid(1) : entry;
        data->mask = highlightSetting(settings,
                                      highlightSettingsKey(manager) + QLatin1Char('/') + head.name +
                                          QLatin1String(" wildcards"),
                                      head.wildcards);
        registry->insert(std::move(data));
    }
    return registry;
}

HighlightDataDict &TextHighlightManager::highlights(TextEditorManager *manager)
{
    static const std::unique_ptr<HighlightDataDict> highlightingDict = buildRegistry(manager);
    return *highlightingDict;
}

TextHighlight *TextHighlightManager::findHighlight(TextEditorManager *manager,
                                                   const QString &fileName)
{
    const QString baseName = QFileInfo(fileName).fileName();
    for (const HighlightData *data : highlights(manager).entries()) {
        if (matchesFileMasks(data->mask, baseName))
            return std::make_unique<TextHighlight>(data->path, manager).release();
    }
    return highlight(manager, plainTextName());
}

TextHighlight *TextHighlightManager::highlight(TextEditorManager *manager,
                                               const QString &highlightName)
{
    const HighlightDataDict &registry = highlights(manager);
    const HighlightData *data = highlightName.isEmpty() ? nullptr : registry.find(highlightName);
    if (!data)
        data = registry.find(plainTextName());
    const QString path = data ? data->path : QString();
    return std::make_unique<TextHighlight>(path, manager).release();
}

QString findHighlightPath(const QString &name, const QString &resourceDir)
{
    return QFileInfo(QDir(resourceDir), name).filePath();
}

QByteArray qembed_findData(const char *name)
{
    static QHash<QByteArray, QByteArray> dictionary;
    const QByteArray key(name);
    const auto known = dictionary.constFind(key);
    if (known != dictionary.constEnd())
        return *known;
    initHighlightResource();
    const QResource resource(QLatin1String(":/zveditor/highlight/") + QLatin1String(name));
    if (key.isEmpty() || !resource.isValid() || resource.size() <= 0)
        return {};
    QByteArray data = resource.uncompressedData();
    dictionary.insert(key, data);
    return data;
}

QString highlightSettingsKey(const TextEditorManager *manager)
{
    const QString key = manager ? manager->hlSettingsKey() : QString();
    return key.isEmpty() ? QStringLiteral("/zveditor/hl") : key;
}

QString highlightSetting(const QSettings *settings, const QString &key, const QString &defaultValue)
{
    if (!settings || !settings->contains(key))
        return defaultValue;
    const QVariant stored = settings->value(key);
    // An unquoted comma in the file makes a list of the text.
    if (stored.typeId() == QMetaType::QStringList)
        return stored.toStringList().join(QLatin1Char(','));
    return stored.toString();
}

} // namespace zvwidgets
