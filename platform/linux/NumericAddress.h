// Addresses of the internet in digits.
#pragma once

#include <string>
#include <sys/socket.h>

namespace tarnwick {

/// With the interface of a link-local IPv6 address, as "fe80::1%wlan0". `size` is that of the whole address.
[[nodiscard]] std::string numericAddress(const sockaddr* address, socklen_t size);

} // namespace tarnwick
