#include "app/ctags/node.h"

#include <utility>
#include <vector>

namespace vesk {

Node::Node(Node *parentNode) : parent(parentNode)
{}

Node::~Node()
{
    // A text has tens of thousands of symbols in one row: no recursion.
    std::vector<Node *> pending;
    const auto take = [&pending](Node *&link) {
        if (Node *node = std::exchange(link, nullptr))
            pending.push_back(node);
    };
    take(child);
    take(next);
    while (!pending.empty()) {
        const std::unique_ptr<Node> node(pending.back());
        pending.pop_back();
        take(node->child);
        take(node->next);
    }
}

const Node *Node::following() const
{
    if (child)
        return child;
    const Node *node = this;
    while (node && !node->next)
        node = node->parent;
    return node ? node->next : nullptr;
}

} // namespace vesk
