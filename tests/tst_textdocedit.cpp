#include "qtundo/src/qtundo.h"
#include "zvwidgets/zveditor/editorcursor.h"
#include "zvwidgets/zveditor/selectionrect.h"
#include "zvwidgets/zveditor/textdoc.h"
#include "zvwidgets/zveditor/texteditor.h"
#include "zvwidgets/zveditor/textmanager.h"
#include "zvwidgets/zveditor/textview.h"

#include <QApplication>
#include <QClipboard>
#include <QElapsedTimer>
#include <QTest>
#include <QTextStream>

#include <functional>

using namespace zvwidgets;

namespace {

/// A document without a view, or an editor with one.
struct Fixture
{
    explicit Fixture(bool hasView)
    {
        if (hasView)
            editor.reset(manager.createEditor(nullptr, nullptr));
        else
            own = std::make_unique<TextDocument>(&manager);
    }

    TextDocument &doc() { return editor ? *editor->document() : *own; }
    TextView &view() { return *editor->view(); }

    void load(QString content)
    {
        QTextStream stream(&content);
        doc().load(stream);
    }

    /// Selects from one position, column first, to another.
    void select(const QPoint &from, const QPoint &to) { view().selected = QRect(from, to); }

    TextEditorManager manager;
    std::unique_ptr<TextDocument> own;
    std::unique_ptr<TextEditor> editor;
};

using Step = std::function<void(Fixture &)>;

QString text(const char *bytes)
{
    return QString::fromUtf8(bytes);
}

/// "|" stands for a line end.
QString lines(const char *bytes)
{
    return text(bytes).replace(u'|', u'\n');
}

/// Undo leaves the blanks that a line was filled up with.
QString withoutTrailingBlanks(const QString &content)
{
    QStringList stripped;
    const QStringList all = content.split(u'\n');
    for (QString line : all) {
        while (line.endsWith(u' '))
            line.chop(1);
        stripped.append(line);
    }
    return stripped.join(u'\n');
}

} // namespace

Q_DECLARE_METATYPE(Step)

class TestTextDocEdit : public QObject
{
    Q_OBJECT
private slots:
    void edit_data();
    void edit();
    void editAtCursor_data();
    void editAtCursor();
    void cursorAfter_data();
    void cursorAfter();
    void selection_data();
    void selection();
    void readOnly_data();
    void readOnly();
    void copyFillsClipboard();
    void speed();
};

// Without a view the arguments tell the place.
void TestTextDocEdit::edit_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<Step>("step");
    QTest::addColumn<QString>("after");
    const auto row = [](const char *name, const char *before, const Step &step, const char *after) {
        QTest::newRow(name) << lines(before) << step << lines(after);
    };

    row(
        "insert lines, tail goes behind", "ab|z",
        [](Fixture &f) { f.doc().insert(text("1\n2\n3"), 0, 1); }, "a1|2|3b|z");
    row(
        "insert past the end pads", "a", [](Fixture &f) { f.doc().insert(text("b"), 0, 3); },
        "a  b");
    row(
        "insert past the end of an empty line pads", "",
        [](Fixture &f) { f.doc().insert(text("b"), 0, 3); }, "   b");
    row(
        "insert ends in a line end", "ab", [](Fixture &f) { f.doc().insert(text("x\n"), 0, 1); },
        "ax|b");
    row(
        "insert only a line end", "ab|c", [](Fixture &f) { f.doc().insert(text("\n"), 0, 1); },
        "a|b|c");
    row(
        "tabs become blanks up to the stop", "",
        [](Fixture &f) {
            f.doc().setSpacesInTab(4);
            f.doc().insert(text("x\ty"), 0, 0);
        },
        "x   y");
    row(
        "tabs of the line count for the stop", "\ta",
        [](Fixture &f) {
            f.doc().setSpacesInTab(4);
            f.doc().insert(text("xyz\t!\t?"), 0, 2);
        },
        "\taxyz    !   ?");
    row(
        "columns past the end count for the stop", "a",
        [](Fixture &f) {
            f.doc().setSpacesInTab(4);
            f.doc().insert(text("\t!"), 0, 6);
        },
        "a       !");
    row(
        "tabs stay if wanted", "a",
        [](Fixture &f) {
            f.manager.fSaveTab = true;
            f.doc().insert(text("\tx\ty"), 0, 1);
        },
        "a\tx\ty");
    row(
        "overwriting", "abcdef",
        [](Fixture &f) {
            f.manager.fOvr = true;
            f.doc().insert(text("XY"), 0, 1);
        },
        "aXYdef");
    row(
        "overwriting eats the rest line by line", "abcdef|z",
        [](Fixture &f) {
            f.manager.fOvr = true;
            f.doc().insert(text("X\nYY\nZ"), 0, 1);
        },
        "aX|YY|Zf|z");
    row(
        "block", "abc|d|efg",
        [](Fixture &f) {
            f.manager.fVerticalSelection = true;
            f.doc().insert(text("1\n2\n3"), 0, 2);
        },
        "ab1c|d 2|ef3g");
    row(
        "block makes lines below the last", "x|abc",
        [](Fixture &f) {
            f.manager.fVerticalSelection = true;
            f.doc().insert(text("a\nb"), 1, 3);
        },
        "x|abca|   b");
    row(
        "append", "a|b", [](Fixture &f) { f.doc().append(text("c\nd")); }, "a|bc|d");

    row(
        "enter copies the indent", "  \tab", [](Fixture &f) { f.doc().insertLineBreak(0, 4); },
        "  \ta|  \tb");
    row(
        "enter within the indent", "    ab", [](Fixture &f) { f.doc().insertLineBreak(0, 2); },
        "  |    ab");
    row(
        "enter at the start", "  ab", [](Fixture &f) { f.doc().insertLineBreak(0, 0); }, "|  ab");
    row(
        "enter on a blank line", "   ", [](Fixture &f) { f.doc().insertLineBreak(0, 3); },
        "   |   ");
    row(
        "enter behind a colon", "  if x:",
        [](Fixture &f) {
            f.doc().setSpacesInTab(4);
            f.doc().insertLineBreak(0, 7);
        },
        "  if x:|      ");
    row(
        "enter before the text after a colon", "if x: y",
        [](Fixture &f) { f.doc().insertLineBreak(0, 5); }, "if x:| y");
    row(
        "enter behind a colon on a short line, with tabs", ":",
        [](Fixture &f) {
            f.manager.fSaveTab = true;
            f.doc().setSpacesInTab(4);
            f.doc().insertLineBreak(0, 1);
        },
        ":|\t");
    row(
        "enter past the end of an empty line", "",
        [](Fixture &f) {
            f.manager.fSaveTab = true;
            f.doc().setSpacesInTab(4);
            f.doc().insertLineBreak(0, 6);
        },
        "|\t  ");
    row(
        "enter without indent", "  ab",
        [](Fixture &f) {
            f.manager.fAutoIndent = false;
            f.doc().insertLineBreak(0, 3);
        },
        "  a|b");

    row(
        "delete", "abc", [](Fixture &f) { f.doc().del(0, 1); }, "ac");
    row(
        "delete a pair", "a\xF0\x9F\x98\x80z", [](Fixture &f) { f.doc().del(0, 1); }, "az");
    row(
        "delete joins", "ab|  c", [](Fixture &f) { f.doc().del(0, 2); }, "abc");
    row(
        "delete at the very end", "ab|c", [](Fixture &f) { f.doc().del(1, 1); }, "ab|c");
    row(
        "backspace", "abc", [](Fixture &f) { f.doc().backspace(0, 2); }, "ac");
    row(
        "backspace over a pair", "a\xF0\x9F\x98\x80z", [](Fixture &f) { f.doc().backspace(0, 3); },
        "az");
    row(
        "backspace to a lesser indent", "  a||      b|        ",
        [](Fixture &f) { f.doc().backspace(3, 4); }, "  a||      b|      ");
    row(
        "backspace in the indent to column 0", "    a|  b",
        [](Fixture &f) { f.doc().backspace(1, 2); }, "    a|b");
    row(
        "backspace within the text takes one", "a|  bc",
        [](Fixture &f) { f.doc().backspace(1, 3); }, "a|  c");
    row(
        "backspace in the indent, switched off", "a|    b",
        [](Fixture &f) {
            f.manager.fBackspaceIndent = false;
            f.doc().backspace(1, 4);
        },
        "a|   b");
    row(
        "backspace joins", "ab| c", [](Fixture &f) { f.doc().backspace(1, 0); }, "abc");
    row(
        "backspace at the very start", "ab", [](Fixture &f) { f.doc().backspace(0, 0); }, "ab");

    row(
        "remove within a line", "abcd", [](Fixture &f) { f.doc().removeText(0, 3, 0, 1); }, "ad");
    row(
        "remove lines", "ab|c|d|ef", [](Fixture &f) { f.doc().removeText(0, 1, 3, 1); }, "af");
    row(
        "remove lines, ends swapped", "ab|c|d|ef",
        [](Fixture &f) { f.doc().removeText(3, 1, 0, 1); }, "af");
    row(
        "remove to a line's start", "ab|c|d", [](Fixture &f) { f.doc().removeText(0, 2, 2, 0); },
        "abd");
}

void TestTextDocEdit::edit()
{
    QFETCH(QString, before);
    QFETCH(Step, step);
    QFETCH(QString, after);
    Fixture fixture(false);
    TextDocument &doc = fixture.doc();
    fixture.load(before);
    step(fixture);
    QCOMPARE(doc.text(), after);
    QCOMPARE(doc.undoStack()->canUndo(), before != after);
    QVERIFY2(doc.undoStack()->undoList().size() <= 1, "an operation is one step");
    if (before == after)
        return;
    doc.undoStack()->undo();
    QCOMPARE(withoutTrailingBlanks(doc.text()), withoutTrailingBlanks(before));
    doc.undoStack()->redo();
    QCOMPARE(doc.text(), after);
}

// With a view its cursor tells the place, whatever the arguments say.
void TestTextDocEdit::editAtCursor_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QPoint>("cursor");
    QTest::addColumn<Step>("step");
    QTest::addColumn<QString>("after");
    QTest::addColumn<QPoint>("undone");
    const auto row = [](const char *name, const char *before, const QPoint &cursor,
                        const Step &step, const char *after) {
        // Undo shows what came back, so a deleted character is left of the cursor.
        const bool isDelete = qstrcmp(name, "delete") == 0;
        QTest::newRow(name) << lines(before) << cursor << step << lines(after)
                            << (isDelete ? cursor + QPoint(1, 0) : cursor);
    };
    const Step indent = [](Fixture &f) { f.doc().indent(); };
    const Step unindent = [](Fixture &f) { f.doc().unindent(); };
    const auto selected = [](const QPoint &from, const QPoint &to, const Step &step) {
        return [=](Fixture &f) {
            f.select(from, to);
            step(f);
        };
    };

    row(
        "insert", "ab|cd", {1, 1}, [](Fixture &f) { f.doc().insert(text("x"), 0, 0); }, "ab|cxd");
    row(
        "append", "ab|cd", {1, 0}, [](Fixture &f) { f.doc().append(text("x")); }, "axb|cd");
    row(
        "enter", "ab|cd", {1, 1}, [](Fixture &f) { f.doc().insertLineBreak(0, 0); }, "ab|c|d");
    row(
        "delete", "ab|cd", {1, 1}, [](Fixture &f) { f.doc().del(0, 0); }, "ab|c");
    row(
        "backspace", "ab|cd", {2, 1}, [](Fixture &f) { f.doc().backspace(0, 1); }, "ab|c");

    row("indent the cursor's line", "a|b|c", {1, 1}, indent, "a|    b|c");
    row(
        "indent with a tab", "a|b", {0, 1},
        [](Fixture &f) {
            f.manager.fSaveTab = true;
            f.doc().indent();
        },
        "a|\tb");
    row("indent selected lines", "a|b|c", {0, 0}, selected({0, 0}, {1, 1}, indent),
        "    a|    b|c");
    row("last line selected up to its start stays", "a|b|c", {0, 0},
        selected({1, 0}, {0, 1}, indent), "    a|b|c");
    row("so if selected upwards", "a|b|c", {0, 0}, selected({0, 2}, {1, 0}, indent),
        "    a|    b|c");
    row("selection within a line", "abc|d", {0, 0}, selected({0, 0}, {2, 0}, indent), "    abc|d");
    row("unindent", "      a|  b|\tc| \td|    ", {0, 0}, selected({0, 0}, {1, 4}, unindent),
        "  a|b|c|d|    ");

    row(
        "replace the word at the cursor", "foo_1.bar", {3, 0},
        [](Fixture &f) { f.doc().replaceCurrentWord(text("x")); }, "x.bar");
    row(
        "replace behind the word", "a foo", {5, 0},
        [](Fixture &f) { f.doc().replaceCurrentWord(text("other")); }, "a other");
    row(
        "no word to replace", "a  b", {2, 0},
        [](Fixture &f) { f.doc().replaceCurrentWord(text("x")); }, "a  b");
}

void TestTextDocEdit::editAtCursor()
{
    QFETCH(QString, before);
    QFETCH(QPoint, cursor);
    QFETCH(Step, step);
    QFETCH(QString, after);
    Fixture fixture(true);
    TextDocument &doc = fixture.doc();
    doc.setSpacesInTab(4);
    fixture.load(before);
    fixture.view().setCursorPosition(cursor.y(), cursor.x(), false);
    step(fixture);
    QCOMPARE(doc.text(), after);
    if (before == after)
        return;
    doc.undoStack()->undo();
    QCOMPARE(doc.text(), before);
    QTEST(fixture.view().cursor()->pos(), "undone");
}

void TestTextDocEdit::cursorAfter_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QPoint>("cursor");
    QTest::addColumn<Step>("step");
    QTest::addColumn<QPoint>("after");
    QTest::newRow("insert") << lines("ab") << QPoint(1, 0)
                            << Step([](Fixture &f) { f.doc().insert(text("x\nyz"), 0, 0); })
                            << QPoint(2, 1);
    QTest::newRow("enter") << lines("  ab") << QPoint(3, 0)
                           << Step([](Fixture &f) { f.doc().insertLineBreak(0, 0); })
                           << QPoint(2, 1);
    QTest::newRow("backspace joins")
        << lines("ab|  c") << QPoint(0, 1) << Step([](Fixture &f) { f.doc().backspace(0, 0); })
        << QPoint(2, 0);
    QTest::newRow("word") << lines("foo bar") << QPoint(2, 0)
                          << Step([](Fixture &f) { f.doc().replaceCurrentWord(text("longer")); })
                          << QPoint(6, 0);
    QTest::newRow("cut") << lines("abc|def") << QPoint(1, 1) << Step([](Fixture &f) {
        f.select({2, 0}, {1, 1});
        f.doc().selectionCommand(SelectionRemove);
    }) << QPoint(2, 0);
}

void TestTextDocEdit::cursorAfter()
{
    QFETCH(QString, before);
    QFETCH(QPoint, cursor);
    QFETCH(Step, step);
    Fixture fixture(true);
    fixture.load(before);
    fixture.view().setCursorPosition(cursor.y(), cursor.x(), false);
    step(fixture);
    QTEST(fixture.view().cursor()->pos(), "after");
}

void TestTextDocEdit::selection_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QPoint>("from");
    QTest::addColumn<QPoint>("to");
    QTest::addColumn<bool>("vertical");
    QTest::addColumn<QString>("selected");
    QTest::addColumn<QString>("after");
    const auto row = [](const char *name, const char *before, const QPoint &from, const QPoint &to,
                        bool vertical, const char *selected, const char *after) {
        QTest::newRow(name) << lines(before) << from << to << vertical
                            << (selected ? lines(selected) : QString()) << lines(after);
    };
    row("nothing", "abc", {1, 0}, {1, 0}, false, nullptr, "abc");
    row("one line", "abcd", {1, 0}, {3, 0}, false, "bc", "ad");
    row("one line, backwards", "abcd", {3, 0}, {1, 0}, false, "bc", "ad");
    row("one line, past its end", "abcd", {2, 0}, {9, 0}, false, "cd", "ab");
    row("stream", "abc|def|ghi", {1, 0}, {2, 2}, false, "bc|def|gh", "ai");
    row("stream, to the left", "abc|def|ghi", {2, 0}, {1, 2}, false, "c|def|g", "abhi");
    row("stream, backwards", "abc|def|ghi", {2, 2}, {1, 0}, false, "bc|def|gh", "ai");
    row("stream, same columns", "abc|def", {1, 0}, {1, 1}, false, "bc|d", "aef");
    row("stream from a line's end loses the line break", "abc|def|ghi", {3, 0}, {1, 2}, false,
        "def|g", "abchi");
    row("stream to a line's start", "abc|def", {1, 0}, {0, 1}, false, "bc|", "adef");
    row("stream with empty lines", "a||b", {0, 0}, {1, 2}, false, "a||b", "");
    row("stream past the document", "abc|def", {1, 0}, {0, 5}, false, "bc|def|", "a");
    row("join takes blanks", "ab  x|y  z ", {2, 0}, {1, 1}, false, "  x|y", "abz");
    row("block", "abcd|e|fghi", {1, 0}, {3, 2}, true, "bc|gh", "ad|e|fi");
    row("block, other corners", "abcd|efgh", {3, 1}, {1, 0}, true, "bc|fg", "ad|eh");
    row("block, upwards to the right", "abcd|efgh", {1, 1}, {3, 0}, true, "bc|fg", "ad|eh");
    row("block past the document", "abcd|efgh", {1, 0}, {3, 9}, true, "bc|fg", "ad|eh");
}

void TestTextDocEdit::selection()
{
    QFETCH(QString, before);
    QFETCH(QPoint, from);
    QFETCH(QPoint, to);
    QFETCH(bool, vertical);
    QFETCH(QString, selected);
    Fixture fixture(false);
    TextDocument &doc = fixture.doc();
    fixture.load(before);
    const QRect rect(from, to);
    QVERIFY(doc.selectionCommand(SelectionCopy, rect, vertical).isNull());
    const QString found = doc.selectionCommand(SelectionText, rect, vertical);
    QCOMPARE(found, selected);
    QCOMPARE(doc.text(), before);
    QVERIFY2(!doc.undoStack()->canUndo(), "reading is no edit");

    const auto both = SelectionCommand(SelectionCut | SelectionText);
    QCOMPARE(doc.selectionCommand(both, rect, vertical), selected);
    QTEST(doc.text(), "after");
    if (!doc.undoStack()->canUndo())
        return;
    QCOMPARE(doc.undoStack()->undoList().size(), 1);
    doc.undoStack()->undo();
    QCOMPARE(doc.text(), before);
    doc.undoStack()->redo();
    QTEST(doc.text(), "after");
}

void TestTextDocEdit::readOnly_data()
{
    QTest::addColumn<Step>("step");
    const auto row = [](const char *name, const Step &step) { QTest::newRow(name) << step; };
    row("insert", [](Fixture &f) { f.doc().insert(text("x"), 0, 0); });
    row("append", [](Fixture &f) { f.doc().append(text("x")); });
    row("enter", [](Fixture &f) { f.doc().insertLineBreak(0, 0); });
    row("delete", [](Fixture &f) { f.doc().del(0, 0); });
    row("backspace", [](Fixture &f) { f.doc().backspace(0, 0); });
    row("indent", [](Fixture &f) { f.doc().indent(); });
    row("unindent", [](Fixture &f) { f.doc().unindent(); });
    row("remove the selection", [](Fixture &f) {
        f.select({0, 0}, {2, 0});
        f.doc().selectionCommand(SelectionRemove);
    });
    row("cut", [](Fixture &f) {
        f.select({0, 0}, {2, 0});
        f.doc().selectionCommand(SelectionCut);
    });
}

void TestTextDocEdit::readOnly()
{
    QFETCH(Step, step);
    Fixture fixture(true);
    const QString content = lines("  abc|def");
    fixture.load(content);
    fixture.view().setCursorPosition(0, 2, false);
    fixture.doc().setReadOnly(true);
    step(fixture);
    QCOMPARE(fixture.doc().text(), content);
    QVERIFY(!fixture.doc().undoStack()->canUndo() && !fixture.doc().isModified());
}

void TestTextDocEdit::copyFillsClipboard()
{
    Fixture fixture(false);
    fixture.load(lines("abc|def"));
    TextDocument &doc = fixture.doc();
    QApplication::clipboard()->setText(text("kept"));
    doc.selectionCommand(SelectionText, QRect(QPoint(0, 0), QPoint(1, 1)), false);
    doc.selectionCommand(SelectionCopy, QRect(QPoint(9, 0), QPoint(12, 0)), false);
    QCOMPARE(QApplication::clipboard()->text(), text("kept"));
    doc.setReadOnly(true);
    doc.selectionCommand(SelectionCut, QRect(QPoint(1, 0), QPoint(2, 1)), false);
    QCOMPARE(QApplication::clipboard()->text(), lines("bc|de"));
    QCOMPARE(fixture.manager.winClipboard, lines("bc|de"));
    QCOMPARE(doc.text(), lines("abc|def"));
}

// The bounds are wide: what they catch is work that grows with the square of the
// lines.
void TestTextDocEdit::speed()
{
    Fixture fixture(false);
    TextDocument &doc = fixture.doc();
    fixture.load(QString(300'000, u'\n'));
    QString pasted;
    for (int i = 0; i < 10'000; ++i)
        pasted += text("some\tline of text\n");
    QElapsedTimer timer;
    timer.start();
    const auto took = [&timer](const char *what) {
        const qint64 elapsed = timer.restart();
        qInfo("%s: %lld ms", what, static_cast<long long>(elapsed));
        return elapsed;
    };
    doc.insert(pasted, 100'000, 0);
    QVERIFY(took("paste 10,000 lines") < 5000);
    doc.undoStack()->undo();
    QVERIFY(took("undo") < 5000);
    doc.undoStack()->redo();
    QVERIFY(took("redo") < 5000);
    const QRect rect(QPoint(0, 50'000), QPoint(1, 150'000));
    doc.selectionCommand(SelectionCut, rect, false);
    QVERIFY(took("cut 100,000 lines") < 10'000);
    QCOMPARE(doc.lastLine(), 210'000 - 1);
    doc.undoStack()->undo();
    QVERIFY(took("undo") < 10'000);
    QCOMPARE(doc.lastLine(), 310'000 - 1);
}

QTEST_MAIN(TestTextDocEdit)
#include "tst_textdocedit.moc"
