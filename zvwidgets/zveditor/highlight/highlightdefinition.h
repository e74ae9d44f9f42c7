#pragma once

#include "zvwidgets/zveditor/highlight/highlightrules.h"

#include <QByteArray>
#include <QList>
#include <QSet>
#include <QString>

#include <memory>
#include <vector>

namespace zvwidgets {

class HighlightScanner;

/// A definition as read, made ready to run. Shared by all who use it and never
/// changed, but for the notes of its scanners, which are for the main thread;
/// without colours of the user.
struct HighlightDefinition
{
    /// Entries of each table; what a definition has beyond it is ignored.
    static constexpr int tableSize = 256;

    using Contexts = std::vector<std::unique_ptr<HighlightContext>>;

    /// One child of `Items`.
    struct Item
    {
        QString name;
        QString style;
        QString color;
        QString bgcolor;
    };

    HighlightDefinition();
    ~HighlightDefinition();

    QString name;
    QList<Item> items;
    Contexts contents;
    Contexts breaks;
    /// No expression of `breaks` keeps notes while it matches: several threads can
    /// use them at a time, each with a scanner of its own.
    bool canShareBreaks = false;
    std::unique_ptr<HighlightScanner> contentScanner;
    std::unique_ptr<HighlightScanner> breakScanner;
    /// Expressions of which somebody was told that they cost too much.
    mutable QSet<QString> droppedRules;
};

/// Name and masks, which are all that is needed to choose a definition.
struct HighlightHead
{
    QString name;
    QString wildcards;
};

/// Name and masks of the definition \a xml, both empty if it is not well-formed.
HighlightHead readHighlightHead(const QByteArray &xml);
/// As readHighlightHead(), but looks no further than the root element: for data
/// known to be well-formed.
HighlightHead peekHighlightHead(const QByteArray &xml);

/// The definition \a xml; without name, items and contexts if it is not well-formed.
std::shared_ptr<const HighlightDefinition> readHighlightDefinition(const QByteArray &xml);

/// Path of \a name inside \a resourceDir; the file need not exist.
QString findHighlightPath(const QString &name, const QString &resourceDir);

/// The bytes of the definition file at \a path; null if it is no regular file, can't
/// be read, or is larger than any definition.
QByteArray readHighlightFile(const QString &path);

/// The definition with the path key \a name: a file of \a resourcesDir, a built-in
/// one, or plain text. Read once and kept for the life of the process.
std::shared_ptr<const HighlightDefinition> highlightDefinition(const QString &name,
                                                               const QString &resourcesDir);

} // namespace zvwidgets
