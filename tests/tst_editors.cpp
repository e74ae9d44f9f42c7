#include "app/actions.h"
#include "app/editors/editor.h"
#include "app/editors/editors.h"
#include "app/editors/editorslist.h"
#include "app/editors/editorstab.h"
#include "app/editors/zveditor/zveditor.h"
#include "app/widgetstack.h"
#include "tests/apptest.h"
#include "zvwidgets/zvfiles/keptcopies.h"

#include <QAbstractButton>
#include <QClipboard>
#include <QDir>
#include <QFileDialog>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTest>
#include <QToolBar>
#include <QToolButton>
#include <QTranslator>

#include <memory>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace vesk;
using zvwidgets::KeptCopies;

class TestEditors : public AppTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void openReusesOnlyAnEmptyText();
    void sameFileOpensOnce_data();
    void sameFileOpensOnce();
    void whatCannotBeOpened_data();
    void whatCannotBeOpened();
    void closingQuestion_data();
    void closingQuestion();
    void closingAnotherEditorSavesThatOne();
    void closingWidgetAsks();
    void closingGoesLeft();
    void saveAsAddsTheEnding_data();
    void saveAsAddsTheEnding();
    void saveAsDropsTheScheme();
    void saveAsOntoAnotherTab_data();
    void saveAsOntoAnotherTab();
    void changeDuringTheSaveKeepsTheEditor();
    void failedSaveKeepsTheText_data();
    void failedSaveKeepsTheText();
    void saveAllAsksForNames();
    void saveAllTellsEachFailure();
    void latin1IsAsked_data();
    void latin1IsAsked();
    void interruptedSaveIsOffered_data();
    void interruptedSaveIsOffered();
    void leaving_data();
    void leaving();
    void sessionComesBack();
    void manyFilesAreOneChange();
    void namesAreTranslated();
    void neighboursWrapRound();
    void caption_data();
    void caption();
    void statusFields();
    void actionsFollowTheFocus();
    void everyActionActs_data();
    void everyActionActs();
    void popupListsAndRaises();
    void tabsMirrorTheEditors();
    void tabOfUnsavedTextIsBlue();
    void listMirrorsTheEditors();
    void orderChanges();
    void closeButtonInTheMenuBar();

private:
    void startShell();
    /// Opens new files of these names.
    void open(std::initializer_list<const char *> names);
    /// Types into the current editor.
    void type(const QString &text);
    /// Answers the file dialog with \a name and, if it is not empty, \a filter.
    void expectName(const QString &name, const QString &filter = QString());
    QStringList fileNames() const;
    QString statusText() const;
    QAction *actionAt(const QString &place) const;
    Editors *editors() const { return Editors::self(); }

    std::unique_ptr<Responder> responder;
};

void TestEditors::init()
{
    failOnBadConnects();
    makeProfile();
    responder = std::make_unique<Responder>();
    startShell();
}

void TestEditors::cleanup()
{
    dropShell();
    QVERIFY(responder->isDone());
    responder.reset();
    dir.reset();
}

void TestEditors::startShell()
{
    makeShell();
    shell->rebuildUI();
    QVERIFY(showActive(shell.get()));
    // The session's current file is raised a moment later.
    QCoreApplication::processEvents();
}

void TestEditors::open(std::initializer_list<const char *> names)
{
    for (const char *name : names)
        editors()->open(write(QString::fromLatin1(name)));
}

void TestEditors::type(const QString &text)
{
    editors()->setFocus();
    QTest::keyClicks(editors()->current()->focusProxy(), text);
}

void TestEditors::expectName(const QString &name, const QString &filter)
{
    responder->expect([=](QWidget *widget) {
        auto *const dialog = qobject_cast<QFileDialog *>(widget);
        if (!filter.isEmpty())
            dialog->selectNameFilter(filter);
        dialog->findChild<QLineEdit *>(u"fileNameEdit"_s)->setText(name);
        if (name.isEmpty())
            dialog->reject();
        else
            QMetaObject::invokeMethod(dialog, "accept");
    });
}

QStringList TestEditors::fileNames() const
{
    QStringList names;
    const QList<Editor *> all = editors()->editors();
    for (const Editor *editor : all)
        names.append(QFileInfo(editor->filename()).fileName());
    return names;
}

QString TestEditors::statusText() const
{
    return shell->statusBar()->findChildren<QLabel *>().first()->text();
}

void TestEditors::openReusesOnlyAnEmptyText()
{
    Editor *const first = editors()->current();
    open({"a.txt"});
    QCOMPARE(editors()->current(), first);
    open({"b.txt"});
    QVERIFY(editors()->current() != first);
    editors()->newEditor();
    type(u"x"_s);
    open({"c.txt"});
    QCOMPARE(fileNames().join(u','), u"a.txt,b.txt,,c.txt"_s);
}

void TestEditors::sameFileOpensOnce_data()
{
    const Rows<QString> row("spelling");
    row("with dots", "DIR/../NAME/./a.txt");
    row("relative", "a.txt");
    row("link", "DIR/link.txt");
}

void TestEditors::sameFileOpensOnce()
{
    QFETCH(QString, spelling);
    const QString file = write(u"a.txt"_s);
    QVERIFY(QFile::link(file, path(u"link.txt"_s)));
    const QString former = QDir::currentPath();
    QDir::setCurrent(dir->path());
    editors()->open(file);
    editors()->newEditor();
    spelling.replace(u"DIR"_s, dir->path());
    spelling.replace(u"NAME"_s, QFileInfo(dir->path()).fileName());
    editors()->open(spelling);
    QDir::setCurrent(former);
    QCOMPARE(editors()->editors().size(), 2);
    QCOMPARE(editors()->current(), editors()->editors().first());
}

void TestEditors::whatCannotBeOpened_data()
{
    const Rows<QString, bool> row("name", "hasBox");
    row("missing", "missing.txt", true);
    row("folder", "folder", false);
    row("pipe", "pipe", false);
}

void TestEditors::whatCannotBeOpened()
{
    QFETCH(QString, name);
    QFETCH(bool, hasBox);
    QVERIFY(QDir(dir->path()).mkdir(u"folder"_s));
    QCOMPARE(mkfifo(qPrintable(path(u"pipe"_s)), 0600), 0);
    if (hasBox)
        responder->expect(u"Ok"_s);
    editors()->open(path(name));
    if (hasBox)
        QCOMPARE(responder->texts, QStringList(u"Can not open file\n%1\n"_s.arg(path(name))));
    QVERIFY2(statusText().contains(path(name)), qPrintable(statusText()));
    // The editor must not be able to write over what it never showed.
    QCOMPARE(fileNames(), QStringList(QString()));
    QVERIFY(!editors()->current()->isModified());
    // The session that is opened behind it must not hide what was said.
    const QString file = write(u"session.txt"_s);
    Settings::write(u"/editors/openedFiles"_s, QStringList(file));
    Settings::write(u"/editors/openedCurrent"_s, file);
    editors()->loadSessionFiles();
    editors()->loadSessionCurrent();
    QCOMPARE(editors()->current()->filename(), file);
    QVERIFY2(statusText().contains(path(name)), qPrintable(statusText()));
}

void TestEditors::closingQuestion_data()
{
    // for the dialog; empty cancels it
    const Rows<QMessageBox::StandardButton, bool, QString, bool, QByteArray> row(
        "answer", "isNamed", "newName", "isClosed", "content");
    const QByteArray before = "text";
    const QByteArray after = "Xtext";
    row("yes", QMessageBox::Yes, true, QString(), true, after);
    row("no", QMessageBox::No, true, QString(), true, before);
    row("cancel", QMessageBox::Cancel, true, QString(), false, before);
    row("yes, untitled", QMessageBox::Yes, false, "new.txt", true, "X");
    row("yes, name refused", QMessageBox::Yes, false, QString(), false, before);
    row("no, untitled", QMessageBox::No, false, QString(), true, before);
}

void TestEditors::closingQuestion()
{
    QFETCH(QMessageBox::StandardButton, answer);
    QFETCH(bool, isNamed);
    QFETCH(QString, newName);
    QFETCH(bool, isClosed);
    QFETCH(QByteArray, content);
    const QString file = write(u"a.txt"_s);
    if (isNamed)
        editors()->open(file);
    type(u"X"_s);
    responder->expect(answer);
    if (!isNamed && answer == QMessageBox::Yes)
        expectName(newName.isEmpty() ? newName : path(newName));
    QCOMPARE(editors()->close(editors()->current()), isClosed);
    QCOMPARE(responder->texts.first(),
             u"The current document has been modified.\nWould you like to save it?"_s);
    QCOMPARE(readFile(newName.isEmpty() ? file : path(newName)), content);
    // There is always one: the text that stayed, or a fresh one.
    QCOMPARE(editors()->editors().size(), 1);
    QCOMPARE(editors()->current()->isModified(), !isClosed);
    QCOMPARE(shell->workspace()->visibleWidget(), editors()->current());
}

void TestEditors::closingAnotherEditorSavesThatOne()
{
    const QString a = write(u"a.txt"_s);
    const QString b = write(u"b.txt"_s);
    editors()->open(a);
    Editor *const first = editors()->current();
    type(u"A"_s);
    editors()->open(b);
    type(u"B"_s);
    // The user sees the text that the question is about.
    responder->expect([this, first](QWidget *box) {
        QCOMPARE(editors()->current(), first);
        qobject_cast<QMessageBox *>(box)->button(QMessageBox::Yes)->click();
    });
    QVERIFY(editors()->close(first));
    QCOMPARE(readFile(a), QByteArray("Atext"));
    QCOMPARE(readFile(b), QByteArray("text"));
    QCOMPARE(fileNames(), QStringList(u"b.txt"_s));
}

void TestEditors::closingWidgetAsks()
{
    open({"a.txt"});
    const QPointer<Editor> editor = editors()->current();
    type(u"X"_s);
    responder->expect(QMessageBox::Cancel);
    QVERIFY(!editor->close());
    QVERIFY(editors()->editors().contains(editor));
    responder->expect(QMessageBox::No);
    editor->close();
    QCOMPARE(fileNames(), QStringList(QString()));
    QTRY_VERIFY(editor.isNull());
}

void TestEditors::closingGoesLeft()
{
    open({"a", "b", "c"});
    editors()->setCurrentEditor(editors()->editors().at(1));
    editors()->close();
    QCOMPARE(editors()->current(), editors()->editors().first());
    editors()->close();
    QCOMPARE(fileNames(), QStringList(u"c"_s));
    QCOMPARE(shell->workspace()->visibleWidget(), editors()->current());
    QVERIFY(editors()->current()->hasFocus());
    QVERIFY(!editors()->close(nullptr));
}

void TestEditors::saveAsAddsTheEnding_data()
{
    const Rows<QString, QString, QString> row("filter", "name", "saved");
    row("any", "Any files (*)", "a", "a");
    row("ch", "Ch files (*.ch *.chf *.chs *.h *.hpp *.c *.cc *.cpp)", "a", "a");
    row("python", "Python files (*.py)", "a", "a.py");
    row("there already", "Python files (*.py)", "a.py", "a.py");
    row("project", "Files of project (*.vesk)", "a", "a.vesk");
    row("ui", "User-Interface files (*.ui)", "a", "a.ui");
}

void TestEditors::saveAsAddsTheEnding()
{
    QFETCH(QString, filter);
    QFETCH(QString, name);
    QFETCH(QString, saved);
    QSignalSpy spy(editors(), &Editors::fileSaved);
    write(saved, "old");
    type(u"X"_s);
    // The name with its ending exists: it is asked once, and a No keeps it.
    expectName(path(name), filter);
    responder->expect(QMessageBox::No);
    editors()->saveAs();
    QCOMPARE(readFile(path(saved)), QByteArray("old"));
    QVERIFY(editors()->current()->isModified());
    expectName(path(name), filter);
    responder->expect(QMessageBox::Yes);
    editors()->save();
    QCOMPARE(readFile(path(saved)), QByteArray("X"));
    QCOMPARE(fileNames(), QStringList(saved));
    QCOMPARE(spy.count(), 1);
    QCOMPARE(responder->texts.last(),
             u"The file\n%1\nalready exists! Would you like to replace it?"_s.arg(path(saved)));
}

void TestEditors::saveAsDropsTheScheme()
{
    type(u"X"_s);
    editors()->saveAs(u"file:"_s + path(u"a.txt"_s));
    QCOMPARE(readFile(path(u"a.txt"_s)), QByteArray("X"));
}

void TestEditors::saveAsOntoAnotherTab_data()
{
    const Rows<bool, QString> row("isModified", "spelling");
    row("unmodified tab closes", false, "a.txt");
    row("by a link", false, "link.txt");
    row("modified tab stops it", true, "a.txt");
}

void TestEditors::saveAsOntoAnotherTab()
{
    QFETCH(bool, isModified);
    QFETCH(QString, spelling);
    const QString file = write(u"a.txt"_s);
    QVERIFY(QFile::link(file, path(u"link.txt"_s)));
    open({"a.txt", "left", "other.txt"});
    if (isModified) {
        editors()->setCurrentEditor(editors()->editors().first());
        type(u"A"_s);
        editors()->prevEditor();
    }
    type(u"X"_s);
    expectName(path(spelling));
    responder->expect(QMessageBox::Yes);
    editors()->saveAs();
    QCOMPARE(readFile(file), QByteArray(isModified ? "text" : "Xtext"));
    QCOMPARE(fileNames().join(u' '),
             isModified ? u"a.txt left other.txt"_s : u"left "_s + spelling);
    QCOMPARE(editors()->current(), editors()->editors().last());
    QCOMPARE(editors()->current()->text(), u"Xtext"_s);
    QCOMPARE(editors()->current()->isModified(), isModified);
    QCOMPARE(statusText().contains(u"another tab"_s), isModified);
    auto *const tab = shell->findChild<EditorsTab *>();
    QCOMPARE(tab->count(), int(editors()->editors().size()));
    QCOMPARE(tab->currentTab(), tab->lastTab(false));
    // From now on this is the editor of that file.
    editors()->open(file);
    QCOMPARE(editors()->current()->text(), isModified ? u"Atext"_s : u"Xtext"_s);
}

void TestEditors::changeDuringTheSaveKeepsTheEditor()
{
    open({"a.txt"});
    type(u"X"_s);
    const auto change = connect(editors(), &Editors::fileSaved, this, [this] { type(u"Y"_s); });
    responder->expect(QMessageBox::Yes);
    QVERIFY(!editors()->close(editors()->current()));
    disconnect(change);
    QCOMPARE(readFile(path(u"a.txt"_s)), QByteArray("Xtext"));
    QCOMPARE(editors()->current()->text(), u"XYtext"_s);
    QVERIFY2(!statusText().contains(u"Cannot"_s), qPrintable(statusText()));
}

void TestEditors::failedSaveKeepsTheText_data()
{
    const Rows<int> row("way");
    row("save", 0);
    row("save all", 1);
    row("close", 2);
    row("leave", 3);
    row("save as", 4);
}

void TestEditors::failedSaveKeepsTheText()
{
    QFETCH(int, way);
    QVERIFY(QDir(dir->path()).mkdir(u"folder"_s));
    const QString file = write(u"folder/a.txt"_s);
    const QString other = write(u"other.txt"_s);
    editors()->open(way == 4 ? other : file);
    type(u"X"_s);
    QVERIFY(QDir(path(u"folder"_s)).removeRecursively());
    QSignalSpy saved(editors(), &Editors::fileSaved);
    if (way == 2 || way == 3)
        responder->expect(QMessageBox::Yes);
    switch (way) {
    case 0:
        editors()->save();
        break;
    case 1:
        editors()->saveAll();
        break;
    case 2:
        QVERIFY(!editors()->close(editors()->current()));
        break;
    case 3:
        QVERIFY(!editors()->closeAll());
        break;
    default:
        editors()->saveAs(file);
    }
    QCOMPARE(saved.count(), 0);
    QVERIFY(editors()->current()->isModified());
    QCOMPARE(editors()->current()->text(), u"Xtext"_s);
    QCOMPARE(editors()->current()->filename(), way == 4 ? other : file);
    QVERIFY2(statusText().contains(file), qPrintable(statusText()));
    QVERIFY(!editors()->current()->errorString().isEmpty());
    QVERIFY(statusText().contains(editors()->current()->errorString()));
}

void TestEditors::saveAllAsksForNames()
{
    const QString a = write(u"a.txt"_s);
    editors()->open(a);
    type(u"A"_s);
    editors()->newEditor();
    type(u"N"_s);
    editors()->newEditor();
    type(u"refused"_s);
    // Each is asked for the text that it is about.
    expectName(path(u"n.txt"_s));
    expectName(QString());
    editors()->saveAll();
    QCOMPARE(readFile(a), QByteArray("Atext"));
    QCOMPARE(readFile(path(u"n.txt"_s)), QByteArray("N"));
    QCOMPARE(fileNames().join(u','), u"a.txt,n.txt,"_s);
}

void TestEditors::saveAllTellsEachFailure()
{
    QVERIFY(QDir(dir->path()).mkdir(u"folder"_s));
    for (const char *name : {"folder/a.txt", "folder/b.txt", "c.txt"}) {
        open({name});
        type(u"X"_s);
    }
    QVERIFY(QDir(path(u"folder"_s)).removeRecursively());
    editors()->saveAll();
    QVERIFY2(statusText().contains(u"a.txt"_s) && statusText().contains(u"b.txt"_s),
             qPrintable(statusText()));
    QCOMPARE(readFile(path(u"c.txt"_s)), QByteArray("Xtext"));
    // A save that succeeds is the end of it.
    editors()->save();
    QCOMPARE(statusText(), path(u"c.txt"_s));
}

void TestEditors::latin1IsAsked_data()
{
    const Rows<QByteArray, QString, bool, QByteArray> row("bytes", "typed", "asks", "saved");
    row("yes recodes all", "caf\xE9\n", QString(QChar(0x20AC)), true,
        "\xE2\x82\xAC\x63\x61\x66\xC3\xA9\n");
    row("no loses nothing", "caf\xE9\n", QString(QChar(0x20AC)), true, "caf\xE9\n");
    row("a letter that it has", "caf\xE9\n", QString(QChar(0xE0)), false, "\xE0\x63\x61\x66\xE9\n");
    row("a bad byte from elsewhere", "\xC3\xA9\xFF\n", QString(QChar(0xDCFE)), false,
        "\xFE\xC3\xA9\xFF\n");
    row("UTF-8 with a bad byte", "\xC3\xA9\xFF\n", QString(QChar(0x20AC)), false,
        "\xE2\x82\xAC\xC3\xA9\xFF\n");
}

void TestEditors::latin1IsAsked()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, typed);
    QFETCH(bool, asks);
    QFETCH(QByteArray, saved);
    const QString file = write(u"file"_s, bytes);
    editors()->open(file);
    QGuiApplication::clipboard()->setText(typed);
    editors()->paste();
    const bool refuses = saved == bytes;
    if (asks)
        responder->expect(refuses ? QMessageBox::No : QMessageBox::Yes);
    editors()->save();
    QCOMPARE(readFile(file), saved);
    QCOMPARE(editors()->current()->isModified(), refuses);
    QCOMPARE(editors()->current()->text(), typed + editors()->current()->text().mid(1));
    QCOMPARE(statusText().contains(typed), refuses);
    // Asked once: from then on the file is what it became.
    if (refuses)
        return;
    editors()->paste();
    editors()->save();
    QVERIFY(!editors()->current()->isModified());
}

void TestEditors::interruptedSaveIsOffered_data()
{
    const Rows<QString, QByteArray> row("answer", "text");
    row("the new text", "&New text", "new");
    row("the former text", "&Former text", "former");
    row("as it is", "&Leave as it is", "torn");
}

void TestEditors::interruptedSaveIsOffered()
{
    QFETCH(QString, answer);
    QFETCH(QByteArray, text);
    qputenv("XDG_STATE_HOME", QFile::encodeName(path(u"state"_s)));
    const QString file = write(u"file"_s, "torn");
    const pid_t other = fork();
    if (other == 0) {
        KeptCopies copies(QFile::encodeName(file));
        const bool isReady = copies.make() && ::write(copies.former(), "former", 6) == 6 &&
                             ::write(copies.fresh(), "new", 3) == 3 && copies.settle();
        // Its copies stay, as those of a process that was killed.
        _exit(isReady ? 0 : 1);
    }
    int status = -1;
    waitpid(other, &status, 0);
    QCOMPARE(status, 0);
    editors()->open(file);
    responder->expect(answer);
    editors()->settleInterruptedSaves();
    QVERIFY(responder->texts.value(0).contains(file));
    QCOMPARE(readFile(file), text);
    QCOMPARE(editors()->current()->text(), QString::fromLatin1(text));
    QCOMPARE(QDir(dir->path()).entryList({u"file*"_s}).size(), text == "torn" ? 3 : 1);
    // It is asked once.
    editors()->settleInterruptedSaves();
    qunsetenv("XDG_STATE_HOME");
}

void TestEditors::leaving_data()
{
    // Three changed texts: a, b and one without a name, which gets the name "n".
    // y, n, c; N names the last text, R refuses
    const Rows<QString, bool, QString> row("answers", "leaves", "saved");
    row("all saved", "yyyN", true, "abn");
    row("none saved", "nnn", true, "");
    row("cancel at the second keeps the first save", "yc", false, "a");
    row("refused name keeps all", "nyyR", false, "b");
}

void TestEditors::leaving()
{
    QFETCH(QString, answers);
    QFETCH(bool, leaves);
    QFETCH(QString, saved);
    for (const char *name : {"a", "b"}) {
        editors()->open(write(QString::fromLatin1(name), "old"));
        type(u"X"_s);
    }
    editors()->newEditor();
    type(u"X"_s);
    const QList<Editor *> list = editors()->editors();
    const QList<QPointer<Editor>> all(list.begin(), list.end());
    for (const QChar answer : answers) {
        if (answer == u'N' || answer == u'R')
            expectName(answer == u'N' ? path(u"n"_s) : QString());
        else
            responder->expect(answer == u'y'   ? QMessageBox::Yes
                              : answer == u'n' ? QMessageBox::No
                                               : QMessageBox::Cancel);
    }
    QCOMPARE(editors()->closeAll(), leaves);
    QString written;
    for (const char *name : {"a", "b", "n"}) {
        if (readFile(path(QString::fromLatin1(name))).startsWith('X'))
            written += QLatin1Char(*name);
    }
    QCOMPARE(written, saved);
    const auto alive = std::count_if(all.begin(), all.end(), [](const auto &e) { return !!e; });
    QVERIFY(leaves ? alive < 3 : alive == 3);
    QCOMPARE(Settings::readList(u"/editors/openedFiles"_s).isEmpty(), !leaves);
    QCOMPARE(responder->texts.value(0),
             u"The file\n%1\nhas been modified.\nWould you like to save it?"_s.arg(path(u"a"_s)));
}

void TestEditors::sessionComesBack()
{
    editors()->newEditor();
    for (const char *name : {"a, b", "gone", "current", "last"}) {
        editors()->open(write(QString::fromLatin1(name), "one\ntwo\nthree"));
        editors()->current()->setCursorPosition(2, 1);
    }
    editors()->setCurrentEditor(editors()->editors().at(3));
    // An untitled text between files keeps its empty place in the lists.
    const QString files = fileNames().join(u'|');
    QCOMPARE(files, u"|a, b|gone|current|last"_s);
    QVERIFY(editors()->closeAll());
    QVERIFY(QFile::remove(path(u"gone"_s)));
    dropShell();

    QStringList stored;
    for (const QString &file : Settings::readList(u"/editors/openedFiles"_s))
        stored.append(QFileInfo(file).fileName());
    QCOMPARE(stored.join(u'|'), files);
    QCOMPARE(Settings::readList(u"/editors/openedFilePoses"_s).join(u'|'),
             u"0:0|2:1|2:1|2:1|2:1"_s);
    startShell();
    QCOMPARE(fileNames().join(u'|'), u"a, b|current|last"_s);
    QTRY_COMPARE(QFileInfo(editors()->current()->filename()).fileName(), u"current"_s);
    QCOMPARE(editors()->current()->cursorLine(), 0);
    QVERIFY(shell->workspace()->visibleWidget() == editors()->current());
}

void TestEditors::manyFilesAreOneChange()
{
    QSignalSpy spy(editors(), &Editors::listChanged);
    editors()->openAll({write(u"a"_s), write(u"b"_s), write(u"c"_s)});
    QCOMPARE(spy.count(), 1);
    auto *const tab = shell->findChild<EditorsTab *>();
    QCOMPARE(tab->count(), 3);
    QCOMPARE(tab->tabTitle(tab->currentTab()), u"c"_s);
    QCOMPARE(editors()->current()->windowTitle(), u"c"_s);
    editors()->open(write(u"d"_s));
    QCOMPARE(spy.count(), 2);
}

void TestEditors::namesAreTranslated()
{
    struct Marking : QTranslator
    {
        QString translate(const char *, const char *text, const char *, int) const override
        {
            return u'<' + QString::fromLatin1(text) + u'>';
        }
        bool isEmpty() const override { return false; }
    } marking;
    QVERIFY(QCoreApplication::installTranslator(&marking));
    editors()->newEditor();
    QTest::keyClick(editors()->current()->focusProxy(), Qt::Key_Insert);
    QTest::keyClick(editors()->current()->focusProxy(), Qt::Key_Insert);
    auto *const tab = shell->findChild<EditorsTab *>();
    QCOMPARE(tab->tabTitle(tab->currentTab()), u"<Untitled>"_s);
    QCOMPARE(shell->statusBar()->findChildren<QLabel *>().at(1)->text(), u" <INS> "_s);
    EditorsList list;
    QCOMPARE(list.listBox()->currentItem()->text(), u"<Untitled>"_s);
}

void TestEditors::neighboursWrapRound()
{
    open({"a", "b", "c"});
    QSignalSpy spy(editors(), &Editors::currentChanged);
    editors()->nextEditor();
    QCOMPARE(editors()->current(), editors()->editors().at(0));
    editors()->prevEditor();
    QCOMPARE(editors()->current(), editors()->editors().at(2));
    editors()->prevEditor();
    QCOMPARE(editors()->current(), editors()->editors().at(1));
    QCOMPARE(spy.count(), 3);
    // A raise from anywhere keeps the state in step.
    shell->workspace()->raiseWidget(editors()->editors().at(0));
    QCOMPARE(editors()->current(), editors()->editors().at(0));
}

void TestEditors::caption_data()
{
    const Rows<QString, QString> row("path", "caption");
    // "~" stands for the home folder in both columns.
    row("untitled", "", "");
    row("home", "~/a.txt", "a.txt : ~/ - Vesk");
    row("beside home", "~2/a.txt", "a.txt : %12/ - Vesk");
    row("root", "/a.txt", "a.txt : / - Vesk");
    row("placeholder", "/x/a[*].txt", "a[*].txt : /x/ - Vesk");
}

void TestEditors::caption()
{
    QFETCH(QString, path);
    QFETCH(QString, caption);
    path.replace(u'~', QDir::homePath());
    caption.replace(u"%1"_s, QDir::homePath());
    if (!path.isEmpty())
        editors()->current()->setFileName(path);
    else
        editors()->setCaption();
    QCOMPARE(shell->windowTitle().replace(u"[*][*]"_s, u"[*]"_s), caption);
    QCOMPARE(statusText(), path);
}

void TestEditors::statusFields()
{
    const QList<QLabel *> cells = shell->statusBar()->findChildren<QLabel *>();
    type(u"abc"_s);
    QCOMPARE(cells.at(2)->text(), u" 0 "_s);
    QCOMPARE(cells.at(3)->text(), u" 3 "_s);
    QTest::keyClick(editors()->current()->focusProxy(), Qt::Key_Insert);
    QCOMPARE(cells.at(1)->text(), u" OWR "_s);
    QTest::keyClick(editors()->current()->focusProxy(), Qt::Key_Insert);
    QCOMPARE(cells.at(1)->text(), u" INS "_s);
    editors()->newEditor();
    QCOMPARE(cells.at(3)->text(), u" 0 "_s);
}

void TestEditors::actionsFollowTheFocus()
{
    const auto isOn = [](const char *name) {
        return Actions::action(QString::fromLatin1(name))->isEnabled();
    };
    QObject other;
    emit shell->focusChanged(&other);
    for (const char *name : {"Editors/undo", "Editors/toolbar/paste", "Editors/next"})
        QVERIFY(!isOn(name));
    QVERIFY(isOn("Editors/save"));
    QVERIFY(isOn("Editors/focus"));
    // The editor that gets the focus takes the actions back.
    QLineEdit elsewhere(shell.get());
    elsewhere.show();
    elsewhere.setFocus();
    editors()->setFocus();
    QVERIFY(isOn("Editors/undo"));
    QVERIFY(isOn("Editors/toolbar/paste"));
}

/// Each row is a place in the menus or on the tool bars, and what is different after
/// its command: the files, "/", the text of the current editor with its selection in
/// brackets, "/", what b.txt holds.
void TestEditors::everyActionActs_data()
{
    const Rows<QString, bool, QString> row("place", "hasIcon", "after");
    const auto onBarToo = [&row](const char *menu, const char *name, const char *after) {
        row(name, u"%1/%2"_s.arg(QLatin1String(menu), QLatin1String(name)), true, after);
        row(qPrintable(QLatin1String(name) + ", bar"_L1), u"bar/"_s + QLatin1String(name), true,
            after);
    };
    onBarToo("File", "New", "a.txt b.txt -//text");
    onBarToo("File", "Open", "a.txt b.txt c.txt/text/text");
    row("close", "File/Close", false, "a.txt/Atext/word wolf wo");
    onBarToo("File", "Save", "a.txt b.txt/word wolf wo/word wolf wo");
    row("save as", "File/Save as...", false, "a.txt c.txt/word wolf wo/text");
    row("save all", "File/Save all", false, "a.txt b.txt/word wolf wo/word wolf wo");
    onBarToo("Edit", "Undo", "a.txt b.txt/word wolf w/text");
    onBarToo("Edit", "Redo", "a.txt b.txt/word wolf wo/text");
    onBarToo("Edit", "Cut", "a.txt b.txt/word wolf w/text");
    onBarToo("Edit", "Copy", "a.txt b.txt/word wolf w[o]/text");
    onBarToo("Edit", "Paste", "a.txt b.txt/word wolf woclip/text");
    row("select all", "Edit/Select All", false, "a.txt b.txt/[word wolf wo]/text");
    row("indent", "Edit/Indent", true, "a.txt b.txt/\tword wolf wo/text");
    row("unindent", "Edit/Unindent", true, "a.txt b.txt/word wolf wo/text");
    row("wrap", "Edit/Word wrap", false, "a.txt b.txt/word wolf wo/text/unwrapped");
    row("next completion", "Edit/Next completion", false, "a.txt b.txt/word wolf wolf/text");
    row("previous completion", "Edit/Prev completion", false, "a.txt b.txt/word wolf word/text");
    row("previous editor", "View/Prev Editor", false, "a.txt b.txt/Atext/text");
    row("next editor", "View/Next Editor", false, "a.txt b.txt/Atext/text");
}

void TestEditors::everyActionActs()
{
    QFETCH(QString, place);
    QFETCH(bool, hasIcon);
    QFETCH(QString, after);
    const auto is = [&place](const char *command) {
        return place.section(u'/', 1) == QLatin1String(command);
    };
    open({"a.txt"});
    type(u"A"_s);
    open({"b.txt"});
    editors()->current()->setText(QString());
    type(is("Unindent") ? u"  word wolf wo"_s : u"word wolf wo"_s);
    QWidget *const view = editors()->current()->focusProxy();
    QClipboard *const clipboard = QGuiApplication::clipboard();
    clipboard->setText(u"clip"_s);
    if (is("Cut") || is("Copy"))
        QTest::keyClick(view, Qt::Key_Left, Qt::ShiftModifier);
    if (is("Redo"))
        editors()->undo();
    if (is("Open"))
        expectName(write(u"c.txt"_s));
    if (is("Save as..."))
        expectName(path(u"c.txt"_s));
    if (is("Close"))
        responder->expect(QMessageBox::Yes);

    QAction *const action = actionAt(place);
    QVERIFY(action);
    QCOMPARE(!action->icon().isNull(), hasIcon);
    action->trigger();
    Editor *const current = editors()->current();
    QString text = current->text();
    const QString selected = current->selection();
    if (!selected.isEmpty())
        text.replace(text.lastIndexOf(selected), selected.size(), u'[' + selected + u']');
    QStringList names = fileNames();
    names.replaceInStrings(QRegularExpression(u"^$"_s), u"-"_s);
    const QString wrap = current->getWrap() ? QString() : u"/unwrapped"_s;
    QCOMPARE(names.join(u' ') + u'/' + text + u'/' + QString::fromUtf8(readFile(path(u"b.txt"_s))) +
                 wrap,
             after);
    const bool isCopied = is("Cut") || is("Copy");
    QCOMPARE(clipboard->text(), isCopied ? u"o"_s : u"clip"_s);
    QCOMPARE(readFile(path(u"a.txt"_s)), QByteArray(is("Save all") ? "Atext" : "text"));
}

/// "menu/entry" or "bar/button", by the texts that the user reads.
QAction *TestEditors::actionAt(const QString &place) const
{
    QList<QAction *> found;
    const auto plain = [](QString text) { return text.remove(u'&'); };
    for (QAction *const title : shell->menuBar()->actions()) {
        if (plain(title->text()) == place.section(u'/', 0, 0))
            found = title->menu()->actions();
    }
    if (place.startsWith(u"bar/"_s)) {
        for (const QToolBar *const bar : shell->findChildren<QToolBar *>())
            found += bar->actions();
    }
    for (QAction *const action : std::as_const(found)) {
        const auto *const ours = qobject_cast<Action *>(action);
        if (ours && (plain(ours->menuText()) == place.section(u'/', 1)))
            return action;
    }
    return nullptr;
}

void TestEditors::popupListsAndRaises()
{
    open({"a&b"});
    editors()->newEditor();
    QToolButton *const button = Actions::action(u"Editors/toEditor"_s)->toolbuttons.first();
    QStringList listed;
    QTimer::singleShot(0, this, [&] {
        QMenu *const menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        QVERIFY(menu);
        for (const QAction *action : menu->actions())
            listed.append(action->text());
        QTest::keyClick(menu, Qt::Key_Down);
        QTest::keyClick(menu, Qt::Key_Return);
    });
    QTest::mouseClick(button, Qt::LeftButton);
    QCOMPARE(listed, QStringList({path(u"a&&b"_s), u"Untitled"_s}));
    QCOMPARE(editors()->current(), editors()->editors().first());
}

void TestEditors::tabsMirrorTheEditors()
{
    auto *const tab = shell->findChild<EditorsTab *>();
    QVERIFY(tab);
    open({"a.txt", "b&c"});
    editors()->newEditor();
    QStringList labels;
    for (int id = tab->firstTab(false); id >= 0; id = tab->nextTab(id, false))
        labels.append(tab->tabTitle(id));
    QCOMPARE(labels.join(u'|'), u"a.txt|b&&c|Untitled"_s);
    QCOMPARE(tab->currentTab(), tab->lastTab(false));
    const QPoint first = tab->tabRect(tab->firstTab(false)).center();
    QTest::mouseClick(tab, Qt::LeftButton, {}, first);
    QCOMPARE(editors()->current(), editors()->editors().first());
    editors()->nextEditor();
    QCOMPARE(tab->tabTitle(tab->currentTab()), u"b&&c"_s);
    editors()->close();
    QCOMPARE(tab->tabTitle(tab->currentTab()), u"a.txt"_s);
    QCOMPARE(tab->count(), 2);
}

void TestEditors::tabOfUnsavedTextIsBlue()
{
    auto *const tab = shell->findChild<EditorsTab *>();
    const auto isBlue = [tab] {
        const QImage image = tab->grab(tab->tabRect(tab->currentTab())).toImage();
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const QColor color = image.pixelColor(x, y);
                if (color.blue() > color.red() + 80)
                    return true;
            }
        }
        return false;
    };
    open({"a.txt"});
    QVERIFY(!isBlue());
    type(u"X"_s);
    QVERIFY(isBlue());
    // The mark outlives the building of the bar.
    editors()->newEditor();
    editors()->prevEditor();
    QVERIFY(isBlue());
    editors()->save();
    QVERIFY(!isBlue());
}

void TestEditors::listMirrorsTheEditors()
{
    EditorsList list;
    open({"a.txt", "b.txt"});
    QListWidget *const box = list.listBox();
    QCOMPARE(box->count(), 2);
    QCOMPARE(box->currentItem()->text(), u"b.txt"_s);
    QVERIFY(!box->currentItem()->icon().isNull());
    box->setCurrentRow(0);
    QCOMPARE(editors()->current(), editors()->editors().first());
    editors()->close();
    QCOMPARE(box->count(), 1);
    QCOMPARE(box->currentItem()->text(), u"b.txt"_s);
}

void TestEditors::orderChanges()
{
    open({"a", "b", "c"});
    const QList<Editor *> all = editors()->editors();
    QSignalSpy spy(editors(), &Editors::listChanged);
    // An answer to the change must not change the order once more.
    connect(editors(), &Editors::listChanged, this,
            [this, all] { editors()->changeEditorsOrder(all.at(0), all.at(2)); });
    editors()->changeEditorsOrder(all.at(0), all.at(2));
    QCOMPARE(fileNames().join(QString()), u"cba"_s);
    QCOMPARE(spy.count(), 1);
    auto *const tab = shell->findChild<EditorsTab *>();
    QCOMPARE(tab->tabTitle(tab->firstTab(false)), u"c"_s);
    QCOMPARE(tab->currentTab(), tab->firstTab(false));
}

void TestEditors::closeButtonInTheMenuBar()
{
    shell->rebuildUI();
    const QList<QToolButton *> buttons = shell->menuBar()->findChildren<QToolButton *>(u"close"_s);
    QCOMPARE(buttons.size(), 1);
    QVERIFY(buttons.first()->isVisible());
    open({"a.txt"});
    QTest::mouseClick(buttons.first(), Qt::LeftButton);
    QCOMPARE(fileNames(), QStringList(QString()));
}

QTEST_MAIN(TestEditors)
#include "tst_editors.moc"
