#include "app/utils.h"

#include "app/namediconengine.h"
#include "app/settings.h"
#include "zvwidgets/utils.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QHash>
#include <QLocale>
#include <QPainter>
#include <QSvgRenderer>

#include <algorithm>
#include <array>

// The macro works in the global namespace only.
static void initIconResources()
{
    Q_INIT_RESOURCE(vesk);
}

namespace vesk {

namespace {

const char *const base64Alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr int base64Invalid = -1;
constexpr int base64Fill = -2;
constexpr int longStringPieceBits = 13;

// Null pixmaps are kept too, so that a missing drawing is reported once.
QHash<QString, QPixmap> &pixmapCache()
{
    static auto *const cache = new QHash<QString, QPixmap>;
    return *cache;
}

/// What the name of an icon asks for.
struct IconName
{
    explicit IconName(const QString &name);

    QString subject;
    /// In device-independent pixels; empty means the drawing's own.
    QSize size;
};

/// The number \a text is, -1 if it is none.
int edgeLength(QStringView text)
{
    const bool isNumber = !text.isEmpty() && std::all_of(text.begin(), text.end(), [](QChar c) {
        return c >= u'0' && c <= u'9';
    });
    return isNumber ? text.toInt() : -1;
}

// "22x22_Copy" or "vesk-128". Asked for each action at the start.
IconName::IconName(const QString &name) : subject(name)
{
    const qsizetype times = name.indexOf(u'x');
    const qsizetype underscore = name.indexOf(u'_', times + 1);
    if (times > 0 && underscore > times && underscore + 1 < name.size()) {
        const int width = edgeLength(QStringView(name).left(times));
        const int height = edgeLength(QStringView(name).mid(times + 1, underscore - times - 1));
        if (width >= 0 && height >= 0) {
            size = QSize(width, height);
            subject = name.mid(underscore + 1);
            return;
        }
    }
    const qsizetype dash = name.lastIndexOf(u'-');
    const int edge = dash > 0 ? edgeLength(QStringView(name).mid(dash + 1)) : -1;
    if (edge >= 0) {
        size = QSize(edge, edge);
        subject = name.left(dash);
    }
}

/// The resource of the drawing, null if there is none. One made for just this
/// size goes before the one of the subject.
QString drawingOf(const QString &name)
{
    static const bool ready = (initIconResources(), true);
    Q_UNUSED(ready);
    const QString pattern = QStringLiteral(":/vesk/icons/%1.svg");
    for (const QString &candidate : {pattern.arg(name), pattern.arg(IconName(name).subject)}) {
        if (QFile::exists(candidate))
            return candidate;
    }
    return {};
}

QPixmap render(const QString &name)
{
    const QString path = drawingOf(name);
    QSvgRenderer renderer;
    if (path.isNull() || !renderer.load(path))
        return {};
    renderer.setAspectRatioMode(Qt::KeepAspectRatio);
    const QSize wanted = IconName(name).size;
    const QSize size = wanted.isEmpty() ? renderer.defaultSize() : wanted;
    const qreal ratio = qGuiApp->devicePixelRatio();
    QPixmap pixmap((QSizeF(size) * ratio).toSize());
    if (pixmap.isNull())
        return {};
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    renderer.render(&painter, QRectF(QPointF(0, 0), QSizeF(size)));
    return pixmap;
}

/// The tail of \a length bytes, 1 to 3, as four characters.
void appendBase64Group(QByteArray &out, const char *bytes, int length)
{
    const auto byteAt = [bytes, length](int i) { return i < length ? uchar(bytes[i]) : uchar(0); };
    out += base64Alphabet[byteAt(0) >> 2];
    out += base64Alphabet[(byteAt(0) & 3) << 4 | byteAt(1) >> 4];
    out += length > 1 ? base64Alphabet[(byteAt(1) & 15) << 2 | byteAt(2) >> 6] : '=';
    out += length > 2 ? base64Alphabet[byteAt(2) & 63] : '=';
}

std::array<int, 256> base64Values()
{
    std::array<int, 256> values;
    values.fill(base64Invalid);
    for (int i = 0; i < 64; ++i)
        values.at(uchar(base64Alphabet[i])) = i;
    values.at('=') = base64Fill;
    return values;
}

QString longStringCountKey(const QString &key)
{
    return key + QStringLiteral("/data_count");
}

QString longStringPieceKey(const QString &key, int piece)
{
    return key + QStringLiteral("/data_") + QString::number(piece);
}

} // namespace

QPixmap Utils::icon(const QString &name)
{
    QHash<QString, QPixmap> &cache = pixmapCache();
    const auto known = cache.constFind(name);
    if (known != cache.constEnd())
        return *known;
    const QPixmap pixmap = render(name);
    if (pixmap.isNull())
        qDebug("%s", qPrintable(QStringLiteral("Utils::icon: ") + name +
                                QStringLiteral(".png not found")));
    cache.insert(name, pixmap);
    return pixmap;
}

QPixmap Utils::disabledIcon(const QString &name)
{
    const QString greyName = name + QStringLiteral("__gray");
    QHash<QString, QPixmap> &cache = pixmapCache();
    const auto known = cache.constFind(greyName);
    if (known != cache.constEnd())
        return *known;
    QImage image = icon(name).toImage();
    const QPixmap grey = QPixmap::fromImage(makeDisabledImage(image));
    cache.insert(greyName, grey);
    return grey;
}

QIcon Utils::iconSet(const QString &name)
{
    if (drawingOf(name).isNull())
        return QIcon(icon(name));
    return QIcon(new NamedIconEngine(name));
}

QIcon Utils::iconSet(const QString &smallPix, const QString &largePix)
{
    QIcon result(icon(smallPix));
    result.addPixmap(icon(largePix));
    return result;
}

bool Utils::fast_match(const QString &pattern, const QString &val)
{
    const QStringList endings = pattern.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (const QString &ending : endings) {
        if (val.endsWith(ending))
            return true;
    }
    return false;
}

QPixmap Utils::pix(const QByteArray &data)
{
    QPixmap pixmap;
    pixmap.loadFromData(decodeBase64(data));
    return pixmap;
}

QByteArray Utils::pixData(const QString &fname)
{
    QFile file(fname);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return encodeBase64(file.readAll());
}

QImage Utils::makeDisabledImage(QImage &img)
{
    img.convertTo(QImage::Format_ARGB32);
    for (int y = 0; y < img.height(); ++y) {
        auto *const line = reinterpret_cast<QRgb *>(img.scanLine(y));
        for (int x = 0; x < img.width(); ++x) {
            const QRgb pixel = line[x];
            const int grey = (qRed(pixel) + qGreen(pixel) + qBlue(pixel)) / 3;
            line[x] = qRgba(grey, grey, grey, int(qAlpha(pixel) * 0.35));
        }
    }
    return img.copy();
}

QByteArray Utils::encodeBase64(const QByteArray &data)
{
    constexpr int fullColumn = 69;
    QByteArray result;
    result.reserve(data.size() / 3 * 4 + data.size() / 54 * 2 + 4);
    const char *const bytes = data.constData();
    qsizetype at = 0;
    int column = 0;
    for (; data.size() - at >= 3; at += 3) {
        if (column > fullColumn) {
            result += "\r\n";
            column = 0;
        }
        appendBase64Group(result, bytes + at, 3);
        column += 4;
    }
    if (at < data.size())
        appendBase64Group(result, bytes + at, int(data.size() - at));
    return result;
}

QByteArray Utils::decodeBase64(const QByteArray &data)
{
    static const std::array<int, 256> values = base64Values();
    QByteArray result;
    result.reserve(data.size() / 4 * 3 + 3);
    uint bits = 0;
    int count = 0;
    for (const char c : data) {
        const int value = values.at(uchar(c));
        if (value == base64Invalid)
            continue;
        if (value == base64Fill)
            break;
        bits = bits << 6 | uint(value);
        if (++count % 4 != 1)
            result += char(bits >> (6 - 2 * ((count - 1) % 4)) & 0xff);
    }
    return result;
}

void Utils::saveLongString(const QString &key, const QString &val)
{
    const int count = int(val.size() >> longStringPieceBits) + 1;
    Settings::writeFull(longStringCountKey(key), QString::number(count));
    for (int i = 0; i < count; ++i) {
        const qsizetype from = qsizetype(i) << longStringPieceBits;
        Settings::writeFull(longStringPieceKey(key, i), val.mid(from, 1 << longStringPieceBits));
    }
}

QString Utils::loadLongString(const QString &key, const QString &def)
{
    const int count = Settings::readFull(longStringCountKey(key)).toInt();
    if (count == 0)
        return def;
    QString result;
    // A damaged count must not keep the program reading for minutes.
    bool found = true;
    for (int i = 0; i < count && found; ++i)
        result += Settings::readFull(longStringPieceKey(key, i), QString(), &found);
    return result;
}

bool Utils::createDirectory(const QString &path)
{
    const QChar separator = QDir::separator();
    const QString native = QString(path).replace(QLatin1Char('/'), separator);
    const QStringList parts = native.split(separator, Qt::SkipEmptyParts);
    if (parts.isEmpty())
        return true;
    QString folder = native.startsWith(separator) ? separator + parts.first() : parts.first();
    for (int i = 1; i < parts.size(); ++i) {
        folder += separator + parts.at(i);
        if (!QDir(folder).exists() && !QDir().mkdir(folder))
            return false;
    }
    return true;
}

QString Utils::humanReadableSize(unsigned int size)
{
    return zvwidgets::Utils::humanReadableSize(size);
}

QString Utils::humanReadableDateTime(const QDateTime &dt)
{
    const QDateTime now = QDateTime::currentDateTime();
    if (dt.date().year() != now.date().year())
        return QLocale().toString(dt, QStringLiteral("d MMM yy"));
    if (dt.date() != now.date())
        return QLocale().toString(dt, QStringLiteral("d MMM"));
    return QLocale().toString(dt, QStringLiteral("h:mm"));
}

} // namespace vesk
