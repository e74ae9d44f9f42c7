#include "app/ctags/ctagsoutput.h"

#include "app/ctags/node.h"

#include <QSet>

#include <algorithm>
#include <deque>
#include <unordered_map>
#include <utility>

using namespace Qt::StringLiterals;

namespace vesk {

namespace {

/// Longer lines, and symbols in more scopes than that, are garbage that would make a
/// tree without end.
constexpr qsizetype longestLine = 65536;
constexpr qsizetype mostScopes = 100;

constexpr int variableType = 101;
constexpr int namespaceType = 114;

struct KindRow
{
    QLatin1StringView extensions; ///< with a blank on either side; empty for all
    char16_t kind;
    int type;
};

/// Rows further down override those above. That a "v" of C is listed like a
/// function is meant.
constexpr KindRow kindRows[] = {
    {{}, u'c', 102},
    {{}, u'm', 103},
    {{}, u'f', 103},
    {{}, u'd', 105},
    {{}, u'e', 106},
    {{}, u'F', 107},
    {{}, u'g', 108},
    {{}, u'v', 109},
    {{}, u'p', 110},
    {{}, u's', 111},
    {{}, u't', 112},
    {{}, u'u', 113},
    {{}, u'n', namespaceType},
    {" .c .cpp .h "_L1, u'm', 109},
    {" .c .cpp .h "_L1, u'v', 103},
    {" .java "_L1, u'm', 103},
    {" .java "_L1, u'f', 109},
};

constexpr QLatin1StringView scopePrefixes[] = {
    "class:"_L1, "enum:"_L1,   "file:"_L1,     "arity:"_L1,
    "union:"_L1, "struct:"_L1, "function:"_L1, "namespace:"_L1,
};

int typeOf(QStringView kind, const QString &ext)
{
    int type = variableType;
    const QString wanted = u' ' + ext + u' ';
    for (const KindRow &row : kindRows) {
        const bool isFor =
            row.extensions.isEmpty() || (!ext.isEmpty() && row.extensions.contains(wanted));
        if (isFor && kind.size() == 1 && kind[0] == row.kind)
            type = row.type;
    }
    return type;
}

QStringView scopeOf(QStringView field)
{
    for (const QLatin1StringView prefix : scopePrefixes) {
        if (field.startsWith(prefix))
            return field.mid(prefix.size());
    }
    return field;
}

/// The tool doubles backslashes, which names in TeX and PHP have.
QString plainName(QStringView field)
{
    return field.toString().replace("\\\\"_L1, "\\"_L1);
}

/// Makes the nodes of all entries, and links each of them once.
class TreeBuilder
{
public:
    TreeBuilder(const QList<CTagsLine> &lines, const std::atomic_bool *stopFlag)
        : isStopped(stopFlag)
    {
        for (const CTagsLine &line : lines) {
            if (hasToStop())
                break;
            entries.push_back(line);
            addNode(line);
        }
    }

    std::unique_ptr<Node> build()
    {
        makeMissingScopes();
        for (const CTagsLine &entry : entries) {
            if (hasToStop())
                break;
            link(entry);
        }
        if (top.lastChild)
            return std::move(firstTop);
        auto none = std::make_unique<Node>(nullptr);
        none->name = u"No tags found"_s;
        return none;
    }

private:
    struct Record
    {
        /// Here until it is linked. A node that another one of its scoped name
        /// shadows is never linked and goes at once.
        std::unique_ptr<Node> unlinked;
        Node *node = nullptr;
        Node *lastChild = nullptr;
    };

    bool hasToStop() const { return isStopped && *isStopped; }

    Record &addNode(const CTagsLine &entry)
    {
        auto node = std::make_unique<Node>(nullptr);
        node->name = entry.tag;
        node->type = entry.type;
        node->start = entry.pos;
        node->start_line = entry.line;
        Record &record = records[entry.fullTag];
        record.node = node.get();
        record.unlinked = std::move(node);
        return record;
    }

    void makeMissingScopes()
    {
        QSet<QString> seen;
        // The list grows meanwhile, at its end.
        for (std::size_t i = 0; i < entries.size() && !hasToStop(); ++i) {
            const QString scope = entries[i].parent;
            if (!scope.isEmpty() && !seen.contains(scope)) {
                seen.insert(scope);
                makeScope(scope);
            }
        }
    }

    void makeScope(const QString &scope)
    {
        CTagsLine entry;
        entry.type = namespaceType;
        for (const QString &piece : scope.split(u"::"_s, Qt::SkipEmptyParts)) {
            entry.parent = entry.fullTag;
            entry.tag = piece;
            entry.fullTag = entry.parent.isEmpty() ? piece : entry.parent + u"::"_s + piece;
            const auto known = records.find(entry.fullTag);
            if (known != records.end()) {
                entry.pos = known->second.node->start;
                entry.line = known->second.node->start_line;
                continue;
            }
            addNode(entry);
            entries.push_back(entry);
        }
    }

    void link(const CTagsLine &entry)
    {
        Record &record = records.at(entry.fullTag);
        if (!record.unlinked)
            return;
        const auto scope = entry.parent.isEmpty() ? records.end() : records.find(entry.parent);
        Record &above = scope == records.end() ? top : scope->second;
        Node *node = record.unlinked.get();
        node->parent = above.node;
        node->prev = above.lastChild;
        if (above.lastChild)
            above.lastChild->next = record.unlinked.release();
        else if (above.node)
            above.node->child = record.unlinked.release();
        else
            firstTop = std::move(record.unlinked);
        above.lastChild = node;
    }

    const std::atomic_bool *const isStopped;
    std::deque<CTagsLine> entries;
    std::unordered_map<QString, Record> records; ///< by scoped name
    Record top;
    std::unique_ptr<Node> firstTop;
};

} // namespace

CTagsOutput::CTagsOutput(const QString &text, const QString &ext_,
                         const std::atomic_bool *isStopped_)
    : ext(ext_), textLines(text), isStopped(isStopped_)
{}

void CTagsOutput::addLine(QStringView line)
{
    if (line.size() > longestLine)
        return;
    const QList<QStringView> fields = line.split(u'\t', Qt::SkipEmptyParts);
    if (fields.size() <= 3 || fields.value(4).count("::"_L1) >= mostScopes)
        return;
    CTagsLine entry;
    entry.tag = plainName(fields[0]);
    entry.oParent = plainName(fields.value(4));
    entry.parent = scopeOf(entry.oParent).toString();
    entry.fullTag = entry.parent.isEmpty() ? entry.tag : entry.parent + u"::"_s + entry.tag;
    QStringView number = fields[2];
    if (number.endsWith(";\""_L1))
        number.chop(2);
    entry.line = qMax(number.toInt(), 0) - 1;
    entry.type = typeOf(fields[3], ext);
    entry.pos = textLines.lastPos(entry.line);
    lines.append(entry);
}

void CTagsOutput::addLines(const QByteArray &output)
{
    qsizetype start = 0;
    for (qsizetype end = output.indexOf('\n'); end >= 0; end = output.indexOf('\n', start)) {
        if (isStopped && *isStopped)
            return;
        addLine(QString::fromUtf8(QByteArrayView(output).sliced(start, end - start)));
        start = end + 1;
    }
}

std::unique_ptr<Node> CTagsOutput::buildTree() const
{
    return TreeBuilder(lines, isStopped).build();
}

} // namespace vesk
