#include "app/explorer/folderreader.h"

#include "zvwidgets/zvfiles/filenames.h"

#include <QDir>

#include <algorithm>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

namespace vesk {

using zvwidgets::decodedPath;
using zvwidgets::encodedPath;

namespace {

constexpr qint64 nanoseconds = 1000000000;
// A folder that changed this shortly ago may change again within the same time stamp.
constexpr qint64 settledAfter = nanoseconds / 10;

using Folder = std::unique_ptr<DIR, int (*)(DIR *)>;

/// Null if it cannot be read. \a name is relative to \a at unless it is absolute.
Folder openFolder(int at, const char *name)
{
    const int file = ::openat(at, name, O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC);
    DIR *const stream = file < 0 ? nullptr : ::fdopendir(file);
    if (!stream && file >= 0)
        ::close(file);
    return Folder(stream, ::closedir);
}

FileStatus::Kind kindOf(mode_t mode)
{
    if (S_ISDIR(mode))
        return FileStatus::Kind::Folder;
    return S_ISREG(mode) ? FileStatus::Kind::File : FileStatus::Kind::Other;
}

/// Kind, size and time; Missing for a dangling link.
FileStatus plainStatus(int at, const char *name)
{
    struct stat info = {};
    FileStatus status;
    if (::fstatat(at, name, &info, 0) != 0)
        return status;
    status.kind = kindOf(info.st_mode);
    status.size = quint64(info.st_size);
    status.modified = qint64(info.st_mtim.tv_sec) * nanoseconds + info.st_mtim.tv_nsec;
    return status;
}

/// Asks the disk only where the folder itself doesn't tell.
FileStatus::Kind kindOf(int at, const dirent *entry)
{
    if (entry->d_type == DT_DIR)
        return FileStatus::Kind::Folder;
    if (entry->d_type == DT_REG)
        return FileStatus::Kind::File;
    if (entry->d_type == DT_LNK || entry->d_type == DT_UNKNOWN)
        return plainStatus(at, entry->d_name).kind;
    return FileStatus::Kind::Other;
}

bool isListed(FileStatus::Kind kind)
{
    return kind == FileStatus::Kind::Folder || kind == FileStatus::Kind::File;
}

int countEntries(int at, const char *name)
{
    const Folder folder = openFolder(at, name);
    if (!folder)
        return -1;
    int count = 0;
    while (const dirent *const entry = ::readdir(folder.get())) {
        if (entry->d_name[0] != '.' && isListed(kindOf(::dirfd(folder.get()), entry)))
            ++count;
    }
    return count;
}

bool hasSettled(qint64 modified)
{
    timespec now = {};
    ::clock_gettime(CLOCK_REALTIME, &now);
    return qint64(now.tv_sec) * nanoseconds + now.tv_nsec - modified > settledAfter;
}

void addDetail(int at, const char *name, FileStatus *status, const FileStatus &known)
{
    status->isReadable = ::faccessat(at, name, R_OK, AT_EACCESS) == 0;
    if (!status->isFolder() || !status->isReadable)
        return;
    const bool isKnown =
        known.entries >= 0 && known.modified == status->modified && hasSettled(known.modified);
    status->entries = isKnown ? known.entries : countEntries(at, name);
}

bool isBefore(const FolderEntry &a, const FolderEntry &b, FolderReader::Sort sort)
{
    switch (sort) {
    case FolderReader::Sort::Name:
        break;
    case FolderReader::Sort::Date:
        if (a.status.modified != b.status.modified)
            return a.status.modified > b.status.modified;
        break;
    case FolderReader::Sort::Size:
        if (a.status.size != b.status.size)
            return a.status.size > b.status.size;
        break;
    }
    return a.name < b.name;
}

void sortEntries(QList<FolderEntry> *entries, FolderReader::Sort sort)
{
    std::sort(entries->begin(), entries->end(),
              [sort](const FolderEntry &a, const FolderEntry &b) { return isBefore(a, b, sort); });
}

/// Nothing for what is not listed.
FolderEntry entryOf(int at, const dirent *entry, FolderReader::Sort sort,
                    FolderReader::Detail detail)
{
    FolderEntry result;
    const FileStatus::Kind kind = kindOf(at, entry);
    if (!isListed(kind))
        return result;
    const bool isFull = detail == FolderReader::Detail::Status;
    const bool isSortedByStatus =
        sort != FolderReader::Sort::Name && kind == FileStatus::Kind::File;
    if (isFull || isSortedByStatus)
        result.status = plainStatus(at, entry->d_name);
    if (isFull)
        addDetail(at, entry->d_name, &result.status, {});
    // One that went just now stands with nothing known of it, as one that goes later.
    result.status.kind = kind;
    result.name = decodedPath(QByteArray(entry->d_name));
    return result;
}

FolderEntry parentEntry()
{
    FolderEntry parent;
    parent.name = QStringLiteral("..");
    parent.status.kind = FileStatus::Kind::Folder;
    return parent;
}

} // namespace

QString FolderReader::cleanPath(const QString &path)
{
    // Only texts are handled: the toolkit could not find a name of other bytes.
    const bool isAbsolute = path.startsWith(u'/');
    return QDir::cleanPath(isAbsolute ? path : QDir::currentPath() + u'/' + path);
}

QString FolderReader::parentOf(const QString &path)
{
    const qsizetype separator = path.lastIndexOf(u'/');
    return separator > 0 ? path.first(separator) : QStringLiteral("/");
}

QString FolderReader::joined(const QString &folder, const QString &name)
{
    return folder.endsWith(u'/') ? folder + name : folder + u'/' + name;
}

QString FolderReader::nearestFolder(const QString &path)
{
    QString folder = cleanPath(path);
    while (!isFolder(folder) && folder != QLatin1String("/"))
        folder = parentOf(folder);
    return folder;
}

bool FolderReader::isFolder(const QString &path)
{
    return !path.isEmpty() && plainStatus(AT_FDCWD, encodedPath(path).constData()).isFolder();
}

bool FolderReader::isWritable(const QString &path)
{
    return ::faccessat(AT_FDCWD, encodedPath(path).constData(), W_OK, AT_EACCESS) == 0;
}

bool FolderReader::makeFolder(const QString &path)
{
    return ::mkdir(encodedPath(path).constData(), 0777) == 0;
}

FileStatus FolderReader::status(const QString &path, Detail detail, const FileStatus &known)
{
    const QByteArray name = encodedPath(path);
    FileStatus status = plainStatus(AT_FDCWD, name.constData());
    if (detail == Detail::Status)
        addDetail(AT_FDCWD, name.constData(), &status, known);
    else
        status.isReadable = ::faccessat(AT_FDCWD, name.constData(), R_OK, AT_EACCESS) == 0;
    return status;
}

bool FolderReader::read(const QString &path, Sort sort, Detail detail)
{
    folders.clear();
    files.clear();
    const bool isRoot = path == QLatin1String("/");
    const Folder folder = openFolder(AT_FDCWD, encodedPath(path).constData());
    if (!folder && !isFolder(path))
        return false;
    if (!isRoot)
        folders.append(parentEntry());
    while (const dirent *const entry = folder ? ::readdir(folder.get()) : nullptr) {
        if (entry->d_name[0] == '.')
            continue;
        const FolderEntry made = entryOf(::dirfd(folder.get()), entry, sort, detail);
        if (made.status.kind != FileStatus::Kind::Missing)
            (made.status.isFolder() ? folders : files).append(made);
    }
    sortEntries(&folders, Sort::Name);
    sortEntries(&files, sort);
    return true;
}

QString shownName(const QString &name)
{
    constexpr char16_t controlPictures = 0x2400;
    QString shown = name;
    for (QChar &unit : shown) {
        if (unit < u' ')
            unit = QChar(char16_t(controlPictures + unit.unicode()));
        else if (unit == QChar::LineSeparator || unit == QChar::ParagraphSeparator)
            unit = QChar::ReplacementCharacter;
    }
    return shown;
}

} // namespace vesk
