#include "zvwidgets/zveditor/highlight/builtindefinitions.h"

#include <QHash>
#include <QResource>
#include <QString>

// Outside of the namespace: the macro declares a function of the resource file.
static void initHighlightResource()
{
    Q_INIT_RESOURCE(highlight);
}

namespace zvwidgets {

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

} // namespace zvwidgets
