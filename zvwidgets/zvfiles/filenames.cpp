#include "zvwidgets/zvfiles/filenames.h"

namespace zvwidgets {

namespace {

constexpr char16_t loneByte = 0xdc00;

bool isLoneByte(QStringView text, qsizetype i)
{
    const char16_t unit = text.at(i).unicode();
    return unit >= loneByte + 0x80 && unit <= loneByte + 0xff &&
           (i == 0 || !text.at(i - 1).isHighSurrogate());
}

/// The bytes of the character at the start of \a bytes, 0 if there is none.
qsizetype characterLength(QByteArrayView bytes, QString *character)
{
    const auto lead = uchar(bytes.front());
    const qsizetype length = lead < 0x80 ? 1 : lead < 0xe0 ? 2 : lead < 0xf0 ? 3 : 4;
    if (length > bytes.size())
        return 0;
    const QByteArray piece = bytes.first(length).toByteArray();
    *character = QString::fromUtf8(piece);
    return character->toUtf8() == piece ? length : 0;
}

} // namespace

QByteArray encodedPath(const QString &path)
{
    QByteArray bytes;
    qsizetype start = 0;
    for (qsizetype i = 0; i < path.size(); ++i) {
        if (!isLoneByte(path, i))
            continue;
        bytes += QStringView(path).sliced(start, i - start).toUtf8();
        bytes += char(path.at(i).unicode() - loneByte);
        start = i + 1;
    }
    return bytes += QStringView(path).sliced(start).toUtf8();
}

QString decodedPath(const QByteArray &path)
{
    QString text = QString::fromUtf8(path);
    // A byte-order mark is dropped and damage is replaced; neither comes back.
    if (text.toUtf8() == path)
        return text;
    text.clear();
    QString character;
    for (qsizetype i = 0; i < path.size();) {
        const qsizetype length = characterLength(QByteArrayView(path).sliced(i), &character);
        text += length ? character : QString(QChar(char16_t(loneByte + uchar(path.at(i)))));
        i += qMax(length, qsizetype(1));
    }
    return text;
}

QByteArray parentPath(const QByteArray &path)
{
    const qsizetype slash = path.lastIndexOf('/');
    if (slash < 0)
        return QByteArrayLiteral(".");
    return path.first(qMax(slash, qsizetype(1)));
}

QByteArray entryName(const QByteArray &path)
{
    return path.sliced(path.lastIndexOf('/') + 1);
}

QByteArray joinedPath(const QByteArray &folder, const QByteArray &name)
{
    return folder.endsWith('/') ? folder + name : folder + '/' + name;
}

} // namespace zvwidgets
