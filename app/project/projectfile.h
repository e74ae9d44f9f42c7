#pragma once

#include <QByteArray>
#include <QString>

#include <functional>
#include <optional>

namespace vesk {

/// The file of a project on the disk. It knows what was read or written last, so that
/// nobody else's work is overwritten unasked.
class ProjectFile
{
public:
    enum class Reading
    {
        Done,
        /// There is no such file, or no right to read it, or it is no regular file.
        Unreadable,
        TooLarge
    };

    /// No file, with an empty path.
    ProjectFile() = default;
    /// \a path is absolute.
    explicit ProjectFile(const QString &path) : name(path) {}

    const QString &path() const { return name; }
    /// The folder of the file, without a separator at the end.
    QString dirPath() const;

    /// Whether read() can be expected to succeed.
    Reading canRead() const;
    Reading read(QByteArray *bytes);

    /// True if the file is there with other content than was read or written last.
    bool isChanged() const;
    /// Writes the file whole or not at all. \a begun is called once it is open.
    [[nodiscard]] bool write(const QByteArray &bytes, const std::function<void()> &begun,
                             QString *error);

private:
    QString name;
    QByteArray digest; ///< of the content as far as it is known
};

} // namespace vesk
