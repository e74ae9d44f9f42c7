#include "app/project/projectfile.h"

#include "app/project/projectxml.h"
#include "zvwidgets/zvfiles/filesave.h"

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>

namespace vesk {

namespace {

QByteArray digestOf(const QByteArray &bytes)
{
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha1);
}

/// Where a chain of links ends, whether there is a file or not. \a path itself if the
/// chain has no end, which writing then reports.
QString linkEnd(const QString &path)
{
    constexpr int maxLinks = 40;
    QString end = path;
    for (int i = 0; i < maxLinks; ++i) {
        const QFileInfo info(end);
        if (!info.isSymLink())
            return end;
        end = info.symLinkTarget();
    }
    return path;
}

} // namespace

QString ProjectFile::dirPath() const
{
    if (name.isEmpty())
        return QString();
    const QString folder = QFileInfo(name).absolutePath();
    return folder == u'/' ? QString() : folder;
}

ProjectFile::Reading ProjectFile::canRead() const
{
    const QFileInfo info(name);
    // Opening a pipe would wait for somebody who writes to it.
    if (!info.isFile())
        return Reading::Unreadable;
    if (info.size() > ProjectXml::maxFileSize)
        return Reading::TooLarge;
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? Reading::Done : Reading::Unreadable;
}

ProjectFile::Reading ProjectFile::read(QByteArray *bytes)
{
    if (const Reading reading = canRead(); reading != Reading::Done)
        return reading;
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly))
        return Reading::Unreadable;
    // Some files tell no size and have no end.
    *bytes = file.read(ProjectXml::maxFileSize + 1);
    if (bytes->size() > ProjectXml::maxFileSize)
        return Reading::TooLarge;
    if (file.error() != QFileDevice::NoError)
        return Reading::Unreadable;
    digest = digestOf(*bytes);
    return Reading::Done;
}

bool ProjectFile::isChanged() const
{
    if (!QFileInfo::exists(name))
        return false;
    QByteArray bytes;
    ProjectFile now(name);
    return now.read(&bytes) != Reading::Done || now.digest != digest;
}

bool ProjectFile::write(const QByteArray &bytes, const std::function<void()> &begun, QString *error)
{
    const auto write = [&](QIODevice &device, QString *reason) {
        begun();
        if (device.write(bytes) == bytes.size())
            return true;
        *reason = device.errorString();
        return false;
    };
    if (!zvwidgets::saveContent(linkEnd(name), write, error))
        return false;
    digest = digestOf(bytes);
    return true;
}

} // namespace vesk
