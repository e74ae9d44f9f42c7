#include "qtundo/src/qtundo.h"
#include "tests/testing.h"
#include "zvwidgets/zveditor/document/selectionrect.h"
#include "zvwidgets/zveditor/editorcursor.h"
#include "zvwidgets/zveditor/textdoc.h"
#include "zvwidgets/zveditor/texteditor.h"
#include "zvwidgets/zveditor/textmanager.h"
#include "zvwidgets/zveditor/textview.h"

#include <QApplication>
#include <QBuffer>
#include <QClipboard>
#include <QTemporaryDir>
#include <QTest>
#include <QTextStream>

#include <functional>

using namespace Qt::StringLiterals;
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

/// "|" stands for a line end.
QString lines(const char *bytes)
{
    return QString::fromUtf8(bytes).replace(u'|', u'\n');
}

QString fetchedLines(const char *column)
{
    QString value = *static_cast<QString *>(QTest::qData(column, QMetaType::QString));
    return value.replace(u'|', u'\n');
}

Step insert(const char *bytes, int line, int column)
{
    return [=](Fixture &f) { f.doc().insert(lines(bytes), line, column); };
}

Step enter(int line, int column)
{
    return [=](Fixture &f) { f.doc().insertLineBreak(line, column); };
}

Step del(int line, int column)
{
    return [=](Fixture &f) { f.doc().del(line, column); };
}

Step backspace(int line, int column)
{
    return [=](Fixture &f) { f.doc().backspace(line, column); };
}

Step remove(int line, int column, int toLine, int toColumn)
{
    return [=](Fixture &f) { f.doc().removeText(line, column, toLine, toColumn); };
}

Step replaceWord(const char *word)
{
    return [=](Fixture &f) { f.doc().replaceCurrentWord(QString::fromUtf8(word)); };
}

Step with(void (*setting)(TextEditorManager &), const Step &step)
{
    return [=](Fixture &f) {
        setting(f.manager);
        step(f);
    };
}

Step selected(const QPoint &from, const QPoint &to, const Step &step)
{
    return [=](Fixture &f) {
        f.select(from, to);
        step(f);
    };
}

void savingTabs(TextEditorManager &manager)
{
    manager.fSaveTab = true;
}
void overwriting(TextEditorManager &manager)
{
    manager.fOvr = true;
}
void inBlocks(TextEditorManager &manager)
{
    manager.fVerticalSelection = true;
}
void notIndenting(TextEditorManager &manager)
{
    manager.fAutoIndent = false;
}
void notUnindenting(TextEditorManager &manager)
{
    manager.fBackspaceIndent = false;
}

const Step indent = [](Fixture &f) { f.doc().indent(); };
const Step unindent = [](Fixture &f) { f.doc().unindent(); };

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
    void removal_data();
    void removal() { edit(); }
    void editAtCursor_data();
    void editAtCursor();
    void selection_data();
    void selection();
    void lineEnds_data();
    void lineEnds();
    void readOnly_data();
    void readOnly();
    void copyFillsClipboard();
};

// Without a view the arguments tell the place.
void TestTextDocEdit::edit_data()
{
    const Rows<QString, Step, QString> row("before", "step", "after");

    row("insert lines, tail goes behind", "ab|z", insert("1|2|3", 0, 1), "a1|2|3b|z");
    row("insert past the end pads", "a", insert("b", 0, 3), "a  b");
    row("insert ends in a line end", "ab", insert("x|", 0, 1), "ax|b");
    row("every line end breaks a line", "ab", insert("1\r\n2\r3\n\r4\r", 0, 1), "a1|2|3||4|b");
    row("tabs become blanks up to the stop", "", insert("x\ty", 0, 0), "x   y");
    row("tabs of the line count for the stop", "\ta", insert("xyz\t!\t?", 0, 2), "\taxyz    !   ?");
    row("columns past the end count for the stop", "a", insert("\t!", 0, 6), "a       !");
    row("tabs stay if wanted", "a", with(savingTabs, insert("\tx\ty", 0, 1)), "a\tx\ty");
    row("overwriting", "abcdef", with(overwriting, insert("XY", 0, 1)), "aXYdef");
    row("overwriting eats the rest line by line", "abcdef|z",
        with(overwriting, insert("X|YY|Z", 0, 1)), "aX|YY|Zf|z");
    row("block", "abc|d|efg", with(inBlocks, insert("1|2|3", 0, 2)), "ab1c|d 2|ef3g");
    row("block makes lines below the last", "x|abc", with(inBlocks, insert("a|b", 1, 3)),
        "x|abca|   b");
    row("overwriting half a pair", "😀z", with(overwriting, insert("x", 0, 0)), "xz");
    row("overwriting from within a pair", "a😀z", with(overwriting, insert("xyz", 0, 2)), "axyz");
    row("a pair is not parted by text", "a😀", insert("x|y", 0, 2), "ax|y😀");
    row("a pair is not parted by a block", "ab|😀", with(inBlocks, insert("1|2", 0, 1)), "a1b|2😀");
    row("a pair is not parted by enter", "a😀", enter(0, 2), "a|😀");
    row(
        "append", "a|b", [](Fixture &f) { f.doc().append(lines("c|d")); }, "a|bc|d");

    row("enter copies the indent", "  \tab", enter(0, 4), "  \ta|  \tb");
    row("enter within the indent", "    ab", enter(0, 2), "  |    ab");
    row("enter at the start", "  ab", enter(0, 0), "|  ab");
    row("enter on a blank line", "   ", enter(0, 3), "   |   ");
    row("enter behind a colon", "  if x:", enter(0, 7), "  if x:|      ");
    row("enter before the text after a colon", "if x: y", enter(0, 5), "if x:| y");
    row("enter behind a colon on a short line, with tabs", ":", with(savingTabs, enter(0, 1)),
        ":|\t");
    row("enter past the end of an empty line", "", with(savingTabs, enter(0, 6)), "|\t  ");
    row("enter without indent", "  ab", with(notIndenting, enter(0, 3)), "  a|b");
}

void TestTextDocEdit::removal_data()
{
    const Rows<QString, Step, QString> row("before", "step", "after");

    row("delete a pair", "a😀z", del(0, 1), "az");
    row("delete within a pair", "a😀z", del(0, 2), "az");
    const QString loneHalves = u"\xDC80\xDC81z"_s;
    row("lone halves are characters", loneHalves, del(0, 1), QString(loneHalves).remove(1, 1));
    row("delete joins", "ab|  c", del(0, 2), "abc");
    row("join drops blanks at both ends", "foo|   bar  |x", del(0, 3), "foobar|x");
    row("join to an empty line keeps all", "|   bar  |x", del(0, 0), "   bar  |x");
    row("join to a blank line keeps all", "  | bar |x", del(0, 2), "   bar |x");
    row("join drops a blank line", "foo| \t |x", del(0, 3), "foo|x");
    row("delete at the very end", "ab|c", del(1, 1), "ab|c");
    row("backspace over a pair", "a😀z", backspace(0, 3), "az");
    row("backspace to a lesser indent", "  a||      b|        ", backspace(3, 4),
        "  a||      b|      ");
    row("backspace in the indent to column 0", "    a|  b", backspace(1, 2), "    a|b");
    row("backspace within the text takes one", "a|  bc", backspace(1, 3), "a|  c");
    row("backspace in the indent, switched off", "a|    b", with(notUnindenting, backspace(1, 4)),
        "a|   b");
    row("backspace joins", "ab| c", backspace(1, 0), "abc");
    row("backspace at the very start", "ab", backspace(0, 0), "ab");

    row("remove within a line", "abcd", remove(0, 3, 0, 1), "ad");
    row("remove from one pair into the next", "a😀😀z", remove(0, 2, 0, 4), "az");
    row("remove lines from pair to pair", "a😀|b|😀z", remove(0, 2, 2, 1), "az");
    row("remove lines", "ab|c|d|ef", remove(0, 1, 3, 1), "af");
    row("remove lines, ends swapped", "ab|c|d|ef", remove(3, 1, 0, 1), "af");
    row("remove to a line's start", "ab|c|d", remove(0, 2, 2, 0), "abd");
}

void TestTextDocEdit::edit()
{
    QFETCH(Step, step);
    Fixture fixture(false);
    TextDocument &doc = fixture.doc();
    doc.setSpacesInTab(4);
    const QString before = fetchedLines("before");
    const QString after = fetchedLines("after");
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

// With a view its cursor tells the place, whatever the arguments say. Undo shows
// what came back, so a deleted character is left of the cursor then.
void TestTextDocEdit::editAtCursor_data()
{
    const Rows<QString, QPoint, Step, QString, QPoint, QPoint> row("before", "cursor", "step",
                                                                   "after", "moved", "undone");

    row("insert", "ab|cd", {1, 1}, insert("x|yz", 0, 0), "ab|cx|yzd", {2, 2}, {1, 1});
    row("enter", "ab|  cd", {3, 1}, enter(0, 0), "ab|  c|  d", {2, 2}, {3, 1});
    row("delete", "ab|cd", {1, 1}, del(0, 0), "ab|c", {1, 1}, {2, 1});
    row("backspace", "ab|cd", {2, 1}, backspace(0, 1), "ab|c", {1, 1}, {2, 1});
    row("backspace joins", "ab|  c", {0, 1}, backspace(0, 0), "abc", {2, 0}, {2, 1});

    row("indent the cursor's line", "a|b|c", {1, 1}, indent, "a|    b|c", {4, 1}, {1, 1});
    row("indent with a tab", "a|b", {0, 1}, with(savingTabs, indent), "a|\tb", {1, 1}, {0, 1});
    row("indent selected lines", "a|b|c", {0, 0}, selected({0, 0}, {1, 1}, indent), "    a|    b|c",
        {4, 1}, {0, 0});
    row("last line selected up to its start stays", "a|b|c", {0, 0},
        selected({1, 0}, {0, 1}, indent), "    a|b|c", {4, 0}, {0, 0});
    row("so if selected upwards", "a|b|c", {0, 0}, selected({0, 2}, {1, 0}, indent),
        "    a|    b|c", {4, 1}, {0, 0});
    row("selection within a line", "abc|d", {0, 0}, selected({0, 0}, {2, 0}, indent), "    abc|d",
        {4, 0}, {0, 0});
    row("unindent", "      a|  b|\tc| \td|    ", {0, 0}, selected({0, 0}, {1, 4}, unindent),
        "  a|b|c|d|    ", {0, 3}, {0, 0});

    row("replace the word at the cursor", "foo_1.bar", {3, 0}, replaceWord("longer"), "longer.bar",
        {6, 0}, {3, 0});
    row("replace behind the word", "a foo", {5, 0}, replaceWord("other"), "a other", {7, 0},
        {5, 0});
    row("no word to replace", "a  b", {2, 0}, replaceWord("x"), "a  b", {2, 0}, {2, 0});
}

void TestTextDocEdit::editAtCursor()
{
    QFETCH(QPoint, cursor);
    QFETCH(Step, step);
    Fixture fixture(true);
    TextDocument &doc = fixture.doc();
    doc.setSpacesInTab(4);
    const QString before = fetchedLines("before");
    fixture.load(before);
    fixture.view().setCursorPosition(cursor.y(), cursor.x(), false);
    step(fixture);
    QCOMPARE(doc.text(), fetchedLines("after"));
    QTEST(fixture.view().cursor()->pos(), "moved");
    if (!doc.undoStack()->canUndo())
        return;
    doc.undoStack()->undo();
    QCOMPARE(doc.text(), before);
    QTEST(fixture.view().cursor()->pos(), "undone");
}

void TestTextDocEdit::selection_data()
{
    const Rows<QString, QPoint, QPoint, bool, QString, QString> row(
        "before", "from", "to", "vertical", "selected", "after");
    row("nothing", "abc", {1, 0}, {1, 0}, false, "", "abc");
    row("one line", "abcd", {1, 0}, {3, 0}, false, "bc", "ad");
    row("one line, past its end", "abcd", {2, 0}, {9, 0}, false, "cd", "ab");
    row("stream", "abc|def|ghi", {1, 0}, {2, 2}, false, "bc|def|gh", "ai");
    row("stream, to the left", "abc|def|ghi", {2, 0}, {1, 2}, false, "c|def|g", "abhi");
    row("stream, backwards", "abc|def|ghi", {2, 2}, {1, 0}, false, "bc|def|gh", "ai");
    row("stream, same columns", "abc|def", {1, 0}, {1, 1}, false, "bc|d", "aef");
    row("stream from a line's end loses the line break", "abc|def|ghi", {3, 0}, {1, 2}, false,
        "def|g", "abchi");
    row("stream to a line's start", "abc|def", {1, 0}, {0, 1}, false, "bc|", "adef");
    row("stream past the document", "abc|def", {1, 0}, {0, 5}, false, "bc|def|", "a");
    row("stream below the document", "abc|def", {1, 7}, {1, 9}, false, "", "abc|def");
    row("join takes blanks", "ab  x|y  z ", {2, 0}, {1, 1}, false, "  x|y", "abz");
    row("half a pair takes all of it", "x😀😀", {2, 0}, {4, 0}, false, "😀😀", "x");
    row("stream from half a pair to half a pair", "a😀|b|😀c", {2, 0}, {1, 2}, false, "😀|b|😀", "ac");
    row("a box takes whole characters of each line", "a😀b|abcd|😀😀", {2, 0}, {3, 2}, true, "😀|c|😀",
        "ab|abd|😀");
    row("block", "abcd|e|fghi", {1, 0}, {3, 2}, true, "bc|gh", "ad|e|fi");
    row("block, other corners", "abcd|efgh", {3, 1}, {1, 0}, true, "bc|fg", "ad|eh");
    row("block past the document", "abcd|efgh", {1, 0}, {3, 9}, true, "bc|fg", "ad|eh");
}

void TestTextDocEdit::selection()
{
    QFETCH(QPoint, from);
    QFETCH(QPoint, to);
    QFETCH(bool, vertical);
    Fixture fixture(false);
    TextDocument &doc = fixture.doc();
    const QString before = fetchedLines("before");
    const QString selected = fetchedLines("selected");
    const QString after = fetchedLines("after");
    fixture.load(before);
    const QRect rect(from, to);
    QVERIFY(doc.selectionCommand(SelectionCopy, rect, vertical).isNull());
    const QString found = doc.selectionCommand(SelectionText, rect, vertical);
    QCOMPARE(found, selected);
    QCOMPARE(doc.text(), before);
    QVERIFY2(!doc.undoStack()->canUndo(), "reading is no edit");

    const auto both = SelectionCommand(SelectionCut | SelectionText);
    QCOMPARE(doc.selectionCommand(both, rect, vertical), selected);
    QCOMPARE(doc.text(), after);
    if (!doc.undoStack()->canUndo())
        return;
    QCOMPARE(doc.undoStack()->undoList().size(), 1);
    doc.undoStack()->undo();
    QCOMPARE(doc.text(), before);
    doc.undoStack()->redo();
    QCOMPARE(doc.text(), after);
}

// "l", "c" and "r" stand for LF, CRLF and CR.
void TestTextDocEdit::lineEnds_data()
{
    const Rows<QString, Step, QString> row("before", "step", "after");
    const auto removeLine = [](Fixture &f) { f.doc().removeLine(1); };
    row("remove a line", "AlBcClD", removeLine, "AlClD");
    row("enter within a line", "AlBBcC", enter(1, 1), "AlBcBcC");
    row("enter at a line's start", "AlBBcC", enter(1, 0), "AlcBBcC");
    row("enter in the last line", "ArBrClDD", enter(3, 1), "ArBrClDrD");
    row("paste lines", "AlBBcClD", insert("1|2|3", 1, 1), "AlB1c2c3BcClD");
    row("join two lines", "AlBcCrDlE", del(1, 1), "AlBCrDlE");
    row("join to the last line", "AlBlCcD", del(2, 1), "AlBlCD");
    row("remove lines", "AlBcCrDcElF", remove(0, 1, 3, 0), "ADcElF");
    row("remove the first line", "AcBlClD", remove(0, 0, 1, 0), "BlClD");
}

void TestTextDocEdit::lineEnds()
{
    QFETCH(Step, step);
    Fixture fixture(false);
    TextDocument &doc = fixture.doc();
    const auto bytes = [](const char *column) {
        const QByteArray ends =
            static_cast<QString *>(QTest::qData(column, QMetaType::QString))->toUtf8();
        return QByteArray(ends).replace('c', "\r\n").replace('l', '\n').replace('r', '\r');
    };
    const QTemporaryDir dir;
    const auto saved = [&] {
        const QString path = dir.filePath(u"text"_s);
        return doc.saveFile(path) ? readFile(path) : QByteArray("not saved");
    };
    QByteArray before = bytes("before");
    QBuffer buffer(&before);
    QVERIFY(buffer.open(QIODevice::ReadOnly));
    QVERIFY(doc.load(buffer));
    step(fixture);
    QCOMPARE(saved(), bytes("after"));
    doc.undoStack()->undo();
    QCOMPARE(saved(), before);
    doc.undoStack()->redo();
    QCOMPARE(saved(), bytes("after"));
}

void TestTextDocEdit::readOnly_data()
{
    const auto command = [](SelectionCommand kind) -> Step {
        return selected({0, 0}, {2, 0}, [=](Fixture &f) { f.doc().selectionCommand(kind); });
    };
    const Rows<Step> row("step");
    row("insert", insert("x", 0, 0));
    row("append", [](Fixture &f) { f.doc().append(u"x"_s); });
    row("enter", enter(0, 0));
    row("delete", del(0, 0));
    row("backspace", backspace(0, 0));
    row("indent", indent);
    row("unindent", unindent);
    row("remove the selection", command(SelectionRemove));
    row("cut", command(SelectionCut));
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
    QApplication::clipboard()->setText(u"kept"_s);
    doc.selectionCommand(SelectionText, QRect(QPoint(0, 0), QPoint(1, 1)), false);
    doc.selectionCommand(SelectionCopy, QRect(QPoint(9, 0), QPoint(12, 0)), false);
    QCOMPARE(QApplication::clipboard()->text(), u"kept"_s);
    doc.setReadOnly(true);
    doc.selectionCommand(SelectionCut, QRect(QPoint(1, 0), QPoint(2, 1)), false);
    QCOMPARE(QApplication::clipboard()->text(), lines("bc|de"));
    QCOMPARE(fixture.manager.winClipboard, lines("bc|de"));
    QCOMPARE(doc.text(), lines("abc|def"));
}

QTEST_MAIN(TestTextDocEdit)
#include "tst_textdocedit.moc"
