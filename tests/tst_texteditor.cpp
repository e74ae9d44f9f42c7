#include "qtundo/src/qtundo.h"
#include "tests/editortest.h"
#include "zvwidgets/zveditor/highlight.h"
#include "zvwidgets/zveditor/highlight/highlightmanager.h"

#include <QBuffer>
#include <QClipboard>
#include <QDialog>
#include <QListWidget>
#include <QPrinter>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
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

} // namespace

class TestTextEditor : public EditorTest
{
    Q_OBJECT

private slots:
    void init() { showEditor(); }
    void cleanup() { closeEditor(); }

    void opensAndSaves();
    void failedOpenKeepsTheText();
    void failedSaveKeepsTextAndPath();

    void find_data();
    void find();
    void searchInSelectionGoesOn();
    void foldsOpenForTheirText();
    void findRegexpComesToAnEnd();
    void replaceInSelection_data();
    void replaceInSelection();
    void goneSelectionIsNotSearched_data();
    void goneSelectionIsNotSearched();
    void replacesWhatIsSelectedByNow();
    void findNextRepeatsExpressions();
    void replaceRestIsReplacingOneByOne_data();
    void replaceRestIsReplacingOneByOne();
    void replacingStops();
    void replaceAllIsOneStep();
    void replaceAllKeepsReadOnlyText();

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
    void reportsChangesAndActivation();

private:
    void placeCursor(int line, int column) { view->setCursorPosition(line, column, false); }
    void select(int line, int column, int toLine, int toColumn)
    {
        view->setCursorPosition(line, column, false);
        view->setCursorPosition(toLine, toColumn, true);
    }
    bool find(const QString &text, int options)
    {
        return editor->find(text, options & CaseSensitive, options & WholeWord,
                            options & FromCursor, options & InSelection);
    }
    QListWidget *popup() const { return view->findChild<QListWidget *>(); }
};

void TestTextEditor::opensAndSaves()
{
    QTemporaryDir dir;
    const QString path = dir.filePath(u"a.py"_s);
    writeFile(path, "if x:\r\n    y\r\n");

    QSignalSpy pathChange(editor.get(), &TextEditor::filePathChange);
    QVERIFY(editor->open(path));
    QCOMPARE(pathChange.count(), 1);
    QCOMPARE(editor->filePath(), path);
    QVERIFY(!editor->isModified());
    QVERIFY(editor->highlight().contains(u"ython"_s));

    placeCursor(0, 0);
    QTest::keyClick(view, Qt::Key_X);
    QVERIFY(editor->isModified());
    QVERIFY(editor->save());
    QVERIFY(!editor->isModified());
    QVERIFY(readFile(path).startsWith("xif x:\r\n    y"));

    const QString copy = dir.filePath(u"b.txt"_s);
    QVERIFY(editor->saveAs(copy));
    QCOMPARE(editor->filePath(), copy);
    QCOMPARE(readFile(copy), readFile(path));

    editor->setText(u"p\nq"_s);
    QVERIFY(editor->save());
    QVERIFY2(readFile(copy).startsWith("p\r\nq"), "another text of the same file");

    editor->fileNew();
    QCOMPARE(editor->filePath(), QString());
    QCOMPARE(editor->text(), QString());
    QCOMPARE(editor->document()->fileFormat().lineEnd, LineEnd::Lf);
    QTest::keyClick(view, Qt::Key_X);
    QVERIFY(!editor->save());
}

void TestTextEditor::failedOpenKeepsTheText()
{
    QTemporaryDir dir;
    const QString path = dir.filePath(u"a.txt"_s);
    editor->setText(u"unsaved"_s);
    QVERIFY(editor->saveAs(path));
    QTest::keyClick(view, Qt::Key_X);
    const QString text = editor->text();
    for (const QString &bad :
         {dir.path(), dir.filePath(u"missing"_s), u"/proc/self/mem"_s, u"/dev/zero"_s, QString()}) {
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
    const QString path = dir.filePath(u"a.txt"_s);
    editor->setText(u"text"_s);
    QVERIFY(editor->saveAs(path));
    QVERIFY(!editor->saveAs(dir.filePath(u"missing/a.txt"_s)));
    QVERIFY(!editor->errorString().isEmpty());
    QVERIFY(editor->isModified());
    QCOMPARE(editor->filePath(), path);
    QVERIFY(editor->save());
    QCOMPARE(editor->errorString(), QString());
    // What was not changed is not written.
    QVERIFY(QFile::remove(path));
    QVERIFY(editor->save());
    QVERIFY(!QFile::exists(path));

    // A folder in the place of the file can't be replaced by a text.
    QTest::keyClick(view, Qt::Key_X);
    QVERIFY(QDir().mkdir(path));
    QVERIFY(!editor->save());
    QVERIFY(editor->isModified());
    QVERIFY(!editor->errorString().isEmpty());
}

void TestTextEditor::find_data()
{
    const Rows<QString, QRect, QString, int, QPoint> row("text", "selection", "what", "options",
                                                         "found");

    const QPoint nowhere(-1, -1);
    const auto selection = [](int line, int column, int toLine, int toColumn) {
        return QRect(QPoint(column, line), QPoint(toColumn, toLine));
    };
    const QRect cursorAt4 = selection(0, 4, 0, 4);

    row("from the top", "foo foo", cursorAt4, "foo", Plain, {0, 0});
    row("from the cursor", "foo foo", cursorAt4, "foo", FromCursor, {4, 0});
    row("no wrapping round", "foo bar", cursorAt4, "foo", FromCursor, nowhere);
    row("case sensitive", "FOO foo", cursorAt4, "foo", CaseSensitive, {4, 0});
    row("any case outside ASCII", "straße ÄRGER", cursorAt4, "ärger", Plain, {7, 0});
    row("nothing", "foo", cursorAt4, "", Plain, nowhere);
    row("at the end of a long line", "0123456789012345678901234567890123foo", cursorAt4, "foo",
        Plain, {34, 0});
    row("whole word goes on in the line", "foobar _foo foo", cursorAt4, "foo", WholeWord, {12, 0});
    row("whole word at both ends", "foo", cursorAt4, "foo", WholeWord, {0, 0});
    // U+1F480 ends in the unit that stands for the byte 80.
    row("the unit of a byte is no half of a pair", u"\U0001F480\xDC80"_s, cursorAt4, u"\xDC80"_s,
        Plain, {2, 0});
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

/// Each match becomes the selection, which must not bound the next search.
void TestTextEditor::searchInSelectionGoesOn()
{
    editor->setText(u"a a\n a\na a a"_s);
    select(0, 1, 2, 2);
    int count = 0;
    bool found = find(u"a"_s, InSelection);
    for (; found && count < 10; ++count) {
        editor->replaceFound(u"b"_s);
        found = find(u"a"_s, InSelection | FromCursor);
    }
    QCOMPARE(editor->text(), u"a b\n b\nb a a"_s);
}

void TestTextEditor::foldsOpenForTheirText()
{
    editor->setText(u"0\none\n2\n3\ntwo\n5\nsix\n7"_s);
    QVERIFY(editor->folding()->createFold(1, 2));
    QVERIFY(editor->folding()->createFold(3, 4));
    QVERIFY(editor->folding()->createFold(5, 6));
    QVERIFY(editor->find(u"one"_s, true, false, false, false));
    QVERIFY2(!doc->lineOf(2)->isFoldVisible, "the match was on screen already");
    QVERIFY(editor->find(u"two"_s, true, false, true, false));
    QVERIFY(doc->lineOf(4)->isFoldVisible);
    QVERIFY(!doc->lineOf(6)->isFoldVisible);
    editor->moveCursor(6, 0);
    QVERIFY(doc->lineOf(6)->isFoldVisible);
}

/// Replacing matches of nothing one by one, as the user does, has to stop.
void TestTextEditor::findRegexpComesToAnEnd()
{
    editor->setText(u"axx\n\nb"_s);
    int count = 0;
    bool found = editor->findRegexp(u"x*"_s, true, false, false);
    for (; found && count < 100; ++count) {
        editor->replaceFound(u"xx"_s);
        found = editor->findNext();
    }
    QVERIFY(count < 20);
}

void TestTextEditor::replaceInSelection_data()
{
    const Rows<QString, QString, QString, int, int, int, QString> row("text", "what", "by", "left",
                                                                      "right", "options", "result");

    row("stream, longer", "a a\na\na a", "a", "bb", 1, 1, Plain, "a bb\nbb\nbb a");
    row("stream, shorter", "aa aa\naa\naa aa", "aa", "b", 2, 2, Plain, "aa b\nb\nb aa");
    row("stream, by lines", "a a\na\na a", "a", "b\nb", 1, 1, Plain, "a b\nb\nb\nb\nb\nb a");
    row("stream, the last line longer", "\n\na a a", "a", "bb", 0, 3, Plain, "\n\nbb bb a");
    row("stream, the last line shorter", "\n\naa aa aa", "aa", "b", 0, 5, Plain, "\n\nb b aa");
    row("stream, none in the last line", "a\na\nb a", "a", "b", 0, 1, Plain, "b\nb\nb a");
    row("box, longer", "aaaaa\naaaaa\naaaaa", "a", "bb", 1, 4, Box, "abbbbbba\nabbbbbba\nabbbbbba");
    row("box, shorter", "aaaa\naaaa\naaaa", "aa", "b", 1, 3, Box, "aba\naba\naba");
    row("box, by lines", "aaa\naaa\naaa", "aa", "b\nc", 1, 3, Box, "ab\nc\nab\nc\nab\nc");
}

/// One after the other and all at once, with the same result.
void TestTextEditor::replaceInSelection()
{
    QFETCH(const QString, text);
    QFETCH(const QString, what);
    QFETCH(const QString, by);
    QFETCH(const int, left);
    QFETCH(const int, right);
    QFETCH(const int, options);
    QFETCH(const QString, result);

    manager->fVerticalSelection = options & Box;
    const auto search = [&] {
        editor->setText(text);
        select(0, left, 2, right);
        return editor->find(what, true, false, false, true);
    };
    bool found = search();
    for (int i = 0; found && i < 20; ++i) {
        editor->replaceFound(by);
        found = editor->findNext();
    }
    QCOMPARE(editor->text(), result);
    QVERIFY(search());
    QVERIFY(editor->replaceRest(by) > 0);
    QCOMPARE(editor->text(), result);
    QVERIFY(!view->hasSelection());
    doc->undoStack()->undo();
    QCOMPARE(editor->text(), text);
    doc->undoStack()->redo();
    QCOMPARE(editor->text(), result);
}

void TestTextEditor::goneSelectionIsNotSearched_data()
{
    const Rows<int, bool> row("key", "isNext");
    row("edit", Qt::Key_X, true);
    row("cursor move", Qt::Key_Left, true);
    row("edit, the same search", Qt::Key_X, false);
    row("cursor move, the same search", Qt::Key_Left, false);
}

void TestTextEditor::goneSelectionIsNotSearched()
{
    QFETCH(const int, key);
    QFETCH(const bool, isNext);
    editor->setText(u"a a\na\na a"_s);
    select(0, 0, 2, 1);
    QVERIFY(find(u"a"_s, InSelection));
    QVERIFY(editor->findNext());
    QTest::keyClick(view, Qt::Key(key));
    QVERIFY(isNext ? !editor->findNext() : !find(u"a"_s, InSelection | FromCursor));
    editor->replaceRest(u"b"_s);
    QVERIFY(!editor->text().contains(u'b'));
}

void TestTextEditor::replacesWhatIsSelectedByNow()
{
    manager->fOvr = true;
    editor->setText(u"foo bar foo"_s);
    QVERIFY(find(u"foo"_s, Plain));
    select(0, 4, 0, 7);
    QCOMPARE(editor->replaceRest(u"x"_s), 0);
    editor->replaceFound(u"x"_s);
    QCOMPARE(editor->text(), u"foo x foo"_s);
    QVERIFY(editor->findNext());
    editor->replaceFound(u"y"_s);
    editor->replaceFound(u"z"_s);
    QCOMPARE(editor->text(), u"foo x yz"_s);
}

void TestTextEditor::findNextRepeatsExpressions()
{
    editor->setText(u"one a1 a22\na333"_s);
    QVERIFY(editor->find(u"one"_s, true, false, false, false));
    QVERIFY(editor->findRegexp(u"a[0-9]+"_s, true, false, false));
    QVERIFY(editor->findNext());
    QCOMPARE(editor->getSelectedText(), u"a22"_s);
    QVERIFY(editor->findNext());
    QCOMPARE(editor->getSelectedText(), u"a333"_s);
    QVERIFY(!editor->findNext());
    QVERIFY(editor->findRegexp(u"a?2"_s, true, true, false));
    QCOMPARE(editor->getSelectedText(), u"a22"_s);
}

/// Replacing goes on with the line that it has made so far, as if each were replaced alone.
void TestTextEditor::replaceRestIsReplacingOneByOne_data()
{
    const Rows<QString, QString, QString, bool> row("text", "pattern", "by", "isWord");
    row("start of the line again", "aaab\naab", "^a", "", false);
    row("start of the line no more", "aaab\naab", "^a", "x", false);
    row("start of a line made", "aab", "^a", "x\n", false);
    row("word bounds of what was put in", "foofoo foo", "\\bfoo", "-", false);
    row("no word bounds there", "foofoo foo", "\\bfoo", "x", false);
    row("nothing in many places", "bxbx\n\nxx", "x*", "-", false);
    row("nothing by lines", "ab\n", "$|^", "1\n2", false);
    row("word at the start of a line made", "-a-a", "-a", "x\n", true);
    row("pairs", "\U0001F600b \U0001F600", "[^x]b|.$", "#", false);
    row("pairs and nothing", "\U0001F600b \U0001F600", "x*", "#", false);
}

void TestTextEditor::replaceRestIsReplacingOneByOne()
{
    QFETCH(const QString, text);
    QFETCH(const QString, pattern);
    QFETCH(const QString, by);
    QFETCH(const bool, isWord);
    const auto search = [&] {
        editor->setText(text);
        return isWord ? find(pattern, WholeWord) : editor->findRegexp(pattern, true, false, false);
    };
    bool found = search();
    for (int i = 0; found && i < 50; ++i) {
        editor->replaceFound(by);
        found = editor->findNext();
    }
    QVERIFY(!found);
    const QString expected = editor->text();
    QVERIFY(expected != text);
    QCOMPARE(expected.toUtf8(), QString::fromUtf8(expected.toUtf8()).toUtf8());
    QVERIFY(!expected.toUtf8().contains("\xef\xbf\xbd"));
    QVERIFY(search());
    QVERIFY(editor->replaceRest(by) > 0);
    QCOMPARE(editor->text(), expected);
}

void TestTextEditor::replacingStops()
{
    const QString costly = QString(64000, u'a') + u'!';
    editor->setText(u"x x\nx\n"_s + costly + u"\nx"_s);
    int looks = 0;
    editor->setSearchWatch([&looks](int done, int all) {
        ++looks;
        return done < 2 || all != 4;
    });
    QVERIFY(editor->findRegexp(u"x|(.+)\\1+$"_s, true, false, false));
    QCOMPARE(editor->replaceRest(u"y"_s), 3);
    QCOMPARE(looks, 1);
    QCOMPARE(editor->text(), u"y y\ny\n"_s + costly + u"\nx"_s);
    doc->undoStack()->undo();
    QCOMPARE(editor->text(), u"x x\nx\n"_s + costly + u"\nx"_s);

    editor->setText(QString(300'000, u'\n') + u'x');
    editor->setSearchWatch([](int done, int) { return done < 200'000; });
    QVERIFY(!find(u"x"_s, Plain));
    editor->setSearchWatch({});
    QVERIFY(find(u"x"_s, Plain));
}

void TestTextEditor::replaceAllIsOneStep()
{
    manager->fSaveTab = false;
    manager->fOvr = true;
    editor->setText(u"a,b,c\n1,2"_s);
    doc->undoStack()->clear();
    QSignalSpy executed(doc->undoStack(), &QtUndoStack::commandExecuted);
    QCOMPARE(editor->replaceAll(u","_s, u"\t"_s, false, false, false), 3);
    QCOMPARE(executed.count(), 1);
    QCOMPARE(doc->undoStack()->undoList(), QStringList{u"replace all"_s});
    // Tabs become blanks up to the stop, and nothing is written over.
    QCOMPARE(editor->text(), u"a   b   c\n1   2"_s);
    QCOMPARE(view->cursor()->pos(), QPoint(4, 1));
    QCOMPARE(editor->replaceAll(u"2"_s, u"x\n\ty"_s, false, false, false), 1);
    QCOMPARE(editor->text(), u"a   b   c\n1   x\n    y"_s);
    select(0, 0, 0, 1);
    editor->replaceFound(u"long"_s);
    QCOMPARE(editor->text(), u"long   b   c\n1   x\n    y"_s);
}

void TestTextEditor::replaceAllKeepsReadOnlyText()
{
    editor->setText(u"a a"_s);
    editor->setReadOnly(true);
    doc->setModified(false);
    QCOMPARE(editor->replaceAll(u"a"_s, u"b"_s, false, false, false), 0);
    QCOMPARE(editor->text(), u"a a"_s);
    QVERIFY(!editor->isModified());
}

void TestTextEditor::pasting()
{
    QClipboard *clipboard = QGuiApplication::clipboard();
    editor->setText(u"one two"_s);
    select(0, 0, 0, 3);
    clipboard->setText(QString());
    editor->paste();
    QCOMPARE(editor->text(), u"one two"_s);
    clipboard->setText(u"a\r\nb"_s);
    editor->paste();
    QCOMPARE(editor->text(), u"a\nb two"_s);
    if (clipboard->supportsSelection())
        clipboard->setText(u"mouse "_s, QClipboard::Selection);
    else
        manager->winClipboard = u"mouse "_s;
    editor->pasteSelection();
    QCOMPARE(editor->text(), u"a\nbmouse  two"_s);
    editor->setReadOnly(true);
    select(0, 0, 0, 1);
    editor->cut();
    QCOMPARE(editor->text(), u"a\nbmouse  two"_s);
    QCOMPARE(clipboard->text(), u"a"_s);
}

void TestTextEditor::completionList_data()
{
    const Rows<QString, int, QString, QStringList> row("text", "column", "word", "list");

    const QString fooBar = u"fooBar"_s;
    const QString foo = u"foo"_s;
    row("sorted, each once", "foo fooBar foo fooBar", 0, "fo", {foo, fooBar});
    row("word behind the cursor", "foo fooBar", 1, "", {foo, fooBar, u"foomatic"_s});
    row("no word", "foo  bar", 4, "", {});
    row("added words need their length", "x", 0, "fo", {});
    row("added words come last in their order", "fozz", 0, "foom", {u"foomatic"_s});
    row("letters outside ASCII", "été étage", 0, "ét", {u"étage"_s, u"été"_s});
}

void TestTextEditor::completionList()
{
    QFETCH(const QString, text);
    QFETCH(const int, column);
    QFETCH(const QString, word);
    QFETCH(const QStringList, list);

    manager->addCompletionList({u"foomatic"_s, u"bar"_s}, 3);
    editor->setText(text);
    placeCursor(0, column);
    QCOMPARE(editor->completionList(word), list);
}

void TestTextEditor::completionCycles()
{
    editor->setText(u"fob foa foc\nfo"_s);
    placeCursor(1, 2);
    const auto last = [this] { return QString(*doc->lineOf(1)); };
    editor->completeWordNext();
    QCOMPARE(last(), u"foa"_s);
    editor->completeWordNext();
    QCOMPARE(last(), u"fob"_s);
    editor->completeWordPrev();
    editor->completeWordPrev();
    QCOMPARE(last(), u"fo"_s);
    editor->completeWordPrev();
    QCOMPARE(last(), u"foc"_s);

    // A move ends the cycle: what stands there now is the prefix.
    QTest::keyClick(view, Qt::Key_Left);
    QTest::keyClick(view, Qt::Key_Right);
    editor->completeWordNext();
    QCOMPARE(last(), u"foc"_s);

    editor->setText(u"single"_s);
    placeCursor(0, 6);
    editor->completeWordNext();
    editor->completeWordPrev();
    QCOMPARE(editor->text(), u"single"_s);
}

void TestTextEditor::popupCompletes()
{
    // The equals sign and the bracket are no part of the word.
    editor->setText(u"someFoo afoot\na=foo(x)"_s);
    placeCursor(1, 3);
    manager->fOvr = true;
    editor->completeWord();
    QTRY_VERIFY(popup() && popup()->hasFocus());
    QVERIFY(view->cursor()->isEnabled() || QApplication::cursorFlashTime() > 0);
    QStringList shown;
    for (int i = 0; i < popup()->count(); ++i)
        shown.append(popup()->item(i)->text());
    QCOMPARE(shown, (QStringList{u"afoot"_s, u"foo"_s, u"someFoo"_s}));
    QTest::keyClick(popup(), Qt::Key_Down);
    QTest::keyClick(popup(), Qt::Key_Down);
    QTest::keyClick(popup(), Qt::Key_Return);
    QTRY_VERIFY(!popup());
    QCOMPARE(editor->text(), u"someFoo afoot\na=someFoo(x)"_s);
    QTRY_VERIFY(view->hasFocus());
}

void TestTextEditor::popupNarrowsAndCloses()
{
    editor->setText(u"foobar football foo"_s);
    placeCursor(0, 19);
    editor->completeWord();
    QTRY_VERIFY(popup() && popup()->hasFocus());
    QCOMPARE(popup()->count(), 3);
    QTest::keyClicks(popup(), u"tb"_s);
    QCOMPARE(popup()->count(), 1);
    QTest::keyClick(popup(), Qt::Key_Backspace);
    QTest::keyClick(popup(), Qt::Key_Backspace);
    QCOMPARE(popup()->count(), 3);
    QTest::keyClick(popup(), Qt::Key_B);
    QCOMPARE(popup()->currentItem()->text(), u"foobar"_s);
    QTest::keyClick(popup(), Qt::Key_Q);
    QTRY_VERIFY(!popup());
    QCOMPARE(editor->text(), u"foobar football foo"_s);

    editor->completeWord();
    QTRY_VERIFY(popup() && popup()->hasFocus());
    QTest::keyClick(popup(), Qt::Key_Escape);
    QTRY_VERIFY(!popup());

    editor->completeWord();
    QTRY_VERIFY(popup() && popup()->hasFocus());
    QTest::mouseClick(popup()->viewport(), Qt::LeftButton, Qt::NoModifier,
                      popup()->visualItemRect(popup()->item(1)).center());
    QTRY_VERIFY(!popup());
    QCOMPARE(editor->text(), u"foobar football foobar"_s);
}

void TestTextEditor::html_data()
{
    const Rows<QString, int, int, int, QString> row("text", "from", "to", "keywordFont", "body");

    row("indentation", "  a b", 0, -1, 0, "&nbsp;&nbsp;a b\n");
    row("some lines", "a\nb\nc\nd", 1, 2, 0, "b\nc\n");
    row("less than", "a<b", 0, 0, 0, "a&lt;b\n");
    row("an empty line", "a\n\nb", 0, -1, 0, "a\n\nb\n");
    const QString keyword = u"<font color=\"#102030\">%1</font>(x)\n"_s;
    row("plain keyword", "if(x)", 0, -1, 0, keyword.arg(u"if"_s));
    row("italic keyword", "if(x)", 0, -1, 1, keyword.arg(u"<i>if</i>"_s));
    row("bold keyword", "if(x)", 0, -1, 2, keyword.arg(u"<b>if</b>"_s));
    row("bold italic keyword", "if(x)", 0, -1, 3, keyword.arg(u"<i><b>if</b></i>"_s));
}

void TestTextEditor::html()
{
    QFETCH(const QString, text);
    QFETCH(const int, from);
    QFETCH(const int, to);
    QFETCH(const int, keywordFont);
    QFETCH(const QString, body);

    editor->setHighlight(u"C++"_s);
    TextAttribute *const keyword = view->hl->attribute(1);
    keyword->fontType = keywordFont;
    keyword->color = QColor(u"#102030"_s);
    editor->setText(text);
    QString html = editor->html(from, to);
    QVERIFY(html.contains(u"<font"_s));
    static const QRegularExpression otherFonts(
        u"<font color=\"#(?!102030)[0-9a-f]{6}\">([^<\n]*)</font>"_s);
    html.replace(otherFonts, u"\\1"_s);
    QCOMPARE(html, u"<pre>\n"_s + body + u"</pre>"_s);
}

/// The file holds the shapes of the letters that are printed, so that it is much larger
/// than one of blank pages with their numbers.
void TestTextEditor::prints()
{
    QTemporaryDir dir;
    manager->printer()->setOutputFormat(QPrinter::PdfFormat);
    const auto printed = [this, &dir](const QString &line) {
        const QString path = dir.filePath(u"out.pdf"_s);
        manager->printer()->setOutputFileName(path);
        editor->setText(line.repeated(200));
        Responder responder;
        responder.expect([](QWidget *dialog) { qobject_cast<QDialog *>(dialog)->accept(); });
        editor->print();
        return readFile(path);
    };
    const QByteArray pdf = printed(u"abcdefghijklmnopqrstuvwxyz\n"_s);
    QVERIFY(pdf.startsWith("%PDF"));
    QVERIFY(pdf.count("/Type /Page\n") >= 3);
    QVERIFY(pdf.size() > printed(u"                          \n"_s).size() + 1000);
    QVERIFY(!QGuiApplication::overrideCursor());
}

void TestTextEditor::twoEditorsOnOneDocument()
{
    const std::unique_ptr<TextEditor> other(manager->createEditor(nullptr, doc));
    other->show();
    QVERIFY(QTest::qWaitForWindowExposed(other.get()));
    editor->setText(u"one\ntwo\nthree\nfour\nfive\nsix"_s);
    QCOMPARE(other->text(), editor->text());

    // Each types at its own cursor, whichever was made or used last.
    placeCursor(1, 3);
    other->view()->setCursorPosition(3, 4, false);
    QTest::keyClick(other->view(), Qt::Key_X);
    QTest::keyClick(view, Qt::Key_Y);
    QTest::keyClick(other->view(), Qt::Key_Z);
    QCOMPARE(editor->text(), u"one\ntwoy\nthree\nfourxz\nfive\nsix"_s);
    QCOMPARE(view->cursor()->pos(), QPoint(4, 1));
    QCOMPARE(other->view()->cursor()->pos(), QPoint(6, 3));

    QTest::keyClick(other->view(), Qt::Key_Return);
    QTest::keyClick(view, Qt::Key_Backspace);
    QCOMPARE(editor->text(), u"one\ntwo\nthree\nfourxz\n\nfive\nsix"_s);

    QVERIFY(other->folding()->createFold(1, 3));
    QVERIFY(!doc->lineOf(2)->isFoldVisible);
    editor->setWrap(!editor->getWrap());
    QCOMPARE(other->getWrap(), editor->getWrap());
    other->setHighlight(u"c++"_s);
    view->grab();
    other->view()->grab();

    editor->setReadOnly(true);
    QTest::keyClick(other->view(), Qt::Key_X);
    QTest::keyClick(other->view(), Qt::Key_Delete);
    QVERIFY(!editor->text().contains(u"zx"_s));
    editor->setReadOnly(false);

    placeCursor(0, 0);
    select(0, 0, 6, 3);
    editor->del();
    QCOMPARE(other->text(), QString());
    QTest::keyClick(other->view(), Qt::Key_Down);
    QTest::keyClick(other->view(), Qt::Key_A);
    QCOMPARE(editor->text(), u"a"_s);
    other->view()->grab();
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
