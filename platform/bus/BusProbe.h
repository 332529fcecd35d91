// Whether there is anybody at a bus address.
#pragma once

#include <string>

namespace tarnwick {

/// The library loses some memory at each attempt to connect to nobody, and a bus may be absent for days: so
/// this is asked first. Never blocks. True also for what is no local socket: then only trying tells.
[[nodiscard]] bool mayBeListening(const std::string& address);

} // namespace tarnwick
