#pragma once

#include <QByteArrayView>
#include <QHash>
#include <QString>
#include <QStringList>

namespace vesk {

/// A line of a file.
struct OutputReference
{
    QString file;
    int line = -1; ///< counts from 1; -1 for no reference
};

/// Finds the places in files that programs name in their output, in the forms of
/// compilers, linkers, build tools, interpreters and search tools.
///
/// A form counts only if its file exists: relative names are looked for in the folders
/// that the build tool entered, the last one first, and in the working folder.
class OutputReferences
{
public:
    /// \a folder is the working folder of the program.
    explicit OutputReferences(const QString &folder);

    /// Notes which folders the build tool enters and leaves in \a lines. To be called
    /// with all lines, in their order.
    void follow(QByteArrayView lines);
    /// The place that \a line, which was followed, names. The file's path is absolute.
    OutputReference find(const QString &line);
    /// Forgets which files exist: a build makes some.
    void forgetFiles() { known.clear(); }

private:
    void followLine(QByteArrayView line);
    /// Empty if there is no such file.
    QString existing(const QString &name);

    /// The working folder first.
    QStringList folders;
    QHash<QString, QString> known;
};

} // namespace vesk
