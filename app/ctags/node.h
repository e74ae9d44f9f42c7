#pragma once

#include <QHash>
#include <QString>
#include <QVariant>

#include <memory>

namespace vesk {

/// One symbol of a text, in a tree of such. A node owns its first child and its
/// next sibling, and through them all below and after it: deleting the first
/// top-level node frees a whole tree.
struct Node
{
    explicit Node(Node *parentNode);
    ~Node();
    Node(const Node &) = delete;
    Node &operator=(const Node &) = delete;

    /// The node that follows in the order of a text outline, each parent before
    /// its children; null after the last one.
    const Node *following() const;

    Node *next = nullptr;
    Node *prev = nullptr;
    Node *parent; ///< null at top level
    Node *child = nullptr;
    int type = 0;       ///< a number of the parser's type table
    int start = 0;      ///< offset in the text, in UTF-16 units
    int start_line = 0; ///< 0-based
    int start_column = 0;
    int end = 0; ///< reserved for parsers that know it, as are the contexts
    int startContext = 0;
    int endContext = 0;
    QString name;
    std::unique_ptr<QHash<QString, QVariant>> params; ///< values of the parser's own
};

} // namespace vesk
