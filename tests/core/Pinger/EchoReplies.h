// Echo replies as a peer makes them from requests, and the IPv4 header that some systems leave in front.
#pragma once

#include "core/Pinger/EchoMessage.h"

#include <sys/socket.h>
#include <vector>

namespace tarnwick::test {

using Bytes = std::vector<std::uint8_t>;

inline constexpr std::int32_t ipv4 = AF_INET;
inline constexpr std::int32_t ipv6 = AF_INET6;

inline std::uint8_t replyType(std::int32_t family) {
    return family == ipv4 ? 0 : 129;
}

/// A peer changes the type and nothing else that the receiver looks at.
inline Bytes replyTo(const EchoMessage& request, std::int32_t family) {
    Bytes reply(request.begin(), request.end());
    reply[0] = replyType(family);
    return reply;
}

inline Bytes replyFor(std::uint64_t id, std::uint16_t identifier, std::int32_t family) {
    return replyTo(echoRequest(id, identifier, family), family);
}

/// `words`: header length as the header itself states it, in units of four bytes.
inline Bytes withIpv4Header(const Bytes& message, std::uint8_t words) {
    Bytes datagram(std::size_t{words} * 4, 0xEE);
    datagram[0] = static_cast<std::uint8_t>(0x40 | words);
    datagram.insert(datagram.end(), message.begin(), message.end());
    return datagram;
}

} // namespace tarnwick::test
