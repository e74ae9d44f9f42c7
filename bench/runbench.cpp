/// A make that prints a million lines into the message list, in the window as its user
/// has it: how fast they are taken in, and for how long at most nothing else is done.

#include "app/actions.h"
#include "app/components.h"
#include "app/settings.h"
#include "app/shell.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTimer>

#include <sys/resource.h>

#include <functional>

namespace {

constexpr int lines = 1000000;

double peakMemory()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_maxrss) / 1024; // MB
}

/// Runs events until \a isDone. Returns the longest time without one, in ms.
double longestGap(const std::function<bool()> &isDone)
{
    qint64 longest = 0;
    QElapsedTimer turn;
    turn.start();
    QTimer tick;
    QObject::connect(&tick, &QTimer::timeout, &tick, [&] {
        longest = qMax(longest, turn.nsecsElapsed());
        turn.restart();
    });
    tick.start(1);
    while (!isDone())
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return double(longest) / 1e6;
}

void makeOutput(benchmark::State &state)
{
    const QTemporaryDir folder;
    vesk::Settings::setKeyPrefix(QStringLiteral("/vesk"));
    vesk::Settings::setFileName(folder.filePath(QStringLiteral("vesk.ini")));
    QFile source(folder.filePath(QStringLiteral("file.c")));
    QFile script(folder.filePath(QStringLiteral("script")));
    if (!source.open(QFile::WriteOnly) || !script.open(QFile::WriteOnly)) {
        state.SkipWithError("no room for the script");
        return;
    }
    script.write("#!/bin/sh\nseq -f '" + source.fileName().toUtf8() +
                 ":%.0f:5: warning: unused variable' " + QByteArray::number(lines));
    script.close();
    script.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
    vesk::Settings::write(QStringLiteral("/scripts/makeProject"), script.fileName());

    vesk::Components components;
    components.makePanels();
    components.shell()->rebuildUI();
    components.shell()->show();
    QApplication::processEvents();
    const vesk::Action *const run = vesk::Actions::action(QStringLiteral("RunMake/run"));
    const double before = peakMemory();
    double gap = 0;
    for (auto _ : state) {
        vesk::Actions::action(QStringLiteral("RunMake/make"))->trigger();
        // Off while a make runs.
        gap = qMax(gap, longestGap([run] { return run->isEnabled(); }));
    }
    const double spent = double(state.iterations());
    state.counters["lines/s"] = benchmark::Counter(lines * spent, benchmark::Counter::kIsRate);
    state.counters["gap_ms"] = gap;
    state.counters["MB"] = peakMemory() - before;
}

} // namespace

BENCHMARK(makeOutput)->UseRealTime()->Unit(benchmark::kMillisecond);
