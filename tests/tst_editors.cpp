#include "activewindow.h"
#include "app/actions.h"
#include "app/editors/editor.h"
#include "app/editors/editors.h"
#include "app/editors/editorslist.h"
#include "app/editors/editorstab.h"
#include "app/settings.h"
#include "app/shell.h"
#include "app/widgetstack.h"
#include "responder.h"

#include <QAbstractButton>
#include <QDir>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>

#include <memory>

#include <sys/stat.h>

using namespace vesk;

class TestEditors : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void startsWithOneUntitled();
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
    void failedSaveKeepsTheText_data();
    void failedSaveKeepsTheText();
    void saveAllAsksForNames();
    void leaving_data();
    void leaving();
    void sessionComesBack();
    void neighboursWrapRound();
    void caption_data();
    void caption();
    void statusFields();
    void actionsFollowTheFocus();
    void shortcuts();
    void popupListsAndRaises();
    void tabsMirrorTheEditors();
    void tabOfUnsavedTextIsBlue();
    void listMirrorsTheEditors();
    void orderChanges();
    void closeButtonInTheMenuBar();

private:
    void startShell();
    void stopShell();
    QString path(const QString &name) const { return dir->filePath(name); }
    QString write(const QString &name, const QByteArray &bytes = "text") const;
    static QByteArray read(const QString &path);
    /// Types into the current editor.
    void type(const QString &text);
    /// Answers the file dialog with \a name and, if it is not empty, \a filter.
    void expectName(const QString &name, const QString &filter = QString());
    QStringList fileNames() const;
    QString statusText() const;
    Editors *editors() const { return Editors::self(); }

    std::unique_ptr<QTemporaryDir> dir;
    std::unique_ptr<Shell> shell;
    std::unique_ptr<Responder> responder;
};

void TestEditors::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral("No such (signal|slot)")));
    dir = std::make_unique<QTemporaryDir>();
    QVERIFY(dir->isValid());
    Settings::setKeyPrefix(QStringLiteral("/vesk"));
    Settings::setFileName(path(QStringLiteral("settings.ini")));
    Settings::forceWrite();
    responder = std::make_unique<Responder>();
    startShell();
}

void TestEditors::cleanup()
{
    stopShell();
    QVERIFY(responder->isDone());
    responder.reset();
    dir.reset();
}

void TestEditors::startShell()
{
    shell = std::make_unique<Shell>(nullptr, QStringLiteral("vesk::Shell"));
    Editors::self();
    shell->rebuildUI();
    shell->show();
    QVERIFY(waitForActive(shell.get()));
    // The session's current file is raised a moment later.
    QSignalSpy spy(editors(), &Editors::currentChanged);
    spy.wait(20);
}

void TestEditors::stopShell()
{
    shell.reset();
    Settings::forceWrite();
}

QString TestEditors::write(const QString &name, const QByteArray &bytes) const
{
    QFile file(path(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(file.fileName()));
    return file.fileName();
}

QByteArray TestEditors::read(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
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
        dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"))->setText(name);
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

void TestEditors::startsWithOneUntitled()
{
    QCOMPARE(fileNames(), QStringList(QString()));
    QCOMPARE(shell->workspace()->visibleWidget(), editors()->current());
    type(QStringLiteral("typed"));
    QCOMPARE(editors()->current()->text(), QStringLiteral("typed"));
    responder->expect(QMessageBox::Cancel);
    editors()->close();
    QCOMPARE(editors()->current()->text(), QStringLiteral("typed"));
    QCOMPARE(responder->texts, QStringList(QStringLiteral("The current document has been modified."
                                                          "\nWould you like to save it?")));
}

void TestEditors::openReusesOnlyAnEmptyText()
{
    Editor *const first = editors()->current();
    editors()->open(write(QStringLiteral("a.txt")));
    QCOMPARE(editors()->current(), first);
    editors()->open(write(QStringLiteral("b.txt")));
    QVERIFY(editors()->current() != first);
    editors()->newEditor();
    type(QStringLiteral("x"));
    editors()->open(write(QStringLiteral("c.txt")));
    QCOMPARE(fileNames().join(u','), QStringLiteral("a.txt,b.txt,,c.txt"));
}

void TestEditors::sameFileOpensOnce_data()
{
    QTest::addColumn<QString>("spelling");
    QTest::newRow("same") << "DIR/a.txt";
    QTest::newRow("with dots") << "DIR/../NAME/./a.txt";
    QTest::newRow("relative") << "a.txt";
    QTest::newRow("link") << "DIR/link.txt";
}

void TestEditors::sameFileOpensOnce()
{
    QFETCH(QString, spelling);
    const QString file = write(QStringLiteral("a.txt"));
    QVERIFY(QFile::link(file, path(QStringLiteral("link.txt"))));
    const QString former = QDir::currentPath();
    QDir::setCurrent(dir->path());
    editors()->open(file);
    editors()->newEditor();
    spelling.replace(QStringLiteral("DIR"), dir->path());
    spelling.replace(QStringLiteral("NAME"), QFileInfo(dir->path()).fileName());
    editors()->open(spelling);
    QDir::setCurrent(former);
    QCOMPARE(editors()->editors().size(), 2);
    QCOMPARE(editors()->current(), editors()->editors().first());
}

void TestEditors::whatCannotBeOpened_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("hasBox");
    QTest::newRow("missing") << "missing.txt" << true;
    QTest::newRow("folder") << "folder" << false;
    QTest::newRow("pipe") << "pipe" << false;
}

void TestEditors::whatCannotBeOpened()
{
    QFETCH(QString, name);
    QFETCH(bool, hasBox);
    QVERIFY(QDir(dir->path()).mkdir(QStringLiteral("folder")));
    QCOMPARE(mkfifo(qPrintable(path(QStringLiteral("pipe"))), 0600), 0);
    if (hasBox)
        responder->expect(QStringLiteral("Ok"));
    editors()->open(path(name));
    if (hasBox)
        QCOMPARE(responder->texts,
                 QStringList(QStringLiteral("Can not open file\n%1\n").arg(path(name))));
    QVERIFY2(statusText().contains(path(name)), qPrintable(statusText()));
    // The editor must not be able to write over what it never showed.
    QCOMPARE(fileNames(), QStringList(QString()));
    QVERIFY(!editors()->current()->isModified());
    // The session that is opened behind it must not hide what was said.
    const QString file = write(QStringLiteral("session.txt"));
    Settings::write(QStringLiteral("/editors/openedFiles"), QStringList(file));
    Settings::write(QStringLiteral("/editors/openedCurrent"), file);
    editors()->loadSessionFiles();
    editors()->loadSessionCurrent();
    QCOMPARE(editors()->current()->filename(), file);
    QVERIFY2(statusText().contains(path(name)), qPrintable(statusText()));
}

void TestEditors::closingQuestion_data()
{
    QTest::addColumn<QMessageBox::StandardButton>("answer");
    QTest::addColumn<bool>("isNamed");
    QTest::addColumn<QString>("newName"); // for the dialog; empty cancels it
    QTest::addColumn<bool>("isClosed");
    QTest::addColumn<QByteArray>("content");
    const QByteArray before = "text";
    const QByteArray after = "Xtext";
    QTest::newRow("yes") << QMessageBox::Yes << true << QString() << true << after;
    QTest::newRow("no") << QMessageBox::No << true << QString() << true << before;
    QTest::newRow("cancel") << QMessageBox::Cancel << true << QString() << false << before;
    QTest::newRow("yes, untitled")
        << QMessageBox::Yes << false << "new.txt" << true << QByteArray("X");
    QTest::newRow("yes, name refused") << QMessageBox::Yes << false << QString() << false << before;
    QTest::newRow("no, untitled") << QMessageBox::No << false << QString() << true << before;
}

void TestEditors::closingQuestion()
{
    QFETCH(QMessageBox::StandardButton, answer);
    QFETCH(bool, isNamed);
    QFETCH(QString, newName);
    QFETCH(bool, isClosed);
    QFETCH(QByteArray, content);
    const QString file = write(QStringLiteral("a.txt"));
    if (isNamed)
        editors()->open(file);
    type(QStringLiteral("X"));
    responder->expect(answer);
    if (!isNamed && answer == QMessageBox::Yes)
        expectName(newName.isEmpty() ? newName : path(newName));
    QCOMPARE(editors()->close(editors()->current()), isClosed);
    QCOMPARE(read(newName.isEmpty() ? file : path(newName)), content);
    // There is always one: the text that stayed, or a fresh one.
    QCOMPARE(editors()->editors().size(), 1);
    QCOMPARE(editors()->current()->isModified(), !isClosed);
    QCOMPARE(shell->workspace()->visibleWidget(), editors()->current());
}

void TestEditors::closingAnotherEditorSavesThatOne()
{
    const QString a = write(QStringLiteral("a.txt"));
    const QString b = write(QStringLiteral("b.txt"));
    editors()->open(a);
    Editor *const first = editors()->current();
    type(QStringLiteral("A"));
    editors()->open(b);
    type(QStringLiteral("B"));
    responder->expect(QMessageBox::Yes);
    QVERIFY(editors()->close(first));
    QCOMPARE(read(a), QByteArray("Atext"));
    QCOMPARE(read(b), QByteArray("text"));
    QCOMPARE(fileNames(), QStringList(QStringLiteral("b.txt")));
}

void TestEditors::closingWidgetAsks()
{
    editors()->open(write(QStringLiteral("a.txt")));
    const QPointer<Editor> editor = editors()->current();
    type(QStringLiteral("X"));
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
    for (const char *name : {"a", "b", "c"})
        editors()->open(write(QString::fromLatin1(name)));
    editors()->setCurrentEditor(editors()->editors().at(1));
    editors()->close();
    QCOMPARE(editors()->current(), editors()->editors().first());
    editors()->close();
    QCOMPARE(fileNames(), QStringList(QStringLiteral("c")));
    QCOMPARE(shell->workspace()->visibleWidget(), editors()->current());
    QVERIFY(editors()->current()->hasFocus());
    QVERIFY(!editors()->close(nullptr));
}

void TestEditors::saveAsAddsTheEnding_data()
{
    QTest::addColumn<QString>("filter");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("saved");
    QTest::newRow("any") << "Any files (*)"
                         << "a"
                         << "a";
    QTest::newRow("ch") << "Ch files (*.ch *.chf *.chs *.h *.hpp *.c *.cc *.cpp)"
                        << "a"
                        << "a";
    QTest::newRow("c") << "C/C++ files (*.h *.hpp *.c *.cc *.cpp)"
                       << "a"
                       << "a";
    QTest::newRow("python") << "Python files (*.py)"
                            << "a"
                            << "a.py";
    QTest::newRow("there already") << "Python files (*.py)"
                                   << "a.py"
                                   << "a.py";
    QTest::newRow("project") << "Files of project (*.vesk)"
                             << "a"
                             << "a.vesk";
    QTest::newRow("ui") << "User-Interface files (*.ui)"
                        << "a"
                        << "a.ui";
    QTest::newRow("text") << "Text files (*.txt)"
                          << "a.b"
                          << "a.b.txt";
}

void TestEditors::saveAsAddsTheEnding()
{
    QFETCH(QString, filter);
    QFETCH(QString, name);
    QFETCH(QString, saved);
    QSignalSpy spy(editors(), &Editors::fileSaved);
    write(saved, "old");
    type(QStringLiteral("X"));
    // The name with its ending exists: it is asked once, and a No keeps it.
    expectName(path(name), filter);
    responder->expect(QMessageBox::No);
    editors()->saveAs();
    QCOMPARE(read(path(saved)), QByteArray("old"));
    QVERIFY(editors()->current()->isModified());
    expectName(path(name), filter);
    responder->expect(QMessageBox::Yes);
    editors()->save();
    QCOMPARE(read(path(saved)), QByteArray("X"));
    QCOMPARE(fileNames(), QStringList(saved));
    QCOMPARE(spy.count(), 1);
    QCOMPARE(responder->texts.last(),
             QStringLiteral("The file\n%1\nalready exists! Would you like to replace it?")
                 .arg(path(saved)));
}

void TestEditors::saveAsDropsTheScheme()
{
    type(QStringLiteral("X"));
    editors()->saveAs(QStringLiteral("file:") + path(QStringLiteral("a.txt")));
    QCOMPARE(read(path(QStringLiteral("a.txt"))), QByteArray("X"));
}

void TestEditors::failedSaveKeepsTheText_data()
{
    QTest::addColumn<int>("way");
    QTest::newRow("save") << 0;
    QTest::newRow("save all") << 1;
    QTest::newRow("close") << 2;
    QTest::newRow("leave") << 3;
    QTest::newRow("save as") << 4;
}

void TestEditors::failedSaveKeepsTheText()
{
    QFETCH(int, way);
    QVERIFY(QDir(dir->path()).mkdir(QStringLiteral("folder")));
    const QString file = write(QStringLiteral("folder/a.txt"));
    const QString other = write(QStringLiteral("other.txt"));
    editors()->open(way == 4 ? other : file);
    type(QStringLiteral("X"));
    QVERIFY(QDir(path(QStringLiteral("folder"))).removeRecursively());
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
    QCOMPARE(editors()->current()->text(), QStringLiteral("Xtext"));
    QCOMPARE(editors()->current()->filename(), way == 4 ? other : file);
    QVERIFY2(statusText().contains(file), qPrintable(statusText()));
    QVERIFY(!editors()->current()->errorString().isEmpty());
    QVERIFY(statusText().contains(editors()->current()->errorString()));
}

void TestEditors::saveAllAsksForNames()
{
    const QString a = write(QStringLiteral("a.txt"));
    editors()->open(a);
    type(QStringLiteral("A"));
    editors()->newEditor();
    type(QStringLiteral("refused"));
    editors()->newEditor();
    type(QStringLiteral("N"));
    expectName(QString());
    expectName(path(QStringLiteral("n.txt")));
    editors()->saveAll();
    QCOMPARE(read(a), QByteArray("Atext"));
    QCOMPARE(read(path(QStringLiteral("n.txt"))), QByteArray("N"));
    QCOMPARE(fileNames().join(u','), QStringLiteral("a.txt,,n.txt"));
}

void TestEditors::leaving_data()
{
    // Three changed texts: a, b and one without a name, which gets the name "n".
    QTest::addColumn<QString>("answers"); // y, n, c; N names the last text, R refuses
    QTest::addColumn<bool>("leaves");
    QTest::addColumn<QString>("saved");
    QTest::newRow("all saved") << "yyyN" << true << "abn";
    QTest::newRow("none saved") << "nnn" << true << "";
    QTest::newRow("cancel at the second keeps the first save") << "yc" << false << "a";
    QTest::newRow("refused name keeps all") << "nyyR" << false << "b";
}

void TestEditors::leaving()
{
    QFETCH(QString, answers);
    QFETCH(bool, leaves);
    QFETCH(QString, saved);
    for (const char *name : {"a", "b"}) {
        editors()->open(write(QString::fromLatin1(name), "old"));
        type(QStringLiteral("X"));
    }
    editors()->newEditor();
    type(QStringLiteral("X"));
    const QList<Editor *> list = editors()->editors();
    const QList<QPointer<Editor>> all(list.begin(), list.end());
    for (const QChar answer : answers) {
        if (answer == u'N' || answer == u'R')
            expectName(answer == u'N' ? path(QStringLiteral("n")) : QString());
        else
            responder->expect(answer == u'y'   ? QMessageBox::Yes
                              : answer == u'n' ? QMessageBox::No
                                               : QMessageBox::Cancel);
    }
    QCOMPARE(editors()->closeAll(), leaves);
    QString written;
    for (const char *name : {"a", "b", "n"}) {
        if (read(path(QString::fromLatin1(name))).startsWith('X'))
            written += QLatin1Char(*name);
    }
    QCOMPARE(written, saved);
    const auto alive = std::count_if(all.begin(), all.end(), [](const auto &e) { return !!e; });
    QVERIFY(leaves ? alive < 3 : alive == 3);
    QCOMPARE(Settings::readList(QStringLiteral("/editors/openedFiles")).isEmpty(), !leaves);
    QCOMPARE(responder->texts.value(0),
             QStringLiteral("The file\n%1\nhas been modified.\nWould you like to save it?")
                 .arg(path(QStringLiteral("a"))));
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
    QCOMPARE(files, QStringLiteral("|a, b|gone|current|last"));
    QVERIFY(editors()->closeAll());
    QVERIFY(QFile::remove(path(QStringLiteral("gone"))));
    stopShell();

    QStringList stored;
    for (const QString &file : Settings::readList(QStringLiteral("/editors/openedFiles")))
        stored.append(QFileInfo(file).fileName());
    QCOMPARE(stored.join(u'|'), files);
    QCOMPARE(Settings::readList(QStringLiteral("/editors/openedFilePoses")).join(u'|'),
             QStringLiteral("0:0|2:1|2:1|2:1|2:1"));
    startShell();
    QCOMPARE(fileNames().join(u'|'), QStringLiteral("a, b|current|last"));
    QTRY_COMPARE(QFileInfo(editors()->current()->filename()).fileName(), QStringLiteral("current"));
    QCOMPARE(editors()->current()->cursorLine(), 0);
    QVERIFY(shell->workspace()->visibleWidget() == editors()->current());
}

void TestEditors::neighboursWrapRound()
{
    for (const char *name : {"a", "b", "c"})
        editors()->open(write(QString::fromLatin1(name)));
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
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("caption");
    // "~" stands for the home folder in both columns.
    QTest::newRow("untitled") << ""
                              << "";
    QTest::newRow("home") << "~/a.txt"
                          << "a.txt : ~/ - Vesk";
    QTest::newRow("below home") << "~/x/a.txt"
                                << "a.txt : ~/x/ - Vesk";
    QTest::newRow("beside home") << "~2/a.txt"
                                 << "a.txt : %12/ - Vesk";
    QTest::newRow("root") << "/a.txt"
                          << "a.txt : / - Vesk";
    QTest::newRow("placeholder") << "/x/a[*].txt"
                                 << "a[*].txt : /x/ - Vesk";
}

void TestEditors::caption()
{
    QFETCH(QString, path);
    QFETCH(QString, caption);
    path.replace(u'~', QDir::homePath());
    caption.replace(QStringLiteral("%1"), QDir::homePath());
    if (!path.isEmpty())
        editors()->current()->setFileName(path);
    else
        editors()->setCaption();
    QCOMPARE(shell->windowTitle().replace(QStringLiteral("[*][*]"), QStringLiteral("[*]")),
             caption);
    QCOMPARE(statusText(), path);
}

void TestEditors::statusFields()
{
    const QList<QLabel *> cells = shell->statusBar()->findChildren<QLabel *>();
    type(QStringLiteral("abc"));
    QCOMPARE(cells.at(2)->text(), QStringLiteral(" 0 "));
    QCOMPARE(cells.at(3)->text(), QStringLiteral(" 3 "));
    QTest::keyClick(editors()->current()->focusProxy(), Qt::Key_Insert);
    QCOMPARE(cells.at(1)->text(), QStringLiteral(" OWR "));
    QTest::keyClick(editors()->current()->focusProxy(), Qt::Key_Insert);
    QCOMPARE(cells.at(1)->text(), QStringLiteral(" INS "));
    editors()->newEditor();
    QCOMPARE(cells.at(3)->text(), QStringLiteral(" 0 "));
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

void TestEditors::shortcuts()
{
    const QString file = write(QStringLiteral("a.txt"));
    editors()->open(file);
    type(QStringLiteral("X"));
    const auto press = [this](int key, Qt::KeyboardModifiers modifiers) {
        QTest::keyClick(editors()->current()->focusProxy(), Qt::Key(key), modifiers);
    };
    press(Qt::Key_S, Qt::ControlModifier);
    QCOMPARE(read(file), QByteArray("Xtext"));
    press(Qt::Key_Z, Qt::ControlModifier);
    QCOMPARE(editors()->current()->text(), QStringLiteral("text"));
    press(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    QCOMPARE(editors()->current()->text(), QStringLiteral("Xtext"));
    press(Qt::Key_A, Qt::ControlModifier);
    QCOMPARE(editors()->current()->selection(), QStringLiteral("Xtext"));
    const bool wraps = editors()->getWrap();
    press(Qt::Key_F2, Qt::NoModifier);
    QCOMPARE(editors()->getWrap(), !wraps);
    press(Qt::Key_N, Qt::AltModifier);
    QCOMPARE(editors()->editors().size(), 2);
    press(Qt::Key_Left, Qt::AltModifier);
    QCOMPARE(editors()->current()->filename(), file);
    press(Qt::Key_S, Qt::ControlModifier);
    press(Qt::Key_W, Qt::ControlModifier);
    QCOMPARE(fileNames(), QStringList(QString()));
}

void TestEditors::popupListsAndRaises()
{
    editors()->open(write(QStringLiteral("a&b")));
    editors()->newEditor();
    QToolButton *const button =
        Actions::action(QStringLiteral("Editors/toEditor"))->toolbuttons.first();
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
    QCOMPARE(listed, QStringList({path(QStringLiteral("a&&b")), QStringLiteral("Untitled")}));
    QCOMPARE(editors()->current(), editors()->editors().first());
}

void TestEditors::tabsMirrorTheEditors()
{
    auto *const tab = shell->findChild<EditorsTab *>();
    QVERIFY(tab);
    editors()->open(write(QStringLiteral("a.txt")));
    editors()->open(write(QStringLiteral("b&c")));
    editors()->newEditor();
    QStringList labels;
    for (int id = tab->firstTab(false); id >= 0; id = tab->nextTab(id, false))
        labels.append(tab->tabTitle(id));
    QCOMPARE(labels.join(u'|'), QStringLiteral("a.txt|b&&c|Untitled"));
    QCOMPARE(tab->currentTab(), tab->lastTab(false));
    const QPoint first = tab->tabRect(tab->firstTab(false)).center();
    QTest::mouseClick(tab, Qt::LeftButton, {}, first);
    QCOMPARE(editors()->current(), editors()->editors().first());
    editors()->nextEditor();
    QCOMPARE(tab->tabTitle(tab->currentTab()), QStringLiteral("b&&c"));
    editors()->close();
    QCOMPARE(tab->tabTitle(tab->currentTab()), QStringLiteral("a.txt"));
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
    editors()->open(write(QStringLiteral("a.txt")));
    QVERIFY(!isBlue());
    type(QStringLiteral("X"));
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
    editors()->open(write(QStringLiteral("a.txt")));
    editors()->open(write(QStringLiteral("b.txt")));
    QListWidget *const box = list.listBox();
    QCOMPARE(box->count(), 2);
    QCOMPARE(box->currentItem()->text(), QStringLiteral("b.txt"));
    QVERIFY(!box->currentItem()->icon().isNull());
    box->setCurrentRow(0);
    QCOMPARE(editors()->current(), editors()->editors().first());
    editors()->close();
    QCOMPARE(box->count(), 1);
    QCOMPARE(box->currentItem()->text(), QStringLiteral("b.txt"));
}

void TestEditors::orderChanges()
{
    for (const char *name : {"a", "b", "c"})
        editors()->open(write(QString::fromLatin1(name)));
    const QList<Editor *> all = editors()->editors();
    QSignalSpy spy(editors(), &Editors::listChanged);
    // An answer to the change must not change the order once more.
    connect(editors(), &Editors::listChanged, this,
            [this, all] { editors()->changeEditorsOrder(all.at(0), all.at(2)); });
    editors()->changeEditorsOrder(all.at(0), all.at(2));
    QCOMPARE(fileNames().join(QString()), QStringLiteral("cba"));
    QCOMPARE(spy.count(), 1);
    auto *const tab = shell->findChild<EditorsTab *>();
    QCOMPARE(tab->tabTitle(tab->firstTab(false)), QStringLiteral("c"));
    QCOMPARE(tab->currentTab(), tab->firstTab(false));
}

void TestEditors::closeButtonInTheMenuBar()
{
    shell->rebuildUI();
    const QList<QToolButton *> buttons =
        shell->menuBar()->findChildren<QToolButton *>(QStringLiteral("close"));
    QCOMPARE(buttons.size(), 1);
    QVERIFY(buttons.first()->isVisible());
    editors()->open(write(QStringLiteral("a.txt")));
    QTest::mouseClick(buttons.first(), Qt::LeftButton);
    QCOMPARE(fileNames(), QStringList(QString()));
}

QTEST_MAIN(TestEditors)
#include "tst_editors.moc"
