// Addresses of the internet in digits.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <sys/socket.h>

namespace tarnwick {

/// With the interface of a link-local IPv6 address, as "fe80::1%wlan0". `size` is that of the whole address.
[[nodiscard]] std::string numericAddress(const sockaddr* address, socklen_t size);

/// Of the bytes of an IPv4 or IPv6 address on an interface; empty where they are neither.
[[nodiscard]] std::string numericAddressOf(std::span<const std::byte> address, unsigned interface);

} // namespace tarnwick
