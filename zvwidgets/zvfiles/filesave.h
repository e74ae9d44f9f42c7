#pragma once

#include <QString>

#include <functional>

class QIODevice;

namespace zvwidgets {

/// Writes the whole content of a file; false with an error if it cannot.
using WriteContent = std::function<bool(QIODevice &device, QString *error)>;

/// Gives the file at \a path, which may not exist yet and is not followed if it is a
/// link, the content that \a write writes. False with \a error, which names the
/// system's reason, if that cannot be done; the old file is untouched then.
///
/// The file is replaced in one step by a new one with the same owner, rights, access
/// control list and extended attributes. Where that would part it from its other
/// names, or this user may not do it, the old file is overwritten, while both contents
/// are kept aside (see KeptCopies). Either way the old or the new content is there
/// whole at every moment.
[[nodiscard]] bool saveContent(const QString &path, const WriteContent &write, QString *error);

} // namespace zvwidgets
