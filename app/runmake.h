#pragma once

#include <QList>
#include <QObject>

#include <memory>

namespace vesk {

struct OutputRow;
class ScriptProcess;

/// Runs the user's two scripts, that of the open project or else that of the settings,
/// and lists their output in the message list, where rows that name a place lead to it.
/// Any number of runs go on at once, and one make, which its command also stops.
///
/// The first self() makes it; `Components` deletes it before the message list. Scripts
/// go on then.
class RunMake : public QObject
{
    Q_OBJECT
public:
    ~RunMake() override;

    static RunMake *self();

public slots:
    /// Asks for a script where there is none; nothing happens if there is none then.
    void run();
    /// The same for make; asks a make that runs to end instead.
    void make();
    /// Edits the scripts of the settings.
    void configure();

private:
    struct Private;

    RunMake();

    void showRows(const QList<OutputRow> &rows);
    void processExited(ScriptProcess *process);

    const std::unique_ptr<Private> d;
};

} // namespace vesk
