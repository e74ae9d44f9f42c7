/// Benchmarks of the text library and of the search in files. Each benchmark has
/// the name of the same work in the peers' programs; scripts/bench puts them
/// side by side.

#include "widgetbench.h"
#include "workload.h"

#include "app/components.h"
#include "app/editors/editor.h"
#include "app/editors/editors.h"
#include "app/messages/messageoutput.h"
#include "app/search/replacedialog.h"
#include "app/search/searchmanager.h"
#include "app/search/treesearch.h"
#include "app/search/treewalk.h"
#include "app/settings.h"
#include "app/shell.h"
#include "qtundo/src/qtundo.h"
#include "zvwidgets/zveditor/editorcursor.h"
#include "zvwidgets/zveditor/highlight.h"
#include "zvwidgets/zveditor/highlight/highlightmanager.h"
#include "zvwidgets/zveditor/textdoc.h"
#include "zvwidgets/zveditor/texteditor.h"
#include "zvwidgets/zveditor/textfolding.h"
#include "zvwidgets/zveditor/textmanager.h"
#include "zvwidgets/zveditor/textview.h"

#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTimer>

#include <memory>

using namespace zvwidgets;

namespace {

TextEditorManager &manager()
{
    static TextEditorManager *const instance = [] {
        auto *made = new TextEditorManager;
        QFont font(QStringLiteral("DejaVu Sans Mono"), 10);
        made->setFont(font);
        made->fSaveTab = true;
        return made;
    }();
    return *instance;
}

/// An editor in a window of its own, painted once.
struct Window
{
    explicit Window(const std::string &file, bool wrap = false)
    {
        auto *document = new TextDocument(&manager());
        document->setWrap(wrap);
        editor = std::make_unique<TextEditor>(document, nullptr);
        manager().addEditor(editor.get(), document);
        editor->resize(900, 700);
        if (!file.empty())
            editor->open(QString::fromStdString(file));
        else
            editor->setHighlight(QStringLiteral("C++"));
        bench::PaintWatch watch(editor->view());
        editor->show();
        editor->view()->setFocus();
        watch.wait();
    }

    TextDocument *document() const { return editor->document(); }
    TextView *view() const { return editor->view(); }

    std::unique_ptr<TextEditor> editor;
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
        state.counters["lines"] = window->document()->lastLine() + 1;
        state.PauseTiming();
        window.reset();
        state.ResumeTiming();
    }
}

void scan(benchmark::State &state)
{
    const Window window(bench::sourceFile(int(state.range(0))));
    TextDocument *const document = window.document();
    const qint64 characters = document->text().size();
    TextHighlight *const highlight = window.view()->hl;
    for (auto _ : state) {
        int context = 0;
        for (int line = 0; line <= document->lastLine(); ++line)
            context = highlight->doHighlight(context, document->lineOf(line));
        benchmark::DoNotOptimize(context);
    }
    state.counters["chars/s"] =
        benchmark::Counter(double(characters), benchmark::Counter::kIsIterationInvariantRate);
}

void colour(benchmark::State &state)
{
    const Window window(bench::sourceFile(int(state.range(0))));
    TextDocument *const document = window.document();
    const qint64 characters = document->text().size();
    TextHighlight *const highlight = window.view()->hl;
    for (auto _ : state) {
        for (int line = 0; line <= document->lastLine(); ++line)
            highlight->highlight(document->lineOf(line));
    }
    state.counters["chars/s"] =
        benchmark::Counter(double(characters), benchmark::Counter::kIsIterationInvariantRate);
}

void key(benchmark::State &state)
{
    const Window window(state.range(0) ? bench::sourceFile(int(state.range(0))) : std::string());
    window.view()->setCursorPosition(0, 0, false);
    bench::sample(state, window.view(), 400,
                  [&] { bench::press(window.view(), Qt::Key_X, QStringLiteral("x")); });
}

void enter(benchmark::State &state)
{
    const Window window(state.range(0) ? bench::sourceFile(int(state.range(0))) : std::string());
    window.view()->setCursorPosition(0, 0, false);
    bench::sample(state, window.view(), 200,
                  [&] { bench::press(window.view(), Qt::Key_Return, QStringLiteral("\r")); });
}

/// Times \a edit up to its painting, then its undo.
template <typename Edit>
void timeEdit(benchmark::State &state, const Window &window, const Edit &edit)
{
    bench::PaintWatch watch(window.view());
    const auto seconds = [&watch](const auto &step) {
        bench::settle();
        watch.reset();
        QElapsedTimer timer;
        timer.start();
        step();
        watch.wait();
        return double(timer.nsecsElapsed()) / 1e9;
    };
    state.SetIterationTime(seconds(edit));
    state.counters["undo_ms"] =
        1e3 * seconds([&window] { window.document()->undoStack()->undo(1); });
}

void paste(benchmark::State &state)
{
    const Window window(bench::sourceFile(int(state.range(0))));
    QApplication::clipboard()->setText(lines(10000));
    for (auto _ : state) {
        window.view()->setCursorPosition(0, 0, false);
        timeEdit(state, window, [&window] { window.editor->paste(); });
    }
}

void comment(benchmark::State &state)
{
    const Window window(bench::openFile(int(state.range(0))));
    window.view()->setCursorPosition(0, 0, false);
    for (auto _ : state) {
        timeEdit(state, window,
                 [&window] { window.document()->cmdInsert(0, 0, QStringLiteral("/*")); });
    }
}

/// A window on \a count lines of \a text, all selected.
std::unique_ptr<Window> selectedLines(int count, const QString &text)
{
    auto window = std::make_unique<Window>(std::string());
    QString content = (text + QLatin1Char('\n')).repeated(count);
    QTextStream stream(&content);
    window->document()->load(stream);
    const int last = window->document()->lastLine();
    window->view()->setSelection(QPoint(0, 0), QPoint(int(text.size()), last));
    return window;
}

// Memory counts what the steps hold for undo.
void cutEmptyLines(benchmark::State &state)
{
    const auto window = selectedLines(5'000'000, QString());
    for (auto _ : state) {
        timeEdit(state, *window, [&window] { window->editor->cut(); });
        state.counters["peak_MB"] = bench::peakMemory() / 1e6;
    }
}

void pasteEmptyLines(benchmark::State &state)
{
    const Window window{std::string()};
    QApplication::clipboard()->setText(QString(5'000'000, QLatin1Char('\n')));
    for (auto _ : state) {
        timeEdit(state, window, [&window] { window.editor->paste(); });
        state.counters["peak_MB"] = bench::peakMemory() / 1e6;
    }
}

void indentClosedFolds(benchmark::State &state)
{
    constexpr int folds = 100'000;
    const auto window = selectedLines(4 * folds, QStringLiteral("text"));
    FoldersState closed;
    for (int i = 0; i < folds; ++i)
        closed.append({false, 4 * i, 4 * i + 3});
    window->document()->folding()->setFolderstState(closed);
    for (auto _ : state)
        timeEdit(state, *window, [&window] { window->editor->indent(); });
}

void cutNestedFolds(benchmark::State &state)
{
    constexpr int folds = 100'000;
    const auto window = selectedLines(2 * folds, QStringLiteral("text"));
    FoldersState nested;
    for (int i = folds - 1; i >= 0; --i)
        nested.append({true, i, 2 * folds - 1 - i});
    window->document()->folding()->setFolderstState(nested);
    for (auto _ : state)
        timeEdit(state, *window, [&window] { window->editor->cut(); });
}

/// The program's window, as its user has it, with settings of its own.
struct Program
{
    Program()
    {
        vesk::Settings::setKeyPrefix(QStringLiteral("/vesk"));
        vesk::Settings::setFileName(folder.filePath(QStringLiteral("vesk.ini")));
        components = std::make_unique<vesk::Components>();
        components->openArguments();
        components->makePanels();
        components->shell()->rebuildUI();
        components->shell()->resize(900, 700);
        components->shell()->show();
    }

    QTemporaryDir folder;
    std::unique_ptr<vesk::Components> components;
};

/// Replaces all by the command of the menu, timed from the answer to its dialog on.
void replaceAllIn(benchmark::State &state, const QString &file)
{
    for (auto _ : state) {
        const Program program;
        vesk::Editors::self()->open(file);
        vesk::Editor *const editor = vesk::Editors::self()->current();
        bench::PaintWatch watch(editor->focusProxy());
        bench::settle();
        QElapsedTimer timer;
        QTimer::singleShot(0, [&] {
            auto *const dialog = program.components->shell()->findChild<vesk::ReplaceDialog *>();
            dialog->findString->setEditText(QStringLiteral("needle"));
            dialog->replaceString->setEditText(QStringLiteral("pin"));
            dialog->caseSensitive->setChecked(true);
            dialog->replaceAll->setChecked(true);
            bench::settle();
            watch.reset();
            timer.start();
            dialog->accept();
        });
        vesk::SearchManager::self()->replace();
        watch.wait();
        state.SetIterationTime(double(timer.nsecsElapsed()) / 1e9);
        if (editor->text().contains(QLatin1String("needle")))
            state.SkipWithError("not all was replaced");
        bench::settle();
        watch.reset();
        timer.start();
        editor->undo();
        watch.wait();
        state.counters["undo_ms"] = double(timer.nsecsElapsed()) / 1e6;
        if (editor->text().contains(QLatin1String("pin")))
            state.SkipWithError("not all was undone");
        editor->setText(QString());
    }
}

void replaceAll(benchmark::State &state)
{
    replaceAllIn(state, QString::fromStdString(bench::needleFile(6000000, 100000)));
}

void longLineReplaceAll(benchmark::State &state)
{
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("line")));
    if (!file.open(QIODevice::WriteOnly) ||
        file.write(QByteArray("some needle 14").repeated(40000)) < 0) {
        state.SkipWithError("cannot write");
        return;
    }
    file.close();
    replaceAllIn(state, file.fileName());
}

void findAtEnd(benchmark::State &state)
{
    const Window window(bench::sourceFile(int(state.range(0))));
    TextDocument *const document = window.document();
    const int last = document->lastLine();
    document->cmdInsert(last, document->textLength(last), QStringLiteral("UNIQUE_LITERAL"));
    const double bytes = double(document->text().size()) * 2;
    for (auto _ : state) {
        if (!window.editor->find(QStringLiteral("UNIQUE_LITERAL"), true, false, false, false))
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
    window.view()->setCursorPosition(0, 10, false);
    bench::sample(state, window.view(), 20,
                  [&] { bench::press(window.view(), Qt::Key_X, QStringLiteral("x")); });
}

void longLinePage(benchmark::State &state)
{
    const Window window(bench::longLineFile(10000000), true);
    window.view()->setCursorPosition(0, 10, false);
    bench::sample(state, window.view(), 20, [&] { bench::press(window.view(), Qt::Key_PageDown); });
}

/// In a proportional font marks have no width, so that all of them are on screen.
void marksKey(benchmark::State &state)
{
    const QFont font = manager().font();
    manager().setFont(QFont(QStringLiteral("DejaVu Sans"), 10));
    {
        const Window window({});
        window.editor->setText(u'a' + QString(25000, QChar(0x0301)));
        window.view()->setCursorPosition(0, 0, false);
        bench::sample(state, window.view(), 20,
                      [&] { bench::press(window.view(), Qt::Key_X, QStringLiteral("x")); });
    }
    manager().setFont(font);
}

/// A highlight with a background: blank lines have that of the text above them.
void blankLinesKey(benchmark::State &state)
{
    const Window window({});
    window.view()->hl->attribute(0)->usebg = true;
    window.view()->hl->attribute(0)->bgcolor = Qt::yellow;
    window.editor->setText(QString(2000000, u'\n'));
    window.view()->setCursorPosition(window.document()->lastLine(), 0, false);
    bench::sample(state, window.view(), 20, [&] { bench::press(window.view(), Qt::Key_Up); });
}

/// Through the files below the folder in VESK_BENCH_TREE, the system's headers if unset.
void searchTree(benchmark::State &state, const vesk::SearchQuery &query)
{
    const QString root = qEnvironmentVariable("VESK_BENCH_TREE", QStringLiteral("/usr/include"));
    qsizetype rows = 0;
    for (auto _ : state) {
        vesk::TreeWalk walk(root, QString());
        vesk::TreeSearch search(query, [&walk](QString *file, const vesk::FileSearch::GoOn &goOn) {
            return walk.next(file, goOn);
        });
        QList<vesk::TreeSearch::Row> taken;
        for (rows = 0; search.take(&taken); taken.clear())
            rows += taken.size();
    }
    state.counters["rows"] = double(rows);
}

class PaintCounter : public QObject
{
public:
    bool eventFilter(QObject *, QEvent *event) override
    {
        count += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }

    int count = 0;
};

void searchLiteral(benchmark::State &state)
{
    searchTree(state, {QStringLiteral("pthread_mutex"), false, true, false});
}

void searchExpression(benchmark::State &state)
{
    searchTree(state, {QStringLiteral("[a-z]+_mutex_[a-z]+"), true, true, false});
}

/// A hundred thousand rows come as from a search: the window has its turn every 25 ms.
void messageRows(benchmark::State &state)
{
    const QTemporaryDir folder;
    vesk::Settings::setFileName(folder.filePath(QStringLiteral("vesk.ini")));
    vesk::Shell shell(nullptr, QStringLiteral("vesk::Shell"));
    vesk::Editors::self();
    vesk::MessageOutput *const list = vesk::MessageOutput::self();
    shell.rebuildUI();
    shell.show();
    list->makeVisible();
    QApplication::processEvents();
    PaintCounter paints;
    list->viewport()->installEventFilter(&paints);
    const QString text = QStringLiteral("   #color{#909090}%1: #color{black}extern int "
                                        "#color{blue}some_call#color{black} (const char *name);");
    constexpr int rows = 100000;
    for (auto _ : state) {
        QElapsedTimer turn;
        turn.start();
        for (int i = 0; i < rows; ++i) {
            list->insertItem(text.arg(i), i, QStringLiteral("/some/file"));
            if (turn.hasExpired(25)) {
                QApplication::processEvents();
                turn.restart();
            }
        }
        list->viewport()->repaint();
    }
    const double spent = double(state.iterations());
    state.counters["rows/s"] = benchmark::Counter(rows * spent, benchmark::Counter::kIsRate);
    state.counters["paints/s"] = benchmark::Counter(paints.count, benchmark::Counter::kIsRate);
}

} // namespace

BENCHMARK(load)->Arg(20)->Arg(100)->Unit(benchmark::kMillisecond);
BENCHMARK(scan)->Arg(1)->Arg(20)->Unit(benchmark::kMillisecond);
BENCHMARK(colour)->Arg(1)->Arg(20)->Unit(benchmark::kMillisecond);
BENCHMARK(key)->Arg(0)->Arg(100)->UseManualTime()->Iterations(1)->Unit(benchmark::kMicrosecond);
BENCHMARK(enter)->Arg(0)->Arg(100)->UseManualTime()->Iterations(1)->Unit(benchmark::kMicrosecond);
BENCHMARK(paste)->Arg(100)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(comment)->Arg(20)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(cutEmptyLines)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(pasteEmptyLines)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(indentClosedFolds)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(cutNestedFolds)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(replaceAll)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(longLineReplaceAll)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(findAtEnd)->Arg(100)->Unit(benchmark::kMillisecond);
BENCHMARK(searchLiteral)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(searchExpression)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(messageRows)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(longLineOpen)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(longLineKey)->UseManualTime()->Iterations(1)->Unit(benchmark::kMicrosecond);
BENCHMARK(longLinePage)->UseManualTime()->Iterations(1)->Unit(benchmark::kMicrosecond);
BENCHMARK(marksKey)->UseManualTime()->Iterations(1)->Unit(benchmark::kMicrosecond);
BENCHMARK(blankLinesKey)->UseManualTime()->Iterations(1)->Unit(benchmark::kMicrosecond);

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
