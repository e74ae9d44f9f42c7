#include "app/project/projectnodes.h"

#include <QDir>

using namespace Qt::StringLiterals;

namespace vesk {

namespace {

const QString nameAttribute = u"name"_s;
const QString typeAttribute = u"type"_s;
const QString urlAttribute = u"url"_s;

QString joined(const QString &folder, const QString &name)
{
    const QChar separator = QDir::separator();
    return folder == separator ? folder + name : folder + separator + name;
}

/// Calls \a visit for each element below \a top, with its local name; \a place is that
/// of \a top.
template <typename Visit>
void walk(const QDomNode &top, const QString &place, const Visit &visit)
{
    for (QDomElement element = top.firstChildElement(); !element.isNull();
         element = element.nextSiblingElement()) {
        const QString name = joined(place, element.attribute(nameAttribute));
        visit(element, name);
        walk(element, name, visit);
    }
}

} // namespace

bool ProjectNodes::isFile(const QDomElement &element)
{
    return element.attribute(typeAttribute) == "file"_L1;
}

QString ProjectNodes::localName(const QDomNode &node, const QDomNode &root)
{
    if (node.isNull())
        return QString();
    if (node == root)
        return QDir::separator();
    QStringList names;
    for (QDomNode above = node; !above.isNull() && above != root; above = above.parentNode())
        names.prepend(above.toElement().attribute(nameAttribute));
    return QDir::separator() + names.join(QDir::separator());
}

QString ProjectNodes::placeOf(const QDomNode &node, const QDomNode &root)
{
    const QString url = node.toElement().attribute(urlAttribute);
    return url.isEmpty() ? localName(node, root) : url;
}

QDomElement ProjectNodes::child(const QDomNode &parent, const QString &name)
{
    QDomElement element = parent.firstChildElement();
    while (!element.isNull() && element.attribute(nameAttribute) != name)
        element = element.nextSiblingElement();
    return element;
}

QDomNode ProjectNodes::find(const QDomNode &root, const QString &localName)
{
    QDomNode node = root;
    const QStringList names = localName.split(QDir::separator(), Qt::SkipEmptyParts);
    for (const QString &name : names)
        node = child(node, name);
    return node;
}

QDomNode ProjectNodes::findUrl(const QDomNode &root, const QString &url)
{
    for (QDomElement element = root.firstChildElement(); !element.isNull();
         element = element.nextSiblingElement()) {
        if (element.attribute(urlAttribute) == url)
            return element;
        const QDomNode below = findUrl(element, url);
        if (!below.isNull())
            return below;
    }
    return QDomNode();
}

QStringList ProjectNodes::localNames(const QDomNode &root)
{
    QStringList result;
    walk(root, QDir::separator(), [&](const QDomElement &element, const QString &name) {
        if (isFile(element))
            result.append(name);
    });
    return result;
}

QStringList ProjectNodes::places(const QDomNode &top, const QDomNode &root)
{
    QStringList result;
    walk(top, localName(top, root), [&](const QDomElement &element, const QString &name) {
        if (!isFile(element))
            return;
        const QString url = element.attribute(urlAttribute);
        result.append(url.isEmpty() ? name : url);
    });
    return result;
}

QStringList ProjectNodes::folders(const QDomNode &root)
{
    QStringList result{QDir::separator()};
    walk(root, QDir::separator(), [&](const QDomElement &element, const QString &name) {
        if (element.tagName() == "folder"_L1 || element.attribute(typeAttribute) == "container"_L1)
            result.append(name);
    });
    return result;
}

bool ProjectNodes::contains(const QDomNode &root, const QDomNode &node)
{
    QDomNode above = node;
    while (!above.isNull() && above != root)
        above = above.parentNode();
    return !above.isNull();
}

} // namespace vesk
