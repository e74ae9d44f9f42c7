/// A folder of a hundred thousand entries in the explorer's list: how long it takes
/// until it is painted, also when coming up out of a folder in it, and a key in it.

#include "app/components.h"
#include "app/explorer/fileslist.h"
#include "app/explorer/fileslistitem.h"
#include "widgetbench.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

using namespace vesk;

namespace {

constexpr int entries = 100000;
constexpr int foldersAmong = 10000;

/// Filled once for all; its folders come first.
QString largeFolder()
{
    static const QTemporaryDir place;
    static const bool isFilled = [] {
        const char *const endings[] = {".cpp", ".h", ".txt", ""};
        for (int i = 0; i < entries; ++i) {
            const QString name = place.filePath(QStringLiteral("entry%1").arg(i));
            if (i < foldersAmong) {
                QDir().mkdir(name);
                continue;
            }
            QFile file(name + QString::fromLatin1(endings[i % 4]));
            if (!file.open(QIODevice::WriteOnly))
                return false;
        }
        return true;
    }();
    return isFilled ? place.path() : QString();
}

/// The list, shown, in the view that the benchmark's argument stands for.
struct ShownList
{
    explicit ShownList(const benchmark::State &state) : watch(list.viewport())
    {
        list.resize(300, 600);
        list.setViewMode(int(state.range(0)));
        list.show();
        watch.wait();
    }

    double seconds(const std::function<void()> &step)
    {
        bench::settle();
        watch.reset();
        return bench::timed(watch, step) / 1e9;
    }

    Components components;
    FilesList list;
    bench::PaintWatch watch;
};

void showLargeFolder(benchmark::State &state)
{
    ShownList shown(state);
    const QString folder = largeFolder();
    for (auto _ : state) {
        shown.list.go(QStringLiteral("/"));
        state.SetIterationTime(shown.seconds([&] { shown.list.go(folder); }));
        if (shown.list.topLevelItemCount() != entries + 1)
            state.SkipWithError("entries are missing");
    }
}

void backToLargeFolder(benchmark::State &state)
{
    ShownList shown(state);
    shown.list.go(largeFolder());
    shown.list.setCurrentItem(QStringLiteral("entry9000"));
    for (auto _ : state) {
        shown.list.itemClicked(nullptr);
        state.SetIterationTime(shown.seconds([&] { shown.list.back(); }));
        if (shown.list.currentItemName() != QLatin1String("entry9000"))
            state.SkipWithError("the selection is lost");
    }
}

void keyInLargeFolder(benchmark::State &state)
{
    ShownList shown(state);
    shown.list.go(largeFolder());
    shown.list.setCurrentItem(QStringLiteral("entry50001.h"));
    bench::sample(state, shown.list.viewport(), 200,
                  [&] { bench::press(&shown.list, Qt::Key_Down); });
}

} // namespace

BENCHMARK(showLargeFolder)
    ->Arg(FilesList::Simple)
    ->Arg(FilesList::Detailed)
    ->UseManualTime()
    ->Iterations(5)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(backToLargeFolder)
    ->Arg(FilesList::Simple)
    ->Arg(FilesList::Detailed)
    ->UseManualTime()
    ->Iterations(5)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(keyInLargeFolder)
    ->Arg(FilesList::Simple)
    ->Arg(FilesList::Detailed)
    ->UseManualTime()
    ->Iterations(1)
    ->Unit(benchmark::kMicrosecond);
