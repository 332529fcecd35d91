#include "platform/linux/NumericAddress.h"

#include <array>
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

} // namespace tarnwick
