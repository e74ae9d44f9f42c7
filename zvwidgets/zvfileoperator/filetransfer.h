#pragma once

#include "zvwidgets/zvfileoperator/filehandle.h"

#include <QByteArray>

#include <functional>
#include <vector>

namespace zvwidgets {

class DeviceFlush;

/// A name in a folder that is open.
struct FilePlace
{
    int folder;
    QByteArray name;
};

/// Copies files and links, one after the other, with mode, times and extended
/// attributes. A link is copied as a link. An existing target is replaced in one
/// step at the end and is whole until then.
class FileTransfer
{
public:
    enum class Target
    {
        New,
        Replace
    };

    enum class Outcome
    {
        Done,
        /// Target::New was asked for, but there is a file of this name by now.
        TargetExists,
        /// Pipes, sockets and devices are never opened.
        SourceRefused,
        TargetRefused,
        ReadFailed,
        WriteFailed,
        CloseFailed,
        /// The progress function wanted no more.
        Stopped
    };

    /// Told of each block the bytes copied. False stops the transfer.
    using Progress = std::function<bool(qint64 bytes)>;

    /// With \a deviceFlush the owner is kept too, as far as the rights allow, and all that
    /// is written is noted there. It must outlive this object.
    explicit FileTransfer(DeviceFlush *deviceFlush = nullptr) : flush(deviceFlush) {}

    Outcome run(const FilePlace &source, const FilePlace &target, Target mode,
                const Progress &progress);

    /// The source as it was before the last transfer, if it was done.
    const struct stat &source() const { return info; }
    /// Whether the source was another one after the transfer.
    bool hasChanged() const { return changed; }
    /// Whether a part of a new target is left after a failure.
    bool leftIncomplete() const { return incomplete; }

    /// Bytes between two looks at the progress function, for a file of \a size bytes.
    static qint64 calcBlockSize(qint64 size);

private:
    Outcome copyLink(const FilePlace &source, const FilePlace &target, Target mode);
    Outcome copyFile(int in, const FilePlace &target, Target mode, const Progress &progress);
    Outcome copyContent(int in, int out, const Progress &progress);
    qint64 copyBlock(int in, int out, qint64 offset, qint64 length, Outcome *failure);
    Outcome complete(int in, FileHandle out);

    DeviceFlush *const flush;
    struct stat info = {};
    bool changed = false;
    bool incomplete = false;
    std::vector<char> buffer;
};

} // namespace zvwidgets
