#include "zvwidgets/zvfileoperator/fileoperatorprocess.h"
#include "zvwidgets/zvfiles/filenames.h"

#include <QDir>

#include <algorithm>
#include <dirent.h>
#include <fcntl.h>
#include <memory>

namespace zvwidgets {

namespace {

/// Folders at a deeper level are not visited.
constexpr int deepestLevel = 32;

constexpr int listFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

/// An absolute path without empty components and without a "/" at its end. Empty if
/// there can be no such path.
QByteArray cleaned(const QByteArray &path)
{
    if (path.isEmpty() || path.contains('\0'))
        return {};
    QByteArray result = path.startsWith('/') ? path : encodedPath(QDir::currentPath()) + '/' + path;
    qsizetype end = 0;
    for (const char character : std::as_const(result)) {
        if (character != '/' || end == 0 || result.at(end - 1) != '/')
            result[end++] = character;
    }
    result.truncate(end);
    if (result.size() > 1 && result.endsWith('/'))
        result.chop(1);
    return result;
}

/// Whether \a path names an entry of a folder.
bool isEntry(const QByteArray &path)
{
    const QByteArray name = entryName(path);
    return !name.isEmpty() && name != "." && name != "..";
}

/// The names in \a folder, sorted; false if not all of them could be read.
bool readNames(DIR *folder, QByteArrayList *names)
{
    for (;;) {
        errno = 0;
        const dirent *const entry = ::readdir(folder);
        if (!entry)
            break;
        const QByteArray name(entry->d_name);
        if (name != "." && name != "..")
            names->append(name);
    }
    const bool complete = errno == 0;
    std::sort(names->begin(), names->end());
    return complete;
}

bool hasNameTwice(const QByteArrayList &paths)
{
    // Some file systems take two names for one that differ in case only.
    QSet<QString> names;
    for (const QByteArray &path : paths)
        names.insert(decodedPath(entryName(path)).toCaseFolded());
    return names.size() < paths.size();
}

} // namespace

bool FileOperatorProcess::prepare()
{
    struct stat info;
    if (operation == Operation::Erase) {
        dest = QByteArrayLiteral("/");
    } else {
        dest = cleaned(dest);
        if (dest.isEmpty() || ::stat(dest.constData(), &info) != 0 || !S_ISDIR(info.st_mode))
            return false;
        targets.addRoot(dest);
    }
    quint64 bytes = 0;
    QByteArrayList folders;
    for (QByteArray &path : filePaths) {
        path = cleaned(path);
        if (!isEntry(path) || ::lstat(path.constData(), &info) != 0)
            return false;
        sources.addRoot(parentPath(path));
        if (S_ISDIR(info.st_mode))
            folders.append(path);
        else
            bytes += quint64(info.st_size);
    }
    for (const QByteArray &folder : std::as_const(folders)) {
        if (operation != Operation::Erase && isInside(folder)) {
            questions.intoItself(folder);
            return false;
        }
    }
    watchesCollisions = operation == Operation::Move && hasNameTwice(filePaths);
    update([&](Progress &progress) {
        progress.items = int(filePaths.size());
        progress.totalBytes = qMax(bytes, quint64(1));
    });
    return true;
}

/// Whether the destination is \a folder or lies below it, by whatever path.
bool FileOperatorProcess::isInside(const QByteArray &folder) const
{
    struct stat wanted;
    struct stat here;
    if (::lstat(folder.constData(), &wanted) != 0)
        return false;
    constexpr int flags = O_PATH | O_DIRECTORY | O_CLOEXEC;
    FileHandle place(retried([this] { return ::open(dest.constData(), flags); }));
    while (place.isOpen() && ::fstat(place.get(), &here) == 0) {
        if (isSameFile(here, wanted))
            return true;
        FileHandle above(retried([&place] { return ::openat(place.get(), "..", flags); }));
        struct stat up;
        if (!above.isOpen() || ::fstat(above.get(), &up) != 0 || isSameFile(here, up))
            break;
        place = std::move(above);
    }
    return false;
}

/// Makes the tasks for \a paths. False if the user aborted.
bool FileOperatorProcess::checkFoldersInPaths(const QByteArrayList &paths)
{
    for (const QByteArray &path : paths) {
        const QByteArray toPath =
            operation == Operation::Erase ? dest : joinedPath(dest, entryName(path));
        const FilePlace place = {sources.open(parentPath(path)), entryName(path)};
        struct stat info;
        struct stat target;
        const bool isFolder =
            place.folder >= 0 &&
            ::fstatat(place.folder, place.name.constData(), &info, AT_SYMLINK_NOFOLLOW) == 0 &&
            S_ISDIR(info.st_mode);
        if (!isFolder) {
            tasks.append({path, toPath});
            continue;
        }
        // Its content counts from now on.
        update([](Progress &progress) { --progress.items; });
        if (::lstat(toPath.constData(), &target) == 0 && isSameFile(info, target))
            continue;
        addFolderTasks(path, toPath);
        FileHandle folder(retried(
            [&place] { return ::openat(place.folder, place.name.constData(), listFlags); }));
        if (!addFolderToTaskList(std::move(folder), path, toPath, 0))
            return false;
    }
    return true;
}

void FileOperatorProcess::addFolderTasks(const QByteArray &folderPath,
                                         const QByteArray &toFolderPath)
{
    tasks.append({QByteArray(), toFolderPath});
    tasks.append({folderPath, QByteArray()});
}

/// Adds what \a folder holds, and what its folders hold. False if the user aborted.
bool FileOperatorProcess::addFolderToTaskList(FileHandle folder, const QByteArray &folderPath,
                                              const QByteArray &toFolderPath, int level)
{
    const std::unique_ptr<DIR, int (*)(DIR *)> list(
        folder.isOpen() ? ::fdopendir(folder.get()) : nullptr, &::closedir);
    QByteArrayList names;
    if (list)
        folder.release();
    if ((!list || !readNames(list.get(), &names)) && !couldNotList(folderPath))
        return false;
    if (level > deepestLevel) {
        if (!names.isEmpty())
            notes.append({FileOperatorQuestions::Note::TooDeep, folderPath});
        return true;
    }
    QByteArrayList folders;
    int files = 0;
    quint64 bytes = 0;
    for (const QByteArray &name : std::as_const(names)) {
        const QByteArray path = joinedPath(folderPath, name);
        const QByteArray toPath =
            operation == Operation::Erase ? dest : joinedPath(toFolderPath, name);
        struct stat info = {};
        if (::fstatat(::dirfd(list.get()), name.constData(), &info, AT_SYMLINK_NOFOLLOW) == 0 &&
            S_ISDIR(info.st_mode)) {
            folders.append(name);
            continue;
        }
        tasks.append({path, toPath});
        ++files;
        bytes += quint64(info.st_size);
    }
    update([&](Progress &progress) {
        progress.items += files;
        progress.totalBytes += bytes;
    });
    for (const QByteArray &name : std::as_const(folders)) {
        if (aborted)
            return false;
        const QByteArray path = joinedPath(folderPath, name);
        const QByteArray toPath =
            operation == Operation::Erase ? dest : joinedPath(toFolderPath, name);
        addFolderTasks(path, toPath);
        const int above = ::dirfd(list.get());
        FileHandle below(retried([&] { return ::openat(above, name.constData(), listFlags); }));
        if (!addFolderToTaskList(std::move(below), path, toPath, level + 1))
            return false;
    }
    return !aborted;
}

/// A folder that doesn't show its content is asked about like a file. To be erased it
/// may be empty; if not, its removal asks. False if the user aborted.
bool FileOperatorProcess::couldNotList(const QByteArray &folderPath)
{
    return operation == Operation::Erase || cannotAccess(folderPath) != Step::Abort;
}

} // namespace zvwidgets
