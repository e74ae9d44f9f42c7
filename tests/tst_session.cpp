#include "xsession.h"

#include <QApplication>
#include <QClipboard>

#include <memory>

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

class TestSession : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void typingAndUndo();
    void movesByKeys();
    void indentsASelection();
    void mouse();
    void otherProgramsSelection();
    void boxSelection();
    void folds();
    void wrap();
    void closingAChangedFile_data();
    void closingAChangedFile();
    void comesBackAsItWas();
    void findsAndGoesOn();
    void replaces_data();
    void replaces();
    void searchInFilesLeadsToTheLine();

private:
    /// Starts the editor with the source and lets \a lines be what is on disk.
    void startWithSource();
    void find(const QString &text);
    void save() { session->keys(QStringLiteral("ctrl+s")); }

    std::unique_ptr<XSession> session;
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
    session = std::make_unique<XSession>();
    lines = sourceLines();
}

void TestSession::cleanup()
{
    const QString pictures = qEnvironmentVariable("VESK_TEST_PICTURES");
    if (QTest::currentTestFailed() && !pictures.isEmpty())
        XSession::screenshot().save(pictures + u'/' +
                                    QString::fromLatin1(QTest::currentTestFunction()) +
                                    QStringLiteral(".png"));
    session.reset();
}

void TestSession::startWithSource()
{
    source = session->write(QStringLiteral("source.cpp"), lines.join('\n'));
    QVERIFY(session->start({QStringLiteral("source.cpp")}));
    QVERIFY(XSession::waitForFile(QStringLiteral("source.cpp")));
}

void TestSession::find(const QString &text)
{
    session->keys(QStringLiteral("ctrl+f"));
    QVERIFY(XSession::waitForTitle(QStringLiteral("Find...")));
    session->keys(QStringLiteral("ctrl+a"));
    session->type(text);
    session->keys(QStringLiteral("Return"));
    QVERIFY(XSession::waitForFile(QStringLiteral("source.cpp")));
}

void TestSession::typingAndUndo()
{
    startWithSource();
    const int line = lineOf(250) + 4;
    GO(line);
    session->keys(QStringLiteral("End Return"));
    session->type(QStringLiteral("call(a); // \"{}\""));
    lines.insert(line + 1, "\t\tcall(a); // \"{}\"");
    SAVE_AND_COMPARE();

    session->type(QStringLiteral("xyz"));
    session->keys(QStringLiteral("ctrl+z ctrl+z"));
    lines[line + 1] += "x";
    SAVE_AND_COMPARE();
    session->keys(QStringLiteral("ctrl+shift+z"));
    lines[line + 1] += "y";
    SAVE_AND_COMPARE();
    // Past the saves, the indent and the line break to the beginning.
    session->keys(QStringLiteral("ctrl+z ").repeated(22));
    lines = sourceLines();
    SAVE_AND_COMPARE();
    session->keys(QStringLiteral("ctrl+shift+z ").repeated(10));
    lines.insert(line + 1, "\t\tcall(a); ");
    SAVE_AND_COMPARE();
}

void TestSession::movesByKeys()
{
    startWithSource();
    const int line = lineOf(250) + 3;
    GO(line);
    // Home goes to the text and to the column 0 in turn.
    session->keys(QStringLiteral("Home A Home Home B End C"));
    session->keys(QStringLiteral("ctrl+Left D ctrl+Right E Left Left BackSpace Delete"));
    lines[line] = "B\tAif (a > 250) {E";
    session->keys(QStringLiteral("Down Down"));
    session->keys(QStringLiteral("shift+Up shift+Home Delete"));
    lines[line + 1] = "\t\t";
    lines.removeAt(line + 2);
    session->keys(QStringLiteral("ctrl+Home T ctrl+End Z"));
    lines.first().prepend('T');
    lines.last() += "Z";
    SAVE_AND_COMPARE();
}

void TestSession::indentsASelection()
{
    startWithSource();
    const int line = lineOf(100);
    GO(line);
    session->keys(QStringLiteral("shift+Down shift+Down shift+Down Tab Tab Tab"));
    session->keys(QStringLiteral("shift+Tab"));
    for (int i = 0; i < 3; ++i)
        lines[line + i].prepend("\t\t");
    SAVE_AND_COMPARE();
    // One step for each key, whatever the number of lines.
    session->keys(QStringLiteral("ctrl+z ctrl+z ctrl+z"));
    for (int i = 0; i < 3; ++i)
        lines[line + i].remove(0, 1);
    SAVE_AND_COMPARE();
}

void TestSession::mouse()
{
    startWithSource();
    const int line = lineOf(250) + 6;
    GO(line);
    // "    return 250;": a double click takes the word, typing replaces it.
    session->click(session->pointInLine(12), 1, 2);
    session->type(QStringLiteral("12"));
    lines[line] = "    return 12;";
    SAVE_AND_COMPARE();

    // A selection drawn with the mouse is the X selection at once, backward too.
    session->drag(session->pointInLine(10), session->pointInLine(4));
    QTRY_COMPARE_WITH_TIMEOUT(QGuiApplication::clipboard()->text(QClipboard::Selection),
                              QStringLiteral("return"), XSession::patience);
    QCOMPARE(session->copied(), QStringLiteral("return"));
    // Dragged to another place, it moves there.
    session->keys(QStringLiteral("Escape"));
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
    clipboard->setText(QStringLiteral("one\ntwo "), QClipboard::Selection);
    session->click(session->pointInLine(4));
    session->click(session->pointInLine(4), 2);
    lines[line] = "    one";
    lines.insert(line + 1, "two return 250;");
    // The paste asks this program for the text.
    SAVE_AND_COMPARE();
    clipboard->setText(QStringLiteral("\u00e4\u20ac "));
    session->keys(QStringLiteral("ctrl+v"));
    lines[line + 1] = "two \xc3\xa4\xe2\x82\xac return 250;";
    SAVE_AND_COMPARE();
    session->keys(QStringLiteral("shift+Home"));
    QCOMPARE(session->copied(), QStringLiteral("two \u00e4\u20ac "));
}

void TestSession::boxSelection()
{
    session->configure(QStringLiteral("zveditor/VerticalSelection"), true);
    startWithSource();
    const int line = lineOf(250);
    GO(line);
    session->keys(QStringLiteral("Right Right Right shift+Right shift+Right shift+Right"));
    session->keys(QStringLiteral("shift+Down"));
    QCOMPARE(session->copied(), QStringLiteral("fun\n fu"));
    session->keys(QStringLiteral("ctrl+x"));
    lines[line].remove(3, 3);
    lines[line + 1].remove(3, 3);
    SAVE_AND_COMPARE();
    // Pasted at the end of another line, it comes as a box again.
    session->keys(QStringLiteral("Down ").repeated(7) + QStringLiteral("End ctrl+v"));
    lines[line + 7] += "fun";
    lines[line + 8] = "  fu";
    SAVE_AND_COMPARE();
}

void TestSession::folds()
{
    startWithSource();
    const int first = lineOf(250) + 2;
    GO(first);
    session->keys(QStringLiteral("shift+Down ").repeated(5));
    // Three selected lines and more make their margin a button, above the cursor too.
    QTRY_COMPARE_WITH_TIMEOUT(session->copied().count(u'\n'), 5, XSession::patience);
    session->click(session->pointInFolds(-1));
    // Born closed, with the cursor in its first line: Down leads past it.
    session->keys(QStringLiteral("Down"));
    session->type(QStringLiteral("below"));
    lines[first + 6] = "below";
    SAVE_AND_COMPARE();
    // Opened again, it leads into it.
    session->keys(QStringLiteral("Up"));
    session->click(session->pointInFolds());
    session->keys(QStringLiteral("Down Home"));
    session->type(QStringLiteral("in "));
    lines[first + 1] = "\tin if (a > 250) {";
    SAVE_AND_COMPARE();
    // Closed, and a change inside it opens it again rather than hide what happens.
    session->click(session->pointInFolds());
    session->keys(QStringLiteral("ctrl+z ctrl+z ctrl+z"));
    session->keys(QStringLiteral("Down"));
    session->type(QStringLiteral("b"));
    lines = sourceLines();
    lines[first + 6] = "below";
    lines[first + 2].insert(1, "b");
    SAVE_AND_COMPARE();
}

void TestSession::wrap()
{
    startWithSource();
    session->keys(QStringLiteral("ctrl+End"));
    const auto rows = [this] { return XSession::currentLine().height() / session->lineHeight(); };
    QTRY_VERIFY_WITH_TIMEOUT(rows() > 1, XSession::patience);
    session->keys(QStringLiteral("F2"));
    QTRY_COMPARE_WITH_TIMEOUT(rows(), 1, XSession::patience);
    session->keys(QStringLiteral("End"));
    session->type(QStringLiteral("x"));
    lines.last() += "x";
    session->keys(QStringLiteral("F2"));
    QTRY_VERIFY_WITH_TIMEOUT(rows() > 1, XSession::patience);
    SAVE_AND_COMPARE();
}

void TestSession::closingAChangedFile_data()
{
    QTest::addColumn<QString>("close");
    QTest::addColumn<QString>("answer");
    QTest::addColumn<bool>("saved");
    QTest::addColumn<bool>("ends");
    QTest::addColumn<bool>("closed");

    QTest::newRow("quit, Yes") << "ctrl+q"
                               << "alt+y" << true << true << true;
    QTest::newRow("quit, No") << "ctrl+q"
                              << "alt+n" << false << true << true;
    QTest::newRow("quit, Cancel") << "ctrl+q"
                                  << "Escape" << false << false << false;
    QTest::newRow("window's close, Yes") << "alt+F4"
                                         << "alt+y" << true << true << true;
    QTest::newRow("window's close, Cancel") << "alt+F4"
                                            << "Escape" << false << false << false;
    QTest::newRow("file's close, Yes") << "ctrl+w"
                                       << "alt+y" << true << false << true;
    QTest::newRow("file's close, No") << "ctrl+w"
                                      << "alt+n" << false << false << true;
    QTest::newRow("file's close, Cancel") << "ctrl+w"
                                          << "Escape" << false << false << false;
}

void TestSession::closingAChangedFile()
{
    QFETCH(const QString, close);
    QFETCH(const QString, answer);
    QFETCH(const bool, saved);
    QFETCH(const bool, ends);
    QFETCH(const bool, closed);

    const QString path = session->write(QStringLiteral("small.txt"), "text");
    QVERIFY(session->start({path}));
    session->type(QStringLiteral("x"));
    session->keys(close);
    QVERIFY(XSession::waitForTitle(QStringLiteral("Warning")));
    session->keys(answer);
    if (ends) {
        QVERIFY(session->waitForEnd());
        QCOMPARE(XSession::read(path), QByteArray(saved ? "xtext" : "text"));
        return;
    }
    QVERIFY(QTest::qWaitFor([] { return XSession::activeTitle() != QLatin1String("Warning"); },
                            XSession::patience));
    QVERIFY(session->isRunning());
    COMPARE_FILE(path, QByteArray(saved ? "xtext" : "text"));
    if (closed) {
        QVERIFY(XSession::waitForTitle(QStringLiteral("Vesk")));
        session->keys(QStringLiteral("ctrl+q"));
        QVERIFY(session->waitForEnd());
        return;
    }
    // What was typed is still there.
    QVERIFY(XSession::waitForFile(QStringLiteral("small.txt")));
    session->type(QStringLiteral("y"));
    save();
    COMPARE_FILE(path, QByteArray("xytext"));
}

void TestSession::comesBackAsItWas()
{
    const QString second = session->write(QStringLiteral("second.py"), "def f():\n    pass\n");
    startWithSource();
    XSession::placeWindow(QPoint(120, 90), QSize(1000, 620));
    QTRY_COMPARE_WITH_TIMEOUT(XSession::windowRect().size(), QSize(1000, 620), XSession::patience);
    session->keys(QStringLiteral("shift+Down shift+Down shift+Down"));
    QTRY_COMPARE_WITH_TIMEOUT(session->copied().count(u'\n'), 3, XSession::patience);
    session->click(session->pointInFolds(-1));

    // The splitter's handle stands above the frame of the list.
    const QRect list = XSession::messageList();
    const QPoint handle = list.topRight() - QPoint(0, 4);
    session->drag(handle, handle - QPoint(0, 80));
    QTRY_COMPARE_WITH_TIMEOUT(XSession::messageList().top(), list.top() - 80, XSession::patience);

    const QRect window = XSession::windowRect();
    const QImage picture = XSession::screenshot().copy(window);
    session->keys(QStringLiteral("ctrl+q"));
    QVERIFY(session->waitForEnd());
    QVERIFY(session->start({}));
    // The same to the pixel once the cursor blinks in step: place, size, splitter,
    // file and the closed fold.
    QTRY_COMPARE_WITH_TIMEOUT(XSession::windowRect(), window, XSession::patience);
    QTRY_VERIFY_WITH_TIMEOUT(XSession::screenshot().copy(window) == picture, XSession::patience);
    session->keys(QStringLiteral("Down"));
    session->type(QStringLiteral("x"));
    lines[4].prepend("x");
    SAVE_AND_COMPARE();

    // A hidden dock stays hidden, and has its old size when it is wanted again.
    session->keys(QStringLiteral("ctrl+z ctrl+d Up ctrl+s"));
    lines = sourceLines();
    COMPARE_FILE(source, lines.join('\n'));
    const QImage withoutDock = XSession::screenshot().copy(window);
    QVERIFY(withoutDock != picture);
    session->keys(QStringLiteral("ctrl+q"));
    QVERIFY(session->waitForEnd());
    QVERIFY(session->start({second}));
    QVERIFY(XSession::waitForFile(QStringLiteral("source.cpp")));
    session->keys(QStringLiteral("alt+Left ctrl+w"));
    QVERIFY(XSession::waitForFile(QStringLiteral("source.cpp")));
    QTRY_VERIFY_WITH_TIMEOUT(XSession::screenshot().copy(window) == withoutDock,
                             XSession::patience);
    session->keys(QStringLiteral("ctrl+d"));
    QTRY_VERIFY_WITH_TIMEOUT(XSession::screenshot().copy(window) == picture, XSession::patience);
}

void TestSession::findsAndGoesOn()
{
    startWithSource();
    find(QStringLiteral("function25"));
    QCOMPARE(session->copied(), QStringLiteral("function25"));
    session->type(QStringLiteral("first"));
    lines[lineOf(25) + 1] = "int first(int a, const char *s)";
    session->keys(QStringLiteral("F3 F3"));
    session->type(QStringLiteral("third"));
    lines[lineOf(251) + 1] = "int third1(int a, const char *s)";
    SAVE_AND_COMPARE();

    // A selection of one line is what is looked for, here from the cursor on.
    session->keys(QStringLiteral("Home shift+Right shift+Right shift+Right ctrl+f"));
    QVERIFY(XSession::waitForTitle(QStringLiteral("Find...")));
    session->keys(QStringLiteral("alt+f Return"));
    QVERIFY(XSession::waitForFile(QStringLiteral("source.cpp")));
    session->type(QStringLiteral("long"));
    lines[lineOf(251) + 1] = "int third1(long a, const char *s)";
    // A pattern.
    session->keys(QStringLiteral("ctrl+f"));
    QVERIFY(XSession::waitForTitle(QStringLiteral("Find...")));
    session->keys(QStringLiteral("ctrl+a"));
    session->type(QStringLiteral("ret[a-z]+ \\d+"));
    session->keys(QStringLiteral("alt+r Return"));
    QVERIFY(XSession::waitForFile(QStringLiteral("source.cpp")));
    QCOMPARE(session->copied(), QStringLiteral("return 251"));
    SAVE_AND_COMPARE();

    // Nothing is left behind the last one; the text and the cursor stay.
    session->keys(QStringLiteral("ctrl+End F3"));
    QVERIFY(XSession::waitForTitle(QStringLiteral("Not found...")));
    session->keys(QStringLiteral("Return"));
    QVERIFY(XSession::waitForFile(QStringLiteral("source.cpp")));
    session->type(QStringLiteral("z"));
    lines.last() += "z";
    SAVE_AND_COMPARE();
}

void TestSession::replaces_data()
{
    QTest::addColumn<QString>("options");
    QTest::addColumn<QStringList>("answers");
    QTest::addColumn<QByteArray>("after");

    QTest::newRow("yes, no, yes, cancel")
        << QString()
        << QStringList{QStringLiteral("alt+y"), QStringLiteral("alt+n"), QStringLiteral("alt+y"),
                       QStringLiteral("alt+c")}
        << QByteArray("1\none\n1\none");
    QTest::newRow("no, all") << QString()
                             << QStringList{QStringLiteral("alt+n"), QStringLiteral("alt+a")}
                             << QByteArray("one\n1\n1\n1");
    QTest::newRow("all at once") << "alt+a" << QStringList() << QByteArray("1\n1\n1\n1");
    QTest::newRow("closed at the second")
        << QString() << QStringList{QStringLiteral("alt+y"), QStringLiteral("Escape")}
        << QByteArray("1\none\none\none");
}

void TestSession::replaces()
{
    QFETCH(const QString, options);
    QFETCH(const QStringList, answers);
    QFETCH(const QByteArray, after);

    const QString path = session->write(QStringLiteral("small.txt"), "one\none\none\none");
    QVERIFY(session->start({path}));
    const int top = XSession::currentLine().top();
    session->keys(QStringLiteral("ctrl+r"));
    QVERIFY(XSession::waitForTitle(QStringLiteral("Replace...")));
    session->type(QStringLiteral("one"));
    session->keys(QStringLiteral("Tab"));
    session->type(QStringLiteral("1"));
    session->keys(options + QStringLiteral(" Return"));
    for (int match = 0; match < answers.size(); ++match) {
        // The same dialog comes up again for each match: its turn shows by the line.
        const int y = top + match * session->lineHeight();
        QTRY_COMPARE_WITH_TIMEOUT(XSession::currentLine().top(), y, XSession::patience);
        QVERIFY(XSession::waitForTitle(QStringLiteral("Replace")));
        session->keys(answers.at(match));
    }
    QVERIFY(XSession::waitForFile(QStringLiteral("small.txt")));
    save();
    COMPARE_FILE(path, after);
}

void TestSession::searchInFilesLeadsToTheLine()
{
    QVERIFY(QDir(session->dir.path()).mkdir(QStringLiteral("sub")));
    const QString found =
        session->write(QStringLiteral("sub/found.txt"), "hay\nhay\na needle\nhay");
    session->write(QStringLiteral("other.log"), "a needle");
    startWithSource();
    session->keys(QStringLiteral("ctrl+alt+f"));
    QVERIFY(XSession::waitForTitle(QStringLiteral("Search in files...")));
    session->type(QStringLiteral("needle"));
    session->keys(QStringLiteral("Tab ctrl+a"));
    session->type(session->dir.path());
    session->keys(QStringLiteral("Tab Tab ctrl+a"));
    session->type(QStringLiteral("*.txt"));
    session->keys(QStringLiteral("Return"));
    QVERIFY(XSession::waitForFile(QStringLiteral("source.cpp")));
    // The header of the file has a grey ground; its first hit stands below.
    const QRect list = XSession::messageList();
    QRect header;
    QTRY_VERIFY_WITH_TIMEOUT(
        !(header = XSession::boundsOf(QColor(0xd0, 0xd0, 0xd0), list)).isNull(),
        XSession::patience);
    session->click(header.topLeft() +
                   QPoint(20, QFontMetrics(QApplication::font()).height() * 3 / 2));
    QVERIFY(XSession::waitForFile(QStringLiteral("found.txt")));
    session->type(QStringLiteral("x"));
    save();
    COMPARE_FILE(found, QByteArray("hay\nhay\nxa needle\nhay"));
}

QTEST_MAIN(TestSession)

#include "tst_session.moc"
