#include "app/ctags/parser.h"

#include "app/ctags/node.h"
#include "app/utils.h"

#include <QFile>
#include <QTimer>

#include <algorithm>
#include <numeric>
#include <utility>

using namespace Qt::StringLiterals;

namespace vesk {

namespace {

constexpr int functionType = 103;
constexpr int privateFunctionType = 104;

struct TypeRow
{
    int number;
    const char *name;
    const char *icon;
};

/// 101 is what an unknown kind becomes and 109 a known variable; they look alike.
constexpr TypeRow typeRows[] = {
    {101, "Variable", "16x16_tVariable"},
    {102, "Class", "16x16_tClass"},
    {functionType, "Function", "16x16_tFunction"},
    {privateFunctionType, "FunctionPrivate", "16x16_tFunctionPrivate"},
    {105, "Define", "16x16_tDefine"},
    {106, "Enumerator", "16x16_tEnumerator"},
    {107, "FileName", "16x16_tFileName"},
    {108, "Enumeration", "16x16_tEnumeration"},
    {109, "Variable", "16x16_tVariable"},
    {110, "Prototipe", "16x16_tPrototipe"},
    {111, "Structure", "16x16_tStructure"},
    {112, "Typedef", "16x16_tTypedef"},
    {113, "Union", "16x16_tUnion"},
    {114, "Namespace", "16x16_tNamespace"},
};

/// What the cache calls the file \a fileName.
QString cacheName(const QString &fileName)
{
    return fileName.isEmpty() ? u"Untitled"_s : fileName;
}

} // namespace

Parser::Parser(QObject *parent) : QObject(parent)
{
    setObjectName(u"Parser"_s);
    for (const TypeRow &row : typeRows)
        types.insert(row.number, {QString::fromLatin1(row.name),
                                  Utils::iconSet(QString::fromLatin1(row.icon))});
    connect(this, &Parser::nodes, this, &Parser::cacheNodes);
}

Parser::~Parser() = default;

int Parser::parseFile(const QString &fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    return parse(QString::fromLatin1(file.readAll()), fileName);
}

int Parser::parse(const QString &text, const QString &fileName)
{
    return parse(text, fileName, calculateKey(text));
}

int Parser::parse(const QString &text, const QString &fileName, int key)
{
    if (isParsing(key))
        return key;
    const QString name = cacheName(fileName);
    fileNames.insert(key, name);
    const auto cached = cachedNodes.find(name);
    if (cached == cachedNodes.end() || cached->second.key != key) {
        startedKey = key;
        return parse(text);
    }
    nodesToSend.insert(key, cached->second.node);
    QTimer::singleShot(0, this, &Parser::sendNodes);
    return key;
}

bool Parser::isParsing(int key) const
{
    return fileNames.contains(key);
}

void Parser::fail(int key)
{
    fileNames.remove(key);
    emit failed(key);
}

std::shared_ptr<const Node> Parser::tree(const QString &fileName) const
{
    const auto cached = cachedNodes.find(cacheName(fileName));
    return cached == cachedNodes.end() ? nullptr : cached->second.node;
}

void Parser::sendNodes()
{
    // Slots may start further parses.
    while (!nodesToSend.isEmpty()) {
        const int key = nodesToSend.firstKey();
        sentNode = nodesToSend.take(key);
        emit nodes(key, sentNode.get());
    }
    sentNode.reset();
}

void Parser::cacheNodes(int key, Node *node)
{
    const QString fileName = fileNames.take(key);
    const std::shared_ptr<Node> &newest = cachedNodes[fileName].node;
    if (newest.get() == node)
        return;
    // A tree sent from the cache may have been replaced there meanwhile.
    const bool isShared = sentNode && sentNode.get() == node;
    cachedNodes[fileName] = {key, isShared ? sentNode : std::shared_ptr<Node>(node)};
    emit reparsed(fileName, node);
}

const Parser::Type *Parser::typeOf(const Node *node) const
{
    const bool isPrivate = node->type == functionType && node->name.startsWith("__"_L1);
    const auto type = types.constFind(isPrivate ? privateFunctionType : node->type);
    return type == types.constEnd() ? nullptr : &*type;
}

QString Parser::typeName(const Node *node) const
{
    const Type *type = typeOf(node);
    return type ? type->name : QString();
}

QIcon Parser::typeIcon(const Node *node) const
{
    const Type *type = typeOf(node);
    return type ? type->icon : QIcon();
}

int Parser::pos2y(int pos, const QString &text)
{
    const qsizetype last = qMin<qsizetype>(qMax(pos, 0), text.size() - 1);
    return int(QStringView(text).first(last + 1).count(u'\n'));
}

int Parser::pos2x(int pos, const QString &text)
{
    const int from = qMax(pos, 0);
    if (from >= text.size())
        return from - qMax(0, int(text.lastIndexOf(u'\n')));
    return from - qMax(0, int(text.lastIndexOf(u'\n', from)));
}

int Parser::xy2pos(int, int y, const QString &text)
{
    qsizetype pos = 0;
    for (int passed = 0; passed < y && pos < text.size(); ++passed) {
        const qsizetype lineEnd = text.indexOf(u'\n', pos);
        pos = lineEnd < 0 ? text.size() : lineEnd + 1;
    }
    ++pos;
    if (pos >= text.size())
        return int(pos);
    const qsizetype lineEnd = text.indexOf(u'\n', pos);
    return int(lineEnd < 0 ? text.size() : lineEnd - 1);
}

int Parser::calculateKey(QStringView text)
{
    const char16_t *const units = text.utf16();
    return int(std::accumulate(units, units + text.size(), quint32(0)));
}

int Parser::joinedKey(int first, int second)
{
    return int(quint32(first) + quint32(second));
}

} // namespace vesk
