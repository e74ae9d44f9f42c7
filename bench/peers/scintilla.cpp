/// The Scintilla widget with its lexer for C++.

#include "widgetbench.h"
#include "workload.h"

#include <Qsci/qscilexercpp.h>
#include <Qsci/qsciscintilla.h>

#include <QClipboard>
#include <QFile>

#include <memory>

namespace {

struct Window
{
    explicit Window(const std::string &path, bool wrap = false)
    {
        edit = std::make_unique<QsciScintilla>();
        lexer = std::make_unique<QsciLexerCPP>();
        lexer->setDefaultFont(QFont(QStringLiteral("DejaVu Sans Mono"), 10));
        edit->setLexer(lexer.get());
        edit->setUtf8(true);
        edit->setMarginWidth(0, QStringLiteral("10000"));
        edit->setWrapMode(wrap ? QsciScintilla::WrapCharacter : QsciScintilla::WrapNone);
        edit->resize(900, 700);
        if (!path.empty()) {
            QFile file(QString::fromStdString(path));
            if (file.open(QIODevice::ReadOnly))
                edit->read(&file);
        }
        bench::PaintWatch watch(edit->viewport());
        edit->show();
        edit->setFocus();
        watch.wait();
    }
    ~Window() { edit.reset(); }

    std::unique_ptr<QsciLexerCPP> lexer;
    std::unique_ptr<QsciScintilla> edit;
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

void colour(benchmark::State &state)
{
    const Window window(bench::sourceFile(int(state.range(0))));
    QsciScintilla *const edit = window.edit.get();
    const double size = double(edit->SendScintilla(QsciScintilla::SCI_GETLENGTH));
    for (auto _ : state) {
        edit->SendScintilla(QsciScintilla::SCI_CLEARDOCUMENTSTYLE);
        edit->SendScintilla(QsciScintilla::SCI_COLOURISE, 0UL, -1L);
    }
    state.counters["chars/s"] =
        benchmark::Counter(size, benchmark::Counter::kIsIterationInvariantRate);
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

/// The widget recolours lazily; the time is that of the colours being there.
void comment(benchmark::State &state)
{
    const Window window(bench::openFile(int(state.range(0))));
    QsciScintilla *const edit = window.edit.get();
    edit->SendScintilla(QsciScintilla::SCI_COLOURISE, 0UL, -1L);
    for (auto _ : state) {
        bench::settle();
        QElapsedTimer timer;
        timer.start();
        edit->insertAt(QStringLiteral("/*"), 0, 0);
        edit->SendScintilla(QsciScintilla::SCI_COLOURISE, 0UL, -1L);
        state.SetIterationTime(double(timer.nsecsElapsed()) / 1e9);
        timer.start();
        edit->undo();
        edit->SendScintilla(QsciScintilla::SCI_COLOURISE, 0UL, -1L);
        state.counters["undo_ms"] = double(timer.nsecsElapsed()) / 1e6;
    }
}

/// Nobody is told of changes while this lives: the widget would count the
/// characters before each of them for its listeners, which makes many changes
/// quadratic.
class Unwatched
{
public:
    explicit Unwatched(QsciScintilla *edit)
        : editor(edit), mask(edit->SendScintilla(QsciScintilla::SCI_GETMODEVENTMASK))
    {
        editor->SendScintilla(QsciScintilla::SCI_SETMODEVENTMASK, 0UL);
    }
    ~Unwatched() { editor->SendScintilla(QsciScintilla::SCI_SETMODEVENTMASK, (unsigned long)mask); }
    Unwatched(const Unwatched &) = delete;
    Unwatched &operator=(const Unwatched &) = delete;

private:
    QsciScintilla *const editor;
    const long mask;
};

void replaceAll(benchmark::State &state)
{
    const std::string file = bench::needleFile(6000000, 100000);
    for (auto _ : state) {
        const Window window(file);
        QsciScintilla *const edit = window.edit.get();
        bench::PaintWatch watch(edit->viewport());
        bench::settle();
        QElapsedTimer timer;
        timer.start();
        const Unwatched unwatched(edit);
        edit->SendScintilla(QsciScintilla::SCI_BEGINUNDOACTION);
        edit->SendScintilla(QsciScintilla::SCI_SETSEARCHFLAGS,
                            int(QsciScintilla::SCFIND_MATCHCASE));
        long from = 0;
        int hits = 0;
        for (;;) {
            edit->SendScintilla(QsciScintilla::SCI_SETTARGETRANGE, (unsigned long)from,
                                edit->SendScintilla(QsciScintilla::SCI_GETLENGTH));
            if (edit->SendScintilla(QsciScintilla::SCI_SEARCHINTARGET, 6UL, "needle") < 0)
                break;
            edit->SendScintilla(QsciScintilla::SCI_REPLACETARGET, 3UL, "pin");
            from = edit->SendScintilla(QsciScintilla::SCI_GETTARGETEND);
            ++hits;
        }
        edit->SendScintilla(QsciScintilla::SCI_ENDUNDOACTION);
        watch.wait();
        state.SetIterationTime(double(timer.nsecsElapsed()) / 1e9);
        if (hits != 100000)
            state.SkipWithError("wrong number of hits");
        bench::settle();
        watch.reset();
        timer.start();
        edit->undo();
        watch.wait();
        state.counters["undo_ms"] = double(timer.nsecsElapsed()) / 1e6;
    }
}

void findAtEnd(benchmark::State &state)
{
    const Window window(bench::sourceFile(int(state.range(0))));
    QsciScintilla *const edit = window.edit.get();
    edit->append(QStringLiteral("UNIQUE_LITERAL"));
    const long size = edit->SendScintilla(QsciScintilla::SCI_GETLENGTH);
    edit->SendScintilla(QsciScintilla::SCI_SETSEARCHFLAGS, int(QsciScintilla::SCFIND_MATCHCASE));
    for (auto _ : state) {
        edit->SendScintilla(QsciScintilla::SCI_SETTARGETRANGE, 0UL, size);
        if (edit->SendScintilla(QsciScintilla::SCI_SEARCHINTARGET, 14UL, "UNIQUE_LITERAL") < 0)
            state.SkipWithError("not found");
    }
    state.counters["bytes/s"] =
        benchmark::Counter(double(size) * 2, benchmark::Counter::kIsIterationInvariantRate);
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
    bench::sample(state, window.edit->viewport(), 3,
                  [&] { bench::press(window.edit.get(), Qt::Key_X, QStringLiteral("x")); });
}

} // namespace

BENCHMARK(load)->Arg(20)->Arg(100)->Unit(benchmark::kMillisecond);
BENCHMARK(colour)->Arg(1)->Arg(20)->Unit(benchmark::kMillisecond);
BENCHMARK(key)->Arg(0)->Arg(100)->UseManualTime()->Iterations(1)->Unit(benchmark::kMicrosecond);
BENCHMARK(enter)->Arg(0)->Arg(100)->UseManualTime()->Iterations(1)->Unit(benchmark::kMicrosecond);
BENCHMARK(paste)->Arg(100)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(comment)->Arg(20)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);
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
