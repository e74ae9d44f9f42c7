/// The toolkit's own plain text edit.

#include "widgetbench.h"
#include "workload.h"

#include <QClipboard>
#include <QFile>
#include <QPlainTextEdit>
#include <QTextBlock>

#include <memory>

namespace {

struct Window
{
    explicit Window(const std::string &path, bool wrap = false)
    {
        edit = std::make_unique<QPlainTextEdit>();
        edit->setFont(QFont(QStringLiteral("DejaVu Sans Mono"), 10));
        edit->setLineWrapMode(wrap ? QPlainTextEdit::WidgetWidth : QPlainTextEdit::NoWrap);
        edit->resize(900, 700);
        if (!path.empty()) {
            QFile file(QString::fromStdString(path));
            if (file.open(QIODevice::ReadOnly))
                edit->setPlainText(QString::fromUtf8(file.readAll()));
        }
        bench::PaintWatch watch(edit->viewport());
        edit->show();
        edit->setFocus();
        watch.wait();
    }

    std::unique_ptr<QPlainTextEdit> edit;
};

QString lines(int count)
{
    QString text;
    for (int i = 0; i < count; ++i)
        text += QStringLiteral("    pasted = line(%1); // text\n").arg(i);
    return text;
}

void load(benchmark::State &state)
{
    const std::string file = bench::sourceFile(int(state.range(0)));
    for (auto _ : state) {
        auto window = std::make_unique<Window>(file);
        state.counters["peak_MB"] = bench::peakMemory() / 1e6;
        state.PauseTiming();
        window.reset();
        state.ResumeTiming();
    }
}

void key(benchmark::State &state)
{
    const Window window(state.range(0) ? bench::sourceFile(int(state.range(0))) : std::string());
    bench::sample(state, window.edit->viewport(), 400,
                  [&] { bench::press(window.edit.get(), Qt::Key_X, QStringLiteral("x")); });
}

void enter(benchmark::State &state)
{
    const Window window(state.range(0) ? bench::sourceFile(int(state.range(0))) : std::string());
    bench::sample(state, window.edit->viewport(), 200,
                  [&] { bench::press(window.edit.get(), Qt::Key_Return, QStringLiteral("\r")); });
}

void paste(benchmark::State &state)
{
    const Window window(bench::sourceFile(int(state.range(0))));
    QApplication::clipboard()->setText(lines(10000));
    bench::PaintWatch watch(window.edit->viewport());
    for (auto _ : state) {
        bench::settle();
        watch.reset();
        QElapsedTimer timer;
        timer.start();
        window.edit->paste();
        watch.wait();
        state.SetIterationTime(double(timer.nsecsElapsed()) / 1e9);
        bench::settle();
        watch.reset();
        timer.start();
        window.edit->undo();
        watch.wait();
        state.counters["undo_ms"] = double(timer.nsecsElapsed()) / 1e6;
    }
}

void replaceAll(benchmark::State &state)
{
    const std::string file = bench::needleFile(6000000, 100000);
    for (auto _ : state) {
        const Window window(file);
        bench::PaintWatch watch(window.edit->viewport());
        bench::settle();
        QElapsedTimer timer;
        timer.start();
        QTextCursor whole(window.edit->document());
        whole.beginEditBlock();
        int hits = 0;
        QTextCursor found(window.edit->document());
        for (;;) {
            found = window.edit->document()->find(QStringLiteral("needle"), found,
                                                  QTextDocument::FindCaseSensitively);
            if (found.isNull())
                break;
            found.insertText(QStringLiteral("pin"));
            ++hits;
        }
        whole.endEditBlock();
        watch.wait();
        state.SetIterationTime(double(timer.nsecsElapsed()) / 1e9);
        if (hits != 100000)
            state.SkipWithError("wrong number of hits");
        bench::settle();
        watch.reset();
        timer.start();
        window.edit->undo();
        watch.wait();
        state.counters["undo_ms"] = double(timer.nsecsElapsed()) / 1e6;
    }
}

void findAtEnd(benchmark::State &state)
{
    const Window window(bench::sourceFile(int(state.range(0))));
    window.edit->appendPlainText(QStringLiteral("UNIQUE_LITERAL"));
    const double bytes = double(window.edit->document()->characterCount()) * 2;
    for (auto _ : state) {
        if (window.edit->document()
                ->find(QStringLiteral("UNIQUE_LITERAL"), 0, QTextDocument::FindCaseSensitively)
                .isNull())
            state.SkipWithError("not found");
    }
    state.counters["bytes/s"] =
        benchmark::Counter(bytes, benchmark::Counter::kIsIterationInvariantRate);
}

void longLineOpen(benchmark::State &state)
{
    const std::string file = bench::longLineFile(10000000);
    for (auto _ : state) {
        auto window = std::make_unique<Window>(file, true);
        state.PauseTiming();
        window.reset();
        state.ResumeTiming();
    }
}

void longLineKey(benchmark::State &state)
{
    const Window window(bench::longLineFile(10000000), true);
    bench::sample(state, window.edit->viewport(), 5,
                  [&] { bench::press(window.edit.get(), Qt::Key_X, QStringLiteral("x")); });
}

} // namespace

BENCHMARK(load)->Arg(20)->Arg(100)->Unit(benchmark::kMillisecond);
BENCHMARK(key)->Arg(0)->Arg(100)->UseManualTime()->Iterations(1)->Unit(benchmark::kMicrosecond);
BENCHMARK(enter)->Arg(0)->Arg(100)->UseManualTime()->Iterations(1)->Unit(benchmark::kMicrosecond);
BENCHMARK(paste)->Arg(100)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(replaceAll)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(findAtEnd)->Arg(100)->Unit(benchmark::kMillisecond);
BENCHMARK(longLineOpen)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(longLineKey)->UseManualTime()->Iterations(1)->Unit(benchmark::kMicrosecond);

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
