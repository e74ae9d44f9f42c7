#pragma once

#include "zvwidgets/zveditor/highlight/textattribute.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

namespace zvwidgets {

class HighlightSettings;
class TextHighlight;

/// What the options dialog edits for one definition.
struct HLConfigData
{
    QString name;
    QString fileMasks;
    TextAttribute *attributes[256] = {}; ///< not owned, ends at the first null
};

/// One known definition.
struct HighlightData
{
    QString name; ///< the definition's own name, key in the registry
    QString path; ///< file name in the resources directory, or key of a built-in
    QString mask; ///< file masks in force
};

/// The known definitions by name. Iteration order decides which of several
/// definitions claiming a file gets it, so it is fixed: 17 chains by the hash of
/// the name, in each the entry inserted last comes first. Owns its entries.
class HighlightDataDict
{
public:
    HighlightDataDict();
    ~HighlightDataDict();

    /// A second entry of a name stays behind the newer one, which is found.
    void insert(std::unique_ptr<HighlightData> data);
    /// The newest entry called \a name, null if there is none.
    HighlightData *find(const QString &name) const;
    /// All entries in iteration order.
    QList<HighlightData *> entries() const;
    /// The names in iteration order.
    QStringList keys() const;
    int count() const;

private:
    static constexpr int chainCount = 17;
    std::vector<std::unique_ptr<HighlightData>> chains[chainCount]; ///< oldest first
};

/// The registry of definitions: the built-in ones and the files of the resources
/// directory, with the user's file masks. Built when first asked for, it lives
/// as long as the process.
class TextHighlightManager
{
public:
    /// \a settings may be null: built-in definitions, no settings.
    static HighlightDataDict &highlights(HighlightSettings *settings);
    /// The definition whose masks take the base name of \a fileName, plain text
    /// if none does. The caller owns the result.
    static TextHighlight *findHighlight(HighlightSettings *settings, const QString &fileName);
    /// The definition called \a highlightName, plain text if there is none. The
    /// caller owns the result.
    static TextHighlight *highlight(HighlightSettings *settings, const QString &highlightName);

    /// A registry of its own, as highlights() builds it once.
    static std::unique_ptr<HighlightDataDict> buildRegistry(HighlightSettings *settings);
};

} // namespace zvwidgets
