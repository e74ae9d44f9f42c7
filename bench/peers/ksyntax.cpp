/// The XML-driven colouring library, over whole texts.

#include "workload.h"

#include <KSyntaxHighlighting/AbstractHighlighter>
#include <KSyntaxHighlighting/Definition>
#include <KSyntaxHighlighting/Format>
#include <KSyntaxHighlighting/Repository>
#include <KSyntaxHighlighting/State>
#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QFile>
#include <QStringList>

namespace {

/// Colours one byte a character, as an editor would keep it.
class Highlighter : public KSyntaxHighlighting::AbstractHighlighter
{
public:
    using KSyntaxHighlighting::AbstractHighlighter::highlightLine;
    void run(const QStringList &lines)
    {
        KSyntaxHighlighting::State state;
        for (const QString &line : lines) {
            attributes.assign(size_t(line.size()), 0);
            state = highlightLine(line, state);
        }
    }

protected:
    void applyFormat(int offset, int length, const KSyntaxHighlighting::Format &format) override
    {
        std::fill_n(attributes.begin() + offset, length, char(format.id()));
    }

private:
    std::string attributes;
};

void colour(benchmark::State &state)
{
    QFile file(QString::fromStdString(bench::sourceFile(int(state.range(0)))));
    if (!file.open(QIODevice::ReadOnly))
        state.SkipWithError("no file");
    const QString text = QString::fromUtf8(file.readAll());
    const QStringList lines = text.split(QLatin1Char('\n'));
    static KSyntaxHighlighting::Repository repository;
    Highlighter highlighter;
    highlighter.setDefinition(repository.definitionForName(QStringLiteral("C++")));
    for (auto _ : state)
        highlighter.run(lines);
    state.counters["chars/s"] =
        benchmark::Counter(double(text.size()), benchmark::Counter::kIsIterationInvariantRate);
}

} // namespace

BENCHMARK(colour)->Arg(1)->Arg(20)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
