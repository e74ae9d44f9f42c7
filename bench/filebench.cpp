/// The file operator beside the programs that do the same on the command line. They
/// take turns on the same files; the median of each is told, and the longest time for
/// which the operator kept the event loop from turning.

#include "zvwidgets/zvfileoperator/fileoperator.h"

#include <benchmark/benchmark.h>

#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <fstream>
#include <functional>
#include <unistd.h>

using namespace zvwidgets;

namespace {

constexpr int turns = 5;

/// A folder "source" and room for copies, on the disk of the temporary folder.
struct Place
{
    Place() { QDir(dir.path()).mkdir(QStringLiteral("source")); }

    QString path(const QString &name) const { return dir.filePath(name); }
    void write(const QString &name, qint64 size) const
    {
        const std::string block(size_t(qMin(size, qint64(1) << 20)), 'x');
        std::ofstream file(path(QStringLiteral("source/") + name).toStdString());
        for (qint64 written = 0; written < size; written += qint64(block.size()))
            file.write(block.data(), std::streamsize(block.size()));
    }

    QTemporaryDir dir;
};

double milliseconds(const std::function<void()> &work)
{
    // What earlier work left to be written is not this work's.
    ::sync();
    QElapsedTimer time;
    time.start();
    work();
    return double(time.nsecsElapsed()) / 1e6;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

/// Measures \a ours and the command \a peer in turns; \a prepare comes before each.
void compare(benchmark::State &state, const std::function<void()> &prepare,
             const std::function<void()> &ours, const QStringList &peer)
{
    double longest = 0;
    std::vector<double> times;
    std::vector<double> peerTimes;
    for (auto _ : state) {
        for (int turn = 0; turn < turns; ++turn) {
            prepare();
            QElapsedTimer sinceTick;
            QTimer ticks;
            QObject::connect(&ticks, &QTimer::timeout, &ticks, [&] {
                longest = qMax(longest, double(sinceTick.nsecsElapsed()) / 1e6);
                sinceTick.start();
            });
            times.push_back(milliseconds([&] {
                sinceTick.start();
                ticks.start(1);
                ours();
            }));
            longest = qMax(longest, double(sinceTick.nsecsElapsed()) / 1e6);
            ticks.stop();
            prepare();
            peerTimes.push_back(
                milliseconds([&] { QProcess::execute(peer.first(), peer.mid(1)); }));
        }
        state.SetIterationTime(median(times) / 1000);
    }
    state.counters["peer_ms"] = median(peerTimes);
    state.counters["stall_ms"] = longest;
}

void compareCopy(benchmark::State &state, const Place &place)
{
    const QString target = place.path(QStringLiteral("target"));
    compare(
        state,
        [&] {
            QDir(target).removeRecursively();
            QDir().mkdir(target);
        },
        [&] { FileOperator::self()->copy({place.path(QStringLiteral("source"))}, target); },
        {QStringLiteral("cp"), QStringLiteral("-r"), place.path(QStringLiteral("source")), target});
}

void fillWithSmallFiles(const Place &place)
{
    for (int i = 0; i < 10000; ++i)
        place.write(QString::number(i), 4096);
}

void copyOneLargeFile(benchmark::State &state)
{
    const Place place;
    place.write(QStringLiteral("large"), qint64(1) << 30);
    compareCopy(state, place);
}

void copyManyFiles(benchmark::State &state)
{
    const Place place;
    fillWithSmallFiles(place);
    compareCopy(state, place);
}

void eraseManyFiles(benchmark::State &state)
{
    const Place place;
    const QString source = place.path(QStringLiteral("source"));
    compare(
        state,
        [&] {
            QDir().mkdir(source);
            fillWithSmallFiles(place);
        },
        [&] { FileOperator::self()->erase({source}); },
        {QStringLiteral("rm"), QStringLiteral("-r"), source});
}

} // namespace

BENCHMARK(copyOneLargeFile)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(copyManyFiles)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(eraseManyFiles)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);
