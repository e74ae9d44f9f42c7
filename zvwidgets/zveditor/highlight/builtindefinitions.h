#pragma once

#include <QByteArray>

namespace zvwidgets {

/// The built-in definition of the key \a name; empty for an unknown key. The
/// bytes are not copied and stay valid for the life of the process.
QByteArray qembed_findData(const char *name);

} // namespace zvwidgets
