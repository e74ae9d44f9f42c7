#include "zvwidgets/zvfileoperator/fileoperatorprocess.h"

#include "zvwidgets/zvfileoperator/fileattributes.h"
#include "zvwidgets/zvfiles/filenames.h"

#include <algorithm>
#include <cstdio>
#include <fcntl.h>

namespace zvwidgets {

namespace {

/// Looks at what may change between two calls are repeated so often.
constexpr int tries = 5;

bool look(const FilePlace &place, struct stat *info, int flags = AT_SYMLINK_NOFOLLOW)
{
    return ::fstatat(place.folder, place.name.constData(), info, flags) == 0;
}

/// Whether the file at \a source is the one that \a target is. A link counts as the
/// file it points to, as putting the link in its place would lose that.
bool areOneFile(const FilePlace &source, const struct stat &from, const struct stat &target)
{
    struct stat pointedTo;
    return isSameFile(from, target) ||
           (S_ISLNK(from.st_mode) && look(source, &pointedTo, 0) && isSameFile(pointedTo, target));
}

/// Fails with EEXIST rather than replace a file that \a replaces doesn't allow.
bool rename(const FilePlace &from, const FilePlace &to, bool replaces)
{
    const auto attempt = [&](unsigned flags) {
        return retried([&] {
            return ::renameat2(from.folder, from.name.constData(), to.folder, to.name.constData(),
                               flags);
        });
    };
    if (!replaces) {
        if (attempt(RENAME_NOREPLACE) == 0)
            return true;
        // Some file systems know only the plain call.
        if (errno != EINVAL && errno != ENOSYS)
            return false;
    }
    return attempt(0) == 0;
}

/// For reading, at a \a folder of FolderHandles.
FileHandle readable(int folder)
{
    if (folder < 0)
        return FileHandle();
    return FileHandle(
        retried([&] { return ::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
}

bool isBelow(const QByteArray &path, const QByteArray &folder)
{
    return path.startsWith(folder) &&
           (path.size() == folder.size() || path.at(folder.size()) == '/');
}

} // namespace

FileOperatorProcess::FileOperatorProcess(Operation wanted, const QByteArrayList &paths,
                                         const QByteArray &destination,
                                         FileOperatorQuestions &asked)
    : operation(wanted)
    , filePaths(paths)
    , dest(destination)
    , questions(asked)
    , transferring(wanted == Operation::Move ? &flush : nullptr)
{}

FileOperatorProcess::Progress FileOperatorProcess::progress() const
{
    const std::lock_guard lock(progressLock);
    return shown;
}

void FileOperatorProcess::begin(const QByteArray &filePath)
{
    update([&](Progress &progress) { progress.filePath = filePath; });
}

bool FileOperatorProcess::run()
{
    const bool ended = prepare() && runOperation();
    finishFolders();
    if (ended && !notes.isEmpty())
        questions.tell(notes);
    return ended;
}

bool FileOperatorProcess::runOperation()
{
    switch (operation) {
    case Operation::Copy:
        return checkFoldersInPaths(filePaths) && transferAll();
    case Operation::Erase:
        return checkFoldersInPaths(filePaths) && eraseAll();
    case Operation::Move:
        break;
    }
    QByteArrayList toCopy;
    if (!moveAll(&toCopy))
        return false;
    if (toCopy.isEmpty())
        return true;
    return checkFoldersInPaths(toCopy) && transferAll() && removeSources();
}

/// False if the user aborted.
bool FileOperatorProcess::transferAll()
{
    for (const FileOperatorTask &task : std::as_const(tasks)) {
        if (aborted)
            return false;
        if (task.filePath.isEmpty())
            createFolder(task.toFilePath);
        else if (task.toFilePath.isEmpty())
            folderTaskDone(task.filePath);
        else if (transfer(task) == Step::Abort)
            return false;
    }
    return !aborted;
}

void FileOperatorProcess::createFolder(const QByteArray &toFolderPath)
{
    pendingFolder.clear();
    const FilePlace place = {targets.open(parentPath(toFolderPath), FolderHandles::Missing::Create),
                             entryName(toFolderPath)};
    // Nobody else may look into it before it has its own mode.
    constexpr mode_t untilComplete = 0700;
    struct stat info;
    const bool made = place.folder >= 0 &&
                      retried([&] {
                          return ::mkdirat(place.folder, place.name.constData(), untilComplete);
                      }) == 0;
    if (made)
        pendingFolder = toFolderPath;
    pendingFolderIsThere =
        made || (place.folder >= 0 && look(place, &info) && S_ISDIR(info.st_mode));
    if (!pendingFolderIsThere)
        notes.append({FileOperatorQuestions::Note::NotMade, toFolderPath});
}

/// The task after createFolder() names the folder's source.
void FileOperatorProcess::folderTaskDone(const QByteArray &folderPath)
{
    if (!pendingFolder.isEmpty())
        madeFolders.append({folderPath, pendingFolder});
    // Without a copy of it even an empty folder has to stay.
    if (pendingFolderIsThere)
        foldersToRemove.append(folderPath);
}

FileOperatorProcess::Step FileOperatorProcess::transfer(const FileOperatorTask &task)
{
    begin(task.filePath);
    const quint64 before = shown.bytes;
    const FilePlace source = {sources.open(parentPath(task.filePath)), entryName(task.filePath)};
    struct stat info = {};
    Step step;
    if (source.folder < 0 || !look(source, &info))
        step = cannotAccess(task.filePath);
    else
        step = transferFrom(source, info, task);
    // Whatever became of it, it is behind us.
    update([&](Progress &progress) {
        progress.bytes = before + quint64(info.st_size);
        --progress.items;
    });
    return step;
}

FileOperatorProcess::Step FileOperatorProcess::transferFrom(const FilePlace &source,
                                                            const struct stat &from,
                                                            const FileOperatorTask &task)
{
    const FilePlace target = {
        targets.open(parentPath(task.toFilePath), FolderHandles::Missing::Create),
        entryName(task.toFilePath)};
    if (target.folder < 0)
        return cannotAccess(task.toFilePath);
    const auto progress = [this](qint64 bytes) {
        update([bytes](Progress &counts) { counts.bytes += quint64(bytes); });
        return !aborted;
    };
    auto outcome = FileTransfer::Outcome::TargetExists;
    for (int i = 0; i < tries && outcome == FileTransfer::Outcome::TargetExists; ++i) {
        struct stat to;
        const bool exists = look(target, &to);
        if (exists) {
            if (areOneFile(source, from, to))
                return Step::Skip;
            const Step step = checkRewrite(task, to);
            if (step != Step::Proceed)
                return step;
            if (!S_ISREG(to.st_mode) && !S_ISLNK(to.st_mode))
                return cannotAccess(task.toFilePath);
        }
        outcome = transferring.run(
            source, target, exists ? FileTransfer::Target::Replace : FileTransfer::Target::New,
            progress);
    }
    if (outcome != FileTransfer::Outcome::Done)
        return failed(outcome, target, task);
    transferred(target, task);
    return Step::Proceed;
}

void FileOperatorProcess::transferred(const FilePlace &target, const FileOperatorTask &task)
{
    if (transferring.hasChanged())
        notes.append({FileOperatorQuestions::Note::Changed, task.filePath});
    else if (operation == Operation::Move)
        filesToRemove.append({task.filePath, transferring.source()});
    struct stat made;
    if (watchesCollisions && look(target, &made))
        movedFiles.insert({made.st_dev, made.st_ino});
}

FileOperatorProcess::Step FileOperatorProcess::checkRewrite(const FileOperatorTask &task,
                                                            const struct stat &target)
{
    // The second phase of a move meets again what was answered in the first.
    if (std::any_of(confirmed.begin(), confirmed.end(),
                    [&target](const auto &known) { return isUnchanged(known, target); }))
        return Step::Proceed;
    if (overwriteAll) {
        if (!replacesMoved(task.toFilePath, target))
            return Step::Proceed;
        notes.append({FileOperatorQuestions::Note::Collision, task.filePath});
        return Step::Skip;
    }
    if (skipOverwriteAll)
        return Step::Skip;
    switch (questions.overwrite(task.toFilePath)) {
    case FileOperatorQuestions::OverwriteAll:
        overwriteAll = true;
        return Step::Proceed;
    case FileOperatorQuestions::Overwrite:
        confirmed.append(target);
        return Step::Proceed;
    case FileOperatorQuestions::SkipAll:
        skipOverwriteAll = true;
        return Step::Skip;
    case FileOperatorQuestions::Skip:
        return Step::Skip;
    case FileOperatorQuestions::Abort:
        break;
    }
    return Step::Abort;
}

/// Notes \a answer for what is to come.
FileOperatorProcess::Step FileOperatorProcess::stepAfter(FileOperatorQuestions::Failure answer)
{
    if (answer == FileOperatorQuestions::Failure::SkipAll)
        skipAll = true;
    return answer == FileOperatorQuestions::Failure::Abort ? Step::Abort : Step::Skip;
}

FileOperatorProcess::Step FileOperatorProcess::cannotAccess(const QByteArray &path)
{
    // The folders may be other ones by now.
    sources.forget();
    targets.forget();
    if (skipAll)
        return Step::Skip;
    return stepAfter(questions.cannotAccess(path, FileOperatorQuestions::OpenError));
}

FileOperatorProcess::Step FileOperatorProcess::cannotDelete(const QByteArray &path)
{
    return skipAll ? Step::Skip : stepAfter(questions.cannotDelete(path));
}

FileOperatorProcess::Step FileOperatorProcess::failed(FileTransfer::Outcome outcome,
                                                      const FilePlace &target,
                                                      const FileOperatorTask &task)
{
    using Outcome = FileTransfer::Outcome;
    if (outcome == Outcome::Stopped)
        return Step::Abort;
    if (outcome == Outcome::SourceRefused)
        return cannotAccess(task.filePath);
    if (outcome == Outcome::TargetRefused || outcome == Outcome::TargetExists)
        return cannotAccess(task.toFilePath);
    Step step = Step::Skip;
    if (!skipAll) {
        const bool isRead = outcome == Outcome::ReadFailed;
        step = stepAfter(questions.transferFailed(isRead ? task.filePath : task.toFilePath,
                                                  isRead ? FileOperatorQuestions::ReadError
                                                  : outcome == Outcome::WriteFailed
                                                      ? FileOperatorQuestions::WriteError
                                                      : FileOperatorQuestions::CloseError));
        if (transferring.leftIncomplete())
            keepsIncomplete = !questions.deleteIncomplete(task.toFilePath);
    }
    if (transferring.leftIncomplete() && !keepsIncomplete)
        (void)retried([&] { return ::unlinkat(target.folder, target.name.constData(), 0); });
    return step;
}

/// Gives the folders made the attributes of their sources, the deepest first, as a
/// folder may get a mode that shuts us out.
void FileOperatorProcess::finishFolders()
{
    for (qsizetype i = madeFolders.size() - 1; i >= 0; --i) {
        const MadeFolder &folder = madeFolders.at(i);
        const int from = sources.open(folder.filePath);
        struct stat info;
        const FileHandle to = readable(targets.open(folder.toFilePath));
        if (from >= 0 && to.isOpen() && ::fstat(from, &info) == 0)
            FileAttributes::copy(readable(from).get(), info, to.get(),
                                 operation == Operation::Move);
    }
    madeFolders.clear();
}

/// Moves what can be renamed and collects the rest. False if the user aborted.
bool FileOperatorProcess::moveAll(QByteArrayList *toCopy)
{
    for (const QByteArray &path : std::as_const(filePaths)) {
        if (aborted)
            return false;
        begin(path);
        const Step step = moveByRename({path, joinedPath(dest, entryName(path))});
        if (step == Step::Abort)
            return false;
        if (step == Step::Proceed)
            toCopy->append(path);
        else
            update([](Progress &progress) { --progress.items; });
    }
    return !aborted;
}

/// Skip if there is nothing left to do, Proceed if it has to be copied.
FileOperatorProcess::Step FileOperatorProcess::moveByRename(const FileOperatorTask &task)
{
    const FilePlace source = {sources.open(parentPath(task.filePath)), entryName(task.filePath)};
    const FilePlace target = {targets.open(parentPath(task.toFilePath)),
                              entryName(task.toFilePath)};
    struct stat from;
    if (source.folder < 0 || target.folder < 0 || !look(source, &from))
        return Step::Proceed;
    for (int i = 0; i < tries; ++i) {
        struct stat to;
        const bool exists = look(target, &to);
        if (exists) {
            if (areOneFile(source, from, to))
                return Step::Skip;
            const Step step = checkRewrite(task, to);
            if (step != Step::Proceed)
                return step;
            if (!S_ISREG(to.st_mode) && !S_ISLNK(to.st_mode) && !S_ISDIR(to.st_mode))
                return Step::Proceed;
        }
        if (rename(source, target, exists)) {
            renamed(task, from);
            return Step::Skip;
        }
        if (exists || errno != EEXIST)
            break;
    }
    return Step::Proceed;
}

void FileOperatorProcess::renamed(const FileOperatorTask &task, const struct stat &info)
{
    if (!S_ISDIR(info.st_mode))
        update([&](Progress &progress) { progress.bytes += quint64(info.st_size); });
    if (watchesCollisions) {
        movedFiles.insert({info.st_dev, info.st_ino});
        movedPaths.append(task.toFilePath);
    }
}

bool FileOperatorProcess::replacesMoved(const QByteArray &target, const struct stat &info) const
{
    if (S_ISDIR(info.st_mode))
        return false;
    return movedFiles.contains({info.st_dev, info.st_ino}) ||
           std::any_of(movedPaths.begin(), movedPaths.end(),
                       [&target](const QByteArray &moved) { return isBelow(target, moved); });
}

bool FileOperatorProcess::removeSources()
{
    finishFolders();
    const FileHandle folder = readable(targets.open(dest));
    if (folder.isOpen())
        flush.add(folder.get());
    if (!flush.flush()) {
        questions.notFlushed();
        return false;
    }
    update([this](Progress &progress) {
        progress.isRemoving = true;
        progress.items = int(filesToRemove.size());
    });
    for (const Copied &file : std::as_const(filesToRemove)) {
        if (aborted)
            return false;
        begin(file.filePath);
        const FilePlace place = {sources.open(parentPath(file.filePath)), entryName(file.filePath)};
        struct stat info;
        if (place.folder >= 0 && look(place, &info)) {
            if (isUnchanged(info, file.info))
                (void)retried([&] { return ::unlinkat(place.folder, place.name.constData(), 0); });
            else
                notes.append({FileOperatorQuestions::Note::Changed, file.filePath});
        }
        update([](Progress &progress) { --progress.items; });
    }
    return removeFolders();
}

bool FileOperatorProcess::eraseAll()
{
    QByteArrayList files;
    for (const FileOperatorTask &task : std::as_const(tasks)) {
        if (!task.filePath.isEmpty())
            (task.toFilePath.isEmpty() ? foldersToRemove : files).append(task.filePath);
    }
    tasks.clear();
    update([&](Progress &progress) {
        progress.isRemoving = true;
        progress.items = int(files.size());
    });
    for (const QByteArray &file : std::as_const(files)) {
        if (aborted)
            return false;
        begin(file);
        const FilePlace place = {sources.open(parentPath(file)), entryName(file)};
        struct stat info = {};
        const bool removed =
            place.folder >= 0 && look(place, &info) &&
            retried([&] { return ::unlinkat(place.folder, place.name.constData(), 0); }) == 0;
        if (!removed && errno != ENOENT && cannotDelete(file) == Step::Abort)
            return false;
        update([&](Progress &progress) {
            progress.bytes += quint64(info.st_size);
            --progress.items;
        });
    }
    return removeFolders();
}

/// The deepest first. After a move what can't be removed just stays.
bool FileOperatorProcess::removeFolders()
{
    std::sort(foldersToRemove.begin(), foldersToRemove.end());
    for (qsizetype i = foldersToRemove.size() - 1; i >= 0; --i) {
        if (aborted)
            return false;
        const QByteArray &folder = foldersToRemove.at(i);
        const FilePlace place = {sources.open(parentPath(folder)), entryName(folder)};
        const bool removed =
            place.folder >= 0 &&
            retried([&] {
                return ::unlinkat(place.folder, place.name.constData(), AT_REMOVEDIR);
            }) == 0;
        if (removed || errno == ENOENT || operation != Operation::Erase || isAboveLeftOut(folder))
            continue;
        if (cannotDelete(folder) == Step::Abort)
            return false;
    }
    return true;
}

/// What is too deep is told at the end, and need not be asked about at each level.
bool FileOperatorProcess::isAboveLeftOut(const QByteArray &folder) const
{
    return std::any_of(notes.begin(), notes.end(), [&folder](const auto &note) {
        return note.first == FileOperatorQuestions::Note::TooDeep && isBelow(note.second, folder);
    });
}

} // namespace zvwidgets
