#pragma once

#include "app/outputrows.h"

#include <QProcess>

#include <memory>

class QTimer;

namespace vesk {

/// A script of the user in a process of its own, started without a shell. Its output
/// comes as rows, in batches, and all of it before finished(). Its input is empty.
///
/// The process goes on when this object dies.
class ScriptProcess : public QProcess
{
    Q_OBJECT
public:
    /// \a arguments begin with the program: a path, or a name to be looked for in the
    /// absolute folders of the search path. \a folder is the working folder; one that is
    /// no folder stands for the editor's own.
    ScriptProcess(const QStringList &arguments, const QString &folder, QObject *parent);
    ~ScriptProcess() override;

    /// The program as it was given.
    QString name() const { return argv.value(0); }
    /// False if the process could not be started.
    [[nodiscard]] bool run();

signals:
    void rowsCame(const QList<vesk::OutputRow> &rows);

private:
    void readStdout();
    void readStderr();
    void take(OutputStream stream, const QByteArray &bytes);
    void giveRows();

    const QStringList argv;
    std::unique_ptr<OutputRows> output;
    QTimer *const give;
};

} // namespace vesk
