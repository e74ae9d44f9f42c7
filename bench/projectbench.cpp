/// A project of 20,000 files in 2,000 folders, and a folder of 100,000 files to choose
/// from, as the user meets them: with the window, up to the paint.

#include "app/components.h"
#include "app/project/addfilesdialog.h"
#include "app/project/project.h"
#include "app/settings.h"
#include "app/shell.h"
#include "app/widgets/domlistview.h"
#include "widgetbench.h"

#include <QDir>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTreeWidget>

#include <fstream>

using namespace vesk;

namespace {

constexpr int folders = 2000;
constexpr int filesInFolder = 10;
constexpr int loneFiles = 100000;

void touch(const QString &path)
{
    const std::ofstream file(path.toStdString());
}

/// The application in a folder of its own, with a project in a file that is not open.
struct Place
{
    Place()
    {
        Settings::setFileName(dir.filePath(QStringLiteral("vesk.ini")));
        components = std::make_unique<Components>();
        components->makePanels();
        components->shell()->rebuildUI();
        components->shell()->show();
        bench::settle();
        project = Project::self();
    }
    ~Place() { Settings::setFileName(QString()); }

    QString path(const QString &name) const { return dir.filePath(name); }
    QString writeProject() const
    {
        const QString name = path(QStringLiteral("large.vesk"));
        std::ofstream file(name.toStdString());
        file << "<veskproject><project version=\"8.0\" name=\"Large\">";
        for (int i = 0; i < folders; ++i) {
            file << "<folder name=\"folder" << i << "\">";
            for (int j = 0; j < filesInFolder; ++j)
                file << "<cpp name=\"file" << j << ".cpp\" type=\"file\"/>";
            file << "</folder>";
        }
        file << "</project></veskproject>";
        return name;
    }

    QTemporaryDir dir;
    std::unique_ptr<Components> components;
    Project *project = nullptr;
};

void projectLoad(benchmark::State &state)
{
    Place place;
    const QString name = place.writeProject();
    bench::PaintWatch watch(place.project->domView()->viewport());
    for (auto _ : state) {
        watch.reset();
        state.SetIterationTime(bench::timed(watch, [&] { place.project->load(name); }) / 1e9);
        if (place.project->domView()->rootItem()->childCount() != folders)
            state.SkipWithError("not loaded");
        place.project->close();
        bench::settle();
    }
}

void projectAddFile(benchmark::State &state)
{
    Place place;
    place.project->load(place.writeProject());
    DomListView *const view = place.project->domView();
    for (int i = 0; i < folders; ++i)
        view->setOpen(view->rootItem()->child(i), true);
    QDir().mkpath(place.path(QStringLiteral("folder0")));
    int number = 0;
    bench::sample(state, view->viewport(), 40, [&] {
        const QString name = place.path(QStringLiteral("folder0/new%1.cpp").arg(number++));
        touch(name);
        place.project->addFiles({name}, QStringLiteral("/folder0"), QDomNode());
    });
}

void projectRemoveFile(benchmark::State &state)
{
    Place place;
    place.project->load(place.writeProject());
    DomListView *const view = place.project->domView();
    for (int i = 0; i < folders; ++i)
        view->setOpen(view->rootItem()->child(i), true);
    int number = 0;
    bench::sample(state, view->viewport(), 9, [&] {
        view->setCurrentItem(view->rootItem()->child(number++)->child(0));
        place.project->removeFile();
    });
}

void projectSave(benchmark::State &state)
{
    Place place;
    place.project->load(place.writeProject());
    for (auto _ : state)
        place.project->save();
}

/// Up to the first paint; all_ms is when everything is listed, gap_ms the longest time
/// in which the dialog could not be left.
void addFilesDialog(benchmark::State &state)
{
    Place place;
    const bool isFlat = state.range(0) == 1;
    for (int i = 0; i < loneFiles; ++i) {
        const QString folder = place.path(QStringLiteral("d%1").arg(isFlat ? 0 : i / 50));
        if (i == 0 || (!isFlat && i % 50 == 0))
            QDir().mkpath(folder);
        touch(folder + QStringLiteral("/f%1.cpp").arg(i));
    }
    place.project->load(place.writeProject());
    for (auto _ : state) {
        QElapsedTimer timer;
        timer.start();
        AddFilesDialog dialog(*place.project);
        bench::PaintWatch watch(dialog.listViewFiles->viewport());
        dialog.show();
        watch.wait();
        state.SetIterationTime(double(timer.nsecsElapsed()) / 1e9);
        double longest = 0;
        QElapsedTimer turn;
        while (!dialog.buttonSelectAll->isEnabled()) {
            turn.start();
            QApplication::processEvents();
            longest = std::max(longest, double(turn.nsecsElapsed()) / 1e6);
        }
        bench::settle();
        state.counters["all_ms"] = double(timer.nsecsElapsed()) / 1e6;
        state.counters["gap_ms"] = longest;
        timer.start();
        dialog.buttonSelectAll->click();
        bench::settle();
        state.counters["select_ms"] = double(timer.nsecsElapsed()) / 1e6;
        timer.start();
        if (dialog.selectedFilePaths().size() < loneFiles)
            state.SkipWithError("not all are listed");
        state.counters["collect_ms"] = double(timer.nsecsElapsed()) / 1e6;
    }
}

} // namespace

BENCHMARK(projectLoad)->UseManualTime()->Iterations(5)->Unit(benchmark::kMillisecond);
BENCHMARK(projectAddFile)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(projectRemoveFile)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(projectSave)->Iterations(5)->Unit(benchmark::kMillisecond);
BENCHMARK(addFilesDialog)
    ->Arg(0)
    ->Arg(1)
    ->UseManualTime()
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
