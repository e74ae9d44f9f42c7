#include "app/directoryitem.h"
#include "app/settings.h"
#include "app/utils.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLocale>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>

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
    void encodesLinesOf72Characters_data();
    void encodesLinesOf72Characters();
    void decodes_data();
    void decodes();
    void base64IsReversible();
    void longStringComesBack_data();
    void longStringComesBack();
    void shorterLongStringHidesTheOldPieces();
    void damagedLongStringEnds();
    void createsFolders();
    void firstFolderMustBeThere();
    void disabledImage();
    void fastMatch();
    void imageComesBackFromBase64();
    void folderTreeIsReadWhenOpened();

private:
    QTemporaryDir dir;
};

void UtilsTest::initTestCase()
{
    Settings::setFileName(dir.filePath(QStringLiteral("vesk.ini")));
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
    row(12, " 12b");
    row(1023, "1023b");
    row(1024, "1.00K");
    row(2304, "2.25K");
    row(10239, "10.00K");
    row(10240, "10.0K");
    row(102400, "100K");
    row(999 * 1024, "999K");
    row(1000 * 1024, "K");
    row(1023 * 1024, "K");
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
    QCOMPARE(today, now.toString(QStringLiteral("h:mm")));
    const QDate before(now.date().year() - 1, 3, 9);
    QCOMPARE(Utils::humanReadableDateTime(QDateTime(before, QTime(7, 5))),
             QStringLiteral("9 Mar ") + QString::number(before.year()).right(2));
    const QDate sameYear(now.date().year(), now.date().month() == 3 ? 4 : 3, 9);
    QCOMPARE(Utils::humanReadableDateTime(QDateTime(sameYear, QTime(7, 5))),
             sameYear.month() == 3 ? QStringLiteral("9 Mar") : QStringLiteral("9 Apr"));
}

void UtilsTest::encodesLinesOf72Characters_data()
{
    QTest::addColumn<int>("bytes");
    QTest::addColumn<QList<int>>("lineLengths");
    QTest::newRow("nothing") << 0 << QList<int>{0};
    QTest::newRow("one line exactly") << 54 << QList<int>{72};
    QTest::newRow("a tail of two never wraps") << 56 << QList<int>{76};
    QTest::newRow("a whole group wraps") << 57 << QList<int>{72, 4};
    QTest::newRow("two lines") << 108 << QList<int>{72, 72};
}

void UtilsTest::encodesLinesOf72Characters()
{
    QFETCH(int, bytes);
    QFETCH(QList<int>, lineLengths);
    const QString text = QString::fromLatin1(Utils::encodeBase64(QByteArray(bytes, 'x')));
    QList<int> lengths;
    for (const QString &line : text.split(QStringLiteral("\r\n")))
        lengths.append(int(line.size()));
    QCOMPARE(lengths, lineLengths);
}

void UtilsTest::decodes_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("plain") << QByteArray("Zm9vYmFy") << QByteArray("foobar");
    QTest::newRow("filled twice") << QByteArray("Zm8=") << QByteArray("fo");
    QTest::newRow("filled once") << QByteArray("Zg==") << QByteArray("f");
    QTest::newRow("line ends and junk") << QByteArray("Zm9v\r\n Ym*F-y") << QByteArray("foobar");
    QTest::newRow("cut off") << QByteArray("Zm9vYm") << QByteArray("foob");
    QTest::newRow("ends at the fill") << QByteArray("Zg==Zm9v") << QByteArray("f");
    QTest::newRow("only fill") << QByteArray("====") << QByteArray();
}

void UtilsTest::decodes()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, bytes);
    QCOMPARE(Utils::decodeBase64(text), bytes);
}

void UtilsTest::base64IsReversible()
{
    QRandomGenerator random(1);
    for (int length = 0; length < 200; ++length) {
        QByteArray bytes;
        for (int i = 0; i < length; ++i)
            bytes += char(random.bounded(256));
        QCOMPARE(Utils::decodeBase64(Utils::encodeBase64(bytes)), bytes);
        QCOMPARE(Utils::encodeBase64(bytes).replace("\r\n", ""), bytes.toBase64());
    }
}

void UtilsTest::longStringComesBack_data()
{
    QTest::addColumn<int>("length");
    for (const int length : {0, 1, 8191, 8192, 8193, 20000})
        QTest::addRow("%d", length) << length;
}

void UtilsTest::longStringComesBack()
{
    QFETCH(int, length);
    QString text;
    for (int i = 0; i < length; ++i)
        text += QChar(u'a' + i % 26);
    Utils::saveLongString(QStringLiteral("/vesk/long"), text);
    Settings::forceWrite();
    QCOMPARE(Utils::loadLongString(QStringLiteral("/vesk/long"), QStringLiteral("default")), text);
    QCOMPARE(Utils::loadLongString(QStringLiteral("/vesk/none"), QStringLiteral("default")),
             QStringLiteral("default"));
}

void UtilsTest::shorterLongStringHidesTheOldPieces()
{
    Utils::saveLongString(QStringLiteral("/vesk/long"), QString(20000, QLatin1Char('x')));
    Utils::saveLongString(QStringLiteral("/vesk/long"), QStringLiteral("short"));
    QCOMPARE(Utils::loadLongString(QStringLiteral("/vesk/long"), {}), QStringLiteral("short"));
}

void UtilsTest::damagedLongStringEnds()
{
    Utils::saveLongString(QStringLiteral("/vesk/long"), QStringLiteral("text"));
    Settings::writeFull(QStringLiteral("/vesk/long/data_count"), QStringLiteral("2000000000"));
    QElapsedTimer timer;
    timer.start();
    QVERIFY(
        Utils::loadLongString(QStringLiteral("/vesk/long"), {}).startsWith(QStringLiteral("text")));
    QVERIFY(timer.elapsed() < 1000);
}

void UtilsTest::createsFolders()
{
    const QString path = dir.filePath(QStringLiteral("a/b//c"));
    QVERIFY(Utils::createDirectory(path));
    QVERIFY(QDir(path).exists());
    QVERIFY(Utils::createDirectory(path));
    QVERIFY(Utils::createDirectory(QStringLiteral("single")));
    QVERIFY(!QDir(QStringLiteral("single")).exists());
    QFile file(dir.filePath(QStringLiteral("a/file")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(!Utils::createDirectory(dir.filePath(QStringLiteral("a/file/d"))));
}

void UtilsTest::firstFolderMustBeThere()
{
    QVERIFY(!QDir(QStringLiteral("/vesk-no-such-folder")).exists());
    QVERIFY(!Utils::createDirectory(QStringLiteral("/vesk-no-such-folder/b/c")));
    QVERIFY(!Utils::createDirectory(QStringLiteral("vesk-no-such-folder/b")));
}

void UtilsTest::disabledImage()
{
    QImage image(2, 1, QImage::Format_ARGB32);
    image.setPixel(0, 0, qRgba(10, 20, 31, 255));
    image.setPixel(1, 0, qRgba(255, 255, 255, 3));
    const QImage grey = Utils::makeDisabledImage(image);
    QCOMPARE(grey.pixel(0, 0), qRgba(20, 20, 20, 89));
    QCOMPARE(grey.pixel(1, 0), qRgba(255, 255, 255, 1));
    QCOMPARE(image, grey);
}

void UtilsTest::fastMatch()
{
    const QString pattern = QStringLiteral(".cpp  .h ");
    QVERIFY(Utils::fast_match(pattern, QStringLiteral("a.h")));
    QVERIFY(!Utils::fast_match(pattern, QStringLiteral("a.hpp")));
    QVERIFY(!Utils::fast_match(QStringLiteral("  "), QStringLiteral("a.h")));
}

void UtilsTest::imageComesBackFromBase64()
{
    QImage image(5, 3, QImage::Format_RGB32);
    image.fill(Qt::red);
    const QString path = dir.filePath(QStringLiteral("red.png"));
    QVERIFY(image.save(path));
    QCOMPARE(Utils::pix(Utils::pixData(path)).toImage().convertToFormat(image.format()), image);
    QVERIFY(Utils::pixData(dir.filePath(QStringLiteral("none.png"))).isEmpty());
}

void UtilsTest::folderTreeIsReadWhenOpened()
{
    const QString root = dir.filePath(QStringLiteral("tree"));
    QVERIFY(QDir().mkpath(root + QStringLiteral("/one/inner/.hidden")));
    QVERIFY(QDir().mkpath(root + QStringLiteral("/two")));
    QVERIFY(QFile::link(root + QStringLiteral("/one"), root + QStringLiteral("/link")));
    QFile file(root + QStringLiteral("/file"));
    QVERIFY(file.open(QIODevice::WriteOnly));

    QTreeWidget tree;
    auto *const item = new DirectoryItem(&tree, QStringLiteral("Root"), root);
    QCOMPARE(item->childCount(), 0);
    QCOMPARE(item->childIndicatorPolicy(), QTreeWidgetItem::ShowIndicator);

    // As a click on the branch does.
    tree.expandItem(item);
    QStringList names;
    for (int i = 0; i < item->childCount(); ++i)
        names.append(item->child(i)->text(0));
    QCOMPARE(names,
             (QStringList{QStringLiteral("link"), QStringLiteral("one"), QStringLiteral("two")}));
    auto *const one = dynamic_cast<DirectoryItem *>(item->child(1));
    QVERIFY(one);
    QCOMPARE(one->fullName(), root + QStringLiteral("/one/"));
    QCOMPARE(one->childCount(), 0);
    one->setOpen(true);
    QVERIFY(one->isExpanded());
    QCOMPARE(one->childCount(), 1);

    // Opened a second time it is not read again.
    one->setOpen(false);
    QVERIFY(QDir().mkpath(root + QStringLiteral("/one/late")));
    one->setOpen(true);
    QCOMPARE(one->childCount(), 1);

    auto *const two = dynamic_cast<DirectoryItem *>(item->child(2));
    QVERIFY(two->childIndicatorPolicy() != QTreeWidgetItem::ShowIndicator);
    QVERIFY(QDir().rmdir(root + QStringLiteral("/two")));
    two->setOpen(true);
    QVERIFY(!two->isExpanded());
}

QTEST_MAIN(UtilsTest)
#include "tst_utils.moc"
