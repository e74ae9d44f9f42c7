#include "tests/testing.h"
#include "zvwidgets/zveditor/textcommands.h"

#include "zvwidgets/zveditor/editorcursor.h"
#include "zvwidgets/zveditor/textdoc.h"
#include "zvwidgets/zveditor/texteditor.h"
#include "zvwidgets/zveditor/textmanager.h"
#include "zvwidgets/zveditor/textview.h"

#include <QBuffer>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace zvwidgets;

/// Texts are written with "|" between the lines.
class TestTextCommands : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void eachCommand_data();
    void eachCommand();
    void givenDescriptions();
    void cursorFollowsTheLastCommand_data();
    void cursorFollowsTheLastCommand();

private:
    void load(const QString &text);
    QString text() const { return doc->text().replace(u'\n', u'|'); }
    QtCommand *makeCommand(const QString &name, int line, int column,
                           const QString &argument) const;

    std::unique_ptr<TextEditorManager> manager;
    std::unique_ptr<TextEditor> editor;
    TextDocument *doc = nullptr;
};

void TestTextCommands::init()
{
    manager = std::make_unique<TextEditorManager>();
    editor.reset(manager->createEditor(nullptr, nullptr));
    doc = editor->document();
    doc->setActiveView(editor->view());
}

void TestTextCommands::cleanup()
{
    editor.reset();
    manager.reset();
}

void TestTextCommands::load(const QString &text)
{
    QByteArray bytes = QString(text).replace(u'|', u'\n').toUtf8();
    QBuffer buffer(&bytes);
    QVERIFY(buffer.open(QIODevice::ReadOnly));
    QVERIFY(doc->load(buffer));
}

QtCommand *TestTextCommands::makeCommand(const QString &name, int line, int column,
                                         const QString &argument) const
{
    if (name == "insert"_L1)
        return new CmdInsert(doc, line, column, argument);
    if (name == "remove"_L1)
        return new CmdRemove(doc, line, column, argument.toInt());
    if (name == "make"_L1)
        return new CmdMakeLine(doc, line);
    return new CmdRemoveLine(doc, line);
}

void TestTextCommands::eachCommand_data()
{
    const Rows<QString, QString, int, int, QString, QString, QString, QString> row(
        "before", "command", "line", "column", "argument", "after", "undone", "description");

    row("insert", "ab|abc|ab", "insert", 1, 1, "XY", "ab|aXYbc|ab", "ab|abc|ab", "insert XY");
    row("insert past the end pads, and undo leaves the blanks", "abc", "insert", 0, 5, "X",
        "abc  X", "abc  ", "insert X");
    row("insert nothing changes nothing", "abc", "insert", 0, 7, "", "abc", "abc", "insert ");
    row("a longer one is cut", "", "insert", 0, 0, "12345678901234567890123456",
        "12345678901234567890123456", "", "insert 1234567890123456789012345...");
    row("remove", "ab|abcdef|ab", "remove", 1, 1, "2", "ab|adef|ab", "ab|abcdef|ab", "remove bc");
    row("remove no more than there is", "abcdef|ab", "remove", 0, 4, "99", "abcd|ab", "abcdef|ab",
        "remove ef");
    row("remove past the end", "abc", "remove", 0, 9, "1", "abc", "abc", "remove ");
    row("make a line", "ab|cd", "make", 1, 0, "", "ab||cd", "ab|cd", "");
    row("make the last line", "ab", "make", 1, 0, "", "ab|", "ab", "");
    row("remove a line", "ab|cd|ef", "removeLine", 1, 0, "", "ab|ef", "ab|cd|ef", "");
    row("remove the last line", "ab|cd", "removeLine", 1, 0, "", "ab", "ab|cd", "");
}

void TestTextCommands::eachCommand()
{
    QFETCH(QString, before);
    QFETCH(QString, command);
    QFETCH(int, line);
    QFETCH(int, column);
    QFETCH(QString, argument);
    QFETCH(QString, after);
    QFETCH(QString, undone);
    QFETCH(QString, description);

    load(before);
    QtUndoStack *const stack = doc->undoStack();
    stack->push(makeCommand(command, line, column, argument));
    for (int round = 0; round < 2; ++round) {
        QCOMPARE(text(), after);
        QCOMPARE(stack->undoDescription(), description);
        stack->undo();
        QCOMPARE(text(), undone);
        stack->redo();
    }
}

/// One that is given stays, but each run of a removal tells what went.
void TestTextCommands::givenDescriptions()
{
    load(u"abcdef"_s);
    QtUndoStack *const stack = doc->undoStack();
    auto *const removal = new CmdRemove(doc, 0, 1, 2);
    auto *const insertion = new CmdInsert(doc, 0, 0, u"x"_s);
    QVERIFY(removal->description().isNull());
    stack->push(removal);
    QCOMPARE(removal->description(), u"remove bc"_s);
    removal->setDescription(u"cut"_s);
    insertion->setDescription(QString());
    stack->push(insertion);
    QCOMPARE(stack->undoList(), QStringList({u"cut"_s, QString()}));
    stack->undo(2);
    QCOMPARE(stack->redoList(), QStringList({u"cut"_s, QString()}));
    stack->redo(2);
    QCOMPARE(stack->undoList(), QStringList({u"remove bc"_s, QString()}));
}

void TestTextCommands::cursorFollowsTheLastCommand_data()
{
    const Rows<QString, QString, QPoint, QPoint> row("command", "argument", "after", "undone");

    row("insert", "insert", "XY", {4, 1}, {2, 1});
    row("remove", "remove", "2", {2, 1}, {4, 1});
    row("make a line", "make", "", {0, 1}, {0, 1});
    row("remove a line", "removeLine", "", {0, 1}, {0, 1});
}

void TestTextCommands::cursorFollowsTheLastCommand()
{
    QFETCH(QString, command);
    QFETCH(QString, argument);
    load(u"abcdef|abcdef|abcdef"_s);
    const EditorCursor *const cursor = editor->view()->cursor();
    QtUndoStack *const stack = doc->undoStack();
    stack->push(makeCommand(command, 1, 2, argument));
    QTEST(QPoint(cursor->column(), cursor->line()), "after");
    stack->undo();
    QTEST(QPoint(cursor->column(), cursor->line()), "undone");

    doc->macroBegin(u"macro"_s, 2, 5);
    stack->push(makeCommand(command, 1, 2, argument));
    doc->macroEnd(0, 3);
    QCOMPARE(QPoint(cursor->column(), cursor->line()), QPoint(3, 0));
    stack->undo();
    QCOMPARE(QPoint(cursor->column(), cursor->line()), QPoint(5, 2));
}

QTEST_MAIN(TestTextCommands)
#include "tst_textcommands.moc"
