#pragma once

#include "app/ctags/textlines.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringView>

#include <atomic>
#include <memory>

namespace vesk {

struct Node;

/// One symbol as the tool printed it.
struct CTagsLine
{
    QString tag;
    QString fullTag; ///< with the scope before it, the key of the tree building
    QString parent;  ///< the scope without its prefix
    QString oParent; ///< the scope as it was printed
    int type = 0;
    int line = 0; ///< 0-based
    int pos = 0;  ///< offset in the text, see Parser::xy2pos()
};

/// What the tool prints for one text, and the tree that comes of it.
class CTagsOutput
{
public:
    /// \a ext is the ending of the file's name with its dot: it decides what some
    /// kinds mean. Once \a isStopped, where given, is true, the result is of no use any
    /// more and all work ends early.
    CTagsOutput(const QString &text, const QString &ext,
                const std::atomic_bool *isStopped = nullptr);

    /// Takes one line of the tool's output without its line end. Lines of fewer
    /// than four fields are no symbols.
    void addLine(QStringView line);
    /// Takes all whole lines of \a output; what follows the last line end is left.
    void addLines(const QByteArray &output);

    const QList<CTagsLine> &entries() const { return lines; }

    /// The first node of the tree of all entries. Scopes that were not printed as
    /// symbols become namespaces. Of several symbols with one scoped name the last
    /// one is in the tree.
    std::unique_ptr<Node> buildTree() const;

private:
    const QString ext;
    const TextLines textLines;
    const std::atomic_bool *const isStopped;
    QList<CTagsLine> lines;
};

} // namespace vesk
