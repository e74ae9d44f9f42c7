#pragma once

#include "zvwidgets/zvfileoperator/filehandle.h"

#include <map>

namespace zvwidgets {

/// Remembers which file systems were written to, and makes sure of all that arrived there.
class DeviceFlush
{
public:
    /// \a handle is an open file; its own kept open by a second handle.
    void add(int handle);
    /// Blocks until all is on the disk. False if any of it was lost.
    [[nodiscard]] bool flush();

private:
    /// A handle tells only of failures that happened while it was open, so the
    /// first one of each file system is kept.
    std::map<dev_t, FileHandle> devices;
};

} // namespace zvwidgets
