#include "app/actions.h"
#include "app/editors/editor.h"
#include "app/editors/editors.h"
#include "app/search/finddialog.h"
#include "app/search/gotolinedialog.h"
#include "app/search/replaceaskdialog.h"
#include "app/search/replacedialog.h"
#include "app/search/searchmanager.h"
#include "tests/apptest.h"

#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace vesk;

namespace {

enum Option
{
    NoOption = 0,
    RegExp = 1,
    WholeWords = 2,
    FromCursor = 4,
    All = 8,
    CaseSensitive = 16,
    InSelection = 32
};

template <typename Dialog>
void fillIn(Dialog *dialog, const QString &text, int options)
{
    dialog->findString->setEditText(text);
    dialog->regExp->setChecked(options & RegExp);
    dialog->wholeWordsOnly->setChecked(options & WholeWords);
    dialog->fromCursor->setChecked(options & FromCursor);
    dialog->caseSensitive->setChecked(options & CaseSensitive);
}

const QString endOfDocument = u"End of document reached."_s;
const QString endOfSelection = u"End of selection reached."_s;

} // namespace

class TestSearch : public AppTest
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase() { dropShell(); }
    void init();
    void cleanup();

    void selectionFillsTheDialog_data();
    void selectionFillsTheDialog();
    void findSelects_data();
    void findSelects();
    void historyKeepsEachTextOnce();
    void replaces_data();
    void replaces();
    void stopsAtWish_data();
    void stopsAtWish();
    void keysOfAnOpenList_data();
    void keysOfAnOpenList();
    void asksForEach_data();
    void asksForEach();
    void questionShowsTheWholeText();
    void goesToLine_data();
    void goesToLine();

private:
    Editor *editor() const { return Editors::self()->current(); }
    SearchManager *search() const { return SearchManager::self(); }
    /// Sets the text, in which "[" and "]" mark the selection.
    void setText(const QString &marked);
    /// The selected text with what stands around it on its line.
    QString found() const;
    void expectFind(const QString &text, int options);
    void expectReplace(const QString &text, const QString &replacement, int options);

    std::unique_ptr<Responder> responder;
};

void TestSearch::initTestCase()
{
    makeShell();
    SearchManager::self();
    shell->rebuildUI();
    QVERIFY(showActive(shell.get()));
}

void TestSearch::init()
{
    failOnBadConnects();
    responder = std::make_unique<Responder>();
    QVERIFY(showActive(shell.get()));
    Editors::self()->newEditor();
}

void TestSearch::cleanup()
{
    QVERIFY(responder->isDone());
    responder.reset();
}

void TestSearch::setText(const QString &marked)
{
    const qsizetype first = marked.indexOf(u'[');
    const qsizetype last = marked.indexOf(u']');
    editor()->setText(QString(marked).remove(u'[').remove(u']'));
    editor()->setCursorPosition(0, 0);
    if (first < 0)
        return;
    if (first == 0 && last == marked.size() - 1) {
        editor()->selectAll();
        return;
    }
    QWidget *const view = editor()->focusProxy();
    for (qsizetype i = 0; i < first; ++i)
        QTest::keyClick(view, Qt::Key_Right);
    for (qsizetype i = first + 1; i < last; ++i)
        QTest::keyClick(view, Qt::Key_Right, Qt::ShiftModifier);
}

QString TestSearch::found() const
{
    const QString selection = editor()->selection();
    const int line = editor()->cursorLine();
    const qsizetype end = editor()->cursorColumn();
    return u"%1:%2:%3"_s.arg(line).arg(end - selection.size()).arg(selection);
}

void TestSearch::expectFind(const QString &text, int options)
{
    responder->expect([=](QWidget *widget) {
        fillIn(qobject_cast<FindDialog *>(widget), text, options);
        static_cast<QDialog *>(widget)->accept();
    });
}

void TestSearch::expectReplace(const QString &text, const QString &replacement, int options)
{
    responder->expect([=](QWidget *widget) {
        auto *const dialog = qobject_cast<ReplaceDialog *>(widget);
        fillIn(dialog, text, options);
        dialog->replaceString->setEditText(replacement);
        dialog->replaceAll->setChecked(options & All);
        dialog->inSelection->setChecked(options & InSelection);
        dialog->accept();
    });
}

void TestSearch::selectionFillsTheDialog_data()
{
    const Rows<QString, QString, bool> row("text", "offered", "inSelection");
    row("one line", "one [two] three", "two", false);
    row("more than the field holds", QString(u'[' + QString(40000, u'x') + u']'), "kept", false);
    row("several lines", "o[ne\nt]wo", "kept", true);
    row("none", "one two", "kept", false);
}

void TestSearch::selectionFillsTheDialog()
{
    QFETCH(QString, text);
    QFETCH(QString, offered);
    QFETCH(bool, inSelection);
    setText(u"kept"_s);
    expectFind(u"kept"_s, NoOption);
    search()->findText();
    setText(text);
    responder->expect([=](QWidget *widget) {
        auto *const dialog = qobject_cast<FindDialog *>(widget);
        QCOMPARE(dialog->findString->currentText(), offered);
        QCOMPARE(dialog->findString->lineEdit()->selectedText(), offered);
        QVERIFY(dialog->findString->hasFocus());
        QCOMPARE(dialog->inSelection->isChecked(), inSelection);
        // The next use decides anew.
        dialog->inSelection->setChecked(true);
        dialog->reject();
    });
    search()->findText();
}

void TestSearch::findSelects_data()
{
    // or what the box says
    const Rows<QString, QString, int, QString> row("text", "wanted", "options", "found");
    row("from the start", "a foo\nfoo[]", "foo", 0, "0:2:foo");
    row("whole words", "foobar foo", "foo", WholeWords, "0:7:foo");
    row("any case", "FOO", "foo", 0, "0:0:FOO");
    row("case", "FOO foo", "foo", CaseSensitive, "0:4:foo");
    row("pattern", "ab12", "[0-9]+", RegExp, "0:2:12");
    row("not there", "abc", "x", 0, endOfDocument);
    row("behind the cursor", "foo []bar", "foo", FromCursor, endOfDocument);
    row("bad pattern", "abc", "(", RegExp, endOfDocument);
    row("nothing", "abc", "", 0, endOfDocument);
    row("in selection", "a foo\n[b\nc] foo", "foo", 0, endOfSelection);
    row("inside the selection", "foo\n[b\nfoo c]", "foo", 0, "2:0:foo");
}

void TestSearch::findSelects()
{
    QFETCH(QString, text);
    QFETCH(QString, wanted);
    QFETCH(int, options);
    QFETCH(QString, found);
    setText(text);
    expectFind(wanted, options);
    const bool isFound = !found.startsWith(u'E');
    if (!isFound)
        responder->expect(u"OK"_s);
    search()->findText();
    if (isFound)
        QCOMPARE(this->found(), found);
    QCOMPARE(responder->texts, isFound ? QStringList() : QStringList(found));
}

void TestSearch::historyKeepsEachTextOnce()
{
    setText(u"alpha beta"_s);
    for (const char *text : {"alpha", "beta", "alpha"}) {
        setText(u"alpha beta"_s);
        expectFind(QString::fromLatin1(text), NoOption);
        search()->findText();
    }
    auto *const dialog = shell->findChild<FindDialog *>();
    QCOMPARE(dialog->findString->itemText(0), u"alpha"_s);
    QCOMPARE(dialog->findString->itemText(1), u"beta"_s);
    int alphas = 0;
    for (int i = 0; i < dialog->findString->count(); ++i)
        alphas += dialog->findString->itemText(i) == u"alpha"_s;
    QCOMPARE(alphas, 1);
}

void TestSearch::replaces_data()
{
    const Rows<QString, QString, QString, int, QString> row("text", "wanted", "replacement",
                                                            "options", "result");
    row("all", "a b a\na", "a", "x", 0, "x b x\nx");
    row("all contains itself", "a a", "a", "aa", 0, "aa aa");
    row("by nothing", "abab", "ab", "", 0, "");
    row("by lines", "a,b", ",", "\n", 0, "a\nb");
    row("whole words", "foo foobar foo", "foo", "x", WholeWords, "x foobar x");
    row("in selection", "a\n[a a\na] a\na", "a", "x", InSelection, "a\nx x\nx a\na");
    row("in selection, shorter", "[foo foo] foo foo", "foo", "x", InSelection, "x x foo foo");
    row("in selection, longer", "[a a a] a a", "a", "long", InSelection, "long long long a a");
    row("without a selection", "a a[]", "a", "x", InSelection, "a a");
    row("a character of two units", "\U0001F600b \U0001F600", "[^x]b", "#", RegExp, "# \U0001F600");
    row("nothing asked", "abc", "", "y", 0, "abc");
    row("pattern", "a1 b22", "[0-9]+", "#", RegExp, "a# b#");
    row("line starts", "a\n\nb", "^", "> ", RegExp, "> a\n> \n> b");
    row("line ends", "a\nb", "$", ";", RegExp, "a;\nb;");
    row("start of the line again", "aaab", "^a", "", RegExp, "b");
    row("what is not there", "bxb", "x*", "-", RegExp, "-b-b-");
}

void TestSearch::replaces()
{
    QFETCH(QString, text);
    QFETCH(QString, wanted);
    QFETCH(QString, replacement);
    QFETCH(int, options);
    QFETCH(QString, result);
    setText(text);
    expectReplace(wanted, replacement, options | All);
    search()->replace();
    QCOMPARE(editor()->text(), result);
    QVERIFY(responder->texts.isEmpty());
    const QString before = QString(text).remove(u'[').remove(u']');
    if (result == before)
        return;
    editor()->undo();
    QCOMPARE(editor()->text(), before);
}

/// A search that takes long can be ended by the user, who is told nothing then.
void TestSearch::stopsAtWish_data()
{
    const Rows<QString, QString> row("pattern", "result");
    row("while searching", "(.+)\\1+$", "x\nx\n%1!");
    row("while replacing", "x|(.+)\\1+$", "y\ny\n%1!");
}

void TestSearch::stopsAtWish()
{
    QFETCH(QString, pattern);
    QFETCH(QString, result);
    const QString letters(64000, u'a');
    const QString text = u"x\nx\n%1!"_s.arg(letters);
    editor()->setText(text);
    editor()->setCursorPosition(0, 0);
    expectReplace(pattern, u"y"_s, RegExp | All);
    responder->expect(u"Stop"_s);
    search()->replace();
    QCOMPARE(editor()->text(), result.arg(letters));
    if (result.arg(letters) == text) {
        expectFind(pattern, RegExp);
        responder->expect(u"Stop"_s);
        search()->findText();
        responder->expect(u"Stop"_s);
        search()->findNext();
    } else {
        editor()->undo();
        QCOMPARE(editor()->text(), text);
    }
    QVERIFY(responder->texts.isEmpty());
}

/// The keys that end a dialog only end the open list of its combo box.
void TestSearch::keysOfAnOpenList_data()
{
    const Rows<int, QString> row("key", "text");
    row("taken", Qt::Key_Return, "one");
    row("left", Qt::Key_Escape, "two");
}

void TestSearch::keysOfAnOpenList()
{
    QFETCH(int, key);
    QFETCH(QString, text);
    setText(u"one two"_s);
    for (const QString &each : {u"one"_s, u"two"_s}) {
        expectFind(each, NoOption);
        search()->findText();
        editor()->setCursorPosition(0, 0);
    }
    responder->expect([=](QWidget *widget) {
        auto *const dialog = qobject_cast<FindDialog *>(widget);
        QComboBox *const combo = dialog->findString;
        QTest::keyClick(combo, Qt::Key_Down, Qt::AltModifier);
        QTRY_VERIFY(combo->view()->isVisible());
        // It opens on the text that is shown.
        QCOMPARE(combo->view()->currentIndex().data().toString(), u"two"_s);
        QTest::keyClick(combo->view(), Qt::Key_Down);
        QTest::keyClick(combo->view(), Qt::Key(key));
        QTRY_VERIFY(!combo->view()->isVisible());
        // A button that is pressed by its key takes a moment.
        const QList<QPushButton *> buttons = dialog->findChildren<QPushButton *>();
        for (const QPushButton *const button : buttons)
            QVERIFY(!button->isDown());
        QVERIFY(dialog->isVisible());
        QCOMPARE(combo->currentText(), text);
        QTest::keyClick(combo, Qt::Key_Escape);
        QVERIFY(!dialog->isVisible());
    });
    search()->findText();
}

void TestSearch::asksForEach_data()
{
    const Rows<QStringList, QString> row("answers", "result");
    const QString yes = u"buttonYes"_s;
    const QString no = u"buttonNo"_s;
    const QString all = u"buttonAll"_s;
    const QString cancel = u"buttonCancel"_s;
    row("yes and no", QStringList({yes, no, yes}), "xbaxx");
    row("no, then all", QStringList({no, all}), "abxxx");
    row("cancel keeps what was done", QStringList({yes, cancel}), "xbaaa");
}

void TestSearch::asksForEach()
{
    QFETCH(QStringList, answers);
    QFETCH(QString, result);
    setText(u"abaaa"_s);
    expectReplace(u"a"_s, u"x"_s, NoOption);
    if (result == u"xbaxx"_s)
        answers.append(u"buttonYes"_s);
    for (const QString &answer : std::as_const(answers))
        responder->expect(answer);
    search()->replace();
    QCOMPARE(editor()->text(), result);
}

void TestSearch::questionShowsTheWholeText()
{
    ReplaceAskDialog dialog;
    const int oneRow = dialog.labelText->sizeHint().height();
    const auto ink = [&dialog](const QString &text) {
        dialog.labelText->setText(text);
        dialog.adjustSize();
        const QImage image = dialog.labelText->grab().toImage();
        int dark = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x)
                dark += image.pixelColor(x, y).lightness() < 100;
        }
        return dark;
    };
    const int some = ink(QString(10, u'm'));
    const int many = ink(QString(400, u'm'));
    QVERIFY2(many > 35 * some && many < 45 * some, qPrintable(u"%1, %2"_s.arg(some).arg(many)));
    ink(QString(100000, u'm'));
    QVERIFY(dialog.labelText->sizeHint().height() < 15 * oneRow);
}

void TestSearch::goesToLine_data()
{
    const Rows<QString, int> row("typed", "line");
    row("number as it stands", "2", 2);
    row("word", "abc", 0);
    row("too large", "1000", 3);
    row("negative", "-7", 0);
}

void TestSearch::goesToLine()
{
    QFETCH(QString, typed);
    QFETCH(int, line);
    setText(u"a\nb\nc\nd[]"_s);
    responder->expect([typed](QWidget *widget) {
        auto *const dialog = qobject_cast<GotoLineDialog *>(widget);
        QVERIFY(dialog->comboLine->hasFocus());
        dialog->comboLine->setEditText(typed);
        QTest::keyClick(dialog->comboLine, Qt::Key_Return);
    });
    search()->goToLine();
    QCOMPARE(editor()->cursorLine(), line);
    QCOMPARE(editor()->cursorColumn(), 0);
    QCOMPARE(shell->findChild<GotoLineDialog *>()->comboLine->count(), 0);
}

QTEST_MAIN(TestSearch)
#include "tst_search.moc"
