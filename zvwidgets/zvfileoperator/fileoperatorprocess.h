#pragma once

#include "zvwidgets/zvfileoperator/deviceflush.h"
#include "zvwidgets/zvfileoperator/filetransfer.h"
#include "zvwidgets/zvfileoperator/folderhandles.h"

#include <QByteArrayList>
#include <QList>
#include <QSet>

#include <atomic>
#include <mutex>

namespace zvwidgets {

/// One step of an operation. Without a source a folder is to be made, without a
/// target the source folder is to be removed at the end.
struct FileOperatorTask
{
    QByteArray filePath;
    QByteArray toFilePath;
};

/// What an operation has to ask or to tell. All calls come from the thread that runs
/// the operation, which waits for the answer.
class FileOperatorQuestions
{
public:
    /// The numbers that FileOperator::overwriteWarning() returns.
    enum Overwriting
    {
        Skip = 0,
        SkipAll = 1,
        Overwrite = 2,
        OverwriteAll = 3,
        Abort = 4
    };

    enum class Failure
    {
        Skip,
        SkipAll,
        Abort
    };

    /// The numbers that stand for the state of a device.
    enum DeviceStatus
    {
        ReadError = 1,
        WriteError = 2,
        OpenError = 5,
        CloseError = 8
    };

    /// What is told once at the end.
    enum class Note
    {
        /// Folders that lie too deep and were left out.
        TooDeep,
        /// Files that were changed while they were copied; they are not removed.
        Changed,
        /// Files not moved, as that would have replaced one moved just before.
        Collision,
        /// Folders that could not be made.
        NotMade
    };
    using Notes = QList<std::pair<Note, QByteArray>>;

    virtual ~FileOperatorQuestions() = default;

    virtual Overwriting overwrite(const QByteArray &target) = 0;
    virtual Failure cannotAccess(const QByteArray &path, DeviceStatus status) = 0;
    virtual Failure transferFailed(const QByteArray &path, DeviceStatus status) = 0;
    virtual bool deleteIncomplete(const QByteArray &target) = 0;
    virtual Failure cannotDelete(const QByteArray &path) = 0;
    /// A folder was to be copied or moved into itself; nothing was done.
    virtual void intoItself(const QByteArray &folder) = 0;
    /// What was copied may not have reached the disk, so no source was removed.
    virtual void notFlushed() = 0;
    virtual void tell(const Notes &notes) = 0;
};

/// Copies, moves or erases files and folder trees. It knows no window: one thread calls
/// run(), others may look at the progress and abort.
///
/// Links are entries of their own and never followed, but in the paths that lead to
/// the given ones. A source is removed only when its copy is complete and on the disk.
class FileOperatorProcess
{
public:
    enum class Operation
    {
        Copy,
        Move,
        Erase
    };

    struct Progress
    {
        /// Path of the present source.
        QByteArray filePath;
        /// Items left.
        int items = 0;
        quint64 bytes = 0;
        quint64 totalBytes = 1;
        /// Copies are complete or not needed, and sources are being removed.
        bool isRemoving = false;
    };

    /// \a dest is not used to erase. \a questions must outlive this object.
    FileOperatorProcess(Operation operation, const QByteArrayList &filePaths,
                        const QByteArray &dest, FileOperatorQuestions &questions);

    /// True if the operation ran to its end, whatever was skipped. False without a
    /// question if a path or the destination doesn't exist.
    bool run();
    void abort() { aborted = true; }
    Progress progress() const;

private:
    enum class Step
    {
        Skip,
        Abort,
        Proceed
    };

    /// A source that was copied, as it was then.
    struct Copied
    {
        QByteArray filePath;
        struct stat info;
    };

    struct MadeFolder
    {
        QByteArray filePath;
        QByteArray toFilePath;
    };

    bool prepare();
    bool isInside(const QByteArray &folder) const;
    bool runOperation();

    bool checkFoldersInPaths(const QByteArrayList &paths);
    bool addFolderToTaskList(FileHandle folder, const QByteArray &folderPath,
                             const QByteArray &toFolderPath, int level);
    void addFolderTasks(const QByteArray &folderPath, const QByteArray &toFolderPath);
    bool couldNotList(const QByteArray &folderPath);

    bool transferAll();
    void createFolder(const QByteArray &toFolderPath);
    void folderTaskDone(const QByteArray &folderPath);
    Step transfer(const FileOperatorTask &task);
    Step transferFrom(const FilePlace &source, const struct stat &from,
                      const FileOperatorTask &task);
    void transferred(const FilePlace &target, const FileOperatorTask &task);
    Step checkRewrite(const FileOperatorTask &task, const struct stat &target);
    Step failed(FileTransfer::Outcome outcome, const FilePlace &target,
                const FileOperatorTask &task);
    Step stepAfter(FileOperatorQuestions::Failure answer);
    Step cannotAccess(const QByteArray &path);
    Step cannotDelete(const QByteArray &path);
    void finishFolders();

    bool moveAll(QByteArrayList *toCopy);
    Step moveByRename(const FileOperatorTask &task);
    void renamed(const FileOperatorTask &task, const struct stat &info);
    bool replacesMoved(const QByteArray &target, const struct stat &info) const;
    bool removeSources();

    bool eraseAll();
    bool removeFolders();
    bool isAboveLeftOut(const QByteArray &folder) const;

    template <typename Change>
    void update(const Change &change)
    {
        const std::lock_guard lock(progressLock);
        change(shown);
    }
    void begin(const QByteArray &filePath);

    const Operation operation;
    QByteArrayList filePaths;
    QByteArray dest;
    FileOperatorQuestions &questions;

    QList<FileOperatorTask> tasks;
    QList<Copied> filesToRemove;
    QByteArrayList foldersToRemove;
    QList<MadeFolder> madeFolders;
    /// A folder just made whose source is named by the next task.
    QByteArray pendingFolder;
    bool pendingFolderIsThere = false;
    FileOperatorQuestions::Notes notes;

    bool skipAll = false;
    bool overwriteAll = false;
    bool skipOverwriteAll = false;
    bool keepsIncomplete = false;
    /// The existing targets that the user wanted replaced one by one.
    QList<struct stat> confirmed;
    /// Targets that this move made, if two of its sources have the same name.
    bool watchesCollisions = false;
    QSet<std::pair<dev_t, ino_t>> movedFiles;
    QByteArrayList movedPaths;

    FolderHandles sources;
    FolderHandles targets;
    DeviceFlush flush;
    FileTransfer transferring;

    std::atomic<bool> aborted = false;
    mutable std::mutex progressLock;
    Progress shown;
};

} // namespace zvwidgets
