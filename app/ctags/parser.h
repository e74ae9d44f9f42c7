#pragma once

#include <QIcon>
#include <QMap>
#include <QObject>
#include <QString>
#include <QStringView>

#include <map>
#include <memory>

namespace vesk {

struct Node;

/// Turns texts into trees of symbols. This base keeps the last tree of each file,
/// so that a text that has not changed is not parsed again; a subclass starts the
/// parse of one text and emits nodes() when it is done. Nothing blocks: a parse
/// answers with a key, and the tree comes later under that key.
///
/// A tree lives while it is the newest of its file, or as long as somebody shares
/// it: tree() gives such a share.
class Parser : public QObject
{
    Q_OBJECT
public:
    explicit Parser(QObject *parent = nullptr);
    ~Parser() override;

    /// parse() of the bytes of a file, each byte taken as one character; 0 for a
    /// file that can't be read, and then nothing follows.
    virtual int parseFile(const QString &fileName);
    /// Has \a text, the present content of \a fileName, parsed, or its tree
    /// delivered from the cache. Returns the key under which nodes() comes.
    /// Nothing is started while a text of that key is being parsed.
    virtual int parse(const QString &text, const QString &fileName);
    /// The same for a text whose key is known already: it takes a walk through it.
    virtual int parse(const QString &text, const QString &fileName, int key);
    /// Name of the node's type; empty for an unknown one. A function whose name
    /// starts with "__" counts as a private one.
    virtual QString typeName(const Node *node) const;
    /// Icon of the node's type, by the same rule; null for an unknown one.
    virtual QIcon typeIcon(const Node *node) const;

    /// Line of the offset \a pos, 0-based; a line end belongs to the line below.
    static int pos2y(int pos, const QString &text);
    /// Distance of \a pos from the line end before it, or from the start of the
    /// text on the first line.
    static int pos2x(int pos, const QString &text);
    /// Offset of the last character of line \a y; \a x is ignored. For an empty
    /// line it lies in the line below, behind the last line it is past the end of
    /// the text: what compares symbols with a line relies on both.
    static int xy2pos(int x, int y, const QString &text);
    /// Sum of the character codes. Two texts may have the same key.
    static int calculateKey(QStringView text);
    /// The key of two texts in a row.
    static int joinedKey(int first, int second);

    /// The newest tree of \a fileName; null if none was made.
    std::shared_ptr<const Node> tree(const QString &fileName) const;
    /// True from parse() until nodes() of that key, or until the parse failed.
    bool isParsing(int key) const;

signals:
    /// The result of the parse that answered with \a key. When others than this
    /// class hear of it, the cache owns the tree.
    void nodes(int key, vesk::Node *node);
    /// A new tree of \a fileName is in the cache.
    void reparsed(const QString &fileName, vesk::Node *node);
    /// There will be no nodes() for \a key.
    void failed(int key);

protected:
    /// Starts the parse of \a text. Returns its key, which is keyOfText().
    virtual int parse(const QString &text) = 0;
    /// The key of the text that parse() is called with.
    int keyOfText() const { return startedKey; }
    /// To be called instead of emitting nodes(). Emits failed().
    void fail(int key);

private slots:
    void sendNodes();
    void cacheNodes(int key, vesk::Node *node);

private:
    struct Cached
    {
        int key;
        std::shared_ptr<Node> node;
    };
    struct Type
    {
        QString name;
        QIcon icon;
    };

    const Type *typeOf(const Node *node) const;

    QMap<int, Type> types;
    std::map<QString, Cached> cachedNodes;        ///< by file name
    QMap<int, std::shared_ptr<Node>> nodesToSend; ///< cached trees to be delivered, by key
    std::shared_ptr<Node> sentNode;               ///< the one being delivered from the cache
    QMap<int, QString> fileNames;                 ///< of the parses in flight, by key
    int startedKey = 0;
};

} // namespace vesk
