#include "qtundo/src/qtundo.h"
#include "tests/testing.h"
#include "zvwidgets/zveditor/highlight.h"
#include "zvwidgets/zveditor/highlight/highlightmanager.h"
#include "zvwidgets/zveditor/textdoc.h"
#include "zvwidgets/zveditor/texteditor.h"
#include "zvwidgets/zveditor/textfolding.h"
#include "zvwidgets/zveditor/textmanager.h"
#include "zvwidgets/zveditor/textview.h"

#include <QBuffer>
#include <QFontDatabase>
#include <QRandomGenerator>
#include <QTest>
#include <QTextStream>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace zvwidgets;

namespace {

void load(TextDocument &doc, QString content)
{
    QTextStream stream(&content);
    doc.load(stream);
}

QString saved(TextDocument &doc)
{
    QString content;
    QTextStream stream(&content);
    return doc.save(stream) ? content : u"refused"_s;
}

/// An editor on a document of its own.
struct Editor
{
    Editor() : editor(manager.createEditor(nullptr, nullptr)), doc(*editor->document()) {}

    TextView &view() { return *editor->view(); }

    TextEditorManager manager;
    const std::unique_ptr<TextEditor> editor;
    TextDocument &doc;
};

/// The measures of a line as they are meant, one character at a time.
struct Measures
{
    TextDocument &doc;
    TextView &view;
    int line;

    const TextLine &textLine() const { return *doc.lineOf(line); }

    int after(int x, int column) const
    {
        const QChar character = textLine().at(column);
        if (character == QLatin1Char('\t'))
            return (x / view.tabsWidth() + 1) * view.tabsWidth();
        const int number = textLine().attribute(unsigned(column));
        return x + doc.manager()->width(view.hl->attribute(number)->fontType, character);
    }

    int textWidth(int length) const
    {
        int x = 0;
        for (int column = 0; column < length; ++column)
            x = column < textLine().textLength() ? after(x, column)
                                                 : x + doc.manager()->width(0, QChar(u' '));
        return x;
    }

    int textLength(int width) const
    {
        int x = 0;
        int column = 0;
        for (; x < width && column < textLine().textLength(); ++column)
            x = after(x, column);
        column += x < width ? 1 : 0;
        return column == 0 ? 0 : column - 1;
    }

    int nextWrapPos(int width, int from) const
    {
        width = std::max(width, 30);
        int x = 0;
        int lastSpace = -1;
        int column = from;
        for (; x < width && column < textLine().textLength(); ++column) {
            if (textLine().at(column).isSpace())
                lastSpace = column;
            x = after(x, column);
        }
        const bool atWord = doc.getWrapMode() == wrapWord;
        if (atWord && lastSpace > from && column < textLine().textLength())
            return lastSpace;
        return x > width && column > from + 1 ? column - 1 : column;
    }
};

int naiveLongest(const TextDocument &doc)
{
    int longest = 0;
    for (int line = 0; line <= doc.lastLine(); ++line)
        longest = std::max(longest, doc.lineWidth(doc.lineOf(line)));
    return longest;
}

} // namespace

class TestTextDoc : public QObject
{
    Q_OBJECT
private slots:
    void loadAndSave_data();
    void loadAndSave();
    void loadedContexts_data();
    void loadedContexts();
    void loadStartsAnew();
    void failedSaveStaysModified();
    void longestLine();
    void longestLineFarFromEdits();
    void contextsFollowEdits();
    void macroTellsViewsOnce();
    void measures_data();
    void measures();
    void longLineMeasures_data();
    void longLineMeasures();
    void rowsAlwaysEnd();
    void wordIn_data();
    void wordIn();
    void spacesInTab_data();
    void spacesInTab();
    void lineSharesNoMemoryOnceEdited();
};

void TestTextDoc::loadAndSave_data()
{
    const Rows<QString, int, QString> row("content", "lines", "expected");
    row("empty", QString(), 1, QString());
    row("final line end goes", "a\nb\n", 2, "a\nb");
    row("final empty line stays", "a\n\n", 2, "a\n");
    row("every line end ends a line", "a\r\nb\rc\nd", 4, "a\nb\nc\nd");
    row("tabs and blanks stay", "\ta  \n  ", 2, "\ta  \n  ");
}

void TestTextDoc::loadAndSave()
{
    QFETCH(QString, content);
    TextEditorManager manager;
    TextDocument doc(&manager);
    load(doc, content);
    QTEST(doc.lastLine() + 1, "lines");
    QTEST(saved(doc), "expected");
    QTEST(doc.text(), "expected");
}

void TestTextDoc::loadedContexts_data()
{
    const Rows<QStringList> row("highlights");
    row("no view", {});
    row("one view", {u"C++"_s});
    row("chained highlights", {u"C++"_s, u"Python"_s});
}

// Large enough for several threads.
void TestTextDoc::loadedContexts()
{
    QFETCH(QStringList, highlights);
    static constexpr const char *pieces[] = {"int function(int argument);\n", "/* b", "*/\n",
                                             "\"\"\"\n", "\tc of some length\n"};
    QRandomGenerator random(1);
    QByteArray bytes;
    while (bytes.size() < 2'000'000)
        bytes += pieces[random.bounded(5)];
    bytes += QByteArray(700, 'W');
    QBuffer device(&bytes);
    device.open(QIODevice::ReadOnly);

    TextEditorManager manager;
    auto *document = new TextDocument(&manager);
    std::vector<std::unique_ptr<TextEditor>> editors;
    for (const QString &highlight : highlights) {
        editors.push_back(std::make_unique<TextEditor>(document, nullptr));
        manager.addEditor(editors.back().get(), document);
        editors.back()->setHighlight(highlight);
    }
    const std::unique_ptr<TextDocument> own(highlights.isEmpty() ? document : nullptr);
    const auto contexts = [document] {
        QList<int> all;
        for (int line = 0; line <= document->lastLine(); ++line) {
            const TextLine *const textLine = document->lineOf(line);
            all << textLine->highlightContext() << textLine->context() << textLine->needsScan();
        }
        return all;
    };
    QVERIFY(document->load(device));
    const QList<int> loaded = contexts();
    const int width = document->documentWidth();
    QCOMPARE(document->lineOf(document->lastLine())->textLength(), 700);
    QVERIFY(width > 0);

    document->updateLines();
    QVERIFY(contexts() == loaded);
    QCOMPARE(document->documentWidth(), width);
}

void TestTextDoc::loadStartsAnew()
{
    TextEditorManager manager;
    TextDocument doc(&manager);
    doc.insert(u"one\ntwo"_s, 0, 0);
    QVERIFY(doc.isModified());
    doc.setReadOnly(true);
    QByteArray bytes("\xEF\xBB\xBFx\r\ny");
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    QVERIFY(doc.load(buffer));
    QCOMPARE(doc.text(), u"x\ny"_s);
    QVERIFY(!doc.isModified() && !doc.isReadOnly() && !doc.undoStack()->canUndo());
    QVERIFY(doc.fileFormat().hasByteOrderMark);
    doc.clear();
    QCOMPARE(doc.text(), QString());
    QVERIFY2(doc.fileFormat().hasByteOrderMark, "it is the same file without its text");
}

void TestTextDoc::failedSaveStaysModified()
{
    TextEditorManager manager;
    TextDocument doc(&manager);
    doc.insert(u"text"_s, 0, 0);
    QFile full(u"/dev/full"_s);
    QVERIFY(full.open(QIODevice::WriteOnly));
    QTextStream stream(&full);
    QVERIFY(!doc.save(stream));
    doc.setReadOnly(true);
    QCOMPARE(saved(doc), u"refused"_s);
    QVERIFY(doc.isModified());
}

// Far jumps of the place of change carry lines through the array.
void TestTextDoc::longestLine()
{
    QRandomGenerator random(1);
    TextEditorManager manager;
    TextDocument doc(&manager);
    QStringList lines;
    for (int i = 0; i < 5000; ++i)
        lines.append(QString(random.bounded(60), u'x'));
    load(doc, lines.join(u'\n'));
    for (int i = 0; i < 2000; ++i) {
        const int line = random.bounded(doc.lastLine());
        const int column = random.bounded(80);
        switch (random.bounded(9)) {
        case 0:
        case 1:
            doc.cmdInsert(line, column, QString(random.bounded(30), u'y'));
            break;
        case 2:
        case 3:
            doc.cmdRemove(line, column / 4, random.bounded(40));
            break;
        case 4:
            doc.cmdInsertLineBreak(line, column);
            break;
        case 5:
            doc.cmdRemoveLineBreak(line);
            break;
        case 6:
            doc.removeText(line, column, std::min(line + random.bounded(30), doc.lastLine()), 3);
            break;
        case 7:
            doc.insert(QString(random.bounded(20), u'\n'), line, 0);
            break;
        default:
            doc.undoStack()->undo();
        }
        if (doc.maxLength != naiveLongest(doc))
            QFAIL(qPrintable(u"after step %1: %2 instead of %3"_s.arg(
                QString::number(i), QString::number(doc.maxLength),
                QString::number(naiveLongest(doc)))));
    }
}

// What is known of blocks of lines outlives edits elsewhere. Stripping blanks goes
// past the document, which hears of nothing.
void TestTextDoc::longestLineFarFromEdits()
{
    TextEditorManager manager;
    TextDocument doc(&manager);
    QStringList lines(5000, u"x"_s);
    lines[0] = QString(20, u'x');
    lines[2500] = u"xx          "_s;
    lines[4000] = u"xxxxx"_s;
    load(doc, lines.join(u'\n'));
    QVERIFY(doc.lineOf(2500)->removeSpaces());
    doc.cmdRemove(0, 18, 50);
    QCOMPARE(doc.maxLength, naiveLongest(doc));
    doc.cmdInsert(4500, 0, u"grown"_s);
    doc.cmdRemove(0, 1, 50);
    QCOMPARE(doc.maxLength, naiveLongest(doc));
}

void TestTextDoc::contextsFollowEdits()
{
    Editor fixture;
    TextDocument &doc = fixture.doc;
    fixture.view().setHighlight(u"C++"_s);
    load(doc, u"a\nb\nc\n/* d\ne */ f\ng"_s);
    const auto contexts = [&doc] {
        QString all;
        for (int line = 0; line <= doc.lastLine(); ++line)
            all += QLatin1Char(doc.lineOf(line)->context() ? 'x' : '.');
        return all;
    };
    QCOMPARE(contexts(), u"...x.."_s);
    doc.cmdInsert(0, 1, u"/*"_s);
    QCOMPARE(contexts(), u"xxxx.."_s);
    for (int line = 1; line <= 4; ++line)
        QVERIFY(doc.lineOf(line)->highlightContext() != 0);
    doc.removeLine(0);
    QCOMPARE(contexts(), u"..x.."_s);
    doc.undoStack()->undo();
    QCOMPARE(contexts(), u"xxxx.."_s);
    doc.cmdInsertLineBreak(1, 0);
    QCOMPARE(contexts(), u"xxxxx.."_s);
    doc.removeText(1, 0, 5, 3);
    doc.undoStack()->undo();
    QCOMPARE(contexts(), u"xxxxx.."_s);
    doc.undoStack()->undo(2);
    QCOMPARE(contexts(), u"...x.."_s);
}

void TestTextDoc::macroTellsViewsOnce()
{
    Editor fixture;
    TextDocument &doc = fixture.doc;
    int undoChanges = 0;
    connect(fixture.editor.get(), &TextEditor::changed, this,
            [&](int id) { undoChanges += id == TextEditor::UndoRedo; });
    doc.insert(u"a\nb\nc"_s, 0, 0);
    QCOMPARE(undoChanges, 1);
    QCOMPARE(fixture.editor->line(), 2);
    QCOMPARE(fixture.editor->column(), 1);
    doc.undoStack()->undo();
    QCOMPARE(undoChanges, 2);
    QCOMPARE(fixture.editor->line(), 0);
    QVERIFY2(doc.isModified(), "modified follows commands, not the history");
}

void TestTextDoc::measures_data()
{
    const Rows<QString, wrapMode> row("family", "mode");
    const QString fixed = QFontDatabase::systemFont(QFontDatabase::FixedFont).family();
    row("fixed pitch", fixed, wrapLine);
    row("fixed pitch, by words", fixed, wrapWord);
    row("proportional", "DejaVu Sans", wrapLine);
    row("proportional, by words", "DejaVu Sans", wrapWord);
}

void TestTextDoc::measures()
{
    QFETCH(QString, family);
    QFETCH(wrapMode, mode);
    Editor fixture;
    TextDocument &doc = fixture.doc;
    fixture.manager.setFont(QFont(family, 10));
    fixture.view().setHighlight(u"C++"_s);
    doc.setWrapMode(mode);
    const QStringList pieces = {u"if "_s,  u"\t"_s,         u"\"text\""_s, u"   "_s,
                                u"iiii"_s, u"WWWWWWWWWW"_s, u"/* c */"_s};
    QRandomGenerator random(2);
    for (int round = 0; round < 60; ++round) {
        QString line;
        for (int i = random.bounded(25); i > 0; --i)
            line += pieces.at(random.bounded(int(pieces.size())));
        load(doc, line);
        const int length = doc.textLength(0);
        const Measures expected{doc, fixture.view(), 0};
        fixture.view().hl->highlight(doc.lineOf(0));
        for (int column = 0; column <= length + 3; ++column)
            QCOMPARE(doc.textWidth(0, column), expected.textWidth(column));
        const int whole = doc.textWidth(0, length);
        for (int width = 0; width < whole + 20; width += 1 + width % 7)
            QCOMPARE(doc.textLength(0, width), expected.textLength(width));
        for (int from = 0; from < length; ++from) {
            for (const int width : {10, 30, 31, 100, 150})
                QCOMPARE(doc.nextWrapPos(0, width, from), expected.nextWrapPos(width, from));
        }
    }
}

void TestTextDoc::longLineMeasures_data()
{
    const Rows<QString> row("family");
    row("fixed pitch", QFontDatabase::systemFont(QFontDatabase::FixedFont).family());
    row("proportional", "DejaVu Sans");
}

// What was measured of a long line is kept while it is edited.
void TestTextDoc::longLineMeasures()
{
    QFETCH(QString, family);
    Editor fixture;
    TextDocument &doc = fixture.doc;
    fixture.manager.setFont(QFont(family, 10));
    fixture.view().setHighlight(u"C++"_s);
    load(doc, u"if (word)\t{ /* il */ }  "_s.repeated(600));
    const Measures expected{doc, fixture.view(), 0};
    QRandomGenerator random(4);
    for (int round = 0; round < 50; ++round) {
        const int length = doc.textLength(0);
        const int column = random.bounded(length);
        switch (random.bounded(5)) {
        case 0:
            doc.cmdInsert(0, column, u"W\ti"_s);
            break;
        case 1:
            doc.cmdInsert(0, column, u"\"\t"_s.repeated(random.bounded(4000)));
            break;
        case 2:
            doc.cmdRemove(0, column, random.bounded(6000));
            break;
        case 3:
            doc.undoStack()->undo();
            break;
        default:
            doc.setSpacesInTab(random.bounded(1, 9));
        }
        const int place = random.bounded(doc.textLength(0) + 10);
        const int x = doc.textWidth(0, place);
        QCOMPARE(x, expected.textWidth(place));
        QCOMPARE(doc.textLength(0, x), expected.textLength(x));
        QCOMPARE(doc.tabsBefore(0, place),
                 int(doc.lineOf(0)->left(place).count(QLatin1Char('\t'))));
        QCOMPARE(doc.documentWidth(), doc.lineWidth(doc.lineOf(0)));
    }
}

void TestTextDoc::rowsAlwaysEnd()
{
    Editor fixture;
    TextDocument &doc = fixture.doc;
    fixture.manager.setFont(QFont(u"DejaVu Sans"_s, 60));
    fixture.manager.setTabWidth(16);
    load(doc, u"WW\t\tW W\t"_s);
    for (const wrapMode mode : {wrapLine, wrapWord}) {
        doc.setWrapMode(mode);
        int rows = 0;
        for (int column = 0; column < doc.textLength(0); ++rows) {
            const int next = doc.nextWrapPos(0, 30, column);
            QVERIFY(next > column);
            column = next;
        }
        QCOMPARE(rows, 8);
    }
}

void TestTextDoc::wordIn_data()
{
    const Rows<int, QString, int, int> row("column", "word", "start", "end");
    // "ab_1 $x+=- ä9  "
    row("start of a word", 0, "ab_1", 0, 4);
    row("blank", 4, QString(), 4, 4);
    row("dollar counts as a letter", 5, "$x", 5, 7);
    row("other characters", 8, "+=-", 7, 10);
    row("letters of other scripts", 12, "ä9", 11, 13);
    row("at the end", 15, QString(), 15, 15);
    row("before the start", -1, QString(), -1, -1);
}

void TestTextDoc::wordIn()
{
    QFETCH(int, column);
    QFETCH(QString, word);
    TextEditorManager manager;
    TextDocument doc(&manager);
    load(doc, u"ab_1 $x+=- ä9  "_s);
    int start = 0;
    int end = 0;
    const QString found = doc.wordIn(QPoint(column, 0), &start, &end);
    QCOMPARE(found, word);
    QCOMPARE(found.isNull(), word.isNull());
    QTEST(start, "start");
    QTEST(end, "end");
}

void TestTextDoc::spacesInTab_data()
{
    const Rows<int, int> row("wanted", "expected");
    row("too few", 0, 1);
    row("too many", 99, 16);
    row("fine", 3, 3);
}

void TestTextDoc::spacesInTab()
{
    QFETCH(int, wanted);
    QFETCH(int, expected);
    Editor fixture;
    load(fixture.doc, u"\tx\n1234567890123456"_s);
    fixture.doc.setSpacesInTab(wanted);
    QCOMPARE(fixture.doc.spacesInTab(), expected);
    QCOMPARE(fixture.view().tabsWidth(), expected * fixture.view().spaceWidth());
    QCOMPARE(fixture.doc.maxLength, naiveLongest(fixture.doc));
}

// Loaded lines are parts of one block; a change of one must not be seen in
// another, nor take the size of the block with it.
void TestTextDoc::lineSharesNoMemoryOnceEdited()
{
    TextEditorManager manager;
    TextDocument doc(&manager);
    QByteArray bytes("first\nsecond\n\nthird");
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    QVERIFY(doc.load(buffer));
    doc.cmdInsert(0, 7, u"longer than before"_s);
    doc.cmdRemove(1, 1, 2);
    doc.cmdInsert(2, 2, u"x"_s);
    doc.cmdRemove(3, 2, 50);
    QCOMPARE(doc.text(), u"first  longer than before\nsond\n  x\nth"_s);
    for (int line = 0; line <= doc.lastLine(); ++line)
        QVERIFY(doc.lineOf(line)->capacity() < 100);
    doc.undoStack()->undo(4);
    QCOMPARE(doc.text(), u"first  \nsecond\n  \nthird"_s);
    // More than there can be is all there is.
    doc.lineOf(1)->replace(2, unsigned(-1), u"l"_s);
    QCOMPARE(doc.text(), u"first  \nsel\n  \nthird"_s);
}

QTEST_MAIN(TestTextDoc)
#include "tst_textdoc.moc"
