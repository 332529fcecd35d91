#include "core/Diagnosis/ProviderNetwork.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cstdint>
#include <netinet/in.h>
#include <optional>
#include <span>
#include <sys/socket.h>

namespace tarnwick {

namespace {

struct AddressBytes {
    std::array<std::uint8_t, sizeof(in6_addr)> bytes{};
    bool isIpv4 = false;
};

std::optional<AddressBytes> bytesOf(const std::string& address) {
    AddressBytes parsed;
    const std::string withoutScope = address.substr(0, address.find('%'));
    if (::inet_pton(AF_INET, withoutScope.c_str(), parsed.bytes.data()) == 1) {
        parsed.isIpv4 = true;
        return parsed;
    }
    if (::inet_pton(AF_INET6, withoutScope.c_str(), parsed.bytes.data()) == 1) {
        return parsed;
    }
    return std::nullopt;
}

struct Network {
    std::array<std::uint8_t, 2> start;
    unsigned bits;
};

bool isIn(const AddressBytes& address, const Network& network) {
    const unsigned value = unsigned{address.bytes[0]} << 8 | address.bytes[1];
    const unsigned start = unsigned{network.start[0]} << 8 | network.start[1];
    return (value ^ start) >> (16 - network.bits) == 0;
}

constexpr Network homes{.start = {192, 168}, .bits = 16};
constexpr Network selfAssignedIpv4{.start = {169, 254}, .bits = 16};
constexpr Network selfAssignedIpv6{.start = {0xFE, 0x80}, .bits = 10};
constexpr Network providersUsers{.start = {100, 64}, .bits = 10}; // behind its translation of addresses
constexpr std::array<Network, 5> internalIpv4{{
    {.start = {10, 0}, .bits = 8},
    providersUsers,
    selfAssignedIpv4,
    {.start = {172, 16}, .bits = 12},
    homes,
}};
constexpr std::array<Network, 2> internalIpv6{{
    {.start = {0xFC, 0}, .bits = 7},
    selfAssignedIpv6,
}};

} // namespace

bool isSameNetwork(const std::string& one, const std::string& other) {
    const auto first = bytesOf(one);
    const auto second = bytesOf(other);
    if (!first || !second || first->isIpv4 != second->isIpv4) {
        return false;
    }
    const std::ptrdiff_t size = first->isIpv4 ? 2 : 4;
    return std::equal(first->bytes.begin(), first->bytes.begin() + size, second->bytes.begin());
}

bool isInternalAddress(const std::string& address) {
    const auto parsed = bytesOf(address);
    if (!parsed) {
        return false;
    }
    const std::span<const Network> networks =
        parsed->isIpv4 ? std::span<const Network>(internalIpv4) : std::span<const Network>(internalIpv6);
    return std::ranges::any_of(networks, [&](const Network& one) { return isIn(*parsed, one); });
}

bool isSelfAssigned(const std::string& address) {
    const auto parsed = bytesOf(address);
    return parsed && isIn(*parsed, parsed->isIpv4 ? selfAssignedIpv4 : selfAssignedIpv6);
}

bool mayBeAtHome(const HopEvidence& second, const HopEvidence& first) {
    constexpr double mostMsAtHome = 1; // over a cable
    const auto parsed = bytesOf(second.address);
    if (!parsed || !isInternalAddress(second.address) || isIn(*parsed, providersUsers)) {
        return false;
    }
    return isIn(*parsed, homes) || !first.quietMs || !second.quietMs
           || *second.quietMs - *first.quietMs <= mostMsAtHome;
}

std::size_t endOfProvider(const std::vector<HopEvidence>& hops) {
    std::string first; // the first public address
    std::size_t end = 1;
    while (end < hops.size() && !hops[end].isHost) {
        const std::string& address = hops[end].address;
        if (!address.empty() && !isInternalAddress(address)) {
            if (first.empty()) {
                first = address;
            } else if (!isSameNetwork(first, address)) {
                break;
            }
        }
        ++end;
    }
    return end;
}

bool isProviderKnown(const std::vector<HopEvidence>& hops) {
    constexpr int mostUnknown = 1;
    int unknown = 0;
    for (std::size_t at = 1; at < endOfProvider(hops) && unknown <= mostUnknown; ++at) {
        const std::string& address = hops[at].address;
        if (!address.empty() && !isInternalAddress(address)) {
            return true;
        }
        unknown = address.empty() ? unknown + 1 : 0;
    }
    return unknown <= mostUnknown;
}

} // namespace tarnwick
