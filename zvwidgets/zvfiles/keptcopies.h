#pragma once

#include "zvwidgets/zvfiles/posixfile.h"

#include <QByteArray>
#include <QString>

#include <vector>

namespace zvwidgets {

/// The former and the new content of a file, kept under names of their own while the
/// file is overwritten. If the process ends amidst that, InterruptedSave finds them.
///
/// They are in the folder of the file, or if that cannot be written in the program's
/// folder for state, and only their owner may read them. The latter folder also gets
/// a record of them, which is locked as long as this object lives.
class KeptCopies
{
public:
    /// \a target is the file that is to be overwritten.
    explicit KeptCopies(const QByteArray &target) : path(target) {}
    KeptCopies(const KeptCopies &) = delete;
    KeptCopies &operator=(const KeptCopies &) = delete;
    /// Removes both copies unless they are to be kept.
    ~KeptCopies();

    /// Makes both, still empty. False, with errno, on failure.
    [[nodiscard]] bool make();
    /// To be called when both are written, before the file changes: gets them to the
    /// disk. False, with errno, on failure.
    [[nodiscard]] bool settle();
    /// They stay when this object goes.
    void keep() { areKept = true; }

    int former() const { return formerFile.descriptor(); }
    int fresh() const { return freshFile.descriptor(); }
    QString formerPath() const;

private:
    bool makeRecord();
    bool writeRecord();
    bool makeIn(const QByteArray &folder);
    void removeCopies();

    const QByteArray path;
    QByteArray formerName;
    QByteArray freshName;
    OpenFile formerFile;
    OpenFile freshFile;
    QByteArray recordName; ///< empty if no record could be made
    OpenFile record;
    bool areKept = false;
};

/// A save of a process that ended while it wrote over a file. As long as this object
/// lives no other process finds the same one.
class InterruptedSave
{
public:
    /// Those of all processes that have ended, without those that need nobody: where
    /// the file wasn't touched yet, or was written whole, copies are just removed.
    static std::vector<InterruptedSave> findAll();

    QString target() const;
    /// Paths of the copies; empty if a copy is no longer there.
    QString former() const;
    QString fresh() const;

    /// Writes the former or the new content into the file. On success both copies are
    /// removed; on failure all stays as it is, and the answer is false with \a error.
    [[nodiscard]] bool restoreFormer(QString *error);
    [[nodiscard]] bool restoreFresh(QString *error);
    /// Leaves the file as it is and the copies where they are; it is not found again.
    void dismiss();

private:
    struct Record
    {
        QByteArray name;
        OpenFile file;
        QByteArray target;
        QByteArray former;
        QByteArray fresh;
        bool areSettled = false;
    };

    explicit InterruptedSave(Record found) : record(std::move(found)) {}
    static bool read(Record *record);
    bool isOutOfReach() const;
    bool needsNobody() const;
    bool restore(const QByteArray &copy, QString *error);
    void remove();

    Record record;
};

} // namespace zvwidgets
