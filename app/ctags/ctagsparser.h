#pragma once

#include "app/ctags/parser.h"

#include <memory>

class QProcess;

namespace vesk {

/// Parses texts with the external program ctags: writes a copy of the text into
/// a private folder, runs the program there and makes the tree of what it prints.
/// Writing and making the tree are done by a thread, so a large text does not hold
/// up the window. Several texts may be parsed at once. A text for which the program
/// can't be started has no result: the user is told, but not again before a start
/// has succeeded.
class CTagsParser : public Parser
{
    Q_OBJECT
public:
    explicit CTagsParser(QObject *parent = nullptr);
    /// Stops what still runs, without waiting for its results, and removes its files.
    ~CTagsParser() override;

    /// The one of the program, made at the first call. `Components` owns it.
    static CTagsParser *self();

    using Parser::parse;
    int parse(const QString &text, const QString &filePath, int key) override;

protected:
    int parse(const QString &text) override;

private slots:
    void readyReadStdout();
    void readyReadStderr();
    void processExited();

private:
    struct Private;
    struct Job;

    void start(const std::shared_ptr<Job> &job);
    void startFailed(const Job &job);
    void takeOutput(QProcess *process);
    void deliver(Job &job);

    const std::unique_ptr<Private> d;
};

} // namespace vesk
