// One address of a host, as the resolver gave it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tarnwick {

struct ResolvedAddress {
    std::int32_t family = 0;            ///< AF_INET or AF_INET6
    std::vector<std::uint8_t> sockaddr; ///< the socket address to send to, unchanged (with its scope id)
    std::string display;                ///< in numeric form, to show

    friend bool operator==(const ResolvedAddress&, const ResolvedAddress&) = default;
};

} // namespace tarnwick
