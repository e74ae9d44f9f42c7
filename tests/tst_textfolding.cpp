#include "tests/testing.h"
#include "zvwidgets/zveditor/textfolding.h"

#include "qtundo/src/qtundo.h"
#include "zvwidgets/zveditor/document/documenthost.h"
#include "zvwidgets/zveditor/textdoc.h"

#include <QBuffer>
#include <QLoggingCategory>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTest>

#include <limits>
#include <memory>

using namespace Qt::StringLiterals;
using namespace zvwidgets;

/// Folds are written as one word for each line: its level, after "-" for the
/// first line of an open fold, "+" for that of a closed one and "." for a
/// hidden line that begins no fold; "*" is a hidden first line. A saved state
/// is written as "2-4o 6-8c".
class TestTextFolding : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void operations_data();
    void operations();
    void lastLines();
    void savedState_data();
    void savedState();
    void savedStateOfAnyDepth();
    void clearedDocumentHasNoFolds();
    void randomOperations_data();
    void randomOperations();
    void macroEndsAsSingleSteps_data() { randomOperations_data(); }
    void macroEndsAsSingleSteps();

private:
    void load(int lines);
    void run(const QString &script);
    QString shape() const { return shapeOf(*doc); }
    static QString shapeOf(const TextDocument &document);
    QString state() const;
    QList<int> levels() const;
    QString brokenRule() const;
    void checkVisibleLines() const;
    void randomStep(QRandomGenerator &random);

    DocumentHost host;
    std::unique_ptr<TextDocument> doc;
    TextFolding *folding = nullptr;
};

void TestTextFolding::init()
{
    doc.reset();
    doc = std::make_unique<TextDocument>(&host);
    folding = doc->folding();
    load(10);
}

void TestTextFolding::load(int lines)
{
    QByteArray text;
    for (int i = 0; i < lines; ++i)
        text += "line\n";
    text.chop(1);
    QBuffer buffer(&text);
    QVERIFY(buffer.open(QIODevice::ReadOnly));
    QVERIFY(doc->load(buffer));
    QCOMPARE(doc->lastLine(), lines - 1);
}

void TestTextFolding::run(const QString &script)
{
    const QStringList steps = script.split(u';', Qt::SkipEmptyParts);
    for (const QString &step : steps) {
        const QStringList words = step.split(u' ', Qt::SkipEmptyParts);
        const QString &name = words.first();
        const int line = words.value(1).toInt();
        if (name == "create"_L1)
            folding->createFold(line, words.value(2).toInt());
        else if (name == "remove"_L1)
            folding->removeFold(line);
        else if (name == "open"_L1)
            folding->openFold(line);
        else if (name == "close"_L1)
            folding->closeFold(line);
        else if (name == "toggle"_L1)
            folding->toggleFold(line);
        else if (name == "ensure"_L1)
            folding->ensureLineVisible(line);
        else if (name == "clear"_L1)
            folding->clearAllFolds();
        else if (name == "insert"_L1)
            doc->makeLine(line);
        else if (name == "delete"_L1)
            doc->removeLine(line);
        else if (name == "type"_L1)
            doc->cmdInsert(line, 0, u"x"_s);
        else if (name == "undo"_L1)
            doc->undoStack()->undo();
        else
            QFAIL(qPrintable(name));
    }
}

QString TestTextFolding::shapeOf(const TextDocument &document)
{
    QStringList words;
    for (int i = 0; i <= document.lastLine(); ++i) {
        const TextLine *const line = document.lineOf(i);
        const QString level = QString::number(line->foldingLevel);
        if (line->isFoldingStart && !line->isFoldVisible)
            words.append(u'*' + level);
        else if (line->isFoldingStart)
            words.append((line->isFolded ? u'+' : u'-') + level);
        else
            words.append(line->isFoldVisible ? level : u'.' + level);
    }
    return words.join(u' ');
}

QList<int> TestTextFolding::levels() const
{
    QList<int> result;
    for (int i = 0; i <= doc->lastLine(); ++i)
        result.append(doc->lineOf(i)->foldingLevel);
    return result;
}

QString TestTextFolding::state() const
{
    QStringList words;
    const FoldersState folds = folding->foldersState();
    for (const FolderInfo &info : folds) {
        words.append(u"%1-%2%3"_s.arg(info.firstLine)
                         .arg(info.lastLine)
                         .arg(info.isOpened ? u"o"_s : u"c"_s));
    }
    return words.join(u' ');
}

void TestTextFolding::operations_data()
{
    const Rows<QString, QString, QString> complaining("script", "result", "message");
    const auto row = [&complaining](const char *name, const char *script, const char *result,
                                    const char *message = "") {
        complaining(name, script, result, message);
    };
    const char *const noLines = "Can't create fold for firstLine >= lastLine";
    const char *const crossing = "Can't create intersected fold";
    const char *const noStart = "hm, can't find the start of folding";

    row("a new fold is closed", "create 2 4", "0 0 +1 .1 .1 0 0 0 0 0");
    row("a fold is cut to the document", "create 7 99", "0 0 0 0 0 0 0 +1 .1 .1");
    row("no fold of one line", "create 5 5", "0 0 0 0 0 0 0 0 0 0", noLines);
    row("no fold across a border", "create 2 5; create 4 8", "0 0 +1 .1 .1 .1 0 0 0 0", crossing);
    row("no fold across two neighbours", "create 0 3; create 4 7; open 0; open 4; create 2 5",
        "-1 1 1 1 -1 1 1 1 0 0", crossing);
    row("no fold into a neighbour of its own lines",
        "create 2 4; create 5 7; open 2; open 5; create 2 6", "0 0 -1 1 1 -1 1 1 0 0", crossing);
    row("a fold around two neighbours",
        "create 2 4; create 5 7; open 2; open 5; create 2 7; open 2", "0 0 -2 2 2 -2 2 2 0 0");
    row("a fold around what lies apart", "create 2 3; create 6 7; create 2 7; open 2",
        "0 0 -2 2 1 1 +2 .2 0 0");
    row("a fold in a fold", "create 2 8; open 2; create 4 6", "0 0 -1 1 +2 .2 .2 1 1 0");
    row("a fold around a fold", "create 4 6; create 2 8", "0 0 +1 .1 *2 .2 .2 .1 .1 0");
    row("two folds on the same lines", "create 2 4; create 2 4", "0 0 +2 .2 .2 0 0 0 0 0");
    row("two folds on one first line", "create 2 6; open 2; create 2 4", "0 0 +2 .2 .2 1 1 0 0 0");
    row("the outer one goes next", "create 2 6; open 2; create 2 4; remove 2; remove 2",
        "0 0 0 0 0 0 0 0 0 0");
    row("behind the inner one nothing unrelated is found",
        "create 0 1; create 3 7; open 3; create 3 5; toggle 7", "+1 .1 0 +2 .2 .2 1 1 0 0",
        noStart);
    row("removing by an inner line", "create 2 4; remove 4", "0 0 0 0 0 0 0 0 0 0");
    row("removing an outer fold keeps the inner", "create 4 6; create 2 8; remove 3",
        "0 0 0 0 +1 .1 .1 0 0 0");
    row("removing an inner fold keeps the outer", "create 4 6; create 2 8; remove 5",
        "0 0 +1 .1 .1 .1 .1 .1 .1 0");
    row("removing leaves the neighbour below", "create 2 4; create 5 7; remove 3",
        "0 0 0 0 0 +1 .1 .1 0 0");
    row("removing where there is none", "create 2 4; remove 1; remove 5; remove -1; remove 10",
        "0 0 +1 .1 .1 0 0 0 0 0");
    row("opening by an inner line", "create 2 4; open 3", "0 0 -1 1 1 0 0 0 0 0");
    row("opening where there is none", "create 2 4; open 7", "0 0 +1 .1 .1 0 0 0 0 0", noStart);
    row("closing opens", "create 2 4; close 3", "0 0 -1 1 1 0 0 0 0 0");
    row("toggling closes again", "create 2 4; toggle 3; toggle 3", "0 0 +1 .1 .1 0 0 0 0 0");
    row("an inner fold stays closed", "create 4 6; create 2 8; toggle 2",
        "0 0 -1 1 +2 .2 .2 1 1 0");
    row("a neighbour shows", "create 2 4; create 5 7; toggle 6", "0 0 +1 .1 .1 -1 1 1 0 0");
    row("clearing", "create 4 6; create 2 8; clear", "0 0 0 0 0 0 0 0 0 0");

    row("ensuring opens all around", "create 4 6; create 2 8; ensure 5", "0 0 -1 1 -2 2 2 1 1 0");
    row("ensuring opens no more", "create 4 6; create 2 8; ensure 8", "0 0 -1 1 +2 .2 .2 1 1 0");
    row("ensuring opens the fold that begins there", "create 2 4; ensure 2",
        "0 0 -1 1 1 0 0 0 0 0");
    row("ensuring a visible line", "create 2 4; ensure 6; ensure -1; ensure 10",
        "0 0 +1 .1 .1 0 0 0 0 0");
    row("ensuring through a shared first line",
        "create 1 8; open 1; create 3 6; open 3; create 3 4; toggle 1; ensure 6",
        "0 -1 1 -3 3 2 2 1 1 0");

    row("a new line joins its fold", "create 2 4; open 2; insert 4; insert 6",
        "0 0 -1 1 1 1 1 0 0 0 0 0");
    row("a new line before a fold does not", "create 2 4; open 2; insert 2",
        "0 0 0 -1 1 1 0 0 0 0 0");
    row("a fold moves with its lines", "create 4 6; delete 0; insert 1; insert 1",
        "0 0 0 0 0 +1 .1 .1 0 0 0");
    row("a fold gets shorter", "create 2 4; open 2; delete 3; delete 3", "0 0 -1 0 0 0 0 0");
    row("deleting its first line removes a fold", "create 2 4; delete 2", "0 0 0 0 0 0 0 0 0");
    row("deleting a shared first line removes both", "create 2 6; create 2 6; delete 2",
        "0 0 0 0 0 0 0 0 0");
    row("two folds come to lie below a closed one", "create 2 4; create 6 7; create 6 7; delete 5",
        "0 0 +1 .1 .1 *2 .2 0 0");
    row("closed folds move", "create 1 4; create 5 8; insert 10; insert 10; insert 0",
        "0 0 +1 .1 .1 .1 +1 .1 .1 .1 0 0 0");
    row("undo does not bring back a fold", "create 2 4; delete 2; undo", "0 0 0 0 0 0 0 0 0 0");
    row("typing opens", "create 2 4; type 3", "0 0 -1 1 1 0 0 0 0 0");
    row("undo of what is hidden opens", "type 3; create 2 4; undo", "0 0 -1 1 1 0 0 0 0 0");
}

void TestTextFolding::operations()
{
    QFETCH(QString, script);
    QFETCH(QString, message);
    if (!message.isEmpty())
        QTest::ignoreMessage(QtDebugMsg, qPrintable(message));
    run(script);
    QTEST(shape(), "result");
    QCOMPARE(brokenRule(), QString());
    checkVisibleLines();
}

void TestTextFolding::lastLines()
{
    run(u"create 0 1; create 3 6; open 3; create 4 6; create 7 9"_s);
    QStringList ends;
    for (int i = -1; i <= 10; ++i) {
        if (folding->isLastLineOfFold(i))
            ends.append(QString::number(i));
    }
    QCOMPARE(ends.join(u' '), u"1 6 9"_s);
    run(u"clear; create 0 9; delete 9; delete 8; delete 7; delete 6; delete 5"_s);
    run(u"delete 4; delete 3; delete 2; delete 1"_s);
    QCOMPARE(shape(), u"-1"_s);
    QVERIFY(!folding->isLastLineOfFold(0));
}

void TestTextFolding::savedState_data()
{
    const Rows<QString, QString, QString> row("given", "result", "saved");

    row("neighbours", "1-3c 4-7c", "0 +1 .1 .1 +1 .1 .1 .1 0 0", "1-3c 4-7c");
    row("inner before outer", "2-4c 6-7o 1-8o", "0 -1 +2 .2 .2 1 -2 2 1 0", "2-4c 6-7o 1-8o");
    row("a shared first line", "1-3o 1-5o", "0 -2 2 2 1 1 0 0 0 0", "1-3o 1-5o");
    row("a shared last line", "3-5c 1-5o", "0 -1 1 +2 .2 .2 0 0 0 0", "3-5c 1-5o");
    row("the whole document", "0-9c", "+1 .1 .1 .1 .1 .1 .1 .1 .1 .1", "0-9c");
    row("one line", "3-3c", "0 0 0 +1 0 0 0 0 0 0", "3-3c");
    row("too long", "7-50c", "0 0 0 0 0 0 0 +1 .1 .1", "7-9c");
    row("outside or reversed", "10-12c -3-4c 6-5c 2-3o", "0 0 -1 1 0 0 0 0 0 0", "2-3o");
    row("crossing inside another", "0-9o 2-6o 4-8c", "-1 1 -2 2 2 2 2 1 1 1", "2-6o 0-9o");
}

void TestTextFolding::savedState()
{
    QFETCH(QString, given);
    FoldersState list;
    static const QRegularExpression entry(u"(-?\\d+)-(\\d+)([oc])"_s);
    auto match = entry.globalMatch(given);
    while (match.hasNext()) {
        const QRegularExpressionMatch found = match.next();
        list.append(
            {found.captured(3) == "o"_L1, found.captured(1).toInt(), found.captured(2).toInt()});
    }
    // What was there before must go.
    run(u"create 0 1; create 5 8"_s);
    folding->setFolderstState(list);
    QTEST(shape(), "result");
    QTEST(state(), "saved");
    folding->setFolderstState(folding->foldersState());
    QTEST(shape(), "result");
}

void TestTextFolding::savedStateOfAnyDepth()
{
    constexpr int limit = std::numeric_limits<int>::max();
    folding->setFolderstState(FoldersState(200000, FolderInfo{true, 0, limit}));
    QCOMPARE(brokenRule(), QString());
    const FoldersState saved = folding->foldersState();
    QCOMPARE(saved.size(), 200000);
    QCOMPARE(doc->lineOf(9)->foldingLevel, 200000);
}

void TestTextFolding::clearedDocumentHasNoFolds()
{
    run(u"create 2 4"_s);
    load(6);
    QCOMPARE(shape(), u"0 0 0 0 0 0"_s);
    QCOMPARE(state(), QString());
    run(u"create 1 3; clear"_s);
    QCOMPARE(shape(), u"0 0 0 0 0 0"_s);
}

/// The first promise that the lines do not keep; empty if they keep all.
QString TestTextFolding::brokenRule() const
{
    int above = 0;
    for (int i = 0; i <= doc->lastLine(); ++i) {
        const TextLine *const line = doc->lineOf(i);
        const int level = line->foldingLevel;
        if (level < 0)
            return u"level below 0 at %1"_s.arg(i);
        if (level > above && !line->isFoldingStart)
            return u"fold without a first line at %1"_s.arg(i);
        if (line->isFoldingStart && level == 0)
            return u"first line of no fold at %1"_s.arg(i);
        if (line->isFolded && !line->isFoldingStart)
            return u"closed without a fold at %1"_s.arg(i);
        if (!line->isFoldVisible && level == 0)
            return u"hidden outside of folds at %1"_s.arg(i);
        above = level;
    }
    return QString();
}

void TestTextFolding::checkVisibleLines() const
{
    const auto isHidden = [this](int i) {
        return i >= 0 && i <= doc->lastLine() && !doc->lineOf(i)->isFoldVisible;
    };
    for (int i = 0; i <= doc->lastLine(); ++i) {
        int below = i;
        while (isHidden(below))
            ++below;
        QCOMPARE(folding->visibleLineFrom(i), below);
        int above = i;
        while (isHidden(above))
            --above;
        QCOMPARE(folding->visibleLineUpTo(i), above);
    }
}

void TestTextFolding::randomStep(QRandomGenerator &random)
{
    const int line = random.bounded(-1, doc->lastLine() + 2);
    const FoldersState before = folding->foldersState();
    switch (random.bounded(8)) {
    case 0:
    case 1: {
        const QString lines = shape();
        if (!folding->createFold(line, line + random.bounded(12)))
            QCOMPARE(shape(), lines);
        break;
    }
    case 2: {
        const bool found = folding->findFirstFoldLine(line) != -1;
        folding->removeFold(line);
        const FoldersState after = folding->foldersState();
        QCOMPARE(after.size(), before.size() - (found ? 1 : 0));
        break;
    }
    case 3:
        folding->toggleFold(line);
        QCOMPARE(folding->foldersState().size(), before.size());
        break;
    case 4:
        folding->ensureLineVisible(line);
        if (line >= 0 && line <= doc->lastLine())
            QVERIFY(doc->lineOf(line)->isFoldVisible);
        break;
    case 5:
        doc->makeLine(std::max(0, line));
        QCOMPARE(folding->foldersState().size(), before.size());
        break;
    case 6:
        if (line >= 0 && line < doc->lastLine())
            doc->removeLine(line);
        break;
    case 7:
        if (doc->undoStack()->canUndo())
            doc->undoStack()->undo();
        break;
    }
}

void TestTextFolding::randomOperations_data()
{
    QTest::addColumn<quint32>("seed");
    for (quint32 seed = 1; seed <= 10; ++seed)
        QTest::addRow("seed %u", seed) << seed;
}

void TestTextFolding::randomOperations()
{
    QFETCH(quint32, seed);
    QLoggingCategory::setFilterRules(u"default.debug=false"_s);
    QRandomGenerator random(seed);
    load(20);
    for (int step = 0; step < 1000; ++step) {
        const QString before = shape();
        randomStep(random);
        const QString broken = brokenRule();
        checkVisibleLines();
        if (!broken.isEmpty() || QTest::currentTestFailed())
            QFAIL(qPrintable(u"step %1: %2, after %3"_s.arg(step).arg(broken, before)));

        const QList<int> present = levels();
        const QString saved = state();
        folding->setFolderstState(folding->foldersState());
        QCOMPARE(state(), saved);
        QCOMPARE(levels(), present);
        if (random.bounded(50) == 0)
            folding->clearAllFolds();
    }
    QLoggingCategory::setFilterRules(QString());
}

// In a macro folds follow the edits only as far as the next one needs it, and the
// folds of lines that go are taken off the lines below later.
void TestTextFolding::macroEndsAsSingleSteps()
{
    QFETCH(quint32, seed);
    QLoggingCategory::setFilterRules(u"default.debug=false"_s);
    QRandomGenerator random(seed);
    TextDocument single(&host);
    const auto edit = [](TextDocument &target, int kind, int line) {
        if (kind == 0)
            target.cmdInsert(line, 0, u"x"_s);
        else if (kind == 1)
            target.makeLine(line);
        else if (line < target.lastLine())
            target.removeLine(line);
    };
    const auto removeFolds = [&single](int line) {
        TextFolding *const folds = single.folding();
        folds->ensureLineVisible(line);
        while (single.lineOf(line)->isFoldingStart && single.lineOf(line)->foldingLevel > 0)
            folds->removeFold(line);
    };
    for (int round = 0; round < 60; ++round) {
        load(60);
        for (int i = 0; i < 40; ++i) {
            const int line = random.bounded(60);
            folding->createFold(line, line + random.bounded(12));
            folding->toggleFold(random.bounded(60));
        }
        single.clear();
        single.insert(doc->text(), 0, 0);
        single.folding()->setFolderstState(folding->foldersState());
        QCOMPARE(shapeOf(single), shape());

        doc->macroBegin(u"macro"_s);
        int line = random.bounded(60);
        int steps = 0;
        for (; steps < 40; ++steps) {
            line = random.bounded(4) == 0 ? random.bounded(doc->lastLine()) : line;
            line = std::min(line + random.bounded(2), doc->lastLine());
            const int kind = random.bounded(5);
            edit(*doc, kind, line);
            if (kind > 1 && line < single.lastLine())
                removeFolds(line);
            edit(single, kind, line);
            single.folding()->updateLinesVisibility();
        }
        doc->macroEnd();
        QCOMPARE(shape(), shapeOf(single));
        QCOMPARE(brokenRule(), QString());
        checkVisibleLines();
        doc->undoStack()->undo();
        while (single.lastLine() != 59 || single.text() != doc->text()) {
            single.undoStack()->undo();
            single.folding()->updateLinesVisibility();
        }
        QCOMPARE(shape(), shapeOf(single));
    }
    QLoggingCategory::setFilterRules(QString());
}

QTEST_MAIN(TestTextFolding)
#include "tst_textfolding.moc"
