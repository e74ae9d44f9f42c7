#pragma once

#include <QSettings>
#include <QString>
#include <QStringList>

#include <memory>

namespace vesk {

/// The process-wide typed front to the one settings file. Made by the first
/// self(), it lives to the end of the program.
///
/// A full key is keyPrefix() followed by a key that begins with "/". The file
/// belongs to the first component "vesk", which is therefore not written into
/// it. Numbers and bools are stored as strings, so that a value reads the same
/// within the run that wrote it and in the next one.
class Settings : public QSettings
{
    Q_OBJECT
public:
    ~Settings() override;

    static Settings *self();
    /// Writes the file, and reads it again if somebody else changed it.
    static void forceWrite();

    /// The file of the instance: the one set here, else the one named by the
    /// environment variable VESK_SETTINGS, else "vesk/vesk.ini" in the user's
    /// configuration folder. Ends an instance that there is, so that it has to be
    /// called before anybody keeps self().
    static void setFileName(const QString &path);

    static QString &keyPrefix();
    static void setKeyPrefix(const QString &prefix);
    static QString &appName();
    static void setAppName(const QString &name);
    /// Ends with a separator once it was set.
    static QString &installPath();
    static void setInstallPath(const QString &path);

    // In all readers \a ok, where given, becomes true when the key was found
    // with a value that can be read as that type; otherwise the default returns.

    static QStringList readList(const QString &k, bool *ok = nullptr);
    /// Reads a string and splits it at \a sep; empty parts are dropped.
    static QStringList readList(const QString &k, const QChar &sep, bool *ok = nullptr);
    static QString read(const QString &k, const QString &def = QString(), bool *ok = nullptr);
    static int readNum(const QString &k, int def = 0, bool *ok = nullptr);
    static double readDouble(const QString &k, double def = 0, bool *ok = nullptr);
    /// Only "true", "false", "1" and "0" are bools.
    static bool readBool(const QString &k, bool def = false, bool *ok = nullptr);

    // The writers return false, and write nothing, for a key that the file
    // cannot hold: one with "=" or a line end, or of less than two components.

    static bool write(const QString &k, bool v);
    static bool write(const QString &k, double v);
    static bool write(const QString &k, int v);
    static bool write(const QString &k, const char *v);
    static bool write(const QString &k, const QString &v);
    static bool write(const QString &k, const QStringList &v);
    static bool write(const QString &k, const QStringList &v, const QChar &sep);
    /// Removes this one key and leaves those below it. False if there was none.
    static bool remove(const QString &k);

    /// The name of \a fullKey within the file, for those who read it through
    /// QSettings; empty if the file cannot hold it.
    static QString storeKey(const QString &fullKey);
    /// Reads the string of \a fullKey, to which no prefix is added.
    static QString readFull(const QString &fullKey, const QString &def = QString(),
                            bool *ok = nullptr);
    /// Writes the string of \a fullKey, to which no prefix is added.
    static bool writeFull(const QString &fullKey, const QString &v);

private:
    struct Private;

    explicit Settings(const QString &path);

    const std::unique_ptr<Private> d;
};

} // namespace vesk
