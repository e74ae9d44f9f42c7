#pragma once

#include <QByteArray>
#include <QDomDocument>
#include <QStringView>

namespace vesk {

/// The project file as bytes and as a document.
namespace ProjectXml {

/// A larger file is not loaded, in bytes.
constexpr qint64 maxFileSize = 50 * 1024 * 1024;

/// Null if \a bytes are no well-formed XML, or of a kind that would exhaust memory or
/// stack: with declarations in the document type, nested too deep, with too many nodes.
QDomDocument parse(const QByteArray &bytes);

/// A new project as text, or what it comes to: \a name is not escaped, which is meant,
/// so that a name with a quote gives no well-formed XML.
QByteArray newProject(const QString &name);

/// In UTF-8, also if the document was read in another encoding.
QByteArray toBytes(QDomDocument doc);

/// The element that stands for the project: the first one in the outermost element,
/// whatever their tags are.
QDomElement projectElement(const QDomDocument &doc);

/// Drops what lives only while the project is open: the attributes "open" and the
/// nodes of the type "temp" below \a root. True if any node was dropped.
bool dropTransient(QDomNode root);

/// False if \a text has a character that XML cannot hold.
bool canHold(QStringView text);

} // namespace ProjectXml

} // namespace vesk
