#include "tests/xsession.h"

#include <QApplication>
#include <QClipboard>

using namespace Qt::StringLiterals;

namespace {

constexpr int linesPerFunction = 9;
constexpr int functions = 500;

QByteArrayList sourceLines()
{
    QByteArrayList lines;
    for (int i = 0; i < functions; ++i) {
        const QByteArray number = QByteArray::number(i);
        lines += {"/* function " + number + " */",
                  "int function" + number + "(int a, const char *s)",
                  "{",
                  "\tif (a > " + number + ") {",
                  "\t\treturn a + \"text\"[0]; // word here",
                  "\t}",
                  "    return " + number + ";",
                  "}",
                  ""};
    }
    lines += "// " + QByteArray("many words ").repeated(40);
    return lines;
}

/// The first line of function \a i.
constexpr int lineOf(int i)
{
    return i * linesPerFunction;
}

} // namespace

class TestSession : public SessionTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { dropSession(); }

    void typingAndUndo();
    void movesAndIndentsByKeys();
    void mouse();
    void otherProgramsSelection();
    void folds();
    void wrap();
    void closingAChangedFile();
    void comesBackAsItWas();
    void findsAndGoesOn();
    void searchInFilesLeadsToTheLine();

private:
    /// Starts the editor with the source and lets \a lines be what is on disk.
    void startWithSource();
    void find(const QString &text);
    void save() { session->keys(u"ctrl+s"_s); }

    QString source;
    QByteArrayList lines;
};

#define GO(line) QVERIFY(session->goToLine(line))
#define SAVE_AND_COMPARE()                                                                         \
    do {                                                                                           \
        save();                                                                                    \
        COMPARE_FILE(source, lines.join('\n'));                                                    \
    } while (false)

void TestSession::init()
{
    makeSession();
    lines = sourceLines();
}

void TestSession::startWithSource()
{
    source = session->write(u"source.cpp"_s, lines.join('\n'));
    QVERIFY(session->start({u"source.cpp"_s}));
    QVERIFY(XSession::waitForFile(u"source.cpp"_s));
}

void TestSession::find(const QString &text)
{
    session->keys(u"ctrl+f"_s);
    QVERIFY(XSession::waitForTitle(u"Find..."_s));
    session->keys(u"ctrl+a"_s);
    session->type(text);
    session->keys(u"Return"_s);
    QVERIFY(XSession::waitForFile(u"source.cpp"_s));
}

void TestSession::typingAndUndo()
{
    startWithSource();
    const int line = lineOf(250) + 4;
    GO(line);
    session->keys(u"End Return"_s);
    session->type(u"call(a); // \"{}\""_s);
    lines.insert(line + 1, "\t\tcall(a); // \"{}\"");
    SAVE_AND_COMPARE();

    session->type(u"xyz"_s);
    session->keys(u"ctrl+z ctrl+z"_s);
    lines[line + 1] += "x";
    SAVE_AND_COMPARE();
    session->keys(u"ctrl+shift+z"_s);
    lines[line + 1] += "y";
    SAVE_AND_COMPARE();
    // Past the saves, the indent and the line break to the beginning.
    session->keys(u"ctrl+z "_s.repeated(22));
    lines = sourceLines();
    SAVE_AND_COMPARE();
    session->keys(u"ctrl+shift+z "_s.repeated(10));
    lines.insert(line + 1, "\t\tcall(a); ");
    SAVE_AND_COMPARE();
    session->keys(u"alt+n"_s);
    QVERIFY(XSession::waitForTitle(u"Vesk"_s));
}

void TestSession::movesAndIndentsByKeys()
{
    startWithSource();
    const int line = lineOf(250) + 3;
    GO(line);
    // Home goes to the text and to the column 0 in turn.
    session->keys(u"Home A Home Home B End C"_s);
    session->keys(u"ctrl+Left D ctrl+Right E Left Left BackSpace Delete"_s);
    lines[line] = "B\tAif (a > 250) {E";
    session->keys(u"Down Down"_s);
    session->keys(u"shift+Up shift+Home Delete"_s);
    lines[line + 1] = "\t\t";
    lines.removeAt(line + 2);
    session->keys(u"ctrl+Home T ctrl+End Z"_s);
    lines.first().prepend('T');
    lines.last() += "Z";
    SAVE_AND_COMPARE();

    const int selected = lineOf(100);
    GO(selected);
    session->keys(u"shift+Down shift+Down shift+Down Tab Tab Tab shift+Tab"_s);
    for (int i = 0; i < 3; ++i)
        lines[selected + i].prepend("\t\t");
    SAVE_AND_COMPARE();
    // One step for each key, whatever the number of lines.
    session->keys(u"ctrl+z ctrl+z ctrl+z"_s);
    for (int i = 0; i < 3; ++i)
        lines[selected + i].remove(0, 1);
    SAVE_AND_COMPARE();
}

void TestSession::mouse()
{
    startWithSource();
    const int line = lineOf(250) + 6;
    GO(line);
    // "    return 250;": a double click takes the word, typing replaces it.
    session->click(session->pointInLine(12), 1, 2);
    session->type(u"12"_s);
    lines[line] = "    return 12;";
    SAVE_AND_COMPARE();

    // A selection drawn with the mouse is the X selection at once, backward too.
    session->drag(session->pointInLine(10), session->pointInLine(4));
    QTRY_COMPARE_WITH_TIMEOUT(QGuiApplication::clipboard()->text(QClipboard::Selection),
                              u"return"_s, XSession::patience);
    QCOMPARE(session->copied(), u"return"_s);
    // Dragged to another place, it moves there.
    session->keys(u"Escape"_s);
    session->click(session->pointInLine(12), 1, 2);
    session->drag(session->pointInLine(12), session->pointInLine(4));
    lines[line] = "    12return ;";
    SAVE_AND_COMPARE();
}

void TestSession::otherProgramsSelection()
{
    startWithSource();
    const int line = lineOf(250) + 6;
    GO(line);
    QClipboard *const clipboard = QGuiApplication::clipboard();
    clipboard->setText(u"one\ntwo "_s, QClipboard::Selection);
    session->click(session->pointInLine(4));
    session->click(session->pointInLine(4), 2);
    lines[line] = "    one";
    lines.insert(line + 1, "two return 250;");
    // The paste asks this program for the text.
    SAVE_AND_COMPARE();
    clipboard->setText(u"\u00e4\u20ac "_s);
    session->keys(u"ctrl+v"_s);
    lines[line + 1] = "two \xc3\xa4\xe2\x82\xac return 250;";
    SAVE_AND_COMPARE();
    session->keys(u"shift+Home"_s);
    QCOMPARE(session->copied(), u"two \u00e4\u20ac "_s);
}

void TestSession::folds()
{
    startWithSource();
    const int first = lineOf(250) + 2;
    GO(first);
    session->keys(u"shift+Down "_s.repeated(5));
    // Three selected lines and more make their margin a button, above the cursor too.
    QTRY_COMPARE_WITH_TIMEOUT(session->copied().count(u'\n'), 5, XSession::patience);
    session->click(session->pointInFolds(-1));
    // Born closed, with the cursor in its first line: Down leads past it.
    session->keys(u"Down"_s);
    session->type(u"below"_s);
    lines[first + 6] = "below";
    session->keys(u"Up"_s);
    SAVE_AND_COMPARE();
    // Opened again, it leads into it.
    QVERIFY(XSession::waitForPaint());
    session->click(session->pointInFolds());
    session->keys(u"Down Home"_s);
    session->type(u"in "_s);
    lines[first + 1] = "\tin if (a > 250) {";
    SAVE_AND_COMPARE();
    // Closed, and a change inside it opens it again rather than hide what happens.
    session->click(session->pointInFolds());
    session->keys(u"ctrl+z ctrl+z ctrl+z"_s);
    session->keys(u"Down"_s);
    session->type(u"b"_s);
    lines = sourceLines();
    lines[first + 6] = "below";
    lines[first + 2].insert(1, "b");
    SAVE_AND_COMPARE();
}

void TestSession::wrap()
{
    startWithSource();
    session->keys(u"ctrl+End"_s);
    const auto rows = [this] { return XSession::currentLine().height() / session->lineHeight(); };
    QTRY_VERIFY_WITH_TIMEOUT(rows() > 1, XSession::patience);
    session->keys(u"F2"_s);
    QTRY_COMPARE_WITH_TIMEOUT(rows(), 1, XSession::patience);
    session->keys(u"End"_s);
    session->type(u"x"_s);
    lines.last() += "x";
    session->keys(u"F2"_s);
    QTRY_VERIFY_WITH_TIMEOUT(rows() > 1, XSession::patience);
    SAVE_AND_COMPARE();
}

void TestSession::closingAChangedFile()
{
    const QString path = session->write(u"small.txt"_s, "text");
    QVERIFY(session->start({path}));
    session->type(u"x"_s);
    session->keys(u"alt+F4"_s);
    QVERIFY(XSession::waitForTitle(u"Warning"_s));
    session->keys(u"Escape"_s);
    QVERIFY(XSession::waitForFile(u"small.txt"_s));
    COMPARE_FILE(path, QByteArray("text"));
    // What was typed is still there.
    session->type(u"y"_s);
    session->keys(u"ctrl+q"_s);
    QVERIFY(XSession::waitForTitle(u"Warning"_s));
    session->keys(u"alt+y"_s);
    QVERIFY(session->waitForEnd());
    QCOMPARE(readFile(path), QByteArray("xytext"));
}

void TestSession::comesBackAsItWas()
{
    const QString second = session->write(u"second.py"_s, "def f():\n    pass\n");
    startWithSource();
    XSession::placeWindow(QPoint(120, 90), QSize(1000, 620));
    QTRY_COMPARE_WITH_TIMEOUT(XSession::windowRect().size(), QSize(1000, 620), XSession::patience);
    session->keys(u"shift+Down shift+Down shift+Down"_s);
    QTRY_COMPARE_WITH_TIMEOUT(session->copied().count(u'\n'), 3, XSession::patience);
    session->click(session->pointInFolds(-1));

    // The splitter's handle stands above the frame of the list.
    const QRect list = XSession::messageList();
    const QPoint handle = list.topRight() - QPoint(0, 4);
    session->drag(handle, handle - QPoint(0, 80));
    QTRY_COMPARE_WITH_TIMEOUT(XSession::messageList().top(), list.top() - 80, XSession::patience);

    const QRect window = XSession::windowRect();
    const QImage picture = XSession::screenshot().copy(window);
    session->keys(u"ctrl+q"_s);
    QVERIFY(session->waitForEnd());
    QVERIFY(session->start({}));
    // The same to the pixel once the cursor blinks in step: place, size, splitter,
    // file and the closed fold.
    QTRY_COMPARE_WITH_TIMEOUT(XSession::windowRect(), window, XSession::patience);
    QTRY_VERIFY_WITH_TIMEOUT(XSession::screenshot().copy(window) == picture, XSession::patience);
    session->keys(u"Down"_s);
    session->type(u"x"_s);
    lines[4].prepend("x");
    SAVE_AND_COMPARE();

    // A hidden dock stays hidden, and has its old size when it is wanted again.
    session->keys(u"ctrl+z ctrl+d Up ctrl+s"_s);
    lines = sourceLines();
    COMPARE_FILE(source, lines.join('\n'));
    const QImage withoutDock = XSession::screenshot().copy(window);
    QVERIFY(withoutDock != picture);
    session->keys(u"ctrl+q"_s);
    QVERIFY(session->waitForEnd());
    QVERIFY(session->start({second}));
    QVERIFY(XSession::waitForFile(u"source.cpp"_s));
    session->keys(u"alt+Left ctrl+w"_s);
    QVERIFY(XSession::waitForFile(u"source.cpp"_s));
    QTRY_VERIFY_WITH_TIMEOUT(XSession::screenshot().copy(window) == withoutDock,
                             XSession::patience);
    session->keys(u"ctrl+d"_s);
    QTRY_VERIFY_WITH_TIMEOUT(XSession::screenshot().copy(window) == picture, XSession::patience);
}

void TestSession::findsAndGoesOn()
{
    startWithSource();
    find(u"function25"_s);
    QCOMPARE(session->copied(), u"function25"_s);
    session->type(u"first"_s);
    lines[lineOf(25) + 1] = "int first(int a, const char *s)";
    session->keys(u"F3 F3"_s);
    session->type(u"third"_s);
    lines[lineOf(251) + 1] = "int third1(int a, const char *s)";
    SAVE_AND_COMPARE();

    // A selection of one line is what is looked for, here from the cursor on.
    session->keys(u"Home shift+Right shift+Right shift+Right ctrl+f"_s);
    QVERIFY(XSession::waitForTitle(u"Find..."_s));
    session->keys(u"alt+f Return"_s);
    QVERIFY(XSession::waitForFile(u"source.cpp"_s));
    session->type(u"long"_s);
    lines[lineOf(251) + 1] = "int third1(long a, const char *s)";
    // A pattern.
    session->keys(u"ctrl+f"_s);
    QVERIFY(XSession::waitForTitle(u"Find..."_s));
    session->keys(u"ctrl+a"_s);
    session->type(u"ret[a-z]+ \\d+"_s);
    session->keys(u"alt+r Return"_s);
    QVERIFY(XSession::waitForFile(u"source.cpp"_s));
    QCOMPARE(session->copied(), u"return 251"_s);
    SAVE_AND_COMPARE();

    // Nothing is left behind the last one; the text and the cursor stay.
    session->keys(u"ctrl+End F3"_s);
    QVERIFY(XSession::waitForTitle(u"Not found..."_s));
    session->keys(u"Return"_s);
    QVERIFY(XSession::waitForFile(u"source.cpp"_s));
    session->type(u"z"_s);
    lines.last() += "z";
    SAVE_AND_COMPARE();
}

void TestSession::searchInFilesLeadsToTheLine()
{
    QVERIFY(QDir(session->dir.path()).mkdir(u"sub"_s));
    const QString found = session->write(u"sub/found.txt"_s, "hay\nhay\na needle\nhay");
    session->write(u"other.log"_s, "a needle");
    startWithSource();
    session->keys(u"ctrl+alt+f"_s);
    QVERIFY(XSession::waitForTitle(u"Search in files..."_s));
    session->type(u"needle"_s);
    session->keys(u"Tab ctrl+a"_s);
    session->type(session->dir.path());
    session->keys(u"Tab Tab ctrl+a"_s);
    session->type(u"*.txt"_s);
    session->keys(u"Return"_s);
    QVERIFY(XSession::waitForFile(u"source.cpp"_s));
    // The header of the file has a grey ground; its first hit stands below.
    const QRect list = XSession::messageList();
    QRect header;
    QTRY_VERIFY_WITH_TIMEOUT(
        !(header = XSession::boundsOf(QColor(0xd0, 0xd0, 0xd0), list)).isNull(),
        XSession::patience);
    session->click(header.topLeft() +
                   QPoint(20, QFontMetrics(QApplication::font()).height() * 3 / 2));
    QVERIFY(XSession::waitForFile(u"found.txt"_s));
    session->type(u"x"_s);
    save();
    COMPARE_FILE(found, QByteArray("hay\nhay\nxa needle\nhay"));
}

QTEST_MAIN(TestSession)

#include "tst_session.moc"
