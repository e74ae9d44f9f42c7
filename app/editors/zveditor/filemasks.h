#pragma once

#include <QString>

namespace vesk {

/// A list of file name masks in the syntax of the editor's own: separated by ";" if
/// there is one, else by blanks; upper and lower case are told apart.
class FileMasks
{
public:
    explicit FileMasks(const QString &masks);

    /// True if one of the masks takes the whole of \a name, or there is none at all.
    bool match(const QString &name) const;

private:
    QString masks; ///< empty if every name matches
};

} // namespace vesk
