// What tests of real sockets share: the two loopback addresses, and whether this machine lets us ping them.
#pragma once

#include "core/FileDescriptor.h"
#include "core/Pinger/PingNetwork.h"
#include "core/Pinger/Resolve.h"
#include "tests/core/Required.h"

#include <cerrno>
#include <cstring>
#include <netinet/in.h>
#include <ostream>
#include <sys/socket.h>

namespace tarnwick::test {

struct Loopback {
    std::int32_t family;
    const char* address;
    const char* name;

    friend std::ostream& operator<<(std::ostream& out, const Loopback& loopback) {
        return out << loopback.name;
    }
};

inline constexpr Loopback ipv4Loopback{AF_INET, "127.0.0.1", "Ipv4"};
inline constexpr Loopback ipv6Loopback{AF_INET6, "::1", "Ipv6"};

inline ResolvedAddress addressOf(const Loopback& loopback) {
    return std::get<std::vector<ResolvedAddress>>(resolve(loopback.address)).front();
}

/// Such a socket as any other program opens it, with nothing set.
inline FileDescriptor plainPingSocket(std::int32_t family) {
    return FileDescriptor(::socket(
        family, SOCK_DGRAM | SOCK_CLOEXEC, family == AF_INET ? int{IPPROTO_ICMP} : int{IPPROTO_ICMPV6}));
}

/// Why this machine has no ping sockets for this loopback address; empty when it has.
inline std::string obstacleTo(const Loopback& loopback) {
    const FileDescriptor descriptor = plainPingSocket(loopback.family);
    const ResolvedAddress address = addressOf(loopback);
    const auto* target = reinterpret_cast<const sockaddr*>(address.sockaddr.data());
    if (descriptor.isOpen()
        && ::connect(descriptor.get(), target, static_cast<socklen_t>(address.sockaddr.size())) == 0) {
        return {};
    }
    return std::string("no ping sockets for ") + loopback.address
           + " (see net.ipv4.ping_group_range): " + std::strerror(errno);
}

/// Differs between test processes that run at the same time, and between the calls in one.
inline std::uint16_t identifierOfOurOwn() {
    static std::uint16_t next = 0;
    return static_cast<std::uint16_t>(0x8000 | ((::getpid() * 8 + next++) & 0x7FFF));
}

} // namespace tarnwick::test

/// To be called in SetUp.
#define TARNWICK_NEED_PING_SOCKETS(loopback)                                                                 \
    if (const std::string obstacle = ::tarnwick::test::obstacleTo(loopback); !obstacle.empty()) {            \
        TARNWICK_CANNOT_RUN(obstacle);                                                                       \
    }
