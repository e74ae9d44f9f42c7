#pragma once

#include <QtGlobal>

namespace vesk {

/// What the message list holds, and what those who write into it keep to. Texts are
/// counted in UTF-16 units, directives included.
namespace MessageLimits {

/// The oldest row goes when this many are there.
constexpr uint rows = 500;
/// Of all rows together: rows are lines of files, and five hundred lines of megabytes
/// each would take the machine's memory.
constexpr qint64 text = 64 * 1024 * 1024;

/// A row longer than this shows the whole line only while all such rows of one file
/// are within longRows: each hit of a long line makes a copy of the line.
constexpr qsizetype longRow = 64 * 1024;
constexpr qint64 longRows = 8 * 1024 * 1024;
/// A longer row never shows the whole line.
constexpr qsizetype hugeRow = 1024 * 1024;
/// What such rows show on either side of the hit.
constexpr qsizetype excerpt = 200;

} // namespace MessageLimits

} // namespace vesk
