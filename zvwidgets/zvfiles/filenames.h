#pragma once

#include <QByteArray>
#include <QString>

namespace zvwidgets {

/// The bytes that the system knows a path by. A lone unit U+DC80 to U+DCFF stands
/// for one byte that is no UTF-8; any other text is encoded as usual.
QByteArray encodedPath(const QString &path);

/// A text for \a path from which encodedPath() makes the same bytes again, whatever
/// they are: each byte that is no UTF-8 becomes the lone unit U+DC00 plus the byte.
QString decodedPath(const QByteArray &path);

/// The folder that \a path lies in: "/" for "/name", "." for "name".
QByteArray parentPath(const QByteArray &path);
/// What follows the last "/" of \a path.
QByteArray entryName(const QByteArray &path);
QByteArray joinedPath(const QByteArray &folder, const QByteArray &name);

} // namespace zvwidgets
