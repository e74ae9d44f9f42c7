#include "zvwidgets/zveditor/highlight/highlightsettings.h"

#include <QStringList>
#include <QVariant>

namespace zvwidgets {

HighlightSettings::HighlightSettings() = default;
HighlightSettings::~HighlightSettings() = default;

QString HighlightSettings::localResourcesDir() const
{
    return localResourceDir.isEmpty() ? resourceDir + QLatin1String("/local/") : localResourceDir;
}

void HighlightSettings::setHlSettingsKey(const QString &key)
{
    hlSettings = key;
}

void HighlightSettings::ruleDropped(const QString &, const QString &)
{}

QString highlightSettingsKey(const HighlightSettings *settings)
{
    const QString key = settings ? settings->hlSettingsKey() : QString();
    return key.isEmpty() ? QStringLiteral("/zveditor/hl") : key;
}

QString highlightSetting(const QSettings *config, const QString &key, const QString &defaultValue)
{
    if (!config || !config->contains(key))
        return defaultValue;
    const QVariant stored = config->value(key);
    // An unquoted comma in the file makes a list of the text.
    if (stored.typeId() == QMetaType::QStringList)
        return stored.toStringList().join(QLatin1Char(','));
    return stored.toString();
}

} // namespace zvwidgets
