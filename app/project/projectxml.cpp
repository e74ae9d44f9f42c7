#include "app/project/projectxml.h"

#include <QRegularExpression>
#include <QTextStream>
#include <QXmlStreamReader>

using namespace Qt::StringLiterals;

namespace vesk {

namespace {

// The document and the tree of items are walked and freed by recursion.
constexpr int maxDepth = 2500;
// Elements and attributes; a node takes up to some 300 bytes.
constexpr qint64 maxNodes = 2'000'000;

/// Where \a closing ends in \a bytes at or after \a from; the size if it doesn't.
qsizetype endOf(const QByteArray &bytes, const char *closing, qsizetype from)
{
    const qsizetype at = bytes.indexOf(closing, from);
    return at < 0 ? bytes.size() : at + qsizetype(qstrlen(closing));
}

/// True if the document type has declarations of its own. They are looked for in the
/// bytes: a parser would take all of them in first. The document could not keep them.
bool hasDeclarations(const QByteArray &bytes)
{
    qsizetype at = 0;
    for (;;) {
        at = bytes.indexOf('<', at);
        if (at < 0)
            return false;
        const QByteArrayView rest = QByteArrayView(bytes).sliced(at);
        if (rest.startsWith("<?"))
            at = endOf(bytes, "?>", at);
        else if (rest.startsWith("<!--"))
            at = endOf(bytes, "-->", at + 4);
        else
            break;
    }
    if (!QByteArrayView(bytes).sliced(at).startsWith("<!DOCTYPE"))
        return false;
    char quote = 0;
    for (; at < bytes.size(); ++at) {
        const char c = bytes.at(at);
        if (quote)
            quote = c == quote ? 0 : quote;
        else if (c == '"' || c == '\'')
            quote = c;
        else if (c == '[')
            return true;
        else if (c == '>')
            return false;
    }
    return false;
}

/// Reads \a bytes through without building anything.
bool isHarmless(const QByteArray &bytes)
{
    // In UTF-16 the reader below finds the declarations; such a file is never ours.
    if (hasDeclarations(bytes))
        return false;
    QXmlStreamReader reader(bytes);
    reader.setNamespaceProcessing(false);
    int depth = 0;
    qint64 nodes = 0;
    while (!reader.atEnd()) {
        switch (reader.readNext()) {
        case QXmlStreamReader::StartElement:
            nodes += 1 + reader.attributes().size();
            if (++depth > maxDepth || nodes > maxNodes)
                return false;
            break;
        case QXmlStreamReader::EndElement:
            --depth;
            break;
        case QXmlStreamReader::DTD:
            if (reader.text().contains(u'['))
                return false;
            break;
        case QXmlStreamReader::Comment:
        case QXmlStreamReader::ProcessingInstruction:
        case QXmlStreamReader::Characters:
            ++nodes;
            break;
        case QXmlStreamReader::NoToken:
        case QXmlStreamReader::Invalid:
        case QXmlStreamReader::StartDocument:
        case QXmlStreamReader::EndDocument:
        case QXmlStreamReader::EntityReference:
            break;
        }
    }
    return !reader.hasError();
}

/// The toolkit writes in the encoding that the document declares, and loses what that
/// one lacks.
void declareUtf8(QDomDocument &doc)
{
    QDomNode first = doc.firstChild();
    if (!first.isProcessingInstruction() || first.nodeName() != "xml"_L1)
        return;
    static const QRegularExpression encoding(uR"((encoding\s*=\s*)(["'])[^"']*["'])"_s);
    QString declaration = first.nodeValue();
    first.setNodeValue(declaration.replace(encoding, uR"(\1\2UTF-8\2)"_s));
}

} // namespace

QDomDocument ProjectXml::parse(const QByteArray &bytes)
{
    QDomDocument doc;
    // A failure can leave a part of the tree.
    if (!isHarmless(bytes) || !doc.setContent(bytes))
        return QDomDocument();
    return doc;
}

QByteArray ProjectXml::newProject(const QString &name)
{
    return "<!DOCTYPE veskproject>\n<veskproject>\n    <project version=\"8.0\" name=\"" +
           name.toUtf8() + "\" />\n</veskproject>";
}

QByteArray ProjectXml::toBytes(QDomDocument doc)
{
    declareUtf8(doc);
    QByteArray bytes;
    QTextStream stream(&bytes);
    stream << doc;
    stream.flush();
    return bytes;
}

QDomElement ProjectXml::projectElement(const QDomDocument &doc)
{
    return doc.documentElement().firstChildElement();
}

bool ProjectXml::dropTransient(QDomNode root)
{
    bool hasDropped = false;
    for (QDomNode child = root.firstChild(); !child.isNull();) {
        QDomElement element = child.toElement();
        element.removeAttribute(u"open"_s);
        hasDropped |= dropTransient(child);
        child = child.nextSibling();
        if (element.attribute(u"type"_s) == "temp"_L1) {
            root.removeChild(element);
            hasDropped = true;
        }
    }
    return hasDropped;
}

bool ProjectXml::canHold(QStringView text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c.isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate()) {
            ++i;
            continue;
        }
        const bool isControl = c < u' ' && c != u'\t' && c != u'\n' && c != u'\r';
        if (isControl || c.isSurrogate() || c.unicode() >= 0xfffe)
            return false;
    }
    return true;
}

} // namespace vesk
