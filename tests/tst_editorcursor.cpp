#include "tests/editortest.h"

#include <QClipboard>
#include <QInputMethodEvent>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace zvwidgets;

namespace {

struct Key
{
    Qt::Key key;
    Qt::KeyboardModifiers modifiers = Qt::NoModifier;
};
using Keys = QList<Key>;

/// Settings of the manager that a row departs from.
enum Flag
{
    NoFlag = 0,
    Wrap = 1,
    NoSmartHome = 2,
    SpacesForTabs = 4,
    Overwrite = 8,
    ReadOnly = 16
};

constexpr Qt::KeyboardModifiers ctrl = Qt::ControlModifier;
constexpr Qt::KeyboardModifiers shift = Qt::ShiftModifier;

} // namespace

Q_DECLARE_METATYPE(Keys)

class TestEditorCursor : public EditorTest
{
    Q_OBJECT

private slots:
    void init() { showEditor(); }
    void cleanup() { closeEditor(); }

    void keys_data();
    void keys();
    void selectingKeys_data();
    void selectingKeys();
    void columnsBehindTheLineEnd();
    void clipboardKeys();
    void controlKeysAreNoText_data();
    void controlKeysAreNoText();
    void composedTextIsTyped();
    void boxSelection();
    void foldedLinesAreSkipped();
    void pagesCountRows();
    void blinkingFollowsTheFocus();
    void imageInvertsTheText();
    void wantedColumnOfAClick();
    void foundTextIsExtended();
    void selectionLostToAnotherView();

private:
    void applyFlags(int flags);
    /// Sets a text in which "|" stands for the cursor.
    void setText(const QString &marked);
    /// The text with "|" at the cursor.
    QString markedText() const;
    void press(const Keys &keys);
};

void TestEditorCursor::applyFlags(int flags)
{
    manager->fCursorWrap = flags & Wrap;
    manager->fSmartHome = !(flags & NoSmartHome);
    manager->fSaveTab = !(flags & SpacesForTabs);
    manager->fOvr = flags & Overwrite;
    doc->setReadOnly(flags & ReadOnly);
}

void TestEditorCursor::setText(const QString &marked)
{
    QString plain = marked;
    plain.remove(u'|');
    editor->setText(plain);
    const QString before = marked.left(marked.indexOf(u'|'));
    const int line = int(before.count(u'\n'));
    const int column = int(before.length() - (before.lastIndexOf(u'\n') + 1));
    view->setCursorPosition(line, 0, false);
    view->setCursorPosition(line, column, false);
}

QString TestEditorCursor::markedText() const
{
    QStringList lines = doc->text().split(u'\n');
    lines[cursor->line()].insert(cursor->column(), u'|');
    return lines.join(u'\n');
}

void TestEditorCursor::press(const Keys &keys)
{
    for (const Key &key : keys)
        QTest::keyClick(view, key.key, key.modifiers);
}

void TestEditorCursor::keys_data()
{
    const Rows<int, QString, Keys, QString> row("flags", "before", "keys", "after");

    const Key left{Qt::Key_Left};
    const Key right{Qt::Key_Right};
    const Key wordLeft{Qt::Key_Left, ctrl};
    const Key wordRight{Qt::Key_Right, ctrl};
    const Key down{Qt::Key_Down};
    const Key up{Qt::Key_Up};
    const Key home{Qt::Key_Home};

    row("left stops at the line start", NoFlag, "ab\n|cd", {left}, "ab\n|cd");
    row("left wraps to the line above", Wrap, "ab\n|cd", {left}, "ab|\ncd");
    row("left stays at the text's start", Wrap, "|ab", {left}, "|ab");
    row("right wraps to the line below", Wrap, "ab|\ncd", {right}, "ab\n|cd");
    row("right stays at the text's end", Wrap, "ab|", {right}, "ab|");
    row("a surrogate pair is one step", Wrap, "|a😀b", {right, right}, "a😀|b");
    row("down never stops inside a pair", NoFlag, "ab|c\na😀b", {down}, "abc\na|😀b");

    row("word right passes the blanks behind", NoFlag, "|foo  bar", {wordRight}, "foo  |bar");
    row("word right takes a=b for one word", NoFlag, "|a=b c", {wordRight}, "a=b |c");
    row("word right starts among other characters", NoFlag, "foo|, bar", {wordRight}, "foo, |bar");
    row("word right at the end goes to the next line", NoFlag, "foo|\nbar", {wordRight},
        "foo\n|bar");
    row("word right stays at the text's end", NoFlag, "foo|", {wordRight}, "foo|");
    row("word left passes blanks", NoFlag, "foo   |bar", {wordLeft}, "|foo   bar");
    row("word left over a leading run", NoFlag, "   |foo", {wordLeft}, "|   foo");
    row("word left at the start goes to the line above", NoFlag, "foo \n|bar", {wordLeft},
        "foo |\nbar");
    row("letters outside ASCII are no word", NoFlag, "foo é|", {wordLeft}, "|foo é");

    row("home goes to the first character", NoFlag, "  fo|o", {home}, "  |foo");
    row("home alternates", NoFlag, "  fo|o", {home, home, home}, "  |foo");
    row("home without smart home", NoSmartHome, "  fo|o", {home}, "|  foo");
    row("end", NoFlag, "|  foo\nx", {{Qt::Key_End}}, "  foo|\nx");
    row("ctrl home", NoFlag, "ab\nc|d", {{Qt::Key_Home, ctrl}}, "|ab\ncd");
    row("ctrl end", NoFlag, "a|b\ncd", {{Qt::Key_End, ctrl}}, "ab\ncd|");

    row("down returns to the wanted column", NoFlag, "abc|d\nx\nabcd", {down, down},
        "abcd\nx\nabc|d");
    row("up counts tabs as columns", NoFlag, "\tx\n    |  y", {up}, "\t|x\n      y");
    row("down on the last line keeps the column", NoFlag, "x\nab|cd", {down}, "x\nab|cd");
    row("up on the first line keeps the column", NoFlag, "ab|cd\nx", {up}, "ab|cd\nx");

    row("letters replace in overwrite mode", Overwrite, "a|xyd", {{Qt::Key_B}, {Qt::Key_C}},
        "abc|d");
    row("overwriting takes a pair whole", Overwrite, "|😀d", {{Qt::Key_B}}, "b|d");
    row("insert toggles overwrite mode", NoFlag, "|xy", {{Qt::Key_Insert}, {Qt::Key_B}}, "b|y");
    row("typing needs a writable text", ReadOnly, "a|d", {{Qt::Key_B}}, "a|d");
    row("return", NoFlag, "a|b", {{Qt::Key_Return}}, "a\n|b");
    row("enter on the keypad", NoFlag, "a|b", {{Qt::Key_Enter, Qt::KeypadModifier}}, "a\n|b");
    row("backspace", NoFlag, "ab|c", {{Qt::Key_Backspace}}, "a|c");
    row("delete", NoFlag, "a|bc", {{Qt::Key_Delete}}, "a|c");
    row("tab as blanks up to the stop", SpacesForTabs, "a|b", {{Qt::Key_Tab}}, "a   |b");
    row("backtab unindents", NoFlag, "\ta|b", {{Qt::Key_Backtab, shift}}, "|ab");
    row("moves need no writable text", ReadOnly, "a|d", {{Qt::Key_End}}, "ad|");
}

void TestEditorCursor::keys()
{
    QFETCH(const int, flags);
    QFETCH(const QString, before);
    QFETCH(const Keys, keys);
    QFETCH(const QString, after);

    setText(before);
    applyFlags(flags);
    press(keys);
    QCOMPARE(markedText(), after);
}

void TestEditorCursor::selectingKeys_data()
{
    const Rows<QString, Keys, QString, Keys, QString> row("before", "keys", "selected", "then",
                                                          "text");

    const Key right{Qt::Key_Right, shift};
    const Key left{Qt::Key_Left, shift};
    const Key down{Qt::Key_Down, shift};
    const Key up{Qt::Key_Up, shift};

    row("typing replaces the selection", "a|bcd", {right, right}, "bc", {{Qt::Key_X}}, "axd");
    row("the anchor stays while the end turns round", "ab|cd", {left, right, right}, "c", {},
        "abcd");
    row("over a line break", "a|b\ncd", {down}, "b\nc", {{Qt::Key_Delete}}, "ad");
    row("upwards over a line break", "ab\nc|d", {up}, "b\nc", {{Qt::Key_Backspace}}, "ad");
    row("escape drops it", "a|bcd", {right, {Qt::Key_Escape}}, "", {{Qt::Key_X}}, "abxcd");
    row("a plain move drops it", "a|bcd", {right, {Qt::Key_Right}}, "", {}, "abcd");
    row("tab indents several lines", "|a\nb\nc", {down, right}, "a\nb", {{Qt::Key_Tab}},
        "\ta\n\tb\nc");
    row("tab replaces a part of one line", "a|bcd", {right, right}, "bc", {{Qt::Key_Tab}}, "a\td");
    row("return breaks behind a selection", "a|bc", {right}, "b", {{Qt::Key_Return}}, "ab\nc");
}

void TestEditorCursor::selectingKeys()
{
    QFETCH(const QString, before);
    QFETCH(const Keys, keys);
    QFETCH(const QString, selected);
    QFETCH(const Keys, then);
    QFETCH(const QString, text);

    setText(before);
    press(keys);
    QCOMPARE(editor->getSelectedText(), selected);
    press(then);
    QCOMPARE(doc->text(), text);
}

void TestEditorCursor::columnsBehindTheLineEnd()
{
    setText(u"ab|\nabcdefgh"_s);
    manager->fCursorWrap = false;
    press({{Qt::Key_Right}, {Qt::Key_Right}, {Qt::Key_Right}});
    QCOMPARE(cursor->pos(), QPoint(5, 0));
    press({{Qt::Key_Down}});
    QCOMPARE(cursor->pos(), QPoint(5, 1));
    press({{Qt::Key_Up}});
    QCOMPARE(cursor->pos(), QPoint(2, 0));
    press({{Qt::Key_Right}, {Qt::Key_Right}, {Qt::Key_X}});
    QCOMPARE(doc->text(), u"ab  x\nabcdefgh"_s);
    press({{Qt::Key_Right}, {Qt::Key_Right}, {Qt::Key_Left, ctrl}});
    QCOMPARE(cursor->column(), 5);
}

void TestEditorCursor::clipboardKeys()
{
    setText(u"|one two"_s);
    const Keys selectOne{{Qt::Key_Right, shift}, {Qt::Key_Right, shift}, {Qt::Key_Right, shift}};
    press(selectOne + Keys{{Qt::Key_C, ctrl}, {Qt::Key_End}, {Qt::Key_V, ctrl}});
    QCOMPARE(markedText(), u"one twoone|"_s);
    press({{Qt::Key_Insert, shift}});
    QCOMPARE(markedText(), u"one twooneone|"_s);
    press(Keys{{Qt::Key_Home}} + selectOne + Keys{{Qt::Key_X, ctrl}});
    QCOMPARE(markedText(), u"| twooneone"_s);
    press({{Qt::Key_Right, shift},
           {Qt::Key_Right, shift},
           {Qt::Key_Insert, ctrl},
           {Qt::Key_End},
           {Qt::Key_V, ctrl}});
    QCOMPARE(markedText(), u" twooneone t|"_s);
    QVERIFY(!manager->overwriteMode());
}

void TestEditorCursor::controlKeysAreNoText_data()
{
    const Rows<int, int, QString> row("key", "modifiers", "text");

    row("ctrl+a", int(Qt::Key_A), ctrl, "\u0001");
    row("ctrl+space", Qt::Key_Space, ctrl, QString(QChar(0)));
    row("ctrl+tab", int(Qt::Key_T), ctrl, "\t");
    row("ctrl+8", int(Qt::Key_8), ctrl, "\u007f");
    row("function key", int(Qt::Key_F5), 0, QString());
}

void TestEditorCursor::controlKeysAreNoText()
{
    QFETCH(const int, key);
    QFETCH(const int, modifiers);
    QFETCH(const QString, text);

    setText(u"a|b"_s);
    press({{Qt::Key_Right, shift}});
    QKeyEvent event(QEvent::KeyPress, key, Qt::KeyboardModifiers(modifiers), text);
    event.accept();
    cursor->keyPressEvent(&event);
    QVERIFY(!event.isAccepted());
    QCOMPARE(doc->text(), u"ab"_s);
    QVERIFY(view->hasSelection());
}

void TestEditorCursor::composedTextIsTyped()
{
    setText(u"a|b"_s);
    QInputMethodEvent event;
    event.setCommitString(u"漢字"_s);
    QCoreApplication::sendEvent(view, &event);
    QCOMPARE(markedText(), u"a漢字|b"_s);
}

void TestEditorCursor::boxSelection()
{
    setText(u"a|bcd\nefgh\nijkl"_s);
    manager->setVerticalSelection(true);
    press({{Qt::Key_Down, shift}, {Qt::Key_Down, shift}, {Qt::Key_Right, shift}});
    QCOMPARE(editor->getSelectedText(), u"b\nf\nj"_s);
    press({{Qt::Key_Delete}});
    QCOMPARE(doc->text(), u"acd\negh\nikl"_s);
    editor->undo();
    QCOMPARE(doc->text(), u"abcd\nefgh\nijkl"_s);
}

void TestEditorCursor::foldedLinesAreSkipped()
{
    setText(u"|0\n1\n2\n3\n4"_s);
    QVERIFY(doc->folding()->createFold(1, 3));
    view->setCursorPosition(1, 1, false);
    press({{Qt::Key_Down}});
    QCOMPARE(cursor->line(), 4);
    press({{Qt::Key_Up}});
    QCOMPARE(cursor->line(), 1);
    press({{Qt::Key_End}, {Qt::Key_Right, ctrl}});
    QCOMPARE(cursor->pos(), QPoint(0, 4));
    press({{Qt::Key_Left, ctrl}});
    QCOMPARE(cursor->pos(), QPoint(1, 1));
}

void TestEditorCursor::pagesCountRows()
{
    QString text = u"|abc"_s;
    text += u"\nabc"_s.repeated(200);
    setText(text);
    const int page = view->height() / view->lineHeight();
    press({{Qt::Key_End}, {Qt::Key_PageDown}});
    QCOMPARE(cursor->pos(), QPoint(3, page));
    press({{Qt::Key_Down, ctrl}});
    QCOMPARE(cursor->line(), 2 * page);
    press({{Qt::Key_PageUp}, {Qt::Key_PageUp}, {Qt::Key_PageUp}});
    QCOMPARE(cursor->line(), 0);
}

void TestEditorCursor::blinkingFollowsTheFocus()
{
    const int flashTime = QApplication::cursorFlashTime();
    QApplication::setCursorFlashTime(60);
    setText(u"a|b"_s);
    QVERIFY(cursor->isEnabled());
    QTRY_VERIFY(!cursor->isEnabled());
    QTRY_VERIFY(cursor->isEnabled());

    view->clearFocus();
    QVERIFY(!cursor->isEnabled());
    press({{Qt::Key_Right}});
    QVERIFY(!cursor->isEnabled());
    // A flash time of 0 is the wish for a steady cursor, not for a timer of 0 ms.
    QApplication::setCursorFlashTime(0);
    view->setFocus();
    QTRY_VERIFY(cursor->isEnabled());
    for (int i = 0; i < 50; ++i) {
        QCoreApplication::processEvents();
        QVERIFY(cursor->isEnabled());
    }
    QApplication::setCursorFlashTime(flashTime);
}

void TestEditorCursor::imageInvertsTheText()
{
    QApplication::setCursorFlashTime(0);
    setText(u"\nab|"_s);
    manager->currentLineColor = QColor();
    const QImage with = view->grab().toImage().convertToFormat(QImage::Format_RGB32);
    // At its column and line, with serifs around a stroke where the character begins.
    const QRect shape = cursor->shape();
    QCOMPARE(shape,
             QRect(2 * view->spaceWidth(), view->linePosition(1), 5, view->lineHeight() - 1));
    cursor->setEnabled(false);
    const QImage without = view->grab().toImage().convertToFormat(QImage::Format_RGB32);
    cursor->setEnabled(true);

    const qreal ratio = with.devicePixelRatio();
    int inverted = 0;
    for (int y = 0; y < with.height(); ++y) {
        for (int x = 0; x < with.width(); ++x) {
            if (with.pixel(x, y) == without.pixel(x, y))
                continue;
            QCOMPARE(with.pixel(x, y) ^ without.pixel(x, y), 0x00ffffffU);
            QVERIFY(shape.contains(int(x / ratio), int(y / ratio)));
            ++inverted;
        }
    }
    // Two serifs of five pixels and the stroke between them.
    const int expected = 2 * 5 + (view->lineHeight() - 1 - 2);
    QCOMPARE(inverted, int(expected * ratio * ratio));
}

/// A click counts the tabs of the line it goes to, not of the one it comes from.
void TestEditorCursor::wantedColumnOfAClick()
{
    setText(u"\t\t\t\tx|\nabcdefgh\nabcdefgh"_s);
    view->setCursorPosition(1, 5, false);
    press({{Qt::Key_Down}});
    QCOMPARE(cursor->pos(), QPoint(5, 2));
}

void TestEditorCursor::foundTextIsExtended()
{
    setText(u"|one two three"_s);
    QVERIFY(editor->find(u"two"_s, true, false, false, false));
    press({{Qt::Key_Right, shift}, {Qt::Key_Right, shift}});
    QCOMPARE(editor->getSelectedText(), u"two t"_s);
}

/// The lines at the end of the selection are gone.
void TestEditorCursor::selectionLostToAnotherView()
{
    setText(u"|a\nb\nc\nd"_s);
    TextEditor other(doc);
    manager->addEditor(&other, doc);
    view->setCursorPosition(2, 0, false);
    view->setCursorPosition(3, 1, true);
    other.view()->setCursorPosition(1, 0, false);
    other.view()->setCursorPosition(3, 1, true);
    other.del();
    press({{Qt::Key_Tab}});
    editor->indent();
    editor->cut();
    QCOMPARE(doc->text(), u"a\n"_s);
}

QTEST_MAIN(TestEditorCursor)
#include "tst_editorcursor.moc"
