#pragma once

#include <QIcon>
#include <QMap>
#include <QObject>
#include <QString>

#include <map>
#include <memory>

namespace vesk {

struct Node;

/// Turns texts into trees of symbols. This base keeps the last tree of each file,
/// so that a text that has not changed is not parsed again; a subclass starts the
/// parse of one text and emits nodes() when it is done. Nothing blocks: a parse
/// answers with a key, and the tree comes later under that key.
///
/// Trees belong to the cache. Who keeps one has to let go of it at dropped().
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
    static int calculateKey(const QString &text);

    /// The newest tree of \a fileName; null if none was made.
    const Node *tree(const QString &fileName) const;
    /// True from parse() until nodes() of that key, or until the parse failed.
    bool isParsing(int key) const;

signals:
    /// The result of the parse that answered with \a key. Not owned.
    void nodes(int key, vesk::Node *node);
    /// A new tree of \a fileName is in the cache.
    void reparsed(const QString &fileName, vesk::Node *node);
    /// \a node, the first of a tree, is about to be freed.
    void dropped(vesk::Node *node);

protected:
    /// Starts the parse of \a text. Returns its key.
    virtual int parse(const QString &text) = 0;
    /// No result will come for \a key.
    void forget(int key);

private slots:
    void sendNodes();
    void cacheNodes(int key, vesk::Node *node);

private:
    struct Cached
    {
        int key;
        std::unique_ptr<Node> node;
    };
    struct Type
    {
        QString name;
        QIcon icon;
    };

    const Type *typeOf(const Node *node) const;

    QMap<int, Type> types;
    std::map<QString, Cached> cachedNodes; ///< by file name
    QMap<int, Node *> nodesToSend;         ///< cached trees to be delivered, by key
    QMap<int, QString> fileNames;          ///< of the parses in flight, by key
};

} // namespace vesk
