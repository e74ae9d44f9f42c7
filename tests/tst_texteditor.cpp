#include "qtundo/src/qtundo.h"
#include "tests/showactive.h"
#include "zvwidgets/zveditor/editorcursor.h"
#include "zvwidgets/zveditor/textdoc.h"
#include "zvwidgets/zveditor/texteditor.h"
#include "zvwidgets/zveditor/textfolding.h"
#include "zvwidgets/zveditor/textline.h"
#include "zvwidgets/zveditor/textmanager.h"
#include "zvwidgets/zveditor/textview.h"

#include <QBuffer>
#include <QClipboard>
#include <QDialog>
#include <QElapsedTimer>
#include <QFont>
#include <QListWidget>
#include <QPointer>
#include <QPrinter>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <memory>

using namespace zvwidgets;

namespace {

enum FindOption
{
    Plain = 0,
    CaseSensitive = 1,
    WholeWord = 2,
    FromCursor = 4,
    InSelection = 8,
    Box = 16
};

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class TestTextEditor : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void opensAndSaves();
    void failedOpenKeepsTheText();
    void failedSaveKeepsTextAndPath();
    void saveWithoutChangesWritesNothing();

    void find_data();
    void find();
    void findNextWalksThroughTheText();
    void searchInSelectionGoesOn();
    void findRegexp_data();
    void findRegexp();
    void findRegexpComesToAnEnd();
    void replaceAll_data();
    void replaceAll();
    void replaceAllIsOneStep();
    void replaceAllKeepsReadOnlyText();
    void searchingIsFast();
    void replacingIsFast();

    void pasting();
    void completionList_data();
    void completionList();
    void completionCycles();
    void popupCompletes();
    void popupNarrowsAndCloses();
    void html_data();
    void html();
    void prints();

    void twoEditorsOnOneDocument();
    void lastEditorDeletesTheDocument();
    void reportsChangesAndActivation();

private:
    std::unique_ptr<TextEditor> makeEditor(TextDocument *document);
    void placeCursor(int line, int column) { view->setCursorPosition(line, column, false); }
    void select(int line, int column, int toLine, int toColumn);
    bool find(const QString &text, int options);
    QListWidget *popup() const { return view->findChild<QListWidget *>(); }

    std::unique_ptr<TextEditorManager> manager;
    std::unique_ptr<TextEditor> editor;
    QPointer<TextDocument> doc;
    TextView *view = nullptr;
};

std::unique_ptr<TextEditor> TestTextEditor::makeEditor(TextDocument *document)
{
    auto result = std::make_unique<TextEditor>(document);
    manager->addEditor(result.get(), document);
    result->resize(500, 300);
    return result;
}

void TestTextEditor::init()
{
    manager = std::make_unique<TextEditorManager>();
    manager->setFont(QFont(QStringLiteral("DejaVu Sans Mono"), 10));
    manager->setTabWidth(4);
    manager->fSaveTab = true;
    doc = new TextDocument(manager.get());
    editor = makeEditor(doc);
    view = editor->view();
    QVERIFY(showActive(editor.get()));
    view->setFocus();
    QTRY_VERIFY(view->hasFocus());
}

void TestTextEditor::cleanup()
{
    editor.reset();
    manager.reset();
}

void TestTextEditor::select(int line, int column, int toLine, int toColumn)
{
    view->setCursorPosition(line, column, false);
    view->setCursorPosition(toLine, toColumn, true);
}

bool TestTextEditor::find(const QString &text, int options)
{
    return editor->find(text, options & CaseSensitive, options & WholeWord, options & FromCursor,
                        options & InSelection);
}

void TestTextEditor::opensAndSaves()
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("a.py"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("if x:\r\n    y\r\n");
    file.close();

    QSignalSpy pathChange(editor.get(), &TextEditor::filePathChange);
    QVERIFY(editor->open(path));
    QCOMPARE(pathChange.count(), 1);
    QCOMPARE(editor->filePath(), path);
    QVERIFY(!editor->isModified());
    QVERIFY(editor->highlight().contains(QStringLiteral("ython")));

    placeCursor(0, 0);
    QTest::keyClick(view, Qt::Key_X);
    QVERIFY(editor->isModified());
    QVERIFY(editor->save());
    QVERIFY(!editor->isModified());
    QVERIFY(contentOf(path).startsWith("xif x:\r\n    y"));

    const QString copy = dir.filePath(QStringLiteral("b.txt"));
    QVERIFY(editor->saveAs(copy));
    QCOMPARE(editor->filePath(), copy);
    QCOMPARE(contentOf(copy), contentOf(path));

    editor->fileNew();
    QCOMPARE(editor->filePath(), QString());
    QCOMPARE(editor->text(), QString());
    QTest::keyClick(view, Qt::Key_X);
    QVERIFY(!editor->save());
}

void TestTextEditor::failedOpenKeepsTheText()
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("a.txt"));
    editor->setText(QStringLiteral("unsaved"));
    QVERIFY(editor->saveAs(path));
    QTest::keyClick(view, Qt::Key_X);
    const QString text = editor->text();
    for (const QString &bad : {dir.path(), dir.filePath(QStringLiteral("missing")), QString()}) {
        QVERIFY(!editor->open(bad));
        QVERIFY(!editor->errorString().isEmpty());
        QCOMPARE(editor->text(), text);
        QCOMPARE(editor->filePath(), path);
        QVERIFY(editor->isModified());
    }
}

void TestTextEditor::failedSaveKeepsTextAndPath()
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("a.txt"));
    editor->setText(QStringLiteral("text"));
    QVERIFY(editor->saveAs(path));
    QVERIFY(!editor->saveAs(dir.filePath(QStringLiteral("missing/a.txt"))));
    QVERIFY(!editor->errorString().isEmpty());
    QVERIFY(editor->isModified());
    QCOMPARE(editor->filePath(), path);
    QVERIFY(editor->save());
    QCOMPARE(editor->errorString(), QString());

    // A folder in the place of the file can't be replaced by a text.
    QTest::keyClick(view, Qt::Key_X);
    QVERIFY(QFile::remove(path));
    QVERIFY(QDir().mkdir(path));
    QVERIFY(!editor->save());
    QVERIFY(editor->isModified());
    QVERIFY(!editor->errorString().isEmpty());
}

void TestTextEditor::saveWithoutChangesWritesNothing()
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("a.txt"));
    editor->setText(QStringLiteral("text"));
    QVERIFY(editor->saveAs(path));
    QVERIFY(QFile::remove(path));
    QVERIFY(editor->save());
    QVERIFY(!QFile::exists(path));
    QVERIFY(editor->saveAs(path));
    QVERIFY(QFile::exists(path));
}

void TestTextEditor::find_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QRect>("selection");
    QTest::addColumn<QString>("what");
    QTest::addColumn<int>("options");
    QTest::addColumn<QPoint>("found");

    const QPoint nowhere(-1, -1);
    const auto selection = [](int line, int column, int toLine, int toColumn) {
        return QRect(QPoint(column, line), QPoint(toColumn, toLine));
    };
    const auto row = [](const char *name, const char *text, const QRect &selected, const char *what,
                        int options, const QPoint &found) {
        QTest::newRow(name) << QString::fromUtf8(text) << selected << QString::fromUtf8(what)
                            << options << found;
    };
    const QRect cursorAt4 = selection(0, 4, 0, 4);

    row("from the top", "foo foo", cursorAt4, "foo", Plain, {0, 0});
    row("from the cursor", "foo foo", cursorAt4, "foo", FromCursor, {4, 0});
    row("no wrapping round", "foo bar", cursorAt4, "foo", FromCursor, nowhere);
    row("next line", "a\nb foo", cursorAt4, "foo", FromCursor, {2, 1});
    row("any case", "FOO foo", cursorAt4, "foo", Plain, {0, 0});
    row("case sensitive", "FOO foo", cursorAt4, "foo", CaseSensitive, {4, 0});
    row("any case outside ASCII", "straße ÄRGER", cursorAt4, "ärger", Plain, {7, 0});
    row("nothing", "foo", cursorAt4, "", Plain, nowhere);
    row("longer than the line", "fo\nfoo", cursorAt4, "foo", Plain, {0, 1});
    row("at the end of a long line", "0123456789012345678901234567890123foo", cursorAt4, "foo",
        Plain, {34, 0});
    row("whole word goes on in the line", "foobar _foo foo", cursorAt4, "foo", WholeWord, {12, 0});
    row("whole word in brackets", "(foo)", cursorAt4, "foo", WholeWord, {1, 0});
    row("whole word at both ends", "foo", cursorAt4, "foo", WholeWord, {0, 0});
    row("no whole word", "foo1 2foo", cursorAt4, "foo", WholeWord, nowhere);
    row("cursor behind the line's end", "foo\nfoo", selection(0, 9, 0, 9), "foo", FromCursor,
        {0, 1});

    row("selection bounds the first line", "foo x\nfoo y\nfoo", selection(0, 1, 2, 1), "foo",
        InSelection, {0, 1});
    row("selection bounds the last line", "a\nb\nab foo", selection(0, 0, 2, 5), "foo", InSelection,
        nowhere);
    row("a match may end where it ends", "a\nb\nab foo", selection(0, 0, 2, 6), "foo", InSelection,
        {3, 2});
    row("selection doesn't bound lines between", "x\n  foo\ny", selection(0, 0, 2, 1), "foo",
        InSelection, {2, 1});
    row("selection beyond the text", "x\nfoo", selection(0, 0, 9, 0), "foo", InSelection, {0, 1});
    row("a box bounds every line", "foo\n foo\n  foo", selection(0, 2, 2, 5), "foo",
        InSelection | Box, {2, 2});
    row("a box drawn to the left", "foo\n foo\n  foo", selection(0, 5, 2, 2), "foo",
        InSelection | Box, {2, 2});
}

void TestTextEditor::find()
{
    QFETCH(const QString, text);
    QFETCH(const QRect, selection);
    QFETCH(const QString, what);
    QFETCH(const int, options);
    QFETCH(const QPoint, found);

    editor->setText(text);
    manager->fVerticalSelection = options & Box;
    placeCursor(selection.top(), selection.left());
    if (options & InSelection)
        view->setSelection(selection.topLeft(), selection.bottomRight());
    const bool expected = found != QPoint(-1, -1);
    QCOMPARE(find(what, options), expected);
    QCOMPARE(view->hasSelection(), expected);
    if (!expected)
        return;
    QCOMPARE(view->selection().topLeft(), found);
    QCOMPARE(editor->getSelectedText().length(), what.length());
    QCOMPARE(view->cursor()->pos(), found + QPoint(int(what.length()), 0));
}

void TestTextEditor::findNextWalksThroughTheText()
{
    editor->setText(QStringLiteral("foo foo\nxfoo\nfoo"));
    QVERIFY(find(QStringLiteral("foo"), WholeWord));
    QList<QPoint> places{view->cursor()->pos()};
    while (editor->findNext())
        places.append(view->cursor()->pos());
    QCOMPARE(places, (QList<QPoint>{{3, 0}, {7, 0}, {3, 2}}));
    QCOMPARE(view->cursor()->pos(), QPoint(3, 2));
    QVERIFY(!view->hasSelection());
}

/// Each match becomes the selection, which must not bound the next search.
void TestTextEditor::searchInSelectionGoesOn()
{
    editor->setText(QStringLiteral("a a\n a\na a a"));
    select(0, 1, 2, 2);
    int count = 0;
    bool found = find(QStringLiteral("a"), InSelection);
    for (; found && count < 10; ++count) {
        doc->selectionCommand(SelectionRemove);
        doc->insert(QStringLiteral("b"), 0, 0);
        found = find(QStringLiteral("a"), InSelection | FromCursor);
    }
    QCOMPARE(editor->text(), QStringLiteral("a b\n b\nb a a"));
}

void TestTextEditor::findRegexp_data()
{
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<bool>("wildcard");
    QTest::addColumn<QPoint>("found");
    QTest::addColumn<QString>("selected");

    QTest::newRow("class") << QStringLiteral("[0-9]+") << false << QPoint(3, 0)
                           << QStringLiteral("123");
    QTest::newRow("longest alternative")
        << QStringLiteral("d|de|def") << false << QPoint(0, 1) << QStringLiteral("def");
    QTest::newRow("line start") << QStringLiteral("^d") << false << QPoint(0, 1)
                                << QStringLiteral("d");
    QTest::newRow("wildcard") << QStringLiteral("d?f") << true << QPoint(0, 1)
                              << QStringLiteral("def");
    QTest::newRow("invalid") << QStringLiteral("(d") << false << QPoint(-1, -1) << QString();
    QTest::newRow("absent") << QStringLiteral("z+") << false << QPoint(-1, -1) << QString();
}

void TestTextEditor::findRegexp()
{
    QFETCH(const QString, pattern);
    QFETCH(const bool, wildcard);
    QFETCH(const QPoint, found);
    QFETCH(const QString, selected);

    editor->setText(QStringLiteral("abc123\ndef"));
    const bool expected = found.y() >= 0;
    QCOMPARE(editor->findRegexp(pattern, true, wildcard, false), expected);
    QCOMPARE(editor->getSelectedText(), selected);
    if (expected)
        QCOMPARE(view->selection().topLeft(), found);
}

/// Replacing matches of nothing one by one, as the user does, has to stop.
void TestTextEditor::findRegexpComesToAnEnd()
{
    editor->setText(QStringLiteral("axx\n\nb"));
    int count = 0;
    bool found = editor->findRegexp(QStringLiteral("x*"), true, false, false);
    for (; found && count < 100; ++count) {
        doc->selectionCommand(SelectionRemove);
        doc->insert(QStringLiteral("xx"), 0, 0);
        found = editor->findRegexp(QStringLiteral("x*"), true, false, true);
    }
    QVERIFY(count < 20);
}

void TestTextEditor::replaceAll_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("what");
    QTest::addColumn<QString>("by");
    QTest::addColumn<int>("options");
    QTest::addColumn<int>("count");
    QTest::addColumn<QString>("result");

    const auto row = [](const char *name, const char *text, const char *what, const char *by,
                        int options, int count, const char *result) {
        QTest::newRow(name) << QString::fromUtf8(text) << QString::fromUtf8(what)
                            << QString::fromUtf8(by) << options << count
                            << QString::fromUtf8(result);
    };
    row("several in a line", "a-a-a\nb\na", "a", "xy", Plain, 4, "xy-xy-xy\nb\nxy");
    row("contains what is searched", "a a", "a", "aa", Plain, 2, "aa aa");
    row("by nothing", "abab\nab", "ab", "", Plain, 3, "\n");
    row("case sensitive", "A a", "a", "b", CaseSensitive, 1, "A b");
    row("whole words", "a ab a", "a", "x", WholeWord, 2, "x ab x");
    row("nothing found", "abc", "x", "y", Plain, 0, "abc");
    row("empty search", "abc", "", "y", Plain, 0, "abc");
    row("by several lines", "1,2,3\n4,5", ",", "\n", Plain, 3, "1\n2\n3\n4\n5");
    row("by text around a line break", "a+b+c", "+", "x\ny", Plain, 2, "ax\nybx\nyc");
    row("by a tab", "a,b", ",", "\t", Plain, 1, "a\tb");
    row("stream selection", "a a\na\na a", "a", "bb", InSelection, 3, "a bb\nbb\nbb a");
    row("box selection", "aaa\naaa\naaa", "a", "bb", InSelection | Box, 3, "abba\nabba\nabba");
}

void TestTextEditor::replaceAll()
{
    QFETCH(const QString, text);
    QFETCH(const QString, what);
    QFETCH(const QString, by);
    QFETCH(const int, options);
    QFETCH(const int, count);
    QFETCH(const QString, result);

    editor->setText(text);
    manager->fVerticalSelection = options & Box;
    if (options & InSelection)
        select(0, 1, 2, 2);
    QCOMPARE(editor->replaceAll(what, by, options & CaseSensitive, options & WholeWord,
                                options & InSelection),
             count);
    QCOMPARE(editor->text(), result);
    QVERIFY(!view->hasSelection());
    if (count == 0)
        return;
    editor->undo();
    QCOMPARE(editor->text(), text);
    editor->redo();
    QCOMPARE(editor->text(), result);
}

void TestTextEditor::replaceAllIsOneStep()
{
    manager->fSaveTab = false;
    manager->fOvr = true;
    editor->setText(QStringLiteral("a,b,c\n1,2"));
    doc->undoStack()->clear();
    QSignalSpy executed(doc->undoStack(), &QtUndoStack::commandExecuted);
    QCOMPARE(editor->replaceAll(QStringLiteral(","), QStringLiteral("\t"), false, false, false), 3);
    QCOMPARE(executed.count(), 1);
    QCOMPARE(doc->undoStack()->undoList(), QStringList{QStringLiteral("replace all")});
    // Tabs become blanks up to the stop, and nothing is written over.
    QCOMPARE(editor->text(), QStringLiteral("a   b   c\n1   2"));
    QCOMPARE(view->cursor()->pos(), QPoint(4, 1));
}

void TestTextEditor::replaceAllKeepsReadOnlyText()
{
    editor->setText(QStringLiteral("a a"));
    editor->setReadOnly(true);
    doc->setModified(false);
    QCOMPARE(editor->replaceAll(QStringLiteral("a"), QStringLiteral("b"), false, false, false), 0);
    QCOMPARE(editor->text(), QStringLiteral("a a"));
    QVERIFY(!editor->isModified());
}

void TestTextEditor::searchingIsFast()
{
    QByteArray bytes("some text of usual length, with commas and the like;\n");
    bytes = bytes.repeated(400000) + "needle";
    QBuffer buffer(&bytes);
    QVERIFY(buffer.open(QIODevice::ReadOnly));
    QVERIFY(doc->load(buffer));
    for (const int options : {int(Plain), int(CaseSensitive)}) {
        QElapsedTimer timer;
        timer.start();
        QVERIFY(find(QStringLiteral("needle"), options));
        const qint64 elapsed = timer.elapsed();
        QCOMPARE(view->cursor()->pos(), QPoint(6, 400000));
        qInfo("found behind %lld characters in %lld ms", qlonglong(bytes.size()),
              qlonglong(elapsed));
        QVERIFY(elapsed < 5000);
    }
}

void TestTextEditor::replacingIsFast()
{
    const QString line = QStringLiteral("value = other(value) + 1 and some more text to fill it\n");
    for (const QString &text :
         {line.repeated(50000), QString(line).remove(u'\n').repeated(50000)}) {
        QByteArray bytes = text.toUtf8();
        QBuffer buffer(&bytes);
        QVERIFY(buffer.open(QIODevice::ReadOnly));
        QVERIFY(doc->load(buffer));
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(
            editor->replaceAll(QStringLiteral("value"), QStringLiteral("val"), true, false, false),
            100000);
        qInfo("100000 replacements in %lld ms", qlonglong(timer.elapsed()));
        QVERIFY(timer.elapsed() < 20000);
    }
}

void TestTextEditor::pasting()
{
    QClipboard *clipboard = QGuiApplication::clipboard();
    editor->setText(QStringLiteral("one two"));
    select(0, 0, 0, 3);
    clipboard->setText(QString());
    editor->paste();
    QCOMPARE(editor->text(), QStringLiteral("one two"));
    clipboard->setText(QStringLiteral("a\r\nb"));
    editor->paste();
    QCOMPARE(editor->text(), QStringLiteral("a\nb two"));
    if (clipboard->supportsSelection())
        clipboard->setText(QStringLiteral("mouse "), QClipboard::Selection);
    else
        manager->winClipboard = QStringLiteral("mouse ");
    editor->pasteSelection();
    QCOMPARE(editor->text(), QStringLiteral("a\nbmouse  two"));
    editor->setReadOnly(true);
    select(0, 0, 0, 1);
    editor->cut();
    QCOMPARE(editor->text(), QStringLiteral("a\nbmouse  two"));
    QCOMPARE(clipboard->text(), QStringLiteral("a"));
}

void TestTextEditor::completionList_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("word");
    QTest::addColumn<QStringList>("list");

    const auto row = [](const char *name, const char *text, int column, const char *word,
                        const QStringList &list) {
        QTest::newRow(name) << QString::fromUtf8(text) << column << QString::fromUtf8(word) << list;
    };
    const QString fooBar = QStringLiteral("fooBar");
    const QString foo = QStringLiteral("foo");
    row("sorted, each once", "foo fooBar foo fooBar", 0, "fo", {foo, fooBar});
    row("prefix with case", "Foo fooBar xfoo", 0, "foo", {fooBar, QStringLiteral("foomatic")});
    row("word behind the cursor", "foo fooBar", 1, "", {foo, fooBar, QStringLiteral("foomatic")});
    row("word before the cursor", "fooBar foo", 10, "", {foo, fooBar, QStringLiteral("foomatic")});
    row("no word", "foo  bar", 4, "", {});
    row("added words need their length", "x", 0, "fo", {});
    row("added words come last in their order", "fozz", 0, "foom", {QStringLiteral("foomatic")});
    row("letters outside ASCII", "été étage", 0, "ét",
        {QStringLiteral("étage"), QStringLiteral("été")});
}

void TestTextEditor::completionList()
{
    QFETCH(const QString, text);
    QFETCH(const int, column);
    QFETCH(const QString, word);
    QFETCH(const QStringList, list);

    manager->addCompletionList({QStringLiteral("foomatic"), QStringLiteral("bar")}, 3);
    editor->setText(text);
    placeCursor(0, column);
    QCOMPARE(editor->completionList(word), list);
}

void TestTextEditor::completionCycles()
{
    editor->setText(QStringLiteral("fob foa foc\nfo"));
    placeCursor(1, 2);
    const auto last = [this] { return QString(*doc->lineOf(1)); };
    editor->completeWordNext();
    QCOMPARE(last(), QStringLiteral("foa"));
    editor->completeWordNext();
    QCOMPARE(last(), QStringLiteral("fob"));
    editor->completeWordPrev();
    editor->completeWordPrev();
    QCOMPARE(last(), QStringLiteral("fo"));
    editor->completeWordPrev();
    QCOMPARE(last(), QStringLiteral("foc"));

    // A move ends the cycle: what stands there now is the prefix.
    QTest::keyClick(view, Qt::Key_Left);
    QTest::keyClick(view, Qt::Key_Right);
    editor->completeWordNext();
    QCOMPARE(last(), QStringLiteral("foc"));

    editor->setText(QStringLiteral("single"));
    placeCursor(0, 6);
    editor->completeWordNext();
    editor->completeWordPrev();
    QCOMPARE(editor->text(), QStringLiteral("single"));
}

void TestTextEditor::popupCompletes()
{
    // The equals sign and the bracket are no part of the word.
    editor->setText(QStringLiteral("someFoo afoot\na=foo(x)"));
    placeCursor(1, 3);
    manager->fOvr = true;
    editor->completeWord();
    QTRY_VERIFY(popup() && popup()->hasFocus());
    QVERIFY(view->cursor()->isEnabled() || QApplication::cursorFlashTime() > 0);
    QStringList shown;
    for (int i = 0; i < popup()->count(); ++i)
        shown.append(popup()->item(i)->text());
    QCOMPARE(shown, (QStringList{QStringLiteral("afoot"), QStringLiteral("foo"),
                                 QStringLiteral("someFoo")}));
    QTest::keyClick(popup(), Qt::Key_Down);
    QTest::keyClick(popup(), Qt::Key_Down);
    QTest::keyClick(popup(), Qt::Key_Return);
    QTRY_VERIFY(!popup());
    QCOMPARE(editor->text(), QStringLiteral("someFoo afoot\na=someFoo(x)"));
    QTRY_VERIFY(view->hasFocus());
}

void TestTextEditor::popupNarrowsAndCloses()
{
    editor->setText(QStringLiteral("foobar football foo"));
    placeCursor(0, 19);
    editor->completeWord();
    QTRY_VERIFY(popup() && popup()->hasFocus());
    QCOMPARE(popup()->count(), 3);
    QTest::keyClicks(popup(), QStringLiteral("tb"));
    QCOMPARE(popup()->count(), 1);
    QTest::keyClick(popup(), Qt::Key_Backspace);
    QTest::keyClick(popup(), Qt::Key_Backspace);
    QCOMPARE(popup()->count(), 3);
    QTest::keyClick(popup(), Qt::Key_B);
    QCOMPARE(popup()->currentItem()->text(), QStringLiteral("foobar"));
    QTest::keyClick(popup(), Qt::Key_Q);
    QTRY_VERIFY(!popup());
    QCOMPARE(editor->text(), QStringLiteral("foobar football foo"));

    editor->completeWord();
    QTRY_VERIFY(popup() && popup()->hasFocus());
    QTest::keyClick(popup(), Qt::Key_Escape);
    QTRY_VERIFY(!popup());

    editor->completeWord();
    QTRY_VERIFY(popup() && popup()->hasFocus());
    QTest::mouseClick(popup()->viewport(), Qt::LeftButton, Qt::NoModifier,
                      popup()->visualItemRect(popup()->item(1)).center());
    QTRY_VERIFY(!popup());
    QCOMPARE(editor->text(), QStringLiteral("foobar football foobar"));
}

void TestTextEditor::html_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    QTest::addColumn<QString>("body");

    QTest::newRow("indentation") << QStringLiteral("  a b") << 0 << -1
                                 << QStringLiteral("&nbsp;&nbsp;a b\n");
    QTest::newRow("some lines") << QStringLiteral("a\nb\nc\nd") << 1 << 2
                                << QStringLiteral("b\nc\n");
    QTest::newRow("past the end") << QStringLiteral("a\nb") << 1 << 9 << QStringLiteral("b\n");
    QTest::newRow("an empty line")
        << QStringLiteral("a\n\nb") << 0 << -1 << QStringLiteral("a\n\nb\n");
    QTest::newRow("less than") << QStringLiteral("a<b") << 0 << 0 << QStringLiteral("a&lt;b\n");
}

void TestTextEditor::html()
{
    QFETCH(const QString, text);
    QFETCH(const int, from);
    QFETCH(const int, to);
    QFETCH(const QString, body);

    editor->setHighlight(QStringLiteral("text"));
    editor->setText(text);
    QString html = editor->html(from, to);
    html.remove(QRegularExpression(QStringLiteral("</?(font|b|i)[^>]*>")));
    QCOMPARE(html, QStringLiteral("<pre>\n") + body + QStringLiteral("</pre>"));
}

void TestTextEditor::prints()
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("out.pdf"));
    manager->printer()->setOutputFormat(QPrinter::PdfFormat);
    manager->printer()->setOutputFileName(path);
    editor->setText(QStringLiteral("some text to print\n").repeated(200));
    bool asked = false;
    QTimer answer;
    connect(&answer, &QTimer::timeout, this, [&asked] {
        if (auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget())) {
            asked = true;
            dialog->accept();
        }
    });
    answer.start(20);
    editor->print();
    answer.stop();
    QVERIFY(asked);
    const QByteArray pdf = contentOf(path);
    QVERIFY(pdf.startsWith("%PDF"));
    QVERIFY2(pdf.count("/Type /Page\n") >= 3,
             qPrintable(QString::number(pdf.count("/Type /Page\n"))));
    QVERIFY(!QGuiApplication::overrideCursor());
}

void TestTextEditor::twoEditorsOnOneDocument()
{
    const std::unique_ptr<TextEditor> other = makeEditor(doc);
    other->show();
    QVERIFY(QTest::qWaitForWindowExposed(other.get()));
    editor->setText(QStringLiteral("one\ntwo\nthree\nfour\nfive\nsix"));
    QCOMPARE(other->text(), editor->text());

    // Each types at its own cursor, whichever was made or used last.
    placeCursor(1, 3);
    other->view()->setCursorPosition(3, 4, false);
    QTest::keyClick(other->view(), Qt::Key_X);
    QTest::keyClick(view, Qt::Key_Y);
    QTest::keyClick(other->view(), Qt::Key_Z);
    QCOMPARE(editor->text(), QStringLiteral("one\ntwoy\nthree\nfourxz\nfive\nsix"));
    QCOMPARE(view->cursor()->pos(), QPoint(4, 1));
    QCOMPARE(other->view()->cursor()->pos(), QPoint(6, 3));

    QTest::keyClick(other->view(), Qt::Key_Return);
    QTest::keyClick(view, Qt::Key_Backspace);
    QCOMPARE(editor->text(), QStringLiteral("one\ntwo\nthree\nfourxz\n\nfive\nsix"));

    QVERIFY(other->folding()->createFold(1, 3));
    QVERIFY(!doc->lineOf(2)->isFoldVisible);
    editor->setWrap(!editor->getWrap());
    QCOMPARE(other->getWrap(), editor->getWrap());
    other->setHighlight(QStringLiteral("c++"));
    view->grab();
    other->view()->grab();

    editor->setReadOnly(true);
    QTest::keyClick(other->view(), Qt::Key_X);
    QTest::keyClick(other->view(), Qt::Key_Delete);
    QVERIFY(!editor->text().contains(QStringLiteral("zx")));
    editor->setReadOnly(false);

    placeCursor(0, 0);
    select(0, 0, 6, 3);
    editor->del();
    QCOMPARE(other->text(), QString());
    QTest::keyClick(other->view(), Qt::Key_Down);
    QTest::keyClick(other->view(), Qt::Key_A);
    QCOMPARE(editor->text(), QStringLiteral("a"));
    other->view()->grab();
}

void TestTextEditor::lastEditorDeletesTheDocument()
{
    std::unique_ptr<TextEditor> second = makeEditor(doc);
    editor->setText(QStringLiteral("kept"));
    editor.reset();
    QVERIFY(doc);
    QCOMPARE(second->text(), QStringLiteral("kept"));
    second->show();
    QTest::keyClick(second->view(), Qt::Key_X);
    QVERIFY(second->text().contains(u'x'));
    second.reset();
    QVERIFY(!doc);
}

void TestTextEditor::reportsChangesAndActivation()
{
    QSignalSpy changed(editor.get(), &TextEditor::changed);
    QSignalSpy activated(manager.get(), &TextEditorManager::activate);
    const auto seen = [&changed](TextEditor::ChangeId id) {
        return changed.contains(QVariantList{int(id)});
    };
    QTest::keyClick(view, Qt::Key_A);
    QVERIFY(seen(TextEditor::CursorPosition));
    QVERIFY(seen(TextEditor::Modification));
    QVERIFY(seen(TextEditor::UndoRedo));
    changed.clear();
    QTest::keyClick(view, Qt::Key_Left, Qt::ShiftModifier);
    QVERIFY(seen(TextEditor::Selection));
    QVERIFY(!seen(TextEditor::Modification));
    editor->setFocus();
    view->clearFocus();
    editor->setFocus();
    QTRY_VERIFY(activated.count() >= 1);
    QCOMPARE(activated.last().first().value<TextEditor *>(), editor.get());
}

QTEST_MAIN(TestTextEditor)
#include "tst_texteditor.moc"
