#include "platform/linux/NumericAddress.h"

#include <array>
#include <cstring>
#include <netdb.h>
#include <netinet/in.h>

namespace tarnwick {

namespace {

constexpr std::size_t longestNumericAddress = 128;

} // namespace

std::string numericAddress(const sockaddr* address, socklen_t size) {
    std::array<char, longestNumericAddress> text{};
    ::getnameinfo(address, size, text.data(), text.size(), nullptr, 0, NI_NUMERICHOST);
    return {text.data()};
}

std::string numericAddressOf(std::span<const std::byte> address, unsigned interface) {
    if (address.size() == sizeof(in_addr)) {
        sockaddr_in full{};
        full.sin_family = AF_INET;
        std::memcpy(&full.sin_addr, address.data(), sizeof full.sin_addr);
        return numericAddress(reinterpret_cast<const sockaddr*>(&full), sizeof full);
    }
    if (address.size() == sizeof(in6_addr)) {
        sockaddr_in6 full{};
        full.sin6_family = AF_INET6;
        std::memcpy(&full.sin6_addr, address.data(), sizeof full.sin6_addr);
        // Any other address is the same from everywhere.
        full.sin6_scope_id = IN6_IS_ADDR_LINKLOCAL(&full.sin6_addr) ? interface : 0;
        return numericAddress(reinterpret_cast<const sockaddr*>(&full), sizeof full);
    }
    return {};
}

} // namespace tarnwick
