#pragma once

#include <QDomElement>
#include <QStringList>

namespace vesk {

/// Where the nodes of a project stand. A node's local name is its path in the tree of
/// the project: "/" for the root, whose own name is no part of any path.
namespace ProjectNodes {

bool isFile(const QDomElement &element);

/// Empty for a null node.
QString localName(const QDomNode &node, const QDomNode &root);
/// Where the file of \a node is, below the folder of the project: its attribute "url",
/// or else its local name.
QString placeOf(const QDomNode &node, const QDomNode &root);

/// The first child of that name.
QDomElement child(const QDomNode &parent, const QString &name);
/// At each level only the first child of a name is looked at. Null if there is none.
QDomNode find(const QDomNode &root, const QString &localName);
/// The first node in document order whose attribute "url" is \a url.
QDomNode findUrl(const QDomNode &root, const QString &url);

/// Local names of all files, a node before those below it.
QStringList localNames(const QDomNode &root);
/// Places of all files below \a top, see placeOf().
QStringList places(const QDomNode &top, const QDomNode &root);
/// The local names of what can hold files, "/" first.
QStringList folders(const QDomNode &root);

/// True if \a node is part of the tree of \a root.
bool contains(const QDomNode &root, const QDomNode &node);

} // namespace ProjectNodes

} // namespace vesk
