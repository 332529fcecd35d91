#include "platform/linux/SystemName.h"

#include <sys/utsname.h>

namespace tarnwick {

SystemName systemName() {
    utsname told{};
    ::uname(&told); // can't fail with an address that is ours
    return {
        .name = static_cast<const char*>(told.sysname),
        .release = static_cast<const char*>(told.release),
        .machine = static_cast<const char*>(told.machine)};
}

} // namespace tarnwick
