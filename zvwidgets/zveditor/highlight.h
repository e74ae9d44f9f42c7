#pragma once

#include "zvwidgets/zveditor/highlight/highlightdefinition.h"

#include <QString>

#include <memory>

namespace zvwidgets {

class HighlightScanner;
class HighlightSettings;
class TextLine;
struct TextAttribute;

/// A definition made ready to run over lines, with the user's colours. The rules
/// are shared between all objects of one definition and are never changed; the
/// attributes belong to the object. One thread only, not reentrant.
class TextHighlight
{
public:
    static constexpr int tableSize = HighlightDefinition::tableSize;

    /// \a name is a file name in the resources directory of \a settings or the key of
    /// a built-in definition; an unknown one gives plain text. Without \a settings,
    /// which are not owned, only built-in definitions are found and none is read.
    TextHighlight(const QString &name, HighlightSettings *settings);
    virtual ~TextHighlight();

    /// Colours \a textLine, beginning in the context the line starts in.
    void highlight(TextLine *textLine);
    /// Follows the context through \a textLine, which starts in \a ctx and loses
    /// its colours; returns the context the next line starts in.
    int doHighlight(int ctx, TextLine *textLine);

    /// The attribute of a character's attribute number as a line stores it.
    /// Never null: a number this definition does not have answers item 0, or a
    /// plain attribute if there are no items. To list the items walk
    /// `attributeList` up to the first null.
    TextAttribute *attribute(int n) const;
    QString name() const { return hname; }
    /// What this object shares with others of its definition.
    const HighlightDefinition &rules() const { return *definition; }

    HighlightContext *contextList[tableSize]; ///< from `Contents`, null where there is none
    HighlightContext *ctnList[tableSize];     ///< from `Break`, null where there is none
    TextAttribute *attributeList[tableSize];  ///< from `Items`, owned
    QString hname;

private:
    Q_DISABLE_COPY_MOVE(TextHighlight)
    void createItemData();
    void tellDropped(HighlightScanner *scanner) const;

    HighlightSettings *const settings; ///< may be null
    std::shared_ptr<const HighlightDefinition> definition;
};

} // namespace zvwidgets
