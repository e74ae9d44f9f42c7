#include "activewindow.h"
#include "app/actions.h"
#include "app/editors/editor.h"
#include "app/editors/editors.h"
#include "app/search/finddialog.h"
#include "app/search/gotolinedialog.h"
#include "app/search/replacedialog.h"
#include "app/search/searchmanager.h"
#include "app/settings.h"
#include "app/shell.h"
#include "responder.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

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

const QString endOfDocument = QStringLiteral("End of document reached.");
const QString endOfSelection = QStringLiteral("End of selection reached.");

} // namespace

class TestSearch : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();

    void selectionFillsTheDialog_data();
    void selectionFillsTheDialog();
    void findSelects_data();
    void findSelects();
    void historyKeepsEachTextOnce();
    void findNextGoesOn();
    void regExpDisablesWholeWords();
    void replaces_data();
    void replaces();
    void asksForEach_data();
    void asksForEach();
    void replacementsCanBeUndone();
    void goesToLine_data();
    void goesToLine();
    void keysOfTheDialogs();

private:
    Editor *editor() const { return Editors::self()->current(); }
    SearchManager *search() const { return SearchManager::self(); }
    /// Sets the text, in which "[" and "]" mark the selection.
    void setText(const QString &marked);
    /// The selected text with what stands around it on its line.
    QString found() const;
    void expectFind(const QString &text, int options);
    void expectReplace(const QString &text, const QString &replacement, int options);

    std::unique_ptr<QTemporaryDir> dir;
    std::unique_ptr<Shell> shell;
    std::unique_ptr<Responder> responder;
};

void TestSearch::initTestCase()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral("No such (signal|slot)")));
    dir = std::make_unique<QTemporaryDir>();
    Settings::setKeyPrefix(QStringLiteral("/vesk"));
    Settings::setFileName(dir->filePath(QStringLiteral("settings.ini")));
    Settings::forceWrite();
    shell = std::make_unique<Shell>(nullptr, QStringLiteral("vesk::Shell"));
    SearchManager::self();
    shell->rebuildUI();
    shell->show();
    QVERIFY(waitForActive(shell.get()));
}

void TestSearch::cleanupTestCase()
{
    shell.reset();
    Settings::forceWrite();
}

void TestSearch::init()
{
    responder = std::make_unique<Responder>();
    QVERIFY(waitForActive(shell.get()));
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
    return QStringLiteral("%1:%2:%3").arg(line).arg(end - selection.size()).arg(selection);
}

void TestSearch::expectFind(const QString &text, int options)
{
    responder->expect([=](QWidget *widget) {
        auto *const dialog = qobject_cast<FindDialog *>(widget);
        dialog->findString->setEditText(text);
        dialog->regExp->setChecked(options & RegExp);
        dialog->wholeWordsOnly->setChecked(options & WholeWords);
        dialog->fromCursor->setChecked(options & FromCursor);
        dialog->caseSensitive->setChecked(options & CaseSensitive);
        dialog->accept();
    });
}

void TestSearch::expectReplace(const QString &text, const QString &replacement, int options)
{
    responder->expect([=](QWidget *widget) {
        auto *const dialog = qobject_cast<ReplaceDialog *>(widget);
        dialog->findString->setEditText(text);
        dialog->replaceString->setEditText(replacement);
        dialog->regExp->setChecked(options & RegExp);
        dialog->wholeWordsOnly->setChecked(options & WholeWords);
        dialog->fromCursor->setChecked(options & FromCursor);
        dialog->caseSensitive->setChecked(options & CaseSensitive);
        dialog->replaceAll->setChecked(options & All);
        dialog->inSelection->setChecked(options & InSelection);
        dialog->accept();
    });
}

void TestSearch::selectionFillsTheDialog_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("offered");
    QTest::addColumn<bool>("inSelection");
    QTest::newRow("one line") << "one [two] three"
                              << "two" << false;
    QTest::newRow("several lines") << "o[ne\nt]wo"
                                   << "kept" << true;
    QTest::newRow("none") << "one two"
                          << "kept" << false;
}

void TestSearch::selectionFillsTheDialog()
{
    QFETCH(QString, text);
    QFETCH(QString, offered);
    QFETCH(bool, inSelection);
    setText(QStringLiteral("kept"));
    expectFind(QStringLiteral("kept"), NoOption);
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
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("wanted");
    QTest::addColumn<int>("options");
    QTest::addColumn<QString>("found"); // or what the box says
    QTest::newRow("from the start") << "a foo\nfoo[]"
                                    << "foo" << 0 << "0:2:foo";
    QTest::newRow("from the cursor") << "a foo\n[]foo"
                                     << "foo" << int(FromCursor) << "1:0:foo";
    QTest::newRow("whole words") << "foobar foo"
                                 << "foo" << int(WholeWords) << "0:7:foo";
    QTest::newRow("any case") << "FOO"
                              << "foo" << 0 << "0:0:FOO";
    QTest::newRow("case") << "FOO foo"
                          << "foo" << int(CaseSensitive) << "0:4:foo";
    QTest::newRow("pattern") << "ab12"
                             << "[0-9]+" << int(RegExp) << "0:2:12";
    QTest::newRow("pattern, whole words not used")
        << "ab12"
        << "[0-9]" << int(RegExp | WholeWords) << "0:2:1";
    QTest::newRow("not there") << "abc"
                               << "x" << 0 << endOfDocument;
    QTest::newRow("behind the cursor") << "foo []bar"
                                       << "foo" << int(FromCursor) << endOfDocument;
    QTest::newRow("bad pattern") << "abc"
                                 << "(" << int(RegExp) << endOfDocument;
    QTest::newRow("nothing") << "abc"
                             << "" << 0 << endOfDocument;
    QTest::newRow("in selection") << "a foo\n[b\nc] foo"
                                  << "foo" << 0 << endOfSelection;
    QTest::newRow("inside the selection") << "foo\n[b\nfoo c]"
                                          << "foo" << 0 << "2:0:foo";
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
        responder->expect(QStringLiteral("OK"));
    search()->findText();
    if (isFound)
        QCOMPARE(this->found(), found);
    QCOMPARE(responder->texts, isFound ? QStringList() : QStringList(found));
}

void TestSearch::historyKeepsEachTextOnce()
{
    setText(QStringLiteral("alpha beta"));
    for (const char *text : {"alpha", "beta", "alpha"}) {
        setText(QStringLiteral("alpha beta"));
        expectFind(QString::fromLatin1(text), NoOption);
        search()->findText();
    }
    auto *const dialog = shell->findChild<FindDialog *>();
    QCOMPARE(dialog->findString->itemText(0), QStringLiteral("alpha"));
    QCOMPARE(dialog->findString->itemText(1), QStringLiteral("beta"));
    int alphas = 0;
    for (int i = 0; i < dialog->findString->count(); ++i)
        alphas += dialog->findString->itemText(i) == QStringLiteral("alpha");
    QCOMPARE(alphas, 1);
}

void TestSearch::findNextGoesOn()
{
    setText(QStringLiteral("foo\nfoo"));
    expectFind(QStringLiteral("foo"), NoOption);
    search()->findText();
    QVERIFY(waitForActive(shell.get()));
    QTest::keyClick(editor()->focusProxy(), Qt::Key_F3);
    QCOMPARE(found(), QStringLiteral("1:0:foo"));
    responder->expect(QStringLiteral("OK"));
    QTest::keyClick(editor()->focusProxy(), Qt::Key_F3);
    QCOMPARE(responder->texts, QStringList(endOfDocument));
    QCOMPARE(editor()->cursorLine(), 1);
    QCOMPARE(editor()->cursorColumn(), 3);
}

void TestSearch::regExpDisablesWholeWords()
{
    FindDialog find;
    ReplaceDialog replace;
    const QList<std::pair<QCheckBox *, QCheckBox *>> pairs = {
        {find.regExp, find.wholeWordsOnly}, {replace.regExp, replace.wholeWordsOnly}};
    for (const auto &pair : pairs) {
        pair.first->setChecked(true);
        QVERIFY(!pair.second->isEnabled());
        pair.first->setChecked(false);
        QVERIFY(pair.second->isEnabled());
    }
}

void TestSearch::replaces_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("wanted");
    QTest::addColumn<QString>("replacement");
    QTest::addColumn<int>("options");
    QTest::addColumn<QString>("result");
    QTest::newRow("all") << "a b a\na"
                         << "a"
                         << "x" << 0 << "x b x\nx";
    QTest::newRow("all contains itself") << "a a"
                                         << "a"
                                         << "aa" << 0 << "aa aa";
    QTest::newRow("from the cursor") << "a []a"
                                     << "a"
                                     << "x" << int(FromCursor) << "a x";
    QTest::newRow("by nothing") << "abab"
                                << "ab"
                                << "" << 0 << "";
    QTest::newRow("by lines") << "a,b"
                              << ","
                              << "\n"
                              << 0 << "a\nb";
    QTest::newRow("whole words") << "foo foobar foo"
                                 << "foo"
                                 << "x" << int(WholeWords) << "x foobar x";
    QTest::newRow("in selection") << "a\n[a a\na] a\na"
                                  << "a"
                                  << "x" << int(InSelection) << "a\nx x\nx a\na";
    QTest::newRow("nothing there") << "abc"
                                   << "x"
                                   << "y" << 0 << "abc";
    QTest::newRow("nothing asked") << "abc"
                                   << ""
                                   << "y" << 0 << "abc";
    QTest::newRow("pattern") << "a1 b22"
                             << "[0-9]+"
                             << "#" << int(RegExp) << "a# b#";
    QTest::newRow("line starts") << "a\n\nb"
                                 << "^"
                                 << "> " << int(RegExp) << "> a\n> \n> b";
    QTest::newRow("line ends") << "a\nb"
                               << "$"
                               << ";" << int(RegExp) << "a;\nb;";
    QTest::newRow("start of the line again") << "aaab"
                                             << "^a"
                                             << "" << int(RegExp) << "b";
    QTest::newRow("what is not there") << "bxb"
                                       << "x*"
                                       << "-" << int(RegExp) << "-b-b-";
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
}

void TestSearch::asksForEach_data()
{
    QTest::addColumn<QStringList>("answers");
    QTest::addColumn<QString>("result");
    const QString yes = QStringLiteral("buttonYes");
    const QString no = QStringLiteral("buttonNo");
    const QString all = QStringLiteral("buttonAll");
    const QString cancel = QStringLiteral("buttonCancel");
    QTest::newRow("yes and no") << QStringList({yes, no, yes}) << "xbaxx";
    QTest::newRow("no, then all") << QStringList({no, all}) << "abxxx";
    QTest::newRow("cancel keeps what was done") << QStringList({yes, cancel}) << "xbaaa";
}

void TestSearch::asksForEach()
{
    QFETCH(QStringList, answers);
    QFETCH(QString, result);
    setText(QStringLiteral("abaaa"));
    expectReplace(QStringLiteral("a"), QStringLiteral("x"), NoOption);
    if (result == QStringLiteral("xbaxx"))
        answers.append(QStringLiteral("buttonYes"));
    for (const QString &answer : std::as_const(answers))
        responder->expect(answer);
    search()->replace();
    QCOMPARE(editor()->text(), result);
}

void TestSearch::replacementsCanBeUndone()
{
    setText(QStringLiteral("a a"));
    expectReplace(QStringLiteral("a"), QStringLiteral("xy"), All);
    search()->replace();
    QCOMPARE(editor()->text(), QStringLiteral("xy xy"));
    for (int i = 0; i < 4; ++i)
        editor()->undo();
    QCOMPARE(editor()->text(), QStringLiteral("a a"));
}

void TestSearch::goesToLine_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<int>("line");
    QTest::newRow("number as it stands") << "2" << 2;
    QTest::newRow("word") << "abc" << 0;
    QTest::newRow("too large") << "1000" << 3;
    QTest::newRow("negative") << "-7" << 0;
}

void TestSearch::goesToLine()
{
    QFETCH(QString, typed);
    QFETCH(int, line);
    setText(QStringLiteral("a\nb\nc\nd[]"));
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

void TestSearch::keysOfTheDialogs()
{
    setText(QStringLiteral("one Two two"));
    responder->expect([](QWidget *widget) {
        auto *const dialog = qobject_cast<FindDialog *>(widget);
        QTest::keyClicks(dialog->findString->lineEdit(), QStringLiteral("two"));
        const bool before = dialog->caseSensitive->isChecked();
        QTest::keyClick(dialog, Qt::Key_C, Qt::AltModifier);
        QTRY_COMPARE(dialog->caseSensitive->isChecked(), !before);
        dialog->caseSensitive->setChecked(true);
        QTest::keyClick(dialog->findString->lineEdit(), Qt::Key_Return);
    });
    Editors::self()->setFocus();
    QTest::keyClick(editor()->focusProxy(), Qt::Key_F, Qt::ControlModifier);
    QCOMPARE(found(), QStringLiteral("0:8:two"));
    responder->expect([](QWidget *widget) { QTest::keyClick(widget, Qt::Key_Escape); });
    QVERIFY(waitForActive(shell.get()));
    QTest::keyClick(editor()->focusProxy(), Qt::Key_R, Qt::ControlModifier);
    QCOMPARE(editor()->text(), QStringLiteral("one Two two"));
}

QTEST_MAIN(TestSearch)
#include "tst_search.moc"
