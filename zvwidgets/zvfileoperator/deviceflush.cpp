#include "zvwidgets/zvfileoperator/deviceflush.h"

#include <fcntl.h>

namespace zvwidgets {

void DeviceFlush::add(int handle)
{
    struct stat info;
    if (::fstat(handle, &info) != 0 || devices.contains(info.st_dev))
        return;
    FileHandle kept(::fcntl(handle, F_DUPFD_CLOEXEC, 0));
    if (kept.isOpen())
        devices.emplace(info.st_dev, std::move(kept));
}

bool DeviceFlush::flush()
{
    bool good = true;
    for (const auto &[device, handle] : devices) {
        const int number = handle.get();
        good = retried([number] { return ::syncfs(number); }) == 0 && good;
    }
    return good;
}

} // namespace zvwidgets
