#include "app/directoryitem.h"
#include "app/settings.h"
#include "app/utils.h"
#include "tests/testing.h"

#include <QDir>
#include <QFile>
#include <QLocale>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>

using namespace Qt::StringLiterals;
using namespace vesk;

/// Sizes, dates, Base64, long settings, images and folders.
class UtilsTest : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void size_data();
    void size();
    void dateTime();
    void decodes_data();
    void decodes();
    void longStringComesBack();
    void createsFolders();
    void folderTreeIsReadWhenOpened();

private:
    QTemporaryDir dir;
};

void UtilsTest::initTestCase()
{
    Settings::setFileName(dir.filePath(u"vesk.ini"_s));
    QLocale::setDefault(QLocale::c());
}

void UtilsTest::size_data()
{
    QTest::addColumn<uint>("bytes");
    QTest::addColumn<QString>("text");
    const auto row = [](uint bytes, const char *text) {
        QTest::addRow("%u", bytes) << bytes << QString::fromLatin1(text);
    };
    row(0, "  0b");
    row(1023, "1023b");
    row(1024, "1.00K");
    row(10239, "10.00K");
    row(10240, "10.0K");
    row(1000 * 1024, "K");
    row(0xFFFFF, "K");
    row(0x100000, "1.00M");
    row(1000u << 20, "M");
    row(1u << 30, "1.00G");
    row(0xFFFFFFFF, "4.00G");
}

void UtilsTest::size()
{
    QFETCH(uint, bytes);
    QFETCH(QString, text);
    QCOMPARE(Utils::humanReadableSize(bytes), text);
}

void UtilsTest::dateTime()
{
    const QDateTime now = QDateTime::currentDateTime();
    const QString today = Utils::humanReadableDateTime(now);
    QCOMPARE(today, now.toString(u"h:mm"_s));
    const QDate before(now.date().year() - 1, 3, 9);
    QCOMPARE(Utils::humanReadableDateTime(QDateTime(before, QTime(7, 5))),
             u"9 Mar "_s + QString::number(before.year()).right(2));
    const QDate sameYear(now.date().year(), now.date().month() == 3 ? 4 : 3, 9);
    QCOMPARE(Utils::humanReadableDateTime(QDateTime(sameYear, QTime(7, 5))),
             sameYear.month() == 3 ? u"9 Mar"_s : u"9 Apr"_s);
}

void UtilsTest::decodes_data()
{
    const Rows<QByteArray, QByteArray> row("text", "bytes");
    row("plain", "Zm9vYmFy", "foobar");
    row("filled once", "Zg==", "f");
    row("line ends and junk", "Zm9v\r\n Ym*F-y", "foobar");
    row("cut off", "Zm9vYm", "foob");
    row("ends at the fill", "Zg==Zm9v", "f");
}

void UtilsTest::decodes()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, bytes);
    QCOMPARE(Utils::decodeBase64(text), bytes);
}

void UtilsTest::longStringComesBack()
{
    QString text;
    for (int i = 0; i < 20000; ++i)
        text += QChar(u'a' + i % 26);
    Utils::saveLongString(u"/vesk/long"_s, text);
    QCOMPARE(Utils::loadLongString(u"/vesk/long"_s, u"default"_s), text);
    // Pieces that a longer one left don't come back.
    QString shorter = u"short"_s;
    Utils::saveLongString(u"/vesk/long"_s, shorter);
    QCOMPARE(Utils::loadLongString(u"/vesk/long"_s, {}), shorter);
}

void UtilsTest::createsFolders()
{
    const QString path = dir.filePath(u"a/b//c"_s);
    QVERIFY(Utils::createDirectory(path));
    QVERIFY(QDir(path).exists());
    QVERIFY(Utils::createDirectory(path));
    writeFile(dir.filePath(u"a/file"_s), QByteArray());
    QVERIFY(!Utils::createDirectory(dir.filePath(u"a/file/d"_s)));
}

void UtilsTest::folderTreeIsReadWhenOpened()
{
    const QString root = dir.filePath(u"tree"_s);
    QVERIFY(QDir().mkpath(root + u"/one/inner/.hidden"_s));
    QVERIFY(QDir().mkpath(root + u"/two"_s));
    QVERIFY(QFile::link(root + u"/one"_s, root + u"/link"_s));
    writeFile(root + u"/file"_s, QByteArray());

    QTreeWidget tree;
    auto *const item = new DirectoryItem(&tree, u"Root"_s, root);
    QCOMPARE(item->childCount(), 0);
    QCOMPARE(item->childIndicatorPolicy(), QTreeWidgetItem::ShowIndicator);

    // As a click on the branch does.
    tree.expandItem(item);
    QStringList names;
    for (int i = 0; i < item->childCount(); ++i)
        names.append(item->child(i)->text(0));
    QCOMPARE(names, (QStringList{u"link"_s, u"one"_s, u"two"_s}));
    auto *const one = dynamic_cast<DirectoryItem *>(item->child(1));
    QVERIFY(one);
    QCOMPARE(one->fullName(), root + u"/one/"_s);
    QCOMPARE(one->childCount(), 0);
    one->setOpen(true);
    QVERIFY(one->isExpanded());
    QCOMPARE(one->childCount(), 1);

    // Opened a second time it is not read again.
    one->setOpen(false);
    QVERIFY(QDir().mkpath(root + u"/one/late"_s));
    one->setOpen(true);
    QCOMPARE(one->childCount(), 1);

    auto *const two = dynamic_cast<DirectoryItem *>(item->child(2));
    QVERIFY(two->childIndicatorPolicy() != QTreeWidgetItem::ShowIndicator);
    QVERIFY(QDir().rmdir(root + u"/two"_s));
    two->setOpen(true);
    QVERIFY(!two->isExpanded());
}

QTEST_MAIN(UtilsTest)
#include "tst_utils.moc"
