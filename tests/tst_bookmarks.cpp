#include "app/bookmarks/bookmarks.h"
#include "tests/apptest.h"

#include <QLineEdit>
#include <QTreeWidget>
#include <QtTest>

using namespace Qt::StringLiterals;
using namespace vesk;

/// Named URLs: what is kept over a restart, and the dialogs that change them.
class TestBookmarks : public AppTest
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void namesComeBack_data();
    void namesComeBack();
    void storedOnceConfirmed();
    void categoriesShareUrlsOfOneName();
    void damagedSettingsAreRead_data();
    void damagedSettingsAreRead();
    void dialogEdits_data();
    void dialogEdits();
    void dialogKeepsItsSize();

private:
    void restart()
    {
        components.reset();
        Settings::setFileName(path(u"vesk.ini"_s));
        makeShell();
        components->makePanels();
        shell->rebuildUI();
        QVERIFY(showActive(shell));
    }
    /// The toolkit's own leaves the first press out.
    static void doubleClick(QWidget *widget, const QPoint &place)
    {
        QTest::mouseClick(widget, Qt::LeftButton, {}, place);
        QTest::mouseDClick(widget, Qt::LeftButton, {}, place);
    }
    BookmarkMap stored() const { return Bookmarks::self()->bookmarks(u"c"_s); }
};

void TestBookmarks::init()
{
    failOnBadConnects();
    makeProfile();
    restart();
}

void TestBookmarks::cleanup()
{
    dropShell();
}

void TestBookmarks::namesComeBack_data()
{
    const Rows<QStringList> row("names");
    row("paths", {u"/"_s, u"/usr/local"_s, u"/usr"_s, u"~"_s});
    row("what looks alike as a key", {u"/a/b"_s, u"/a//b"_s, u"/a/b/"_s, u"a/b"_s});
    row("what keys refuse", {u"/a=b"_s, u"/a\nb"_s, u"/a\rb"_s, u"="_s});
    row("what stands for these", {u"%/a%3db"_s, u"/a=b"_s, u"%%2fa%3db"_s});
    row("lists and blanks", {u"a,b"_s, u" a "_s, u"@x"_s, u"\"q\""_s, QString()});
    row("bytes that are no character", {u"/caf"_s + QChar(0xdce9), u"/\U0001f600"_s});
}

void TestBookmarks::namesComeBack()
{
    QFETCH(QStringList, names);
    BookmarkMap expected;
    for (const QString &name : std::as_const(names)) {
        expected.insert(name, u"to "_s + name);
        Bookmarks::self()->addBookmark(u"c"_s, name, u"to "_s + name);
    }
    restart();
    QCOMPARE(stored(), expected);
    Bookmarks::self()->addBookmark(u"c"_s, names.first(), u"other"_s);
    QCOMPARE(stored().value(names.first()), u"other"_s);
    QCOMPARE(stored().size(), expected.size());
}

void TestBookmarks::storedOnceConfirmed()
{
    Bookmarks::self()->addBookmark(u"c"_s, u"/usr"_s, u"/usr"_s);
    // As another program finds it after a crash of this one.
    QVERIFY(QFile::copy(path(u"vesk.ini"_s), path(u"copy.ini"_s)));
    QSettings copy(path(u"copy.ini"_s), QSettings::IniFormat);
    QCOMPARE(copy.value(u"bookmarks/categories"_s).toStringList(), QStringList(u"c"_s));
    QCOMPARE(copy.value(u"bookmarks/bookmarks_c"_s).toStringList(), QStringList(u"/usr"_s));
    QCOMPARE(copy.value(u"bookmarks/bookmark_/usr"_s), u"/usr"_s);
}

void TestBookmarks::categoriesShareUrlsOfOneName()
{
    Bookmarks::self()->addBookmark(u"a"_s, u"x"_s, u"first"_s);
    Bookmarks::self()->addBookmark(u"c"_s, u"x"_s, u"second"_s);
    QVERIFY(Bookmarks::self()->bookmarks(u"looked up"_s).isEmpty());
    restart();
    QCOMPARE(Bookmarks::self()->bookmarks(u"a"_s).value(u"x"_s), u"second"_s);
    QCOMPARE(Settings::readList(u"/bookmarks/categories"_s),
             QStringList({u"a"_s, u"c"_s, u"looked up"_s}));
}

void TestBookmarks::damagedSettingsAreRead_data()
{
    const Rows<QString, QStringList, QStringList> row("ini", "names", "urls");
    row("doubled", "categories=c, c\nbookmarks_c=x, x\nbookmark_x=/x\n", {u"x"_s}, {u"/x"_s});
    row("an URL is missing", "categories=c\nbookmarks_c=x, y\nbookmark_y=/y\n", {u"x"_s, u"y"_s},
        {QString(), u"/y"_s});
    row("no names", "categories=c\nbookmark_x=/x\n", {}, {});
    row("no list", "categories=@Invalid()\nbookmarks_c=x\n", {}, {});
    row("a comma without quotes", "categories=c\nbookmarks_c=x\nbookmark_x=/a,b\n", {u"x"_s},
        {u"/a,b"_s});
}

void TestBookmarks::damagedSettingsAreRead()
{
    QFETCH(QString, ini);
    QFETCH(QStringList, names);
    QFETCH(QStringList, urls);
    dropShell();
    write(u"vesk.ini"_s, "[bookmarks]\n" + ini.toUtf8());
    restart();
    QCOMPARE(QStringList(stored().keys()), names);
    QCOMPARE(QStringList(stored().values()), urls);
}

void TestBookmarks::dialogEdits_data()
{
    const Rows<QString, QString, bool, QStringList> row("button", "keys", "isAccepted", "expected");
    row("added", "addButton", "new", true, {u"a=1"_s, u"b=2"_s, u"new=url"_s});
    row("the later of two names counts", "addButton", "a", true, {u"a=url"_s, u"b=2"_s});
    row("edited", "editButton", "z", true, {u"b=2"_s, u"z=url"_s});
    row("edited by Return", "\r", "z", true, {u"b=2"_s, u"z=url"_s});
    row("edited by Space", " ", "z", true, {u"b=2"_s, u"z=url"_s});
    row("edited by a double click", "", "z", true, {u"b=2"_s, u"z=url"_s});
    row("removed", "removeButton", "", true, {u"b=2"_s});
    row("cancelled", "removeButton", "", false, {u"a=1"_s, u"b=2"_s});
}

void TestBookmarks::dialogEdits()
{
    QFETCH(QString, button);
    QFETCH(QString, keys);
    QFETCH(bool, isAccepted);
    QFETCH(QStringList, expected);
    Bookmarks::self()->addBookmark(u"c"_s, u"a"_s, u"1"_s);
    Bookmarks::self()->addBookmark(u"c"_s, u"b"_s, u"2"_s);
    const auto fill = [&](QWidget *dialog) {
        dialog->findChild<QLineEdit *>(u"nameLineEdit"_s)->setText(keys);
        dialog->findChild<QLineEdit *>(u"urlLineEdit"_s)->setText(u"url"_s);
        dialog->findChild<QAbstractButton *>(u"buttonOk"_s)->click();
    };
    Responder responder;
    responder.expect([&](QWidget *dialog) {
        // Works while this one waits for the dialog to end that a button opens.
        Responder inner;
        if (!keys.isEmpty())
            inner.expect(fill);
        auto *const list = dialog->findChild<QTreeWidget *>(u"bookmarkListView"_s);
        if (button.endsWith(u"Button"))
            dialog->findChild<QAbstractButton *>(button)->click();
        else if (button.isEmpty())
            doubleClick(list->viewport(), list->visualItemRect(list->topLevelItem(0)).center());
        else
            QTest::keyClick(list, button == u" " ? Qt::Key_Space : Qt::Key_Return);
        QVERIFY(inner.isDone());
        dialog->findChild<QAbstractButton *>(isAccepted ? u"buttonOk"_s : u"buttonCancel"_s)
            ->click();
    });
    Bookmarks::self()->showManageDialog(u"c"_s);
    QVERIFY(responder.isDone());
    restart();
    QStringList rows;
    const BookmarkMap map = stored();
    for (auto it = map.cbegin(); it != map.cend(); ++it)
        rows.append(it.key() + u'=' + it.value());
    QCOMPARE(rows, expected);
}

void TestBookmarks::dialogKeepsItsSize()
{
    QSize seen;
    for (const bool isFirst : {true, false}) {
        Responder responder;
        responder.expect([&](QWidget *dialog) {
            if (isFirst)
                dialog->resize(611, 417);
            else
                seen = dialog->size();
            static_cast<QDialog *>(dialog)->reject();
        });
        Bookmarks::self()->showManageDialog(u"c"_s);
        QVERIFY(responder.isDone());
        restart();
    }
    QCOMPARE(seen, QSize(611, 417));
}

QTEST_MAIN(TestBookmarks)
#include "tst_bookmarks.moc"
