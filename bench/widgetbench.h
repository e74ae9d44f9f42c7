#pragma once

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QKeyEvent>
#include <QWidget>

#include <algorithm>
#include <functional>
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

} // namespace bench
