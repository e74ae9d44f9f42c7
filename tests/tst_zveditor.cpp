#include "activewindow.h"
#include "app/editors/zveditor/zveditor.h"
#include "app/settings.h"
#include "app/shell.h"
#include "app/widgetstack.h"
#include "responder.h"
#include "zvwidgets/zveditor/textdoc.h"
#include "zvwidgets/zveditor/texteditor.h"
#include "zvwidgets/zveditor/textfolding.h"
#include "zvwidgets/zveditor/textmanager.h"
#include "zvwidgets/zveditor/textview.h"

#include <QCryptographicHash>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace vesk;
using zvwidgets::FoldersState;
using zvwidgets::TextEditor;
using zvwidgets::TextEditorManager;

class TestZVEditor : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();

    void optionsReachTheManager_data();
    void optionsReachTheManager();
    void tabOptions();
    void foldsComeBack();
    void foldKeyHasShortBytes();
    void untitledStoresNoFolds();
    void oldFoldsAreCleared();
    void storedFolds_data();
    void storedFolds();
    void foldsOfAHugeFile();
    void replaceFoundKeepsWhatFollows();
    void selectAllOfOneLine();
    void linesOutside();
    void traceMarksOneLine();
    void breakpoints();
    void signalsOfAnEdit();
    void cursorGetsContext();
    void overwriteModeIsShared();
    void reloadAsks();

private:
    QString write(const QString &name, const QByteArray &bytes) const;
    TextEditor *inner() const { return editor->findChild<TextEditor *>(); }
    QString folds() const;
    QString storedFoldsOf(const QString &path) const;

    std::unique_ptr<QTemporaryDir> dir;
    std::unique_ptr<Shell> shell;
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
    return QStringLiteral("/editors/folding/") + sum;
}

} // namespace

void TestZVEditor::initTestCase()
{
    dir = std::make_unique<QTemporaryDir>();
    QVERIFY(dir->isValid());
    Settings::setKeyPrefix(QStringLiteral("/vesk"));
    Settings::setFileName(dir->filePath(QStringLiteral("settings.ini")));
    Settings::forceWrite();
    shell = std::make_unique<Shell>(nullptr, QStringLiteral("vesk::Shell"));
}

void TestZVEditor::cleanupTestCase()
{
    shell.reset();
    Settings::forceWrite();
}

void TestZVEditor::init()
{
    editor = std::make_unique<ZVEditor>(nullptr);
    editor->resize(600, 400);
    editor->show();
    QVERIFY(waitForActive(editor.get()));
    editor->setFocus();
}

void TestZVEditor::cleanup()
{
    editor.reset();
}

QString TestZVEditor::write(const QString &name, const QByteArray &bytes) const
{
    QFile file(dir->filePath(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(file.fileName()));
    return file.fileName();
}

/// The folds as first-last and o for open or c for closed.
QString TestZVEditor::folds() const
{
    QStringList all;
    for (const zvwidgets::FolderInfo &fold : inner()->folding()->foldersState()) {
        all.append(QStringLiteral("%1-%2%3")
                       .arg(fold.firstLine)
                       .arg(fold.lastLine)
                       .arg(QLatin1Char(fold.isOpened ? 'o' : 'c')));
    }
    return all.join(u' ');
}

QString TestZVEditor::storedFoldsOf(const QString &path) const
{
    return Settings::read(foldKey(path), QStringLiteral("none"));
}

void TestZVEditor::optionsReachTheManager_data()
{
    using Reader = bool (*)(const TextEditorManager &);
    QTest::addColumn<QString>("key");
    QTest::addColumn<bool>("standard");
    QTest::addColumn<Reader>("reader");
    const auto row = [](const char *key, bool standard, Reader reader) {
        QTest::newRow(key) << QStringLiteral("/zveditor/") + QLatin1String(key) << standard
                           << reader;
    };
    row("AutoIndent", true, [](const TextEditorManager &m) { return m.fAutoIndent; });
    row("BackspaceIndent", true, [](const TextEditorManager &m) { return m.fBackspaceIndent; });
    row("SmartHome", true, [](const TextEditorManager &m) { return m.fSmartHome; });
    row("WrapCursor", true, [](const TextEditorManager &m) { return m.fCursorWrap; });
    row("ReplaceTabs", true, [](const TextEditorManager &m) { return m.fSaveTab; });
    row("RemoveSpacer", false, [](const TextEditorManager &m) { return m.fRemoveSpaces; });
    row("WordWrap", true, [](const TextEditorManager &m) { return m.fLineWrap; });
    row("IndicatorMargin", true, [](const TextEditorManager &m) { return m.fIndicatorMargin; });
    row("LineNumberMargin", false, [](const TextEditorManager &m) { return m.fLineNumberMargin; });
    row("SelectionMargin", false, [](const TextEditorManager &m) { return m.fSelectionMargin; });
    row("VerticalSelection", false,
        [](const TextEditorManager &m) { return m.fVerticalSelection; });
}

void TestZVEditor::optionsReachTheManager()
{
    using Reader = bool (*)(const TextEditorManager &);
    QFETCH(QString, key);
    QFETCH(bool, standard);
    QFETCH(Reader, reader);
    TextEditorManager &manager = *ZVEditor::manager();
    QCOMPARE(reader(manager), standard);
    Settings::write(key, !standard);
    Settings::write(QStringLiteral("/zveditor/IndentationGuides"), true);
    ZVEditor::loadConfig();
    QCOMPARE(reader(manager), !standard);
    QVERIFY(!manager.fIndentationGuides);
    QVERIFY(manager.fFoldingMargin);
    Settings::remove(key);
    ZVEditor::loadConfig();
    QCOMPARE(reader(manager), standard);
}

void TestZVEditor::tabOptions()
{
    Settings::write(QStringLiteral("/zveditor/TabWidth"), 8);
    ZVEditor::loadConfig();
    QCOMPARE(inner()->document()->spacesInTab(), 8);
    QCOMPARE(editor->tabWidthInSpaces(), 4);
    QVERIFY(!editor->replaceTabs());
    QTest::keyClick(editor->focusProxy(), Qt::Key_Tab);
    QCOMPARE(editor->text(), QStringLiteral("\t"));
    Settings::write(QStringLiteral("/zveditor/ReplaceTabs"), false);
    ZVEditor::loadConfig();
    QVERIFY(editor->replaceTabs());
    QTest::keyClick(editor->focusProxy(), Qt::Key_Tab);
    QCOMPARE(editor->text(), QStringLiteral("\t        "));
    Settings::remove(QStringLiteral("/zveditor/TabWidth"));
    Settings::remove(QStringLiteral("/zveditor/ReplaceTabs"));
    ZVEditor::loadConfig();
}

void TestZVEditor::foldsComeBack()
{
    const QString path = write(QStringLiteral("folds.txt"), lines(30));
    QVERIFY(editor->open(path));
    zvwidgets::TextFolding *const folding = inner()->folding();
    QVERIFY(folding->createFold(4, 6));
    QVERIFY(folding->createFold(2, 8));
    folding->toggleFold(2);
    QVERIFY(folding->createFold(20, 25));
    const QString before = folds();
    QCOMPARE(before, QStringLiteral("4-6c 2-8o 20-25c"));
    editor.reset();
    QCOMPARE(storedFoldsOf(path), QStringLiteral("4 6 c;2 8 o;20 25 c;"));
    // Another run reads them from the file.
    Settings::forceWrite();
    editor = std::make_unique<ZVEditor>(nullptr);
    QVERIFY(editor->open(path));
    QCOMPARE(folds(), before);
    QVERIFY(!editor->isModified());
}

void TestZVEditor::foldKeyHasShortBytes()
{
    // The sum of this path is 900150983cd24fb0d6963f7d28e17f72 for "abc": its
    // second byte is 01, written as one digit.
    QCOMPARE(foldKey(QStringLiteral("abc")),
             QStringLiteral("/editors/folding/90150983cd24fb0d6963f7d28e17f72"));
    const QString path = write(QStringLiteral("key.txt"), lines(5));
    editor->open(path);
    QVERIFY(inner()->folding()->createFold(1, 2));
    editor.reset();
    QCOMPARE(storedFoldsOf(path), QStringLiteral("1 2 c;"));
}

void TestZVEditor::untitledStoresNoFolds()
{
    editor->setText(QString::fromLatin1(lines(9)));
    QVERIFY(inner()->folding()->createFold(1, 2));
    editor.reset();
    QCOMPARE(storedFoldsOf(QString()), QStringLiteral("none"));
}

void TestZVEditor::oldFoldsAreCleared()
{
    const QString path = write(QStringLiteral("cleared.txt"), lines(9));
    Settings::write(foldKey(path), QStringLiteral("1 3 c;"));
    editor->open(path);
    QCOMPARE(folds(), QStringLiteral("1-3c"));
    inner()->folding()->clearAllFolds();
    editor.reset();
    QCOMPARE(storedFoldsOf(path), QString());
}

void TestZVEditor::storedFolds_data()
{
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QString>("restored");
    QTest::addColumn<QString>("complaint");
    QTest::newRow("open and closed") << "1 2 o;4 6 c;"
                                     << "1-2o 4-6c"
                                     << "";
    QTest::newRow("bad record is dropped") << "1 2 o;x;4 6 c;"
                                           << "1-2o 4-6c"
                                           << "x";
    QTest::newRow("too large a number") << "1 99999999999 o;4 6 c;"
                                        << "4-6c"
                                        << "1 99999999999 o";
    QTest::newRow("behind the end") << "100 200 c;4 6 c;"
                                    << "4-6c"
                                    << "";
    QTest::newRow("backwards") << "6 4 c;1 2 o;"
                               << "1-2o"
                               << "";
    QTest::newRow("nothing") << ""
                             << ""
                             << "";
}

void TestZVEditor::storedFolds()
{
    QFETCH(QString, stored);
    QFETCH(QString, restored);
    QFETCH(QString, complaint);
    const QString path = write(QStringLiteral("stored.txt"), lines(9));
    Settings::write(foldKey(path), stored);
    if (!complaint.isEmpty())
        QTest::ignoreMessage(
            QtDebugMsg, qPrintable(QStringLiteral("folders state is not correct\n") + complaint));
    QVERIFY(editor->open(path));
    QCOMPARE(folds(), restored);
}

void TestZVEditor::foldsOfAHugeFile()
{
    constexpr int count = 200000;
    const QString path = write(QStringLiteral("huge.txt"), QByteArray("x\n").repeated(count));
    QString stored;
    for (int i = 0; i < 20000; ++i)
        stored += QStringLiteral("%1 %2 c;").arg(10 * i).arg(10 * i + 5);
    Settings::write(foldKey(path), stored);
    QElapsedTimer timer;
    timer.start();
    QVERIFY(editor->open(path));
    // One pass over the lines, not one for each fold: that would take minutes.
    QVERIFY2(timer.elapsed() < 5000, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(inner()->folding()->foldersState().size(), 20000);
}

void TestZVEditor::replaceFoundKeepsWhatFollows()
{
    editor->setText(QStringLiteral("a tail"));
    ZVEditor::manager()->setOverwriteMode(true);
    QVERIFY(editor->find(QStringLiteral("a"), true, true, false, false));
    editor->replaceFound(QStringLiteral("longer"));
    const bool isOver = ZVEditor::manager()->overwriteMode();
    ZVEditor::manager()->setOverwriteMode(false);
    QCOMPARE(editor->text(), QStringLiteral("longer tail"));
    QVERIFY(isOver);
}

void TestZVEditor::selectAllOfOneLine()
{
    editor->setText(QStringLiteral("one line"));
    editor->selectAll();
    QCOMPARE(editor->selection(), QStringLiteral("one line"));
    editor->setText(QStringLiteral("one\ntwo\nthree"));
    editor->selectAll();
    QCOMPARE(editor->selection(), QStringLiteral("one\ntwo\nthree"));
}

void TestZVEditor::linesOutside()
{
    editor->setText(QStringLiteral("one\ntwo"));
    QCOMPARE(editor->line(1), QStringLiteral("two"));
    QCOMPARE(editor->line(2), QString());
    QCOMPARE(editor->line(-1), QString());
    editor->showTrace(77);
    editor->clearTrace();
    editor->setCursorPosition(77, 0);
    QCOMPARE(editor->cursorLine(), 1);
    editor->setCursorPosition(-5, 0);
    QCOMPARE(editor->cursorLine(), 0);
}

void TestZVEditor::traceMarksOneLine()
{
    editor->setText(QString::fromLatin1(lines(20)));
    const auto marked = [this] {
        QString all;
        for (int i = 0; i < 20; ++i) {
            if (inner()->document()->lineOf(i)->lineColor() == QColor(QStringLiteral("#bfffbf")))
                all += QString::number(i) + u' ';
        }
        return all;
    };
    editor->clearTrace();
    editor->showTrace(5);
    editor->showTrace(9);
    QCOMPARE(marked(), QStringLiteral("9 "));
    editor->clearTrace();
    QCOMPARE(marked(), QString());
    editor->showTrace(9);
    QCOMPARE(marked(), QStringLiteral("9 "));
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
    const QString path = write(QStringLiteral("signals.txt"), "text\n");
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
    QVERIFY2(first <= 490 && last >= 500, qPrintable(QStringLiteral("%1-%2").arg(first).arg(last)));
}

void TestZVEditor::overwriteModeIsShared()
{
    ZVEditor other(nullptr);
    QSignalSpy spy(&other, &Editor::overwriteModeChanged);
    QTest::keyClick(editor->focusProxy(), Qt::Key_Insert);
    QCOMPARE(spy.count(), 1);
    QVERIFY(spy.at(0).at(0).toBool());
    QTest::keyClick(editor->focusProxy(), Qt::Key_Insert);
    QVERIFY(!spy.at(1).at(0).toBool());
}

void TestZVEditor::reloadAsks()
{
    const QString path = write(QStringLiteral("reload.txt"), "old\nold\nold");
    QVERIFY(editor->open(path));
    editor->setCursorPosition(2, 1);
    Responder responder;
    QMetaObject::invokeMethod(editor.get(), "updateFileInfo");
    QVERIFY(responder.texts.isEmpty());
    write(QStringLiteral("reload.txt"), "new\nnew\nnew");
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadWrite));
    QVERIFY(file.setFileTime(QDateTime::currentDateTime().addSecs(5),
                             QFileDevice::FileModificationTime));
    file.close();
    for (const char *answer : {"No", "Reload"}) {
        editor->setFocus();
        QTRY_VERIFY(editor->hasFocus());
        responder.expect(QString::fromLatin1(answer));
        QMetaObject::invokeMethod(editor.get(), "updateFileInfo");
        QVERIFY(responder.isDone());
        editor->activateWindow();
    }
    QVERIFY(responder.texts.last().contains(QStringLiteral("reloadit?")));
    QCOMPARE(editor->text(), QStringLiteral("new\nnew\nnew"));
    QCOMPARE(editor->cursorLine(), 2);
    QCOMPARE(editor->cursorColumn(), 1);
}

QTEST_MAIN(TestZVEditor)
#include "tst_zveditor.moc"
