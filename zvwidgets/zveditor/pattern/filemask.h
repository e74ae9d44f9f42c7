#pragma once

#include <QString>
#include <QStringList>

namespace zvwidgets {

/// The masks of a list: split at ";" if there is one, else at blanks, trimmed,
/// empty ones dropped.
QStringList splitFileMasks(const QString &masks);

/// True if one mask of the list \a masks takes the whole of \a fileName, upper
/// and lower case told apart. "*" stands for any text, "?" for a character,
/// "[...]" for one of a set or range, "[^...]" for one outside of it.
bool matchesFileMasks(const QString &masks, const QString &fileName);

} // namespace zvwidgets
