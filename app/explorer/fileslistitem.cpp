#include "app/explorer/fileslistitem.h"

#include "app/explorer/fileslist.h"
#include "app/filetype.h"
#include "app/utils.h"
#include "zvwidgets/utils.h"

#include <QDateTime>
#include <QPixmapCache>

#include <utility>

namespace vesk {

namespace {

FileType *typeOf(const QString &name, bool isFolder)
{
    FileTypeManager *const types = FileTypeManager::self();
    return isFolder ? types->fileType(QStringLiteral("folder")) : types->findType(name);
}

} // namespace

struct FilesListItem::Private
{
    const FilesList *filesList;
    FileType *fileType = nullptr;
    FileStatus status;
    bool hasStatus = false;
    bool grayed = false;
};

FilesListItem::FilesListItem(const FilesList *owner, const QString &name, const QString &path,
                             int sortIndex, bool isFolder)
    : QTreeWidgetItem(itemType), d(std::make_unique<Private>())
{
    d->filesList = owner;
    init(name, path, sortIndex, isFolder);
}

FilesListItem::~FilesListItem() = default;

void FilesListItem::init(const QString &name, const QString &path, int sortIndex, bool isFolder)
{
    isDir = isFolder;
    fileName = name;
    filePath = path;
    sort_key = sortIndex;
    d->fileType = typeOf(name, isFolder);
    d->hasStatus = false;
    emitDataChanged();
}

void FilesListItem::init(const FileStatus &status, int sortIndex)
{
    sort_key = sortIndex;
    d->status = status;
    d->hasStatus = true;
    if (isDir != status.isFolder()) {
        isDir = status.isFolder();
        d->fileType = typeOf(fileName, isDir);
    }
    emitDataChanged();
}

int FilesListItem::listOrder() const
{
    return isDir ? 0 : d->fileType->listOrder();
}

QString FilesListItem::key(int, bool) const
{
    return QString::asprintf("%05d%06d", listOrder(), sort_key);
}

bool FilesListItem::operator<(const QTreeWidgetItem &other) const
{
    const auto &item = static_cast<const FilesListItem &>(other);
    return std::pair(listOrder(), sort_key) < std::pair(item.listOrder(), item.sort_key);
}

QVariant FilesListItem::data(int column, int role) const
{
    if (column != 0)
        return QTreeWidgetItem::data(column, role);
    if (role == Qt::DisplayRole) {
        const bool isDetailed = d->filesList->viewMode() == FilesList::Detailed;
        return isDetailed ? fileName + QStringLiteral("\n ") : fileName;
    }
    if (role == Qt::DecorationRole)
        return pixmap();
    return QTreeWidgetItem::data(column, role);
}

QPixmap FilesListItem::pixmap() const
{
    const bool isDetailed = d->filesList->viewMode() == FilesList::Detailed;
    const QPixmap normal = isDetailed ? d->fileType->bigPixmap() : d->fileType->pixmap();
    if (!d->grayed)
        return normal;
    // Meant: both sizes share the key, and the one made first serves both.
    const QString cacheKey =
        QStringLiteral("fileType_") + d->fileType->name() + QStringLiteral("__gray");
    QPixmap pale;
    if (QPixmapCache::find(cacheKey, &pale))
        return pale;
    QImage image = normal.toImage();
    pale = QPixmap::fromImage(Utils::makeDisabledImage(image));
    QPixmapCache::insert(cacheKey, pale);
    return pale;
}

FileStatus FilesListItem::status() const
{
    return d->status;
}

FileType *FilesListItem::fileType() const
{
    return d->fileType;
}

QString FilesListItem::date() const
{
    if (!d->hasStatus)
        return {};
    return Utils::humanReadableDateTime(
        QDateTime::fromMSecsSinceEpoch(d->status.modified / 1000000));
}

QString FilesListItem::size() const
{
    if (!d->hasStatus)
        return {};
    return zvwidgets::Utils::humanReadableSize(d->status.size).trimmed();
}

QString FilesListItem::items() const
{
    if (isLocked())
        return FilesList::tr("Locked");
    return d->status.entries < 0 ? QString() : FilesList::tr("%1 Items").arg(d->status.entries);
}

bool FilesListItem::isLocked() const
{
    return d->hasStatus && !isParent() && !d->status.isReadable;
}

bool FilesListItem::isGrayed() const
{
    return d->grayed;
}

void FilesListItem::setGrayed(bool on)
{
    d->grayed = on;
    emitDataChanged();
}

bool FilesListItem::isParent() const
{
    return isDir && fileName == QLatin1String("..");
}

} // namespace vesk
