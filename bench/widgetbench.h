#pragma once

#include "workload.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QClipboard>
#include <QElapsedTimer>
#include <QEvent>
#include <QKeyEvent>
#include <QWidget>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace bench {

/// Waits until a widget was painted.
class PaintWatch : public QObject
{
public:
    explicit PaintWatch(QWidget *widget) : QObject(widget) { widget->installEventFilter(this); }

    /// Runs events until the widget has been painted since the last reset().
    void wait()
    {
        QElapsedTimer limit;
        limit.start();
        while (!painted && limit.elapsed() < 20000)
            QApplication::processEvents();
    }
    void reset() { painted = false; }

protected:
    bool eventFilter(QObject *object, QEvent *event) override
    {
        if (event->type() != QEvent::Paint)
            return false;
        // The event is handled behind this filter, inside the same processEvents().
        painted = true;
        return QObject::eventFilter(object, event);
    }

private:
    bool painted = false;
};

/// Runs events until nothing is left to do.
inline void settle()
{
    for (int i = 0; i < 5; ++i)
        QApplication::processEvents(QEventLoop::AllEvents, 20);
}

inline void press(QWidget *widget, int key, const QString &text = QString())
{
    QKeyEvent down(QEvent::KeyPress, key, Qt::NoModifier, text);
    QApplication::sendEvent(widget, &down);
    QKeyEvent up(QEvent::KeyRelease, key, Qt::NoModifier, text);
    QApplication::sendEvent(widget, &up);
}

/// Times \a action and the painting after it, \a count times, and reports the
/// median and the 99th percentile in microseconds.
inline void sample(benchmark::State &state, QWidget *painted, int count,
                   const std::function<void()> &action)
{
    PaintWatch watch(painted);
    std::vector<double> times;
    for (auto _ : state) {
        times.clear();
        for (int i = 0; i < count; ++i) {
            settle();
            watch.reset();
            QElapsedTimer timer;
            timer.start();
            action();
            watch.wait();
            times.push_back(double(timer.nsecsElapsed()) / 1000);
        }
        std::sort(times.begin(), times.end());
        state.SetIterationTime(times[times.size() / 2] / 1e6);
    }
    state.counters["p50_us"] = times[times.size() / 2];
    state.counters["p99_us"] = times[times.size() * 99 / 100];
}

/// Nanoseconds that \a step and the painting after it take.
inline double timed(PaintWatch &watch, const std::function<void()> &step)
{
    QElapsedTimer timer;
    timer.start();
    step();
    watch.wait();
    return double(timer.nsecsElapsed());
}

/// The benchmarks of an editing widget. \a Window shows the file it is given, if
/// any, at its top and offers
///   - Window(const std::string &path, bool wrap), which returns when it is painted,
///   - `painted()` and `edit`, the widgets that paint the text and get the keys,
///   - `paste()`, `undo()`, and `replaceAll()` of "needle" by "pin", the number of hits,
///   - `append(text)`, the bytes to be searched then, and `find(text)`.
template <typename Window>
struct Widget
{
    static Window open(benchmark::State &state)
    {
        return Window(state.range(0) ? sourceFile(int(state.range(0))) : std::string(), false);
    }

    static void load(benchmark::State &state)
    {
        const std::string file = sourceFile(int(state.range(0)));
        for (auto _ : state) {
            auto window = std::make_unique<Window>(file, false);
            state.counters["peak_MB"] = peakMemory() / 1e6;
            state.PauseTiming();
            window.reset();
            state.ResumeTiming();
        }
    }

    static void key(benchmark::State &state)
    {
        const Window window = open(state);
        sample(state, window.painted(), 400,
               [&] { press(window.edit.get(), Qt::Key_X, QStringLiteral("x")); });
    }

    static void enter(benchmark::State &state)
    {
        const Window window = open(state);
        sample(state, window.painted(), 200,
               [&] { press(window.edit.get(), Qt::Key_Return, QStringLiteral("\r")); });
    }

    static void undo(benchmark::State &state, const Window &window, PaintWatch &watch)
    {
        settle();
        watch.reset();
        state.counters["undo_ms"] = timed(watch, [&] { window.undo(); }) / 1e6;
    }

    static void paste(benchmark::State &state)
    {
        const Window window = open(state);
        QString text;
        for (int i = 0; i < 10000; ++i)
            text += QStringLiteral("    pasted = line(%1); // text\n").arg(i);
        QApplication::clipboard()->setText(text);
        PaintWatch watch(window.painted());
        for (auto _ : state) {
            settle();
            watch.reset();
            state.SetIterationTime(timed(watch, [&] { window.paste(); }) / 1e9);
            undo(state, window, watch);
        }
    }

    static void replaceAll(benchmark::State &state)
    {
        const std::string file = needleFile(6000000, 100000);
        for (auto _ : state) {
            Window window(file, false);
            PaintWatch watch(window.painted());
            settle();
            watch.reset();
            int hits = 0;
            state.SetIterationTime(timed(watch, [&] { hits = window.replaceAll(); }) / 1e9);
            if (hits != 100000)
                state.SkipWithError("wrong number of hits");
            undo(state, window, watch);
        }
    }

    static void findAtEnd(benchmark::State &state)
    {
        const Window window = open(state);
        const QString wanted = QStringLiteral("UNIQUE_LITERAL");
        const double bytes = window.append(wanted);
        for (auto _ : state) {
            if (!window.find(wanted))
                state.SkipWithError("not found");
        }
        state.counters["bytes/s"] =
            benchmark::Counter(bytes, benchmark::Counter::kIsIterationInvariantRate);
    }

    static void longLineOpen(benchmark::State &state)
    {
        const std::string file = longLineFile(10000000);
        for (auto _ : state) {
            auto window = std::make_unique<Window>(file, true);
            state.PauseTiming();
            window.reset();
            state.ResumeTiming();
        }
    }

    template <int keys>
    static void longLineKey(benchmark::State &state)
    {
        const Window window(longLineFile(10000000), true);
        sample(state, window.painted(), keys,
               [&] { press(window.edit.get(), Qt::Key_X, QStringLiteral("x")); });
    }

    /// Announces all of them; \a keys are pressed in the long line.
    template <int keys>
    static void announce()
    {
        const auto add = [](const char *name, void (*run)(benchmark::State &)) {
            return benchmark::RegisterBenchmark(name, run);
        };
        add("load", load)->Arg(20)->Arg(100)->Unit(benchmark::kMillisecond);
        for (auto *each : {add("key", key), add("enter", enter)})
            each->Arg(0)->Arg(100)->UseManualTime()->Iterations(1)->Unit(benchmark::kMicrosecond);
        add("paste", paste)
            ->Arg(100)
            ->UseManualTime()
            ->Iterations(1)
            ->Unit(benchmark::kMillisecond);
        add("replaceAll", replaceAll)
            ->UseManualTime()
            ->Iterations(1)
            ->Unit(benchmark::kMillisecond);
        add("findAtEnd", findAtEnd)->Arg(100)->Unit(benchmark::kMillisecond);
        add("longLineOpen", longLineOpen)->Iterations(1)->Unit(benchmark::kMillisecond);
        add("longLineKey", longLineKey<keys>)
            ->UseManualTime()
            ->Iterations(1)
            ->Unit(benchmark::kMicrosecond);
    }
};

/// The main() of a program of benchmarks that are announced by \a announce.
inline int run(int argc, char **argv, void (*announce)())
{
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    announce();
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}

} // namespace bench
