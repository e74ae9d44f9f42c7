#include "app/actions.h"
#include "app/bookmarks/bookmarks.h"
#include "app/editors/editor.h"
#include "app/editors/editors.h"
#include "app/explorer/explorerpanel.h"
#include "app/explorer/fileslist.h"
#include "app/explorer/fileslistitem.h"
#include "app/widgetstack.h"
#include "tests/apptest.h"

#include <QDir>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QStatusBar>
#include <QToolButton>
#include <QtTest>

#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace vesk;

/// The panel in the whole program: what keys, buttons and menus do to real files.
class TestExplorer : public AppTest
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void keysBelongToTheActiveDock();
    void keysOfTheListWin();
    void keysSortAndSwitchTheView();
    void keysAndButtonsNavigate();
    void pathMenuLeadsUp();
    void menusStandInOrder_data();
    void menusStandInOrder();
    void newFolderIsMade_data();
    void newFolderIsMade();
    void cutFilesAreMoved();
    void cutAndCopiedFilesArePasted();
    void copyBecomesAMove();
    void escapeEndsACut();
    void emptySelectionStagesNothing();
    void lockedFolderRefuses();
    void eraseAsks_data();
    void eraseAsks();
    void anyNameIsHandled_data();
    void anyNameIsHandled();
    void bookmarksLeadToFolders();
    void placeSurvivesARestart();
    void badSettingsAreSurvived_data();
    void badSettingsAreSurvived();

private:
    void restart();
    QString at(const QString &name) const { return folder + u'/' + name; }
    void make(const QString &name, const QByteArray &bytes = "text") const
    {
        writeFile(at(name), bytes);
    }
    void makeFolder(const QString &name) const { QVERIFY(QDir().mkpath(at(name))); }
    QStringList onDisk(const QString &name = {}) const
    {
        return QDir(at(name)).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    }
    void select(const QStringList &names) const;
    static QStringList namesOf(const FilesList *list);
    static QStringList textsOf(const QMenu *menu);
    static void key(int key, Qt::KeyboardModifiers modifiers = {})
    {
        // After a dialog the window takes a moment to be active again.
        QVERIFY(QTest::qWaitFor([] { return QApplication::focusWidget(); }));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key(key), modifiers);
    }
    QString statusText() const { return shell->statusBar()->findChild<QLabel *>()->text(); }

    std::unique_ptr<QTemporaryDir> place;
    QString folder;
    QPointer<ExplorerPanel> panel;
    QPointer<FilesList> list;
};

void TestExplorer::init()
{
    failOnBadConnects();
    place = std::make_unique<QTemporaryDir>();
    folder = place->path();
    makeProfile();
    Settings::write(u"/fileexplorer/lastPath"_s, folder);
    restart();
}

void TestExplorer::restart()
{
    components.reset();
    Settings::forceWrite();
    Settings::setFileName(path(u"vesk.ini"_s));
    makeShell();
    components->makePanels();
    shell->rebuildUI();
    QVERIFY(showActive(shell));
    panel = ExplorerPanel::self();
    list = panel->filesList;
    key(Qt::Key_T, Qt::ControlModifier);
    QVERIFY(list->hasFocus());
}

void TestExplorer::cleanup()
{
    dropShell();
    // The toolkit cannot remove names that are no UTF-8.
    std::filesystem::remove_all(folder.toStdString());
}

void TestExplorer::select(const QStringList &names) const
{
    list->reload();
    list->clearSelection();
    const QStringList shown = namesOf(list);
    for (const QString &name : names) {
        const QTreeWidgetItem *const item = list->itemAt(int(shown.indexOf(name)));
        list->scrollToItem(item);
        QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::ControlModifier,
                          list->visualItemRect(item).center());
    }
}

QStringList TestExplorer::namesOf(const FilesList *list)
{
    QStringList result;
    for (int row = 0; row < list->topLevelItemCount(); ++row)
        result.append(list->itemAt(row)->fileName);
    return result;
}

QStringList TestExplorer::textsOf(const QMenu *menu)
{
    QStringList result;
    const QList<QAction *> entries = menu->actions();
    for (const QAction *const entry : entries)
        result.append(entry->isSeparator() ? u"-"_s : entry->text());
    return result;
}

void TestExplorer::keysBelongToTheActiveDock()
{
    static constexpr const char *own[] = {
        "ExplorerPanel/action/NewFolder",   "ExplorerPanel/action/cut",
        "ExplorerPanel/action/copy",        "ExplorerPanel/action/delete",
        "ExplorerPanel/navigation/tofirst", "ExplorerPanel/navigation/tolast",
        "ExplorerPanel/navigation/cdup",    "ExplorerPanel/bookmarks/showMenu",
        "ExplorerPanel/viewMode/list",      "ExplorerPanel/viewMode/detailed",
        "ExplorerPanel/sort/name",          "ExplorerPanel/sort/date",
        "ExplorerPanel/sort/size",          "ExplorerPanel/clearBuffer"};
    const auto enabled = [] {
        QSet<bool> states;
        for (const char *name : own)
            states.insert(Actions::action(QString::fromLatin1(name))->isEnabled());
        return states;
    };
    const auto *const copy = Actions::action(u"Editors/copy"_s);
    QCOMPARE(enabled(), QSet<bool>{true});
    QVERIFY(!copy->isEnabled());
    key(Qt::Key_E, Qt::ControlModifier);
    QVERIFY(!list->hasFocus());
    QCOMPARE(enabled(), QSet<bool>{false});
    QVERIFY(copy->isEnabled());
    // A folder that changes meanwhile brings no key back.
    makeFolder(u"sub"_s);
    list->go(at(u"sub"_s));
    QVERIFY(!Actions::action(u"ExplorerPanel/navigation/back"_s)->isEnabled());
    QVERIFY(panel->backButton->isEnabled());
    QTest::mouseClick(list->viewport(), Qt::LeftButton);
    QCOMPARE(enabled(), QSet<bool>{true});
    QVERIFY(Actions::action(u"ExplorerPanel/navigation/back"_s)->isEnabled());
}

void TestExplorer::keysOfTheListWin()
{
    // Searching has the key too, and works everywhere.
    QCOMPARE(Actions::action(u"Search/FindNext"_s)->shortcut(), QKeySequence(Qt::Key_F3));
    key(Qt::Key_F3);
    QCOMPARE(list->sortMode(), FilesList::Date);
    makeFolder(u"sub"_s);
    list->go(at(u"sub"_s));
    key(Qt::Key_Up, Qt::AltModifier);
    QCOMPARE(list->path(), folder);
    QCOMPARE(list->currentItemName(), u"sub"_s);
}

void TestExplorer::keysSortAndSwitchTheView()
{
    const struct
    {
        int key;
        const char *action;
        FilesList::SortMode sort;
        FilesList::ViewMode view;
    } rows[] = {
        {Qt::Key_F4, "sort/size", FilesList::Size, FilesList::Simple},
        {Qt::Key_F2, "sort/name", FilesList::Name, FilesList::Simple},
        {Qt::Key_Equal, "viewMode/detailed", FilesList::Name, FilesList::Detailed},
        {Qt::Key_F2, "sort/name", FilesList::Name, FilesList::Detailed},
        {Qt::Key_Minus, "viewMode/list", FilesList::Name, FilesList::Simple},
    };
    for (const auto &row : rows) {
        key(row.key);
        QCOMPARE(list->sortMode(), row.sort);
        QCOMPARE(list->viewMode(), row.view);
        const QString name = u"ExplorerPanel/"_s + QString::fromLatin1(row.action);
        QVERIFY2(Actions::action(name)->isChecked(), row.action);
    }
}

void TestExplorer::keysAndButtonsNavigate()
{
    makeFolder(u"a/b"_s);
    make(u"file.txt"_s, "opened");
    list->reload();
    key(Qt::Key_Down);
    key(Qt::Key_Return);
    QCOMPARE(list->path(), at(u"a"_s));
    key(Qt::Key_Left, Qt::AltModifier);
    QCOMPARE(list->path(), folder);
    QCOMPARE(list->currentItemName(), u"a"_s);
    key(Qt::Key_Right, Qt::AltModifier);
    QCOMPARE(list->path(), at(u"a"_s));
    panel->backButton->click();
    panel->forwardButton->click();
    QCOMPARE(list->path(), at(u"a"_s));
    QVERIFY(!panel->forwardButton->isEnabled());
    panel->cdUpButton->click();
    QCOMPARE(list->path(), folder);
    QCOMPARE(list->currentItemName(), u"a"_s);
    key(Qt::Key_Left);
    QCOMPARE(list->currentItemName(), u".."_s);
    key(Qt::Key_Right);
    QCOMPARE(list->currentItemName(), u"file.txt"_s);
    key(Qt::Key_Return);
    QCOMPARE(Editors::self()->current()->filename(), at(u"file.txt"_s));

    Responder responder;
    responder.expect([this](QWidget *dialog) {
        dialog->findChild<QLineEdit *>()->setText(at(u"a"_s));
        static_cast<QDialog *>(dialog)->accept();
    });
    panel->chooseButton->click();
    QCOMPARE(list->path(), at(u"a"_s));
    QVERIFY(responder.isDone());
}

void TestExplorer::pathMenuLeadsUp()
{
    list->go(u"/usr/bin"_s);
    QMenu *const menu = panel->cdUpButton->menu();
    emit menu->aboutToShow();
    QCOMPARE(textsOf(menu), QStringList({u"/"_s, u"  usr"_s, u"    bin"_s}));
    emit menu->triggered(menu->actions().at(1));
    QCOMPARE(list->path(), u"/usr"_s);
    emit menu->triggered(menu->actions().at(0));
    QCOMPARE(list->path(), u"/"_s);
    QVERIFY(!panel->cdUpButton->isEnabled());
    panel->cdUp();
    QCOMPARE(list->path(), u"/"_s);
}

void TestExplorer::menusStandInOrder_data()
{
    const Rows<QString, QString> row("group", "entries");
    const QString modes = u" - Sort by &name,Sort by &date,Sort by &size - &List,&Detailed"_s;
    row("options", "ExplorerPanel/menu/options", u"&New Folder - Cut,Copy,Paste,Delete"_s + modes);
    row("folder", "ExplorerPanel/context/folder",
        u"&New Folder - Cut,Copy,Paste - Delete"_s + modes);
    row("file", "ExplorerPanel/context/file",
        u"Open,&New Folder - Cut,Copy,Paste - Delete"_s + modes);
    row("selection", "ExplorerPanel/context/selection", u"Cut,Copy - Delete"_s);
    row("none", "ExplorerPanel/context/none", u"&New Folder - Paste"_s + modes);
    row("bookmarks", "ExplorerPanel/menu/bookmarks", u"Add bookmark,Manage bookmarks -"_s);
}

void TestExplorer::menusStandInOrder()
{
    QFETCH(QString, group);
    QFETCH(QString, entries);
    QMenu menu;
    shell->actionGroup(group)->addTo(&menu);
    QCOMPARE(textsOf(&menu).join(u','),
             entries.replace(u" - "_s, u",-,"_s).replace(u" -"_s, u",-"_s));
}

void TestExplorer::newFolderIsMade_data()
{
    const Rows<QString, bool, bool> row("name", "isAccepted", "isMade");
    row("any name", "x & y", true, true);
    row("one that exists", "there", true, false);
    row("none", "", true, false);
    row("refused", "z", false, false);
}

void TestExplorer::newFolderIsMade()
{
    QFETCH(QString, name);
    QFETCH(bool, isAccepted);
    QFETCH(bool, isMade);
    makeFolder(u"there"_s);
    Responder responder;
    QString suggested;
    responder.expect([&](QWidget *dialog) {
        auto *const input = static_cast<QInputDialog *>(dialog);
        suggested = input->textValue();
        input->setTextValue(name);
        input->done(isAccepted ? QDialog::Accepted : QDialog::Rejected);
    });
    if (isAccepted && !isMade)
        responder.expect(u"OK"_s);
    key(Qt::Key_N, Qt::ControlModifier);
    QVERIFY(responder.isDone());
    QCOMPARE(suggested, u"New folder"_s);
    QCOMPARE(namesOf(list).contains(name), isMade);
    QCOMPARE(responder.texts.value(0),
             isAccepted && !isMade ? u"Can't create new folder in "_s + folder : QString());
}

void TestExplorer::cutFilesAreMoved()
{
    makeFolder(u"to"_s);
    for (const QString &name : {u"a"_s, u"b"_s, u"c"_s})
        make(name);
    select({u"a"_s, u"b"_s});
    QVERIFY(!Actions::action(u"ExplorerPanel/action/paste"_s)->isEnabled());
    key(Qt::Key_X, Qt::ControlModifier);
    QVERIFY(panel->bufferList->isVisible() && panel->clearBufferButton->isVisible());
    QCOMPARE(namesOf(panel->bufferList), QStringList({u"a"_s, u"b"_s}));
    QCOMPARE(list->selectedNames(), QStringList(u"c"_s));
    QVERIFY(list->itemAt(2)->isGrayed() && list->itemAt(3)->isGrayed());
    QVERIFY(!list->itemAt(4)->isGrayed());
    QVERIFY(panel->bufferList->height() * 2 <= list->height() + panel->bufferList->height());
    list->go(at(u"to"_s));
    key(Qt::Key_V, Qt::ControlModifier);
    QCOMPARE(namesOf(list), QStringList({u".."_s, u"a"_s, u"b"_s}));
    QCOMPARE(onDisk(), QStringList({u"c"_s, u"to"_s}));
    QVERIFY(!panel->bufferList->isVisible());
    QVERIFY(!Actions::action(u"ExplorerPanel/action/paste"_s)->isEnabled());
}

void TestExplorer::cutAndCopiedFilesArePasted()
{
    makeFolder(u"to"_s);
    makeFolder(u"tree/sub"_s);
    make(u"a"_s);
    select({u"a"_s});
    key(Qt::Key_X, Qt::ControlModifier);
    select({u"tree"_s});
    key(Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(namesOf(panel->bufferList), QStringList({u"tree"_s, u"a"_s}));
    list->go(at(u"to"_s));
    key(Qt::Key_V, Qt::ControlModifier);
    QCOMPARE(onDisk(u"to"_s), QStringList({u"a"_s, u"tree"_s}));
    QCOMPARE(onDisk(u"to/tree"_s), QStringList(u"sub"_s));
    QCOMPARE(onDisk(), QStringList({u"to"_s, u"tree"_s}));
}

void TestExplorer::copyBecomesAMove()
{
    makeFolder(u"to"_s);
    make(u"a"_s);
    for (const int letter : {Qt::Key_C, Qt::Key_X, Qt::Key_C}) {
        select({u"a"_s});
        key(letter, Qt::ControlModifier);
        QCOMPARE(namesOf(panel->bufferList), QStringList(u"a"_s));
    }
    list->go(at(u"to"_s));
    key(Qt::Key_V, Qt::ControlModifier);
    QCOMPARE(onDisk(), QStringList(u"to"_s));
    QCOMPARE(onDisk(u"to"_s), QStringList(u"a"_s));
}

void TestExplorer::escapeEndsACut()
{
    make(u"a"_s);
    for (const bool isByKey : {true, false}) {
        select({u"a"_s});
        key(Qt::Key_X, Qt::ControlModifier);
        QVERIFY(list->itemAt(1)->isGrayed());
        if (isByKey)
            key(Qt::Key_Escape);
        else
            QTest::mouseClick(panel->clearBufferButton, Qt::LeftButton);
        QVERIFY(!list->itemAt(1)->isGrayed());
        QVERIFY(!panel->bufferList->isVisible() && !panel->bufferLabel->isVisible());
    }
    key(Qt::Key_V, Qt::ControlModifier);
    QCOMPARE(onDisk(), QStringList(u"a"_s));
}

void TestExplorer::emptySelectionStagesNothing()
{
    make(u"a"_s);
    select({u".."_s});
    for (const int letter : {Qt::Key_X, Qt::Key_C})
        key(letter, Qt::ControlModifier);
    // Without a question that names nothing.
    key(Qt::Key_Delete);
    QVERIFY(!panel->bufferList->isVisible());
    QCOMPARE(onDisk(), QStringList(u"a"_s));
}

void TestExplorer::lockedFolderRefuses()
{
    makeFolder(u"closed"_s);
    make(u"closed/a"_s);
    make(u"b"_s);
    QFile::setPermissions(folder, QFile::Permissions(0x7755));
    QFile::setPermissions(at(u"closed"_s), QFile::Permissions(0x5555));
    const uid_t user = ::geteuid();
    if (user == 0)
        QCOMPARE(::seteuid(65534), 0);
    Responder responder;
    for (int i = 0; i < 3; ++i)
        responder.expect(u"OK"_s);
    list->go(folder);
    select({u"b"_s});
    key(Qt::Key_C, Qt::ControlModifier);
    list->go(at(u"closed"_s));
    key(Qt::Key_N, Qt::ControlModifier);
    list->setCurrentLast();
    key(Qt::Key_X, Qt::ControlModifier);
    key(Qt::Key_V, Qt::ControlModifier);
    QCOMPARE(::seteuid(user), 0);
    const QString start = u"Folder "_s + at(u"closed"_s) + u" is not writable."_s;
    QCOMPARE(responder.texts,
             QStringList({start, start + u"\nYou can't move these files."_s,
                          start + u"\nYou can't move or copy files to the folder."_s}));
    QVERIFY(responder.isDone());
    QCOMPARE(onDisk(u"closed"_s), QStringList(u"a"_s));
    QCOMPARE(namesOf(panel->bufferList), QStringList(u"b"_s));
}

void TestExplorer::eraseAsks_data()
{
    const Rows<QString, QStringList, QString> row("button", "left", "current");
    row("deleted", "Delete", {u"a"_s, u"d"_s}, "d");
    row("kept", "Cancel", {u"a"_s, u"b"_s, u"c"_s, u"d"_s}, "c");
}

void TestExplorer::eraseAsks()
{
    QFETCH(QString, button);
    QFETCH(QStringList, left);
    QFETCH(QString, current);
    for (const QString &name : {u"a"_s, u"b"_s, u"d"_s})
        make(name);
    makeFolder(u"c/sub"_s);
    make(u"c/sub/file"_s);
    select({u"b"_s, u"c"_s});
    Responder responder;
    responder.expect(button);
    key(Qt::Key_Delete);
    QVERIFY(responder.isDone());
    QCOMPARE(responder.texts, QStringList(u"Do you really want to delete it?"_s));
    QCOMPARE(onDisk(), left);
    QCOMPARE(list->currentItemName(), current);
}

void TestExplorer::anyNameIsHandled_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("a line end") << QByteArray("a\nb.txt");
    QTest::newRow("a leading dash") << QByteArray("-rf");
    QTest::newRow("255 bytes") << QByteArray(255, 'x');
    QTest::newRow("no UTF-8") << QByteArray("caf\xe9.txt");
}

void TestExplorer::anyNameIsHandled()
{
    QFETCH(QByteArray, name);
    const QByteArray path = QFile::encodeName(folder);
    makeFolder(u"to"_s);
    const auto bytesOf = [](const QByteArray &file) {
        char buffer[16] = {};
        FILE *const stream = ::fopen(file.constData(), "r");
        const size_t length = stream ? ::fread(buffer, 1, sizeof buffer, stream) : 0;
        if (stream)
            ::fclose(stream);
        return QByteArray(buffer, qsizetype(length));
    };
    FILE *const stream = ::fopen((path + '/' + name).constData(), "w");
    QVERIFY(stream);
    ::fputs("old\n", stream);
    ::fclose(stream);
    list->reload();
    list->setCurrentLast();
    key(Qt::Key_C, Qt::ControlModifier);
    list->go(at(u"to"_s));
    key(Qt::Key_V, Qt::ControlModifier);
    QCOMPARE(bytesOf(path + "/to/" + name), "old\n");

    list->setCurrentLast();
    key(Qt::Key_Return);
    Editor *const editor = Editors::self()->current();
    QCOMPARE(editor->text(), u"old"_s);
    key(Qt::Key_E, Qt::ControlModifier);
    key(Qt::Key_N);
    Editors::self()->save();
    QCOMPARE(bytesOf(path + "/to/" + name), "nold\n");
    QCOMPARE(bytesOf(path + '/' + name), "old\n");
    const std::filesystem::directory_iterator saved(at(u"to"_s).toStdString());
    QCOMPARE(std::distance(begin(saved), end(saved)), 1);

    key(Qt::Key_T, Qt::ControlModifier);
    Responder responder;
    responder.expect(u"Delete"_s);
    key(Qt::Key_Delete);
    QVERIFY(responder.isDone());
    QVERIFY(::access((path + "/to/" + name).constData(), F_OK) != 0);
}

void TestExplorer::bookmarksLeadToFolders()
{
    makeFolder(u"a&b"_s);
    makeFolder(u"c"_s);
    QMenu *const menu = panel->bookmarkButton->menu();
    for (const QString &name : {u"c"_s, u"a&b"_s}) {
        list->go(at(name));
        Actions::action(u"ExplorerPanel/bookmarks/add"_s)->trigger();
    }
    for (int i = 0; i < 2; ++i)
        emit menu->aboutToShow();
    QCOMPARE(textsOf(menu), QStringList({u"Add bookmark"_s, u"Manage bookmarks"_s, u"-"_s,
                                         at(u"a&&b"_s), at(u"c"_s)}));
    QTimer::singleShot(0, this, [menu] {
        QTest::keyClick(menu, Qt::Key_Up);
        QTest::keyClick(menu, Qt::Key_Return);
    });
    key(Qt::Key_B, Qt::ControlModifier);
    QCOMPARE(list->path(), at(u"c"_s));
    Bookmarks::self()->addBookmark(u"ExplorerPanel"_s, u"none"_s, QString());
    emit menu->aboutToShow();
    emit menu->triggered(menu->actions().constLast());
    QCOMPARE(list->path(), at(u"c"_s));
}

void TestExplorer::placeSurvivesARestart()
{
    makeFolder(u"a/b"_s);
    makeFolder(u"a/c"_s);
    list->go(at(u"a"_s));
    list->setCurrentItem(u"c"_s);
    key(Qt::Key_Equal);
    key(Qt::Key_F4);
    restart();
    QCOMPARE(list->path(), at(u"a"_s));
    QCOMPARE(list->currentItemName(), u"c"_s);
    QCOMPARE(list->viewMode(), FilesList::Detailed);
    QCOMPARE(list->sortMode(), FilesList::Size);
    QCOMPARE(shell->leftDock()->visibleWidget(), panel.get());
}

void TestExplorer::badSettingsAreSurvived_data()
{
    const Rows<QString, QString, QString> row("key", "value", "shown");
    row("a folder that is gone", "lastPath", "%1/gone/too", "%1");
    row("a file", "lastPath", "%1/file", "%1");
    row("nothing", "lastPath", "", "");
    row("a relative one", "lastPath", "no/such", "");
    row("a view that is none", "listMode", "77", "%1");
    row("a sorting that is none", "sortMode", "-1", "%1");
    row("an entry that is gone", "lastFile", "gone", "%1");
}

void TestExplorer::badSettingsAreSurvived()
{
    QFETCH(QString, key);
    QFETCH(QString, value);
    QFETCH(QString, shown);
    make(u"file"_s);
    dropShell();
    Settings::write(u"/fileexplorer/"_s + key, value.replace(u"%1"_s, folder));
    restart();
    QVERIFY(QDir(list->path()).exists() && !list->path().isEmpty());
    if (!shown.isEmpty())
        QCOMPARE(list->path(), shown.arg(folder));
    QCOMPARE(list->viewMode(), FilesList::Simple);
    QCOMPARE(list->sortMode(), FilesList::Name);
}

QTEST_MAIN(TestExplorer)
#include "tst_explorer.moc"
