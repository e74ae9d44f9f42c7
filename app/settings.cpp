#include "app/settings.h"

#include "zvwidgets/zvfiles/filenames.h"

#include <QDir>
#include <QFile>
#include <QHash>
#include <QLocale>
#include <QStandardPaths>

#include <algorithm>

namespace vesk {

struct Settings::Private
{
    // Never destroyed: an instance still alive when the process ends would
    // reach for the toolkit's own store after that is gone.
    static std::unique_ptr<Settings> &self()
    {
        static auto *const holder = new std::unique_ptr<Settings>;
        return *holder;
    }

    static QString &fileName()
    {
        static QString path;
        return path;
    }

    static QString currentPath();
    static QVariant stored(const QString &text);
    static QString text(const QVariant &stored);
    static QVariant value(const QString &fullKey, bool *found);
    static bool setValue(const QString &fullKey, const QVariant &value);
    static void keepDamagedFile(const QString &path);
};

QString Settings::Private::currentPath()
{
    if (!fileName().isEmpty())
        return fileName();
    const QString fromEnvironment = qEnvironmentVariable("VESK_SETTINGS");
    if (!fromEnvironment.isEmpty())
        return fromEnvironment;
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/vesk/vesk.ini");
}

/// The file is UTF-8. A path with units for bytes that are none is stored as its bytes.
QVariant Settings::Private::stored(const QString &text)
{
    return text.isValidUtf16() ? QVariant(text) : QVariant(zvwidgets::encodedPath(text));
}

QString Settings::Private::text(const QVariant &stored)
{
    if (stored.metaType().id() == QMetaType::QByteArray)
        return zvwidgets::decodedPath(stored.toByteArray());
    return stored.toString();
}

// The first component stands for a file. All live in this one: "vesk" is dropped,
// any other moves into a section where it meets no key of "vesk".
QString Settings::storeKey(const QString &fullKey)
{
    if (fullKey.contains(QLatin1Char('=')) || fullKey.contains(QLatin1Char('\n')) ||
        fullKey.contains(QLatin1Char('\r')))
        return {};
    QStringList parts = fullKey.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    if (parts.size() < 2)
        return {};
    if (parts.first() == QLatin1String("vesk"))
        parts.removeFirst();
    else
        parts.prepend(QStringLiteral("other"));
    return parts.join(QLatin1Char('/'));
}

QVariant Settings::Private::value(const QString &fullKey, bool *found)
{
    const QString key = storeKey(fullKey);
    const bool isThere = !key.isEmpty() && Settings::self()->contains(key);
    if (found)
        *found = isThere;
    return isThere ? Settings::self()->QSettings::value(key) : QVariant();
}

bool Settings::Private::setValue(const QString &fullKey, const QVariant &value)
{
    const QString key = storeKey(fullKey);
    if (key.isEmpty())
        return false;
    Settings::self()->QSettings::setValue(key, value);
    return true;
}

/// The next write keeps only what could be read, so the rest is saved beside.
void Settings::Private::keepDamagedFile(const QString &path)
{
    const QString copy = path + QStringLiteral(".damaged");
    QFile::remove(copy);
    if (!QFile::copy(path, copy))
        qWarning("Settings: %s is damaged and cannot be copied", qPrintable(path));
}

Settings::Settings(const QString &path) : QSettings(path, QSettings::IniFormat)
{
    setAtomicSyncRequired(false);
    // Sections are parsed when first asked for; all at once shows damage in time.
    allKeys();
    if (status() == QSettings::FormatError)
        Private::keepDamagedFile(path);
}

Settings::~Settings() = default;

Settings *Settings::self()
{
    std::unique_ptr<Settings> &instance = Private::self();
    if (!instance)
        instance.reset(new Settings(Private::currentPath()));
    return instance.get();
}

void Settings::forceWrite()
{
    if (const std::unique_ptr<Settings> &instance = Private::self())
        instance->sync();
}

void Settings::setFileName(const QString &path)
{
    Private::fileName() = path;
    Private::self().reset();
}

QString &Settings::keyPrefix()
{
    static QString prefix = QStringLiteral("/");
    return prefix;
}

void Settings::setKeyPrefix(const QString &prefix)
{
    keyPrefix() = prefix;
}

QString &Settings::appName()
{
    static QString name = QStringLiteral("vesk");
    return name;
}

void Settings::setAppName(const QString &name)
{
    appName() = name;
}

QString &Settings::installPath()
{
    static QString path;
    return path;
}

void Settings::setInstallPath(const QString &path)
{
    installPath() = path.endsWith(QDir::separator()) ? path : path + QDir::separator();
}

QStringList Settings::readList(const QString &k, bool *ok)
{
    const QVariant value = Private::value(keyPrefix() + k, ok);
    if (value.metaType().id() != QMetaType::QVariantList)
        return value.toStringList();
    QStringList texts;
    const QVariantList parts = value.toList();
    for (const QVariant &part : parts)
        texts.append(Private::text(part));
    return texts;
}

QStringList Settings::readList(const QString &k, const QChar &sep, bool *ok)
{
    return read(k, QString(), ok).split(sep, Qt::SkipEmptyParts);
}

QString Settings::read(const QString &k, const QString &def, bool *ok)
{
    return readFull(keyPrefix() + k, def, ok);
}

QString Settings::readFull(const QString &fullKey, const QString &def, bool *ok)
{
    bool found = false;
    const QVariant value = Private::value(fullKey, &found);
    if (ok)
        *ok = found;
    if (!found)
        return def;
    // A comma that a user typed without quotes makes a list of a plain text.
    if (value.metaType().id() == QMetaType::QStringList)
        return value.toStringList().join(QLatin1Char(','));
    return Private::text(value);
}

int Settings::readNum(const QString &k, int def, bool *ok)
{
    bool isNumber = false;
    const int value = read(k).trimmed().toInt(&isNumber);
    if (ok)
        *ok = isNumber;
    return isNumber ? value : def;
}

double Settings::readDouble(const QString &k, double def, bool *ok)
{
    bool isNumber = false;
    const double value = read(k).trimmed().toDouble(&isNumber);
    if (ok)
        *ok = isNumber;
    return isNumber ? value : def;
}

bool Settings::readBool(const QString &k, bool def, bool *ok)
{
    const QString text = read(k);
    const bool isTrue = text == QLatin1String("true") || text == QLatin1String("1");
    const bool isFalse = text == QLatin1String("false") || text == QLatin1String("0");
    if (ok)
        *ok = isTrue || isFalse;
    return isTrue || (def && !isFalse);
}

bool Settings::write(const QString &k, bool v)
{
    return write(k, v ? QStringLiteral("true") : QStringLiteral("false"));
}

bool Settings::write(const QString &k, double v)
{
    return write(k, QString::number(v, 'g', QLocale::FloatingPointShortest));
}

bool Settings::write(const QString &k, int v)
{
    return write(k, QString::number(v));
}

bool Settings::write(const QString &k, const char *v)
{
    return write(k, QString::fromUtf8(v));
}

bool Settings::write(const QString &k, const QString &v)
{
    return writeFull(keyPrefix() + k, v);
}

bool Settings::write(const QString &k, const QStringList &v)
{
    if (std::all_of(v.cbegin(), v.cend(), [](const QString &text) { return text.isValidUtf16(); }))
        return Private::setValue(keyPrefix() + k, v);
    QVariantList parts;
    for (const QString &text : v)
        parts.append(Private::stored(text));
    return Private::setValue(keyPrefix() + k, parts);
}

bool Settings::write(const QString &k, const QStringList &v, const QChar &sep)
{
    return write(k, v.join(sep));
}

bool Settings::writeFull(const QString &fullKey, const QString &v)
{
    return Private::setValue(fullKey, Private::stored(v));
}

bool Settings::remove(const QString &k)
{
    const QString key = storeKey(keyPrefix() + k);
    Settings *const store = self();
    if (key.isEmpty() || !store->contains(key))
        return false;
    // The toolkit's remove() takes everything below the key along.
    QHash<QString, QVariant> below;
    store->beginGroup(key);
    const QStringList names = store->allKeys();
    for (const QString &name : names)
        below.insert(name, store->value(name));
    store->endGroup();
    store->QSettings::remove(key);
    for (auto it = below.cbegin(); it != below.cend(); ++it)
        store->setValue(key + QLatin1Char('/') + it.key(), it.value());
    return true;
}

} // namespace vesk
