#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QIcon>
#include <QImage>
#include <QPixmap>
#include <QString>

namespace vesk {

/// Stateless helpers: icons by name, Base64, long settings, readable sizes and
/// dates, folders.
class Utils
{
public:
    /// The drawing of \a name at the size its name gives ("16x24_Make" is 16 wide
    /// and 24 high, "vesk-128" square, any other name has the drawing's own size),
    /// times the device pixel ratio. A missing one gives a null pixmap and is
    /// reported once.
    static QPixmap icon(const QString &name);
    /// The icon \a name with its pale disabled variant. It is drawn when it is
    /// first painted. A null icon if there is no such drawing.
    static QIcon iconSet(const QString &name);
    /// Two sizes of one icon, without a disabled variant of its own.
    static QIcon iconSet(const QString &smallPix, const QString &largePix);
    /// The disabled variant of icon(\a name).
    static QPixmap disabledIcon(const QString &name);

    /// True if \a val ends with any of the blank-separated parts of \a pattern.
    static bool fast_match(const QString &pattern, const QString &val);

    /// The image whose file bytes \a data holds in Base64.
    static QPixmap pix(const QByteArray &data);
    /// The bytes of a file in Base64; empty if it cannot be read.
    static QByteArray pixData(const QString &fname);
    /// Turns \a img grey with 35 % of its opacity, in place, and returns a copy.
    static QImage makeDisabledImage(QImage &img);

    /// Lines of 72 characters, ended by CR LF except the last.
    static QByteArray encodeBase64(const QByteArray &data);
    /// Skips all that is no Base64 and stops at the fill character.
    static QByteArray decodeBase64(const QByteArray &data);

    /// Stores a string of any length in pieces under the full key \a key, to
    /// which no prefix is added.
    static void saveLongString(const QString &key, const QString &val);
    static QString loadLongString(const QString &key, const QString &def);

    /// Makes the missing folders of \a path except its first component, which
    /// must be there. False at the first one that cannot be made.
    [[nodiscard]] static bool createDirectory(const QString &path);

    /// \a size in bytes. A value from 1000 up to below 1024 of a unit above bytes
    /// gives the unit alone: list columns are laid out for that.
    static QString humanReadableSize(unsigned int size);
    /// The time for today, else day and month, with the year if it is another one.
    static QString humanReadableDateTime(const QDateTime &dt);
};

} // namespace vesk
