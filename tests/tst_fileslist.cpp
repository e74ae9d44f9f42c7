#include "app/actions.h"
#include "app/editors/editor.h"
#include "app/editors/editors.h"
#include "app/explorer/fileslist.h"
#include "app/explorer/fileslistitem.h"
#include "tests/apptest.h"
#include "zvwidgets/navigator.h"
#include "zvwidgets/zvfiles/filenames.h"

#include <QDir>
#include <QLabel>
#include <QMenu>
#include <QScrollBar>
#include <QStatusBar>
#include <QtTest>

#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace vesk;

/// One list in a window of its own, over a folder made for each test.
class TestFilesList : public AppTest
{
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();
    void historyDropsWhatLiesAhead();
    void entriesAreOrdered_data();
    void entriesAreOrdered();
    void whatIsListed();
    void rootHasNothingAbove();
    void goingUpSelectsTheFolderLeft();
    void backRestoresSelectionAndScroll();
    void missingFolderKeepsTheDisplay();
    void statusLineTells_data();
    void statusLineTells();
    void selectionIsSummedUp();
    void changesShowWhenSelectedOrReloaded();
    void detailsOfFolders();
    void lockedEntriesAreNotOpened();
    void excludedEntriesAreGrey();
    void anyNameIsBrowsed_data();
    void anyNameIsBrowsed();
    void contextMenuFollowsTheEntry_data();
    void contextMenuFollowsTheEntry();
    void secondLineIsBelowTheName();

private:
    QString at(const QString &name) const { return folder + u'/' + name; }
    void make(const QString &name, const QByteArray &bytes = "text") const
    {
        writeFile(at(name), bytes);
    }
    void makeFolder(const QString &name) const { QVERIFY(QDir().mkpath(at(name))); }
    QStringList names() const;
    FilesListItem *item(const QString &name) const;
    void press(const QString &name, Qt::KeyboardModifiers modifiers = {}) const;
    QString statusText() const;

    QString folder;
    std::unique_ptr<QTemporaryDir> place;
    std::unique_ptr<FilesList> list;
};

void TestFilesList::initTestCase()
{
    makeShell();
    shell->rebuildUI();
    QVERIFY(showActive(shell));
}

void TestFilesList::cleanupTestCase()
{
    dropShell();
}

void TestFilesList::init()
{
    failOnBadConnects();
    place = std::make_unique<QTemporaryDir>();
    folder = place->path();
    list = std::make_unique<FilesList>();
    list->resize(300, 200);
    QVERIFY(showActive(list.get()));
}

void TestFilesList::cleanup()
{
    list.reset();
    // The toolkit cannot remove names that are no UTF-8.
    std::filesystem::remove_all(folder.toStdString());
}

QStringList TestFilesList::names() const
{
    QStringList result;
    for (int row = 0; row < list->topLevelItemCount(); ++row)
        result.append(list->itemAt(row)->fileName);
    return result;
}

FilesListItem *TestFilesList::item(const QString &name) const
{
    return list->itemAt(int(names().indexOf(name)));
}

void TestFilesList::press(const QString &name, Qt::KeyboardModifiers modifiers) const
{
    QTest::mouseClick(list->viewport(), Qt::LeftButton, modifiers,
                      list->visualItemRect(item(name)).center());
}

QString TestFilesList::statusText() const
{
    return shell->statusBar()->findChild<QLabel *>()->text();
}

void TestFilesList::historyDropsWhatLiesAhead()
{
    zvwidgets::Navigator<int> history;
    QVERIFY(!history.isBackEnabled() && !history.isForwardEnabled());
    for (const int place_ : {1, 2, 3})
        history.go(place_);
    QCOMPARE(history.back(), 2);
    QCOMPARE(history.back(), 1);
    QCOMPARE(history.back(), 1);
    QVERIFY(!history.isBackEnabled());
    QCOMPARE(history.forward(), 2);
    history.setHome(9);
    QCOMPARE(history.home(), 9);
    QVERIFY(!history.isForwardEnabled());
    QCOMPARE(history.forward(), 9);
    QCOMPARE(history.back(), 2);
}

void TestFilesList::entriesAreOrdered_data()
{
    const Rows<int, int, QStringList> row("view", "sort", "files");
    const QStringList byName = {u"B.txt"_s, u"a.cpp"_s, u"b.txt"_s, u"c.txt"_s};
    const QStringList byDate = {u"a.cpp"_s, u"c.txt"_s, u"B.txt"_s, u"b.txt"_s};
    const QStringList bySize = {u"b.txt"_s, u"B.txt"_s, u"c.txt"_s, u"a.cpp"_s};
    row("by name", FilesList::Simple, FilesList::Name, byName);
    row("newest first", FilesList::Simple, FilesList::Date, byDate);
    row("largest first", FilesList::Simple, FilesList::Size, bySize);
    row("detailed by name", FilesList::Detailed, FilesList::Name, byName);
    row("detailed, newest first", FilesList::Detailed, FilesList::Date, byDate);
    row("detailed, largest first", FilesList::Detailed, FilesList::Size, bySize);
}

void TestFilesList::entriesAreOrdered()
{
    QFETCH(int, view);
    QFETCH(int, sort);
    QFETCH(QStringList, files);
    const struct
    {
        const char *name;
        int size;
        int age;
    } made[] = {{"a.cpp", 1, 0}, {"b.txt", 4, 9}, {"B.txt", 2, 5}, {"c.txt", 2, 1}};
    for (const auto &file : made) {
        const QString path = at(QString::fromLatin1(file.name));
        writeFile(path, QByteArray(file.size, 'x'));
        const timespec time = {1000000 - file.age, 0};
        const timespec times[] = {time, time};
        QCOMPARE(::utimensat(AT_FDCWD, qPrintable(path), times, 0), 0);
    }
    makeFolder(u"z"_s);
    makeFolder(u"Y"_s);
    list->setViewMode(view);
    list->go(folder);
    list->setSortMode(sort);
    QCOMPARE(names(), QStringList({u".."_s, u"Y"_s, u"z"_s}) + files);
}

void TestFilesList::whatIsListed()
{
    makeFolder(u"sub"_s);
    makeFolder(u".hidden"_s);
    make(u".dot"_s);
    make(u"file"_s);
    QCOMPARE(::mkfifo(qPrintable(at(u"pipe"_s)), 0600), 0);
    QVERIFY(QFile::link(at(u"sub"_s), at(u"tosub"_s)));
    QVERIFY(QFile::link(at(u"file"_s), at(u"tofile"_s)));
    QVERIFY(QFile::link(at(u"nothing"_s), at(u"dangling"_s)));
    list->go(folder);
    QCOMPARE(names(), QStringList({u".."_s, u"sub"_s, u"tosub"_s, u"file"_s, u"tofile"_s}));
    QVERIFY(item(u"tosub"_s)->isDir);
    QCOMPARE(item(u".."_s)->filePath, QFileInfo(folder).path());
    list->go(at(u"sub"_s));
    QCOMPARE(names(), QStringList(u".."_s));
}

void TestFilesList::rootHasNothingAbove()
{
    const QSignalSpy up(list.get(), &FilesList::upAvailable);
    list->go(u"/"_s);
    QVERIFY(!names().contains(u".."_s));
    list->go(u"/tmp"_s);
    QCOMPARE(up, QList<QVariantList>({{false}, {true}}));
    QCOMPARE(item(u".."_s)->filePath, u"/"_s);
}

void TestFilesList::goingUpSelectsTheFolderLeft()
{
    makeFolder(u"a"_s);
    makeFolder(u"b/c"_s);
    list->go(at(u"b"_s));
    QCOMPARE(list->currentItemName(), u".."_s);
    QTest::keyClick(list.get(), Qt::Key_Return);
    QCOMPARE(list->path(), folder);
    QCOMPARE(list->currentItemName(), u"b"_s);
    QTest::mouseDClick(list->viewport(), Qt::LeftButton, {},
                       list->visualItemRect(item(u"b"_s)).center());
    QCOMPARE(list->path(), at(u"b"_s));
    QCOMPARE(list->currentItemName(), u".."_s);
}

void TestFilesList::backRestoresSelectionAndScroll()
{
    for (int i = 0; i < 60; ++i)
        makeFolder(u"f%1"_s.arg(i + 10));
    list->go(folder);
    list->setCurrentItem(u"f50"_s);
    list->verticalScrollBar()->setValue(35);
    list->itemClicked(nullptr);
    QCOMPARE(list->path(), at(u"f50"_s));
    const QSignalSpy forward(list.get(), &FilesList::forwardAvailable);
    list->back();
    QCOMPARE(list->path(), folder);
    QCOMPARE(list->selectedNames(), QStringList(u"f50"_s));
    QCOMPARE(list->verticalScrollBar()->value(), 35);
    QCOMPARE(forward, QList<QVariantList>({{true}}));
    list->reload();
    QCOMPARE(list->selectedNames(), QStringList(u"f50"_s));
    QCOMPARE(list->verticalScrollBar()->value(), 35);
    list->forward();
    QCOMPARE(list->path(), at(u"f50"_s));
}

void TestFilesList::missingFolderKeepsTheDisplay()
{
    makeFolder(u"gone"_s);
    make(u"file"_s);
    list->go(folder);
    const QSignalSpy loaded(list.get(), &FilesList::filesListLoaded);
    QVERIFY(QDir().rmdir(at(u"gone"_s)));
    list->setCurrentItem(u"gone"_s);
    QCOMPARE(statusText(), u"gone"_s);
    list->itemClicked(nullptr);
    list->go(at(u"file"_s));
    list->go(QString());
    list->back();
    QCOMPARE(list->path(), folder);
    QCOMPARE(names(), QStringList({u".."_s, u"gone"_s, u"file"_s}));
    QCOMPARE(loaded.size(), 0);
    list->reload();
    QCOMPARE(names(), QStringList({u".."_s, u"file"_s}));
}

void TestFilesList::statusLineTells_data()
{
    const Rows<QString, QString> row("name", "text");
    row("a file", "big.txt", "big.txt   Size: 2.00K, Modified: %1");
    row("an empty file", "empty", "empty   Size: 0b, Modified: %1");
    row("a folder", "sub", "sub, Modified: %1");
    row("the folder above", "..", "..*");
}

void TestFilesList::statusLineTells()
{
    QFETCH(QString, name);
    QFETCH(QString, text);
    make(u"big.txt"_s, QByteArray(2048, 'x'));
    make(u"empty"_s, {});
    makeFolder(u"sub"_s);
    list->go(folder);
    list->setFocus();
    list->clearSelection();
    press(name);
    if (text.contains(u"%1"))
        text = text.arg(item(name)->date());
    const bool isWhole = !text.endsWith(u'*');
    QCOMPARE(isWhole ? statusText() : statusText().left(2) + u'*', text);
    QVERIFY(!item(name)->date().isEmpty());
}

void TestFilesList::selectionIsSummedUp()
{
    make(u"a"_s, QByteArray(1024, 'x'));
    make(u"b"_s, QByteArray(1024, 'x'));
    makeFolder(u"s"_s);
    makeFolder(u"t"_s);
    list->go(folder);
    press(u"s"_s);
    press(u"t"_s, Qt::ControlModifier);
    QCOMPARE(statusText(), u"Selected 2 Items"_s);
    press(u"b"_s, Qt::ShiftModifier);
    QCOMPARE(statusText(), u"Selected 4 Items,   Size: 2.00K"_s);
    QCOMPARE(list->selectedNames(), QStringList({u"s"_s, u"t"_s, u"a"_s, u"b"_s}));
    press(u"a"_s, Qt::ControlModifier);
    QCOMPARE(statusText(), u"Selected 3 Items,   Size: 1.00K"_s);
    list->reload();
    list->selectAll();
    QCOMPARE(statusText(), u"Selected 5 Items,   Size: 2.00K"_s);
    QVERIFY(!list->selectedNames().contains(u".."_s));
    list->clearSelection();
    QTest::keyClick(list.get(), Qt::Key_A, Qt::ControlModifier);
    QCOMPARE(list->selectedNames().size(), 4);
}

void TestFilesList::changesShowWhenSelectedOrReloaded()
{
    make(u"a"_s, "x");
    make(u"b"_s, "x");
    makeFolder(u"s"_s);
    list->setViewMode(FilesList::Detailed);
    list->go(folder);
    QCOMPARE(item(u"s"_s)->items(), u"0 Items"_s);
    make(u"a"_s, QByteArray(1024, 'x'));
    make(u"b"_s, QByteArray(1024, 'x'));
    make(u"s/one"_s);
    press(u"a"_s);
    QCOMPARE(item(u"a"_s)->size(), u"1.00K"_s);
    QCOMPARE(item(u"b"_s)->size(), u"1b"_s);
    press(u"s"_s);
    QCOMPARE(item(u"s"_s)->items(), u"1 Items"_s);
    list->reload();
    QCOMPARE(item(u"b"_s)->size(), u"1.00K"_s);
    // The same mode again reads nothing.
    const QSignalSpy loaded(list.get(), &FilesList::filesListLoaded);
    list->setViewMode(FilesList::Detailed);
    list->setSortMode(FilesList::Name);
    QCOMPARE(loaded.size(), 0);
}

void TestFilesList::detailsOfFolders()
{
    makeFolder(u"full/sub"_s);
    makeFolder(u"full/.hidden"_s);
    make(u"full/file"_s);
    QVERIFY(QFile::link(at(u"nothing"_s), at(u"full/dangling"_s)));
    makeFolder(u"empty"_s);
    list->setViewMode(FilesList::Detailed);
    list->go(folder);
    QCOMPARE(item(u"full"_s)->items(), u"2 Items"_s);
    QCOMPARE(item(u"empty"_s)->items(), u"0 Items"_s);
    QCOMPARE(item(u"full"_s)->text(0), u"full\n "_s);
}

void TestFilesList::lockedEntriesAreNotOpened()
{
    make(u"secret.txt"_s);
    makeFolder(u"closed"_s);
    QFile::setPermissions(at(u"secret.txt"_s), QFile::WriteOwner);
    QFile::setPermissions(at(u"closed"_s), QFile::WriteOwner);
    QFile::setPermissions(folder, QFile::Permissions(0x7755));
    const uid_t user = ::geteuid();
    if (user == 0) {
        QCOMPARE(::chown(qPrintable(at(u"secret.txt"_s)), 65534, 65534), 0);
        QCOMPARE(::chown(qPrintable(at(u"closed"_s)), 65534, 65534), 0);
        QCOMPARE(::seteuid(65534), 0);
    }
    list->setViewMode(FilesList::Detailed);
    list->go(folder);
    QStringList texts;
    QString details = item(u"closed"_s)->items();
    for (const QString &name : {u"secret.txt"_s, u"closed"_s}) {
        list->setCurrentItem(name);
        QTest::keyClick(list.get(), Qt::Key_Return);
        texts.append(statusText());
    }
    const QString path = list->path();
    list->go(at(u"closed"_s));
    const QStringList listed = names();
    QCOMPARE(::seteuid(user), 0);
    QCOMPARE(texts, QStringList({u"secret.txt   is locked. It can't be opened."_s,
                                 u"closed   is locked. It can't be opened."_s}));
    QCOMPARE(details, u"Locked"_s);
    QCOMPARE(path, folder);
    QVERIFY(Editors::self()->current()->filename().isEmpty());
    // The way out stays.
    QCOMPARE(listed, QStringList(u".."_s));
    QFile::setPermissions(at(u"closed"_s), QFile::Permissions(0x7000));
}

void TestFilesList::excludedEntriesAreGrey()
{
    make(u"a.txt"_s);
    make(u"b.txt"_s);
    list->go(folder);
    list->setExcludeFilePaths({at(u"a.txt"_s)});
    list->reload();
    const auto darkest = [this](const QString &name) {
        const QRect row = list->visualItemRect(item(name));
        const QImage image = list->viewport()->grab(row.adjusted(24, 0, 0, 0)).toImage();
        int darkness = 255;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x)
                darkness = qMin(darkness, qGray(image.pixel(x, y)));
        }
        return darkness;
    };
    list->setCurrentItem(u".."_s);
    QVERIFY(darkest(u"a.txt"_s) >= 0x80);
    QVERIFY(darkest(u"b.txt"_s) < 0x40);
}

void TestFilesList::anyNameIsBrowsed_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("a line end") << QByteArray("a\nb");
    QTest::newRow("a leading dash") << QByteArray("-rf");
    QTest::newRow("255 bytes") << QByteArray(255, 'x');
    QTest::newRow("no UTF-8") << QByteArray("caf\xe9 \xff");
    QTest::newRow("a cut character") << QByteArray("x\xe2\x82");
    QTest::newRow("percent and ampersand") << QByteArray("100%1 & %s");
}

void TestFilesList::anyNameIsBrowsed()
{
    QFETCH(QByteArray, name);
    const QByteArray path = QFile::encodeName(folder) + '/' + name;
    QCOMPARE(::mkdir(path.constData(), 0700), 0);
    QCOMPARE(::mkdir((path + "/inner").constData(), 0700), 0);
    for (const int mode : {FilesList::Simple, FilesList::Detailed}) {
        list->setViewMode(mode);
        list->go(folder);
        QCOMPARE(names().size(), 2);
        const QString shown = zvwidgets::decodedPath(name);
        QCOMPARE(zvwidgets::encodedPath(item(shown)->filePath), path);
        list->setCurrentItem(shown);
        QTest::keyClick(list.get(), Qt::Key_Return);
        QCOMPARE(names(), QStringList({u".."_s, u"inner"_s}));
        list->itemClicked(nullptr);
        QCOMPARE(list->path(), folder);
        QCOMPARE(list->currentItemName(), shown);
        QCOMPARE(list->visualItemRect(list->itemAt(0)).height(),
                 list->visualItemRect(list->itemAt(1)).height());
    }
}

void TestFilesList::contextMenuFollowsTheEntry_data()
{
    const Rows<QStringList, QString> row("pressed", "title");
    row("nothing", {}, "none");
    row("a folder", {u"sub"_s}, "folder");
    row("the folder above", {u".."_s}, "folder");
    row("a type with a menu", {u"a.cpp"_s}, "cpp");
    row("any other type", {u"b.txt"_s}, "file");
    row("two", {u"sub"_s, u"b.txt"_s}, "selection");
}

void TestFilesList::contextMenuFollowsTheEntry()
{
    QFETCH(QStringList, pressed);
    QFETCH(QString, title);
    make(u"a.cpp"_s);
    make(u"b.txt"_s);
    makeFolder(u"sub"_s);
    list->go(folder);
    list->clearSelection();
    for (const QString &word : {u"none"_s, u"folder"_s, u"cpp"_s, u"file"_s, u"selection"_s}) {
        auto *const group = new ActionGroup(list.get());
        group->add(new Action(list.get(), word));
        group->actions().first()->setMenuText(word);
        list->setActionGroup(word, group);
    }
    for (const QString &name : std::as_const(pressed))
        press(name, Qt::ControlModifier);
    const QPoint below(5, list->viewport()->height() - 3);
    const QPoint target =
        pressed.isEmpty() ? below : list->visualItemRect(item(pressed.last())).center();
    QContextMenuEvent event(QContextMenuEvent::Mouse, target,
                            list->viewport()->mapToGlobal(target));
    QCoreApplication::sendEvent(list->viewport(), &event);
    auto *const menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
    QVERIFY(menu);
    QCOMPARE(menu->actions().size(), 1);
    QCOMPARE(menu->actions().first()->text(), title);
    menu->close();
}

void TestFilesList::secondLineIsBelowTheName()
{
    make(u"WWWW.txt"_s, "xx");
    list->setViewMode(FilesList::Detailed);
    list->go(folder);
    list->setCurrentItem(u".."_s);
    const QRect row = list->visualItemRect(item(u"WWWW.txt"_s));
    const QImage image = list->viewport()->grab(row.adjusted(36, 0, 0, 0)).toImage();
    int lastOfName = 0;
    int firstOfSize = image.height();
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (qGray(image.pixel(x, y)) < 0x60)
                lastOfName = y;
            if (image.pixel(x, y) == qRgb(0x90, 0x90, 0x90) && y > image.height() / 2)
                firstOfSize = qMin(firstOfSize, y);
        }
    }
    QVERIFY(lastOfName > 0);
    QVERIFY(firstOfSize < image.height());
    QVERIFY2(lastOfName < firstOfSize, qPrintable(u"%1 %2"_s.arg(lastOfName).arg(firstOfSize)));
}

QTEST_MAIN(TestFilesList)
#include "tst_fileslist.moc"
