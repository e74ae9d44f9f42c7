#include "qtundo/src/qtundo.h"
#include "tests/testing.h"

#include <QLineEdit>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

#include <memory>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

/// Appends a letter to a text and takes it away again, noting each call.
class Letter : public QtCommand
{
    Q_OBJECT
public:
    Letter(QString *text, QChar letter, QStringList *calls = nullptr)
        : QtCommand(u"type "_s + letter, true), m_text(text), m_calls(calls), m_letters(letter)
    {}
    ~Letter() override { ++deleted; }

    void redo() override
    {
        *m_text += m_letters;
        note(QLatin1Char('+'));
    }
    void undo() override
    {
        m_text->chop(m_letters.size());
        note(QLatin1Char('-'));
    }
    bool mergeMeWith(QtCommand *command) override
    {
        if (!merges)
            return false;
        m_letters += static_cast<Letter *>(command)->m_letters;
        setDescription(u"type "_s + m_letters);
        return true;
    }

    static inline bool merges = false;
    static inline int deleted = 0;

private:
    void note(QChar direction)
    {
        if (m_calls)
            m_calls->append(direction + m_letters);
    }

    QString *m_text;
    QStringList *m_calls;
    QString m_letters;
};

/// A command of another class, which must never be offered to a Letter.
class Capital : public Letter
{
    Q_OBJECT
public:
    using Letter::Letter;
};

/// Notes every signal of a stack in the order in which they come.
class SignalLog : public QStringList
{
public:
    explicit SignalLog(QtUndoStack *stack)
    {
        QObject::connect(stack, &QtUndoStack::commandExecuted, stack,
                         [this] { append("executed"); });
        QObject::connect(stack, &QtUndoStack::canUndoChanged, stack,
                         [this](bool on) { append("canUndo", on); });
        QObject::connect(stack, &QtUndoStack::canRedoChanged, stack,
                         [this](bool on) { append("canRedo", on); });
        QObject::connect(stack, &QtUndoStack::cleanChanged, stack,
                         [this](bool on) { append("clean", on); });
        QObject::connect(stack, &QtUndoStack::undoDescriptionChanged, stack,
                         [this](const QString &text) { append("undo", text); });
        QObject::connect(stack, &QtUndoStack::redoDescriptionChanged, stack,
                         [this](const QString &text) { append("redo", text); });
    }
    /// What came since the last call, blank separated.
    QString take() { return std::exchange(static_cast<QStringList &>(*this), {}).join(u' '); }

private:
    void append(const char *name) { QStringList::append(QString::fromLatin1(name)); }
    void append(const char *name, bool on) { append(name, QString::number(on)); }
    void append(const char *name, const QString &value)
    {
        QStringList::append(QString::fromLatin1(name) + u'=' + value);
    }
};

} // namespace

class TestQtUndo : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void script_data();
    void script();
    void signalsOfEachChange();
    void clean_data();
    void clean();
    void merging();
    void undoneCommandsAreDeletedAtOnce();
    void macroRunsInOrder();
    void slotMayCallBack();
    void warnings();
    void managerFollowsTheFocus();
    void managerForgetsTheDead();
    void actions();

private:
    void type(const QString &letters);
    /// Shows a view of the stack that has the focus.
    void focusView(QWidget *view);
    void begin(const QString &name) { push(new QtCommand(QtCommand::MacroBegin, name, true)); }
    void end() { push(new QtCommand(QtCommand::MacroEnd, QString(), false)); }
    void push(QtCommand *command) { stack->push(command); }
    void run(const QString &steps);

    std::unique_ptr<QObject> owner;
    QtUndoStack *stack = nullptr;
    QtUndoManager *const manager = QtUndoManager::manager();
    QString text;
    QStringList calls;
};

void TestQtUndo::init()
{
    owner = std::make_unique<QObject>();
    stack = new QtUndoStack(owner.get());
    text.clear();
    calls.clear();
    Letter::merges = false;
    Letter::deleted = 0;
}

void TestQtUndo::cleanup()
{
    owner.reset();
}

void TestQtUndo::type(const QString &letters)
{
    for (const QChar letter : letters) {
        if (letter.isUpper())
            push(new Capital(&text, letter, &calls));
        else
            push(new Letter(&text, letter, &calls));
    }
}

void TestQtUndo::focusView(QWidget *view)
{
    manager->associateView(view, stack);
    QVERIFY(showActive(view));
    view->setFocus();
}

/// Letters are typed, "(" and ")" are a macro, "<" undoes, ">" redoes, "!" marks the
/// clean state, "0" clears.
void TestQtUndo::run(const QString &steps)
{
    for (const QChar step : steps) {
        switch (step.unicode()) {
        case '(':
            begin(u"macro"_s);
            break;
        case ')':
            end();
            break;
        case '<':
            stack->undo();
            break;
        case '>':
            stack->redo();
            break;
        case '!':
            stack->setClean();
            break;
        case '0':
            stack->clear();
            break;
        default:
            type(step);
        }
    }
}

void TestQtUndo::script_data()
{
    const Rows<QString, QString, QString, QString> row("steps", "result", "undoRows", "redoRows");

    row("each command is a step", "abc", "abc", "type a|type b|type c", "");
    row("redo from the start", "ab<<>", "a", "type a", "type b");
    row("a new command drops what was undone", "abc<<x", "ax", "type a|type x", "");
    row("a macro is one row", "a(bc)d", "abcd", "type a|macro|type d", "");
    row("nested macros are one row", "a(b(c)(d)e)<", "a", "type a", "macro");
    row("nested macros come back", "a(b(c)(d)e)f<<>", "abcde", "type a|macro", "type f");
    row("an empty macro is a step", "a()<", "a", "type a", "macro");
    row("a macro drops what was undone", "ab<(c)", "ac", "type a|macro", "");
    row("clear closes a macro", "a(b0c", "abc", "type c", "");
}

void TestQtUndo::script()
{
    QFETCH(QString, steps);
    run(steps);
    QTEST(text, "result");
    QTEST(stack->undoList().join(u'|'), "undoRows");
    QTEST(stack->redoList().join(u'|'), "redoRows");
    QCOMPARE(stack->canUndo(), !stack->undoList().isEmpty());
    QCOMPARE(stack->canRedo(), !stack->redoList().isEmpty());
    QCOMPARE(stack->undoDescription(), stack->undoList().value(stack->undoList().size() - 1));
    QCOMPARE(stack->redoDescription(), stack->redoList().value(0));
}

void TestQtUndo::signalsOfEachChange()
{
    SignalLog log(stack);
    type(u"a"_s);
    QCOMPARE(log.take(), u"executed canUndo=1 undo=type a clean=0"_s);
    type(u"a"_s);
    QCOMPARE(log.take(), u"executed"_s);
    begin(u"macro"_s);
    QCOMPARE(log.take(), u"canUndo=0 undo="_s);
    type(u"bc"_s);
    begin(u"inner"_s);
    end();
    QCOMPARE(log.take(), u""_s);
    stack->setClean();
    type(u"d"_s);
    QCOMPARE(log.take(), u"clean=1 clean=0"_s);
    end();
    QCOMPARE(log.take(), u"executed canUndo=1 undo=macro"_s);
    stack->undo(2);
    QCOMPARE(log.take(), u"canRedo=1 undo=type a redo=type a executed"_s);
    stack->redo();
    QCOMPARE(log.take(), u"redo=macro executed"_s);
    stack->clear();
    QCOMPARE(log.take(), u"canUndo=0 canRedo=0 undo= redo= clean=1"_s);
}

void TestQtUndo::clean_data()
{
    const Rows<QString, bool> row("steps", "clean");

    row("a command", "a", false);
    row("back at the empty history", "ab<<", true);
    row("behind the mark", "a!<", false);
    row("back at the mark", "a!b<", true);
    row("forward to the mark", "ab!<<>>", true);
    // A new command at the address of the deleted one would be taken for it.
    row("the mark was dropped, same address", "ab!<cd", false);
    row("left by undo and a new command, it is forgotten", "a!b<c<", false);
    row("so is the empty history", "a<b<", false);
    row("marked again", "a!b<c!", true);
    row("cleared", "a!b<c0", true);
}

void TestQtUndo::clean()
{
    QFETCH(QString, steps);
    run(steps);
    QTEST(stack->isClean(), "clean");
}

void TestQtUndo::merging()
{
    Letter::merges = true;
    type(u"abc"_s);
    QCOMPARE(stack->undoList(), QStringList{u"type abc"_s});
    QCOMPARE(Letter::deleted, 2);
    stack->undo();
    QCOMPARE(text, QString());
    stack->redo();
    QCOMPARE(text, u"abc"_s);

    type(u"X"_s);
    QCOMPARE(stack->undoList(), QStringList({u"type abc"_s, u"type X"_s}));
    stack->setClean();
    type(u"Y"_s);
    QCOMPARE(stack->undoList(), QStringList({u"type abc"_s, u"type X"_s, u"type Y"_s}));
    auto *loner = new Capital(&text, u'Z');
    loner->setCanMerge(false);
    push(loner);
    QCOMPARE(stack->undoList().size(), 4);
    type(u"V"_s);
    QCOMPARE(stack->undoDescription(), u"type ZV"_s);
    run(u"(V)"_s);
    type(u"W"_s);
    QCOMPARE(stack->undoList().mid(3), QStringList({u"type ZV"_s, u"macro"_s, u"type W"_s}));
}

void TestQtUndo::undoneCommandsAreDeletedAtOnce()
{
    type(u"abc"_s);
    stack->undo(2);
    type(u"x"_s);
    QCOMPARE(Letter::deleted, 2);
    stack->clear();
    QCOMPARE(Letter::deleted, 4);
    type(u"y"_s);
    owner.reset();
    QCOMPARE(Letter::deleted, 5);
}

void TestQtUndo::macroRunsInOrder()
{
    run(u"a(b(c)d)"_s);
    calls.clear();
    stack->undo();
    QCOMPARE(calls.join(u' '), u"-d -c -b"_s);
    calls.clear();
    stack->redo();
    QCOMPARE(calls.join(u' '), u"+b +c +d"_s);

    QTest::ignoreMessage(QtWarningMsg, "QtUndoStack::push(): MacroEnd without MacroBegin");
    SignalLog log(stack);
    end();
    QCOMPARE(log.take(), u""_s);
    QCOMPARE(stack->undoList(), QStringList({u"type a"_s, u"macro"_s}));
    type(u"e"_s);
    QCOMPARE(stack->undoList().size(), 3);
}

void TestQtUndo::slotMayCallBack()
{
    bool undone = false;
    connect(stack, &QtUndoStack::commandExecuted, this, [&] {
        if (!std::exchange(undone, true))
            stack->undo();
    });
    type(u"a"_s);
    QCOMPARE(text, QString());
    QCOMPARE(stack->redoList(), QStringList{u"type a"_s});
    stack->redo();
    QCOMPARE(text, u"a"_s);
}

void TestQtUndo::warnings()
{
    SignalLog log(stack);
    QTest::ignoreMessage(QtWarningMsg, "QtUndoStack::redo(): can't redo");
    stack->redo();
    QCOMPARE(log.take(), u""_s);

    type(u"abc"_s);
    log.take();
    QTest::ignoreMessage(QtWarningMsg, "QtUndoStack::undo(): can't undo");
    stack->undo(5);
    QCOMPARE(text, QString());
    QCOMPARE(log.count(u"executed"_s), 1);
    QTest::ignoreMessage(QtWarningMsg, "QtUndoStack::redo(): can't redo");
    stack->redo(5);
    QCOMPARE(text, u"abc"_s);

    begin(u"open"_s);
    QTest::ignoreMessage(QtWarningMsg, "QtUndoStack::undo(): can't undo");
    stack->undo();
    QCOMPARE(text, u"abc"_s);
    // The end that the list looks for isn't there yet.
    static const QRegularExpression noEnd(u"^ASSERT: \"command != 0\" in qtundo.cpp "_s);
    QTest::ignoreMessage(QtWarningMsg, noEnd);
    QCOMPARE(stack->undoList().last(), u"open"_s);
}

void TestQtUndo::managerFollowsTheFocus()
{
    QWidget window;
    auto *layout = new QVBoxLayout(&window);
    auto *first = new QWidget;
    auto *firstInner = new QLineEdit(first);
    auto *second = new QLineEdit;
    auto *foreign = new QLineEdit;
    for (QWidget *const each :
         {first, static_cast<QWidget *>(second), static_cast<QWidget *>(foreign)})
        layout->addWidget(each);
    first->setMinimumSize(100, 40);
    QObject secondOwner;
    QtUndoStack secondStack(&secondOwner);
    manager->associateView(first, stack);
    manager->associateView(second, &secondStack);
    QVERIFY(showActive(&window));

    QSignalSpy undoTexts(manager, &QtUndoManager::undoDescriptionChanged);
    QSignalSpy changes(manager, &QtUndoManager::changed);
    second->setFocus();
    type(u"a"_s);
    QCOMPARE(changes.count(), 0);
    firstInner->setFocus();
    QTRY_COMPARE(changes.count(), 1);
    QCOMPARE(undoTexts.takeFirst().first().toString(), u"Undo type a"_s);
    QVERIFY(manager->canUndo());
    QCOMPARE(manager->undoDescription(), u"type a"_s);

    foreign->setFocus();
    QVERIFY(foreign->hasFocus());
    type(u"b"_s);
    QCOMPARE(undoTexts.takeFirst().first().toString(), u"Undo type b"_s);
    manager->undo(2);
    QCOMPARE(text, QString());
    QCOMPARE(manager->redoList(), QStringList({u"type a"_s, u"type b"_s}));
    manager->redo();
    QCOMPARE(text, u"a"_s);

    second->setFocus();
    QVERIFY(!manager->canUndo());
    QVERIFY(!manager->canRedo());
    QTest::ignoreMessage(QtWarningMsg, "QtUndoManager::undo(): can't undo");
    manager->undo();
    QTest::ignoreMessage(QtWarningMsg, "QtUndoManager::redo(): can't redo");
    manager->redo();
    QCOMPARE(text, u"a"_s);
}

void TestQtUndo::managerForgetsTheDead()
{
    QLineEdit window;
    focusView(&window);
    type(u"a"_s);
    QVERIFY(manager->canUndo());
    owner.reset();
    QVERIFY(!manager->canUndo());

    // The view is free again.
    QObject other;
    QtUndoStack otherStack(&other);
    manager->associateView(&window, &otherStack);
    otherStack.push(new Letter(&text, u'b'));
    QVERIFY(manager->canUndo());
    manager->disassociateView(&window);
    QVERIFY(manager->canUndo());

    // A stack that was in force for a dead view waits for the next focus.
    auto view = std::make_unique<QObject>();
    manager->associateView(view.get(), &otherStack);
    view.reset();
    QVERIFY(!manager->canUndo());
}

void TestQtUndo::actions()
{
    QLineEdit window;
    focusView(&window);
    type(u"ab"_s);

    const QList<QAction *> undos{stack->createUndoAction(&window),
                                 manager->createUndoAction(&window)};
    const QList<QAction *> redos{stack->createRedoAction(&window),
                                 manager->createRedoAction(&window)};
    const QStringList undoPrefixes{QString(), u"Undo "_s};
    for (int i = 0; i < 2; ++i) {
        QCOMPARE(undos[i]->text(), undoPrefixes[i] + u"type b"_s);
        QVERIFY(undos[i]->isEnabled());
        QVERIFY(!redos[i]->isEnabled());
        // A checked state that reached undo() as its count would undo nothing.
        undos[i]->trigger();
        QCOMPARE(text, u"a"_s);
        QCOMPARE(undos[i]->text(), undoPrefixes[i] + u"type a"_s);
        QVERIFY(redos[i]->isEnabled());
        redos[i]->trigger();
        QCOMPARE(text, u"ab"_s);
        QVERIFY(!redos[i]->isEnabled());
    }
    stack->clear();
    QCOMPARE(undos[0]->text(), QString());
    QCOMPARE(undos[1]->text(), u"Undo"_s);
    QVERIFY(!undos[0]->isEnabled());
}

QTEST_MAIN(TestQtUndo)
#include "tst_qtundo.moc"
