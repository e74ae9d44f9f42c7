#include "app/ctags/ctagsoutput.h"
#include "app/ctags/ctagsparser.h"
#include "app/ctags/node.h"
#include "tests/apptest.h"

#include <QApplication>
#include <QDir>
#include <QMessageBox>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

using namespace Qt::StringLiterals;
using namespace vesk;

namespace {

/// A line for each node: blanks for its depth, type number, name, 0-based line.
QString outline(const Node *node, int depth = 0)
{
    QString result;
    for (; node; node = node->next) {
        result += QString(depth, u' ') +
                  u"%1 %2 %3\n"_s.arg(node->type).arg(node->name).arg(node->start_line);
        result += outline(node->child, depth + 1);
    }
    return result;
}

/// A parser whose results come when the test says so.
class ManualParser : public Parser
{
public:
    using Parser::parse;
    void finish(int key) { emit nodes(key, new Node(nullptr)); }
    int starts = 0;

protected:
    int parse(const QString &text) override
    {
        ++starts;
        return calculateKey(text);
    }
};

} // namespace

/// From texts to trees of symbols: the cache of the base, the tool's output, and
/// the tool itself.
class CTagsTest : public AppTest
{
    Q_OBJECT

private slots:
    void initTestCase() { qRegisterMetaType<Node *>(); }
    void positions_data();
    void positions();
    void linesAreFoundWithoutWalking();
    void unchangedTextIsNotParsedAgain();
    void sameKeyStartsNoSecondParse();
    void trees_data();
    void trees();
    void longRowsOfSymbols();
    void runsTheTool_data();
    void runsTheTool();
    void missingToolIsToldOnce();
};

void CTagsTest::positions_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("number");
    QTest::addColumn<int>("lineOf");
    QTest::addColumn<int>("columnOf");
    QTest::addColumn<int>("lastOfLine");
    QTest::newRow("first line") << u"ab\ncd"_s << 0 << 0 << 0 << 1;
    QTest::newRow("second line") << u"ab\ncd"_s << 1 << 0 << 1 << 5;
    QTest::newRow("line end counts for the line below") << u"ab\ncd"_s << 2 << 1 << 0 << 6;
    QTest::newRow("past the end") << u"ab\ncd"_s << 9 << 1 << 7 << 6;
    QTest::newRow("no line end") << u"abcd"_s << 0 << 0 << 0 << 4;
    QTest::newRow("negative") << u"ab\ncd"_s << -3 << 0 << 0 << 1;
    QTest::newRow("empty line is passed over") << u"a\n\ncd\n"_s << 1 << 1 << 0 << 4;
    QTest::newRow("empty text") << QString() << 0 << 0 << 0 << 1;
}

void CTagsTest::positions()
{
    QFETCH(const QString, text);
    QFETCH(const int, number);
    QTEST(Parser::pos2y(number, text), "lineOf");
    QTEST(Parser::pos2x(number, text), "columnOf");
    QTEST(Parser::xy2pos(0, number, text), "lastOfLine");
}

void CTagsTest::linesAreFoundWithoutWalking()
{
    QRandomGenerator random(7);
    for (int run = 0; run < 300; ++run) {
        QString text;
        for (quint32 i = random.bounded(30U); i > 0; --i)
            text += u"ab\n\n"[random.bounded(4)];
        const TextLines lines(text);
        for (int line = -1; line < 20; ++line)
            QCOMPARE(lines.lastPos(line), Parser::xy2pos(0, line, text));
    }
}

void CTagsTest::unchangedTextIsNotParsedAgain()
{
    ManualParser parser;
    const QSignalSpy reparsed(&parser, &Parser::reparsed);
    const QSignalSpy delivered(&parser, &Parser::nodes);
    const QSignalSpy dropped(&parser, &Parser::dropped);
    const int key = parser.parse(u"one"_s, u"f.c"_s);
    parser.finish(key);
    const Node *first = parser.tree(u"f.c"_s);

    QCOMPARE(parser.parse(u"one"_s, u"f.c"_s), key);
    QCOMPARE(delivered.size(), 1);
    QTRY_COMPARE(delivered.size(), 2);
    QCOMPARE(delivered[1][1].value<Node *>(), first);
    QCOMPARE(reparsed.size(), 1);
    QCOMPARE(dropped.size(), 0);

    // The same text is another file's business there, and a changed one is new.
    parser.finish(parser.parse(u"one"_s, u"g.c"_s));
    parser.finish(parser.parse(u"two"_s, u"f.c"_s));
    parser.finish(parser.parse(u"one"_s, u"f.c"_s));
    QCOMPARE(parser.starts, 4);
    QCOMPARE(reparsed.size(), 4);
    QCOMPARE(dropped.size(), 2);
}

void CTagsTest::sameKeyStartsNoSecondParse()
{
    ManualParser parser;
    const int key = parser.parse(u"ab"_s, u"f.c"_s);
    QCOMPARE(parser.parse(u"ba"_s, u"g.c"_s), key);
    QCOMPARE(parser.starts, 1);
    parser.finish(key);
    QVERIFY(parser.tree(u"f.c"_s));
    QVERIFY(!parser.tree(u"g.c"_s));
    parser.parse(u"ba"_s, u"g.c"_s);
    QCOMPARE(parser.starts, 2);
}

void CTagsTest::trees_data()
{
    QTest::addColumn<QString>("ext");
    QTest::addColumn<QByteArray>("output");
    QTest::addColumn<QString>("expected");
    QTest::newRow("members below their class")
        << u".cpp"_s << QByteArray("A\tx\t1;\"\tc\nf\tx\t2;\"\tf\tclass:A\ng\tx\t3;\"\tf\n")
        << u"102 A 0\n 103 f 1\n103 g 2\n"_s;
    QTest::newRow("missing scopes become namespaces, after what was printed")
        << u".cpp"_s << QByteArray("f\tx\t5;\"\tf\tclass:N::A\ng\tx\t6;\"\tf\n")
        << u"103 g 5\n114 N 0\n 114 A 0\n  103 f 4\n"_s;
    QTest::newRow("a missing scope takes the place of the known one around it")
        << u".cpp"_s << QByteArray("N\tx\t3;\"\tn\nf\tx\t5;\"\tf\tclass:N::A\n")
        << u"114 N 2\n 114 A 2\n  103 f 4\n"_s;
    QTest::newRow("of overloads the last is shown")
        << u".cpp"_s << QByteArray("f\tx\t2;\"\tf\nf\tx\t4;\"\tf\ng\tx\t6;\"\tf\n")
        << u"103 f 3\n103 g 5\n"_s;
    QTest::newRow("equal names apart don't make a ring")
        << u".cpp"_s << QByteArray("f\tx\t2;\"\tf\ng\tx\t6;\"\tf\nf\tx\t4;\"\tf\n")
        << u"103 f 3\n103 g 5\n"_s;
    const QByteArray kinds("a\tx\t1;\"\tm\nb\tx\t2;\"\tv\nc\tx\t3;\"\tf\nd\tx\t4;\"\tzz\n");
    QTest::newRow("kinds of C") << u".c"_s << kinds << u"109 a 0\n103 b 1\n103 c 2\n101 d 3\n"_s;
    QTest::newRow("kinds of Java")
        << u".java"_s << kinds << u"103 a 0\n109 b 1\n109 c 2\n101 d 3\n"_s;
    QTest::newRow("kinds of others")
        << u".cc"_s << kinds << u"103 a 0\n109 b 1\n103 c 2\n101 d 3\n"_s;
    QTest::newRow("scopes of the file are none, arities are, others are whole")
        << u".x"_s
        << QByteArray("a\tx\t1;\"\tf\tfile:\nb\tx\t2;\"\tf\tarity:2\nc\tx\t3;\"\tf\tq:z\n")
        << u"103 a 0\n114 2 0\n 103 b 1\n114 q:z 0\n 103 c 2\n"_s;
    QTest::newRow("nothing, diagnostics, an open last line")
        << u".c"_s << QByteArray("OPENING x\nReading options\tfrom x\n\n\t\t\t\na\tx\t1;\"\tf")
        << u"0 No tags found 0\n"_s;
    QTest::newRow("numbers that are none")
        << u".c"_s << QByteArray("a\tx\twhat\tf\nb\tx\t99999999999;\"\tf\n")
        << u"103 a -1\n103 b -1\n"_s;
}

void CTagsTest::trees()
{
    QFETCH(const QString, ext);
    QFETCH(const QByteArray, output);
    CTagsOutput result(u"text"_s, ext);
    result.addLines(output);
    QTEST(outline(result.buildTree().get()), "expected");
}

void CTagsTest::longRowsOfSymbols()
{
    QByteArray output;
    for (int i = 0; i < 100'000; ++i)
        output += "f" + QByteArray::number(i) + "\tx\t1;\"\tf\tclass:A\n";
    CTagsOutput result(QString(), u".cpp"_s);
    result.addLines(output);
    const std::unique_ptr<Node> tree = result.buildTree();
    int count = 0;
    for (const Node *node = tree.get(); node; node = node->following())
        ++count;
    QCOMPARE(count, 100'001);
}

void CTagsTest::runsTheTool_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("expected");
    QTest::newRow("a class and its method") << u"/a/b.cpp"_s << u"114 A 0\n 103 A 0\n"_s;
    QTest::newRow("an ending that leads nowhere") << u"/a.d/b"_s << u"0 No tags found 0\n"_s;
    QTest::newRow("an ending too long for a name")
        << u"/b."_s + QString(300, u'c') << u"0 No tags found 0\n"_s;
}

void CTagsTest::runsTheTool()
{
    QFETCH(const QString, name);
    const QStringList left = QDir::temp().entryList({u"vesk-*"_s}, QDir::Dirs);
    CTagsParser parser;
    const QSignalSpy delivered(&parser, &Parser::nodes);
    const int key = parser.parse(u"A::A() {}\n"_s, name);
    QTRY_COMPARE(delivered.size(), 1);
    QCOMPARE(delivered[0][0].toInt(), key);
    QTEST(outline(parser.tree(name)), "expected");
    QCOMPARE(QDir::temp().entryList({u"vesk-*"_s}, QDir::Dirs), left);
}

void CTagsTest::missingToolIsToldOnce()
{
    makeShell();
    CTagsParser parser;
    const QByteArray searchPath = qgetenv("PATH");
    int told = 0;
    QTimer closer;
    connect(&closer, &QTimer::timeout, this, [&told] {
        if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget())) {
            QCOMPARE(box->text(), u"Can't run ctags program"_s);
            ++told;
            box->button(QMessageBox::Ok)->click();
        }
    });
    closer.start(10);
    const auto parseAndWait = [&parser](const QString &text) {
        const int key = parser.parse(text, u"a.c"_s);
        QTRY_VERIFY(!parser.isParsing(key));
    };
    qputenv("PATH", "/nowhere");
    parseAndWait(u"one"_s);
    QTRY_COMPARE(told, 1);
    parseAndWait(u"two"_s);
    qputenv("PATH", searchPath);
    parseAndWait(u"three"_s);
    QCOMPARE(told, 1);
    qputenv("PATH", "/nowhere");
    parseAndWait(u"four"_s);
    QTRY_COMPARE(told, 2);
    qputenv("PATH", searchPath);
    dropShell();
}

QTEST_MAIN(CTagsTest)
#include "tst_ctags.moc"
