#pragma once

#include "zvwidgets/zveditor/pattern/textpattern.h"

#include <QByteArray>
#include <QChar>
#include <QList>
#include <QSet>
#include <QStringList>

namespace zvwidgets {

/// A rule that matches at the present position, where its text begins.
class HighlightItem
{
public:
    HighlightItem(int attribute, int context, int empty);
    virtual ~HighlightItem();

    /// Number of characters matched of the \a len at \a s; a value not above 0
    /// stands for none.
    virtual int find(const QChar *s, int len) const;

    const int attr;  ///< attribute number of a match
    const int ctx;   ///< context to go to after a match, -1 to stay
    const int empty; ///< context to go to when nothing matched, -1 for the next rule
    TextPattern regexp;

private:
    Q_DISABLE_COPY_MOVE(HighlightItem)
};

/// A rule that takes the text up to a match anywhere in the rest of the line.
class HighlightUntilItem : public HighlightItem
{
public:
    // The order of the flags is fixed: inc, then full.
    HighlightUntilItem(int attribute, int context, int empty, bool inc, bool full);
    int find(const QChar *s, int len) const override;

    const bool inc;  ///< the match itself belongs to the result
    const bool full; ///< no match takes the rest of the line
};

/// A rule whose match counts only if it is one of a list of words.
class HighlightKeyword : public HighlightItem
{
public:
    /// With \a caseSensitive false the candidate is lowered, not the \a list.
    HighlightKeyword(int attribute, int context, int empty, const QStringList &list,
                     bool caseSensitive);
    int find(const QChar *s, int len) const override;

    const bool caseSensitive;
    QSet<QByteArray> dict; ///< the words as Latin-1
};

/// The rules of one context in order, which it owns.
class HighlightContext : public QList<HighlightItem *>
{
public:
    HighlightContext() = default;
    ~HighlightContext();

private:
    Q_DISABLE_COPY_MOVE(HighlightContext)
};

} // namespace zvwidgets
