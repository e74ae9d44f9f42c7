#pragma once

#include <QList>
#include <QString>

namespace vesk {

/// What the disk says of one file or folder; links are followed.
struct FileStatus
{
    enum class Kind
    {
        Missing,
        Folder,
        File,
        /// Pipes, sockets and devices.
        Other
    };

    bool isFolder() const { return kind == Kind::Folder; }

    Kind kind = Kind::Missing;
    bool isReadable = false;
    /// Bytes.
    quint64 size = 0;
    /// Nanoseconds since the epoch.
    qint64 modified = 0;
    /// Of a folder the number of its entries that a listing shows, "." and ".." left
    /// out; -1 if they were not counted.
    int entries = -1;
};

struct FolderEntry
{
    QString name;
    /// Only the kind is certain to be there.
    FileStatus status;
};

/// Reads folders by the bytes of their names, which need not be UTF-8: all texts here
/// are such as decodedPath() makes. Hidden entries are never listed, nor are dangling
/// links and what is neither file nor folder.
class FolderReader
{
public:
    enum class Sort
    {
        Name,
        /// Newest first.
        Date,
        /// Largest first.
        Size
    };
    enum class Detail
    {
        /// No more is asked of the disk than the sorting needs.
        Names,
        /// The whole status of each entry, the entries of folders counted.
        Status
    };

    /// An absolute path without ".", ".." and doubled separators.
    static QString cleanPath(const QString &path);
    /// The same for the root.
    static QString parentOf(const QString &path);
    static QString joined(const QString &folder, const QString &name);
    /// \a path itself, or the nearest folder above it that exists.
    static QString nearestFolder(const QString &path);
    static bool isFolder(const QString &path);
    static bool isWritable(const QString &path);
    /// False if there is an entry of that name or it cannot be made.
    [[nodiscard]] static bool makeFolder(const QString &path);

    /// With the entries of a folder counted if \a detail asks for it. The count in
    /// \a known is taken over for a folder that has not changed since.
    static FileStatus status(const QString &path, Detail detail, const FileStatus &known = {});

    /// Reads the folder at \a path; false if there is none. The result is empty but for
    /// ".." if the folder cannot be read. Folders are sorted by name, with "." left out
    /// and ".." where there is a folder above.
    [[nodiscard]] bool read(const QString &path, Sort sort, Detail detail);

    QList<FolderEntry> folders;
    QList<FolderEntry> files;
};

/// \a name on one line: control characters are replaced by pictures of them.
QString shownName(const QString &name);

} // namespace vesk
