#pragma once

#include <QObject>
#include <QStringList>

#include <memory>

class QWidget;

namespace zvwidgets {

/// Copies, moves and deletes files and folder trees, and asks about what stands in
/// the way. Each operation is one call that returns when it has ended; meanwhile the
/// interface goes on working, and from half a second on a progress window is shown.
///
/// One operation runs at a time. One that is started from within another, by what the
/// user does meanwhile, waits for its turn; the calls return in reverse order. A call
/// returns only when its work has ended, also if the application is told to quit.
///
/// The work is done by a thread of its own; all calls are made on the main thread.
/// A path may hold lone units for bytes that are no UTF-8, see decodedPath().
class FileOperator : public QObject
{
    Q_OBJECT
public:
    /// Made by the first call, which needs an application, and there until the
    /// program ends.
    static FileOperator *self();
    ~FileOperator() override;

    /// True if the operation ran to its end, even if files were skipped; false if it
    /// was aborted, or if a path or \a dest doesn't exist, which is not told.
    bool copy(const QStringList &filePaths, const QString &dest);
    bool move(const QStringList &filePaths, const QString &dest);
    bool erase(const QStringList &filePaths);

    /// Whether any operation has not ended. Leaving the program then leaves work undone
    /// that the user asked for.
    bool isRunning() const;

    /// Asks about an existing target: 0 skip, 1 skip all, 2 overwrite, 3 overwrite
    /// all, 4 abort. Escape means abort.
    int overwriteWarning(QWidget *parent, const QString &filePath);

private slots:
    void showOnTimer();

private:
    FileOperator();

    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace zvwidgets
