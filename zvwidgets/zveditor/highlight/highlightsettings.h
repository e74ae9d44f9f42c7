#pragma once

#include <QPointer>
#include <QSettings>
#include <QString>

namespace zvwidgets {

/// Where definitions are looked for and what the user set for them. The shared
/// manager is one; whoever runs definitions alone can make its own. Must outlive
/// the highlights that were made with it.
class HighlightSettings
{
public:
    HighlightSettings();
    virtual ~HighlightSettings();

    /// Where the system's highlight definitions are.
    QString resourcesDir() const { return resourceDir; }
    void setResourcesDir(const QString &dir) { resourceDir = dir; }
    /// "local" below the resources directory if none was set.
    QString localResourcesDir() const;
    void setLocalResourcesDir(const QString &dir) { localResourceDir = dir; }
    virtual void setHlSettingsKey(const QString &key);
    QString hlSettingsKey() const { return hlSettings; }
    /// \a settings is not owned and may be null.
    void setGlobalConfig(QSettings *settings) { config = settings; }
    QSettings *globalConfig() const { return config; }

    /// Called once for each \a expression that a highlight does without from now on,
    /// because it took too long on a line; while a text is measured or painted.
    virtual void ruleDropped(const QString &highlight, const QString &expression);

    QString hlSettings;

private:
    Q_DISABLE_COPY_MOVE(HighlightSettings)

    QString resourceDir;
    QString localResourceDir;
    QPointer<QSettings> config;
};

/// Key of the highlight settings without a trailing "/": the one that \a settings,
/// which may be null, has, or the standard one.
QString highlightSettingsKey(const HighlightSettings *settings);

/// The text of \a config under \a key, \a defaultValue if there is none. \a config
/// may be null.
QString highlightSetting(const QSettings *config, const QString &key, const QString &defaultValue);

} // namespace zvwidgets
