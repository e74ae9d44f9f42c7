#include "app/ctags/ctagsoutput.h"
#include "app/ctags/ctagsparser.h"
#include "app/ctags/node.h"
#include "tests/apptest.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMessageBox>
#include <QProcess>
#include <QProcessEnvironment>
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
    int parse(const QString &) override
    {
        ++starts;
        return keyOfText();
    }
};

QByteArray toolOutput(const QStringList &arguments, const QString &folder = QString())
{
    QProcess process;
    process.setWorkingDirectory(folder);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"LC_ALL"_s, u"C"_s);
    process.setProcessEnvironment(environment);
    process.start(u"ctags"_s, arguments);
    process.waitForFinished();
    return process.readAllStandardOutput();
}

/// The letters of the kinds by language and name.
QHash<QString, QString> kindLetters()
{
    QHash<QString, QString> letters;
    const QByteArray listed =
        toolOutput({u"--machinable=yes"_s, u"--with-list-header=no"_s, u"--list-kinds-full"_s});
    for (const QByteArray &line : listed.split('\n')) {
        const QStringList fields = QString::fromUtf8(line).split(u'\t');
        if (fields.size() > 2)
            letters.insert(fields[0] + u':' + fields[2], fields[1]);
    }
    return letters;
}

/// A symbol as it is to stand in the tree.
struct Expected
{
    QString name;
    QString scope;
    int type;
    int line;
};

int typeOf(const QString &kind, const QString &ext)
{
    static const QMap<QString, int> types{
        {u"c"_s, 102}, {u"m"_s, 103}, {u"f"_s, 103}, {u"d"_s, 105}, {u"e"_s, 106},
        {u"F"_s, 107}, {u"g"_s, 108}, {u"v"_s, 109}, {u"p"_s, 110}, {u"s"_s, 111},
        {u"t"_s, 112}, {u"u"_s, 113}, {u"n"_s, 114}};
    const bool isC = ext == u"c" || ext == u"cpp" || ext == u"h";
    if (isC && (kind == u"m" || kind == u"v"))
        return kind == u"m" ? 109 : 103;
    if (ext == u"java" && kind == u"f")
        return 109;
    return types.value(kind, 101);
}

/// What the tool says of \a path, a scope for each symbol, by scoped name. Of several
/// symbols of one name the last line of its sorted output counts.
QMap<QString, Expected> expectedSymbols(const QString &path)
{
    static const QHash<QString, QString> letters = kindLetters();
    static const QRegularExpression cut(
        u"^(class|enum|file|arity|union|struct|function|namespace):"_s);
    const QFileInfo info(path);
    const QString ext = info.suffix();
    QStringList arguments{u"--output-format=json"_s, u"--fields=+nlf"_s, u"-f"_s, u"-"_s,
                          info.fileName()};
    if (ext == u"ch"_s)
        arguments.prepend(u"--language-force=C++"_s);
    QMap<QByteArray, Expected> lines;
    for (const QByteArray &json : toolOutput(arguments, info.path()).split('\n')) {
        const QJsonObject tag = QJsonDocument::fromJson(json).object();
        if (tag.isEmpty())
            continue;
        const auto value = [&tag](const char *key) {
            return tag[QLatin1StringView(key)].toString();
        };
        QString scope = value("scope");
        if (!scope.isEmpty())
            scope.prepend(value("scopeKind") + u':');
        const QString kind = letters.value(value("language") + u':' + value("kind"));
        const int line = tag[u"line"_s].toInt();
        const QString printed =
            u"%1\t%2;\"\t%3\t%4"_s.arg(value("name")).arg(line).arg(kind, scope);
        lines.insert(printed.toUtf8(),
                     {value("name"), scope.remove(cut), typeOf(kind, ext), line - 1});
    }
    QMap<QString, Expected> symbols;
    for (const Expected &symbol : std::as_const(lines))
        symbols.insert((symbol.scope.isEmpty() ? QString() : symbol.scope + u"::"_s) + symbol.name,
                       symbol);
    for (const Expected &symbol : std::as_const(lines)) {
        Expected made{{}, {}, 114, 0};
        for (const QString &piece : symbol.scope.split(u"::"_s, Qt::SkipEmptyParts)) {
            const QString whole = made.scope.isEmpty() ? piece : made.scope + u"::"_s + piece;
            made.name = piece;
            if (!symbols.contains(whole))
                symbols.insert(whole, made);
            made.line = symbols[whole].line;
            made.scope = whole;
        }
    }
    return symbols;
}

/// Names from the top down, type and line.
QStringList expectedPaths(const QMap<QString, Expected> &symbols)
{
    QStringList paths;
    for (Expected symbol : symbols) {
        const QString end = u" %1 %2"_s.arg(symbol.type).arg(symbol.line);
        QString path = symbol.name;
        for (; symbols.contains(symbol.scope); path.prepend(symbol.name + u'|'))
            symbol = symbols[symbol.scope];
        paths.append(path + end);
    }
    paths.sort();
    return paths;
}

QStringList paths(const Node *tree)
{
    QStringList paths;
    for (const Node *node = tree; node; node = node->following()) {
        QString path = node->name;
        for (const Node *above = node->parent; above; above = above->parent)
            path.prepend(above->name + u'|');
        paths.append(path + u" %1 %2"_s.arg(node->type).arg(node->start_line));
    }
    paths.sort();
    return paths;
}

} // namespace

/// From texts to trees of symbols: the cache of the base, the tool's output, and
/// the tool itself.
class CTagsTest : public AppTest
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        qRegisterMetaType<Node *>();
        // What other tests keep among the temporary files is not looked at.
        QVERIFY(temporary.isValid());
        qputenv("TMPDIR", temporary.path().toLocal8Bit());
    }
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
    void matchesTheTool_data();
    void matchesTheTool();
    void strangeTools_data();
    void strangeTools();
    void leavingWaitsForNoTool();
    void missingToolIsToldOnce();

private:
    QTemporaryDir temporary;
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
        TextLines grown;
        for (const QString &line : text.split(u'\n'))
            grown.append(line.size());
        for (int line = -1; line < 20; ++line) {
            QCOMPARE(lines.lastPos(line), Parser::xy2pos(0, line, text));
            QCOMPARE(grown.lastPos(line), lines.lastPos(line));
        }
        for (int pos = -1; pos < 40; ++pos)
            QCOMPARE(grown.lineOf(pos), Parser::pos2y(pos, text));
    }
}

void CTagsTest::unchangedTextIsNotParsedAgain()
{
    ManualParser parser;
    const QSignalSpy reparsed(&parser, &Parser::reparsed);
    const QSignalSpy delivered(&parser, &Parser::nodes);
    const int key = parser.parse(u"one"_s, u"f.c"_s);
    parser.finish(key);
    const auto first = parser.tree(u"f.c"_s);

    QCOMPARE(parser.parse(u"one"_s, u"f.c"_s), key);
    QCOMPARE(delivered.size(), 1);
    QTRY_COMPARE(delivered.size(), 2);
    QCOMPARE(delivered[1][1].value<Node *>(), first.get());
    QCOMPARE(reparsed.size(), 1);

    // The same text is another file's business there, and a changed one is new.
    parser.finish(parser.parse(u"one"_s, u"g.c"_s));
    parser.finish(parser.parse(u"two"_s, u"f.c"_s));
    parser.finish(parser.parse(u"one"_s, u"f.c"_s));
    QCOMPARE(parser.starts, 4);
    QCOMPARE(reparsed.size(), 4);

    // The tree that is to be sent from the cache is replaced there before.
    const int two = parser.parse(u"two!"_s, u"f.c"_s);
    parser.parse(u"one"_s, u"f.c"_s);
    parser.finish(two);
    QTRY_VERIFY(!parser.isParsing(key));
    parser.parse(u"one"_s, u"f.c"_s);
    QTRY_VERIFY(!parser.isParsing(key));
    QCOMPARE(parser.starts, 5);
    // Whoever shares it still has the first one.
    QVERIFY(first->name.isEmpty());
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
        << u".c"_s << QByteArray("a\tx\twhat\tf\nb\tx\t99999999999;\"\tf\nc\tx\t-2147483648\tf\n")
        << u"103 a -1\n103 b -1\n103 c -1\n"_s;
    QTest::newRow("a scope without end is none of a symbol")
        << u".cpp"_s
        << "f\tx\t1\tf\tclass:" + QByteArray(3'000'000, ':').replace("::", "a::") + "\ng\tx\t1\tf\n"
        << u"103 g 0\n"_s;
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
    const QStringList left = QDir::temp().entryList({u"vesk-tags-*"_s}, QDir::Dirs);
    CTagsParser parser;
    const QSignalSpy delivered(&parser, &Parser::nodes);
    const int key = parser.parse(u"A::A() {}\n"_s, name);
    QTRY_COMPARE(delivered.size(), 1);
    QCOMPARE(delivered[0][0].toInt(), key);
    QTEST(outline(parser.tree(name).get()), "expected");
    QCOMPARE(QDir::temp().entryList({u"vesk-tags-*"_s}, QDir::Dirs), left);
}

void CTagsTest::matchesTheTool_data()
{
    QTest::addColumn<QString>("path");
    const QDir root(u"" TEST_DATA_DIR "/../.."_s);
    int count = 0;
    for (const char *folder : {"tests/data/highlight", "app/editors", "app/ctags", "app/search",
                               "zvwidgets/zveditor/document", "qtundo/src"}) {
        const QDir files(root.filePath(QString::fromLatin1(folder)));
        for (const QString &name : files.entryList(QDir::Files)) {
            if (!name.endsWith(u".ref") && !name.endsWith(u".txt") && ++count)
                QTest::newRow(qPrintable(QString::fromLatin1(folder) + u'/' + name))
                    << files.filePath(name);
        }
    }
    QVERIFY(count > 60);
}

void CTagsTest::matchesTheTool()
{
    QFETCH(const QString, path);
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    CTagsParser parser;
    parser.parse(QString::fromUtf8(file.readAll()), path);
    QTRY_VERIFY(parser.tree(path));
    // The names of what has none follow from that of the file.
    makeProfile();
    const QString copy = this->path(u"vesk."_s + QFileInfo(path).suffix());
    QVERIFY(QFile::copy(path, copy));
    QStringList expected = expectedPaths(expectedSymbols(copy));
    if (expected.isEmpty())
        expected.append(u"No tags found 0 0"_s);
    QCOMPARE(paths(parser.tree(path).get()), expected);
}

void CTagsTest::strangeTools_data()
{
    QTest::addColumn<QByteArray>("script");
    QTest::addColumn<QString>("expected");
    const auto none = u"0 No tags found 0\n"_s;
    const auto one = u"103 f 0\n"_s;
    QTest::newRow("nothing") << QByteArray("exit 0") << none;
    QTest::newRow("garbage") << QByteArray("head -c 300000 /dev/urandom | tr '\\t' ' '") << none;
    QTest::newRow("a long line")
        << QByteArray("head -c 10000000 /dev/zero | tr '\\0' 'x'; printf '\\nf\\tx\\t1;\"\\tf\\n'")
        << one;
    QTest::newRow("a crash after a line")
        << QByteArray("printf 'f\\tx\\t1;\"\\tf\\ng\\tx'; kill -SEGV $$") << one;
    QTest::newRow("much on standard error")
        << QByteArray("head -c 3000000 /dev/zero >&2; printf 'f\\tx\\t1;\"\\tf\\n'") << one;
    QTest::newRow("the private folder")
        << QByteArray("test $(stat -c %a .) = 700 && cmp -s vesk.c - <<< 'x = \"\xc3\xa9\"' && "
                      "test \"$*\" = \"-f - -n -V vesk.c\" && printf 'f\\tx\\t1;\"\\tf\\n'")
        << one;
}

void CTagsTest::strangeTools()
{
    QFETCH(const QByteArray, script);
    makeProfile();
    const QString tool = write(u"ctags"_s, "#!/bin/bash\n" + script + '\n');
    QFile::setPermissions(tool, QFile::ReadOwner | QFile::ExeOwner);
    const QByteArray searchPath = qgetenv("PATH");
    qputenv("PATH", QFile::encodeName(dir->path()) + ':' + searchPath);
    CTagsParser parser;
    parser.parse(u"x = \"\u00e9\"\n"_s, u"/a.c"_s);
    QTRY_VERIFY(parser.tree(u"/a.c"_s));
    qputenv("PATH", searchPath);
    QTEST(outline(parser.tree(u"/a.c"_s).get()), "expected");
}

void CTagsTest::leavingWaitsForNoTool()
{
    makeProfile();
    const QString started = path(u"started"_s);
    const QString tool =
        write(u"ctags"_s, "#!/bin/sh\ntouch " + QFile::encodeName(started) + "\nexec sleep 100\n");
    QFile::setPermissions(tool, QFile::ReadOwner | QFile::ExeOwner);
    const QStringList left = QDir::temp().entryList({u"vesk-tags-*"_s}, QDir::Dirs);
    const QByteArray searchPath = qgetenv("PATH");
    qputenv("PATH", QFile::encodeName(dir->path()) + ':' + searchPath);
    QElapsedTimer clock;
    {
        CTagsParser parser;
        parser.parse(u"text"_s, u"/a.c"_s);
        QTRY_VERIFY(QFile::exists(started));
        clock.start();
    }
    qputenv("PATH", searchPath);
    QVERIFY(!clock.hasExpired(50'000));
    QCOMPARE(QDir::temp().entryList({u"vesk-tags-*"_s}, QDir::Dirs), left);
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
