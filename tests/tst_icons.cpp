#include "app/utils.h"
#include "app/widgets/colorcombo.h"

#include <QFile>
#include <QPainter>
#include <QtTest>

using namespace Qt::StringLiterals;
using vesk::Utils;

namespace {

QStringList listedNames()
{
    QFile file(QStringLiteral(TEST_DATA_DIR "/icons/names.txt"));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts);
}

/// The size, in device-independent pixels, that a name asks for; empty for a
/// name that leaves it to the drawing.
QSize sizeOf(const QString &name)
{
    static const QRegularExpression sized(QStringLiteral("^(\\d+)x(\\d+)_"));
    static const QRegularExpression square(QStringLiteral("-(\\d+)$"));
    if (const auto match = sized.match(name); match.hasMatch())
        return {match.captured(1).toInt(), match.captured(2).toInt()};
    if (const auto match = square.match(name); match.hasMatch())
        return {match.captured(1).toInt(), match.captured(1).toInt()};
    return {};
}

/// The part of the image, in its pixels, that is not fully transparent.
QRect inkOf(const QImage &image)
{
    QRect ink;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (qAlpha(image.pixel(x, y)) > 0)
                ink |= QRect(x, y, 1, 1);
        }
    }
    return ink;
}

QStringList messages;

void keepMessage(QtMsgType, const QMessageLogContext &, const QString &text)
{
    messages << text;
}

} // namespace

/// The icon set: every listed name draws something of its size.
class TestIcons : public QObject
{
    Q_OBJECT
private slots:
    void everyNameDrawsItsSize_data();
    void everyNameDrawsItsSize();
    void namesDiffer();
    void missingOneIsReportedOnce();
    void disabledVariantIsGreyAndPale();
    void swatchesAreSharp();
};

void TestIcons::everyNameDrawsItsSize_data()
{
    QTest::addColumn<QString>("name");
    const QStringList names = listedNames();
    QCOMPARE(names.size(), 121);
    for (const QString &name : names)
        QTest::newRow(qPrintable(name)) << name;
}

void TestIcons::everyNameDrawsItsSize()
{
    QFETCH(QString, name);
    const QPixmap pixmap = Utils::icon(name);
    QVERIFY(!pixmap.isNull());
    QCOMPARE(pixmap.devicePixelRatio(), qApp->devicePixelRatio());
    const QSize wanted = sizeOf(name);
    if (!wanted.isEmpty())
        QCOMPARE(pixmap.deviceIndependentSize().toSize(), wanted);
    // A drawing that is clipped or a mere dot would show here: each fills most
    // of its square in one direction at least.
    const QRect ink = inkOf(pixmap.toImage());
    QVERIFY2(ink.width() * 2 >= pixmap.width() || ink.height() * 2 >= pixmap.height(),
             "hardly anything is drawn");
}

void TestIcons::namesDiffer()
{
    QHash<QByteArray, QString> seen;
    for (const QString &name : listedNames()) {
        const QImage image = Utils::icon(name).toImage().convertToFormat(QImage::Format_ARGB32);
        const QByteArray key =
            QByteArray(reinterpret_cast<const char *>(image.constBits()), image.sizeInBytes()) +
            QByteArray::number(image.width());
        QVERIFY2(!seen.contains(key), qPrintable(name + u" looks like "_s + seen.value(key)));
        seen.insert(key, name);
    }
}

void TestIcons::missingOneIsReportedOnce()
{
    const QtMessageHandler previous = qInstallMessageHandler(keepMessage);
    messages.clear();
    const bool firstNull = Utils::icon(QStringLiteral("16x16_NoSuchThing")).isNull();
    const bool secondNull = Utils::icon(QStringLiteral("16x16_NoSuchThing")).isNull();
    qInstallMessageHandler(previous);
    QVERIFY(firstNull);
    QVERIFY(secondNull);
    QCOMPARE(messages, QStringList{QStringLiteral("Utils::icon: 16x16_NoSuchThing.png not found")});
}

void TestIcons::disabledVariantIsGreyAndPale()
{
    const QString name = QStringLiteral("22x22_Save");
    const QImage plain = Utils::icon(name).toImage().convertToFormat(QImage::Format_ARGB32);
    const QImage pale = Utils::disabledIcon(name).toImage().convertToFormat(QImage::Format_ARGB32);
    QCOMPARE(pale.size(), plain.size());
    int coloured = 0;
    for (int y = 0; y < plain.height(); ++y) {
        for (int x = 0; x < plain.width(); ++x) {
            const QRgb from = plain.pixel(x, y);
            const QRgb to = pale.pixel(x, y);
            QCOMPARE(qAlpha(to), int(qAlpha(from) * 0.35));
            // Where nearly nothing shows, premultiplied storage rounds colours.
            if (qAlpha(to) < 80)
                continue;
            const int grey = (qRed(from) + qGreen(from) + qBlue(from)) / 3;
            QVERIFY(qAbs(qRed(to) - grey) <= 3);
            QCOMPARE(qRed(to), qGreen(to));
            QCOMPARE(qGreen(to), qBlue(to));
            ++coloured;
        }
    }
    QVERIFY(coloured > 100);
}

void TestIcons::swatchesAreSharp()
{
    const vesk::ColorCombo combo;
    const QPixmap swatch = combo.itemIcon(combo.findText(QStringLiteral("red"))).pixmap(16, 16);
    const int ratio = qRound(qApp->devicePixelRatio());
    QCOMPARE(swatch.width(), 16 * ratio);
    const QImage image = swatch.toImage();
    // The edge is as thick as one pixel of the layout.
    QCOMPARE(image.pixelColor(ratio - 1, 8), QColor(Qt::black));
    QCOMPARE(image.pixelColor(ratio, 8), QColor(Qt::red));
}

QTEST_MAIN(TestIcons)
#include "tst_icons.moc"
