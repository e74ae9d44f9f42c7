/// The Scintilla widget with its lexer for C++.

#include "widgetbench.h"

#include <Qsci/qscilexercpp.h>
#include <Qsci/qsciscintilla.h>

#include <QFile>

#include <optional>

namespace {

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

struct Window
{
    Window(const std::string &path, bool wrap)
    {
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
        bench::PaintWatch watch(painted());
        edit->show();
        edit->setFocus();
        watch.wait();
    }

    QWidget *painted() const { return edit->viewport(); }
    void paste() const { edit->paste(); }
    void undo() const { edit->undo(); }

    /// What follows until the window goes is not told to anybody either.
    int replaceAll()
    {
        unwatched.emplace(edit.get());
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
        return hits;
    }

    double append(const QString &text) const
    {
        edit->append(text);
        edit->SendScintilla(QsciScintilla::SCI_SETSEARCHFLAGS,
                            int(QsciScintilla::SCFIND_MATCHCASE));
        return double(edit->SendScintilla(QsciScintilla::SCI_GETLENGTH)) * 2;
    }
    bool find(const QString &text) const
    {
        edit->SendScintilla(QsciScintilla::SCI_SETTARGETRANGE, 0UL,
                            edit->SendScintilla(QsciScintilla::SCI_GETLENGTH));
        return edit->SendScintilla(QsciScintilla::SCI_SEARCHINTARGET, (unsigned long)text.size(),
                                   qPrintable(text)) >= 0;
    }

    const std::unique_ptr<QsciLexerCPP> lexer = std::make_unique<QsciLexerCPP>();
    const std::unique_ptr<QsciScintilla> edit = std::make_unique<QsciScintilla>();
    std::optional<Unwatched> unwatched;
};

void colour(benchmark::State &state)
{
    const Window window(bench::sourceFile(int(state.range(0))), false);
    QsciScintilla *const edit = window.edit.get();
    const double size = double(edit->SendScintilla(QsciScintilla::SCI_GETLENGTH));
    for (auto _ : state) {
        edit->SendScintilla(QsciScintilla::SCI_CLEARDOCUMENTSTYLE);
        edit->SendScintilla(QsciScintilla::SCI_COLOURISE, 0UL, -1L);
    }
    state.counters["chars/s"] =
        benchmark::Counter(size, benchmark::Counter::kIsIterationInvariantRate);
}

/// The widget recolours lazily; the time is that of the colours being there.
void comment(benchmark::State &state)
{
    const Window window(bench::openFile(int(state.range(0))), false);
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

} // namespace

BENCHMARK(colour)->Arg(1)->Arg(20)->Unit(benchmark::kMillisecond);
BENCHMARK(comment)->Arg(20)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    return bench::run(argc, argv, [] { bench::Widget<Window>::announce<3>(); });
}
