#include "app/editors/zveditor/zveditor.h"
#include "app/widgetstack.h"
#include "tests/apptest.h"
#include "zvwidgets/zveditor/highlight.h"
#include "zvwidgets/zveditor/highlight/highlightmanager.h"
#include "zvwidgets/zveditor/textdoc.h"
#include "zvwidgets/zveditor/texteditor.h"
#include "zvwidgets/zveditor/textfolding.h"
#include "zvwidgets/zveditor/textmanager.h"
#include "zvwidgets/zveditor/textview.h"

#include <QCryptographicHash>
#include <QSignalSpy>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace vesk;
using zvwidgets::FoldersState;
using zvwidgets::TextEditor;
using zvwidgets::TextEditorManager;

class TestZVEditor : public AppTest
{
    Q_OBJECT

private slots:
    void initTestCase() { makeShell(); }
    void cleanupTestCase() { dropShell(); }
    void init();
    void cleanup() { editor.reset(); }

    void optionsReachTheManager();
    void tabOptions();
    void storedColoursReachTheHighlight();
    void foldsComeBack();
    void untitledStoresNoFolds();
    void oldFoldsAreCleared();
    void storedFolds_data();
    void storedFolds();
    void breakpoints();
    void signalsOfAnEdit();
    void cursorGetsContext();

private:
    TextEditor *inner() const { return editor->findChild<TextEditor *>(); }
    QString folds() const;
    QString storedFoldsOf(const QString &path) const;

    std::unique_ptr<ZVEditor> editor;
};

namespace {

QByteArray lines(int count)
{
    QByteArray text;
    for (int i = 0; i < count; ++i)
        text += "line " + QByteArray::number(i) + '\n';
    return text;
}

QString foldKey(const QString &path)
{
    QString sum;
    for (const char byte : QCryptographicHash::hash(path.toUtf8(), QCryptographicHash::Md5))
        sum += QString::number(uchar(byte), 16);
    return u"/editors/folding/"_s + sum;
}

} // namespace

void TestZVEditor::init()
{
    editor = std::make_unique<ZVEditor>(nullptr);
    editor->resize(600, 400);
    QVERIFY(showActive(editor.get()));
    editor->setFocus();
}

/// The folds as first-last and o for open or c for closed.
QString TestZVEditor::folds() const
{
    QStringList all;
    for (const zvwidgets::FolderInfo &fold : inner()->folding()->foldersState()) {
        all.append(u"%1-%2%3"_s.arg(fold.firstLine)
                       .arg(fold.lastLine)
                       .arg(QLatin1Char(fold.isOpened ? 'o' : 'c')));
    }
    return all.join(u' ');
}

QString TestZVEditor::storedFoldsOf(const QString &path) const
{
    return Settings::read(foldKey(path), u"none"_s);
}

/// One option of each kind; the rest differ in a row of a table.
void TestZVEditor::optionsReachTheManager()
{
    const TextEditorManager &manager = *ZVEditor::manager();
    QVERIFY(manager.fSmartHome && !manager.fLineNumberMargin);
    Settings::write(u"/zveditor/SmartHome"_s, false);
    Settings::write(u"/zveditor/LineNumberMargin"_s, true);
    Settings::write(u"/zveditor/IndentationGuides"_s, true);
    ZVEditor::loadConfig();
    QVERIFY(!manager.fSmartHome && manager.fLineNumberMargin);
    QVERIFY(!manager.fIndentationGuides);
    QVERIFY(manager.fFoldingMargin);
    Settings::remove(u"/zveditor/SmartHome"_s);
    Settings::remove(u"/zveditor/LineNumberMargin"_s);
    ZVEditor::loadConfig();
    QVERIFY(manager.fSmartHome && !manager.fLineNumberMargin);
}

void TestZVEditor::storedColoursReachTheHighlight()
{
    Settings::write(u"/zveditor/hl/C++/Keyword/color"_s, u"#123456"_s);
    inner()->setHighlight(u"C++"_s);
    QStringList colours;
    for (int i = 0; i < 20; ++i)
        colours << inner()->view()->highlight()->attribute(i)->color.name();
    QVERIFY(colours.contains(u"#123456"_s));
    // The store may be written and read anew in between.
    Settings::forceWrite();
    inner()->setHighlight(u"C++"_s);
    Settings::remove(u"/zveditor/hl/C++/Keyword/color"_s);
}

void TestZVEditor::tabOptions()
{
    Settings::write(u"/zveditor/TabWidth"_s, 8);
    ZVEditor::loadConfig();
    QCOMPARE(inner()->document()->spacesInTab(), 8);
    QCOMPARE(editor->tabWidthInSpaces(), 4);
    QVERIFY(!editor->replaceTabs());
    QTest::keyClick(editor->focusProxy(), Qt::Key_Tab);
    QCOMPARE(editor->text(), u"\t"_s);
    Settings::write(u"/zveditor/ReplaceTabs"_s, false);
    ZVEditor::loadConfig();
    QVERIFY(editor->replaceTabs());
    QTest::keyClick(editor->focusProxy(), Qt::Key_Tab);
    QCOMPARE(editor->text(), u"\t        "_s);
    Settings::remove(u"/zveditor/TabWidth"_s);
    Settings::remove(u"/zveditor/ReplaceTabs"_s);
    ZVEditor::loadConfig();
}

void TestZVEditor::foldsComeBack()
{
    const QString path = write(u"folds.txt"_s, lines(30));
    QVERIFY(editor->open(path));
    zvwidgets::TextFolding *const folding = inner()->folding();
    QVERIFY(folding->createFold(4, 6));
    QVERIFY(folding->createFold(2, 8));
    folding->toggleFold(2);
    QVERIFY(folding->createFold(20, 25));
    const QString before = folds();
    QCOMPARE(before, u"4-6c 2-8o 20-25c"_s);
    editor.reset();
    QCOMPARE(storedFoldsOf(path), u"4 6 c;2 8 o;20 25 c;"_s);
    // A byte of the sum below 16 is written as one digit: here the second, 01.
    QCOMPARE(foldKey(u"abc"_s), u"/editors/folding/90150983cd24fb0d6963f7d28e17f72"_s);
    // Another run reads them from the file.
    Settings::forceWrite();
    editor = std::make_unique<ZVEditor>(nullptr);
    QVERIFY(editor->open(path));
    QCOMPARE(folds(), before);
    QVERIFY(!editor->isModified());
}

void TestZVEditor::untitledStoresNoFolds()
{
    editor->setText(QString::fromLatin1(lines(9)));
    QVERIFY(inner()->folding()->createFold(1, 2));
    editor.reset();
    QCOMPARE(storedFoldsOf(QString()), u"none"_s);
}

void TestZVEditor::oldFoldsAreCleared()
{
    const QString path = write(u"cleared.txt"_s, lines(9));
    Settings::write(foldKey(path), u"1 3 c;"_s);
    editor->open(path);
    QCOMPARE(folds(), u"1-3c"_s);
    inner()->folding()->clearAllFolds();
    editor.reset();
    QCOMPARE(storedFoldsOf(path), QString());
}

void TestZVEditor::storedFolds_data()
{
    const Rows<QString, QString, QString> row("stored", "restored", "complaint");
    row("open and closed", "1 2 o;4 6 c;", "1-2o 4-6c", "");
    row("bad record is dropped", "1 2 o;x;4 6 c;", "1-2o 4-6c", "x");
    row("too large a number", "1 99999999999 o;4 6 c;", "4-6c", "1 99999999999 o");
    row("nothing", "", "", "");
}

void TestZVEditor::storedFolds()
{
    QFETCH(QString, stored);
    QFETCH(QString, restored);
    QFETCH(QString, complaint);
    const QString path = write(u"stored.txt"_s, lines(9));
    Settings::write(foldKey(path), stored);
    if (!complaint.isEmpty())
        QTest::ignoreMessage(QtDebugMsg,
                             qPrintable(u"folders state is not correct\n"_s + complaint));
    QVERIFY(editor->open(path));
    QCOMPARE(folds(), restored);
}

void TestZVEditor::breakpoints()
{
    editor->setText(QString::fromLatin1(lines(9)));
    const auto hasIcon = [this](int line) {
        return inner()->document()->lineOf(line)->linePixmap() != nullptr;
    };
    editor->setCursorPosition(3, 0);
    editor->switchBreakpoint();
    editor->addBreakpoint(3);
    editor->addBreakpoint(5);
    QCOMPARE(editor->breakpoints(), QList<int>({3, 5}));
    QVERIFY(hasIcon(3) && hasIcon(5));
    editor->switchBreakpoint();
    QCOMPARE(editor->breakpoints(), QList<int>({5}));
    QVERIFY(!hasIcon(3));
    editor->clearBreakpoints();
    QVERIFY(editor->breakpoints().isEmpty() && !hasIcon(5));
}

void TestZVEditor::signalsOfAnEdit()
{
    const QString path = write(u"signals.txt"_s, "text\n");
    QSignalSpy loaded(editor.get(), &Editor::fileLoaded);
    QSignalSpy named(editor.get(), &Editor::filenameChanged);
    QSignalSpy modified(editor.get(), &Editor::modificationStatusChanged);
    QSignalSpy moved(editor.get(), &Editor::lineColChanged);
    QVERIFY(editor->open(path));
    QCOMPARE(loaded.count(), 1);
    QCOMPARE(named.count(), 1);
    QCOMPARE(named.at(0).at(0).toString(), path);
    QTest::keyClick(editor->focusProxy(), Qt::Key_X);
    QVERIFY(modified.last().at(0).toBool());
    QCOMPARE(moved.last(), QList<QVariant>({0, 1}));
    editor->save();
    QVERIFY(!modified.last().at(0).toBool());
    QVERIFY(editor->errorString().isEmpty());
}

void TestZVEditor::cursorGetsContext()
{
    editor->setText(QString::fromLatin1(lines(1000)));
    editor->setCursorPosition(500, 2);
    zvwidgets::TextView *const view = inner()->view();
    const int first = view->contentsY() / view->lineHeight();
    const int last = (view->contentsY() + view->height()) / view->lineHeight();
    QCOMPARE(editor->cursorLine(), 500);
    QCOMPARE(editor->cursorColumn(), 2);
    QVERIFY2(first <= 490 && last >= 500, qPrintable(u"%1-%2"_s.arg(first).arg(last)));
    inner()->folding()->createFold(600, 610);
    QVERIFY(!inner()->document()->lineOf(605)->isFoldVisible);
    editor->setCursorPosition(605, 0);
    QVERIFY(inner()->document()->lineOf(605)->isFoldVisible);
    for (const int far : {std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        editor->setCursorPosition(far, 0);
        QCOMPARE(editor->cursorLine(), far > 0 ? inner()->document()->lastLine() : 0);
    }
}

QTEST_MAIN(TestZVEditor)
#include "tst_zveditor.moc"
