// Datagram ICMP sockets, which need no privileges. One implementation file for each operating system.
#pragma once

#include "core/FileDescriptor.h"
#include "core/Pinger/PingNetwork.h"

namespace tarnwick {

struct IcmpSocket {
    FileDescriptor descriptor; ///< non-blocking
    std::uint16_t identifier;  ///< that the requests carry
};

/// Asks for the identifier; takes one of the system's choice when another socket has it.
[[nodiscard]] std::variant<IcmpSocket, SocketError> openIcmpSocket(
    std::int32_t family, std::uint16_t wantedIdentifier);

/// Wall clock minus monotonic clock, seconds, as of now.
[[nodiscard]] double wallAheadOfMonotonic();

/// The next waiting datagram; nothing when none waits or on an error. `wallAhead`: as of the latest send.
[[nodiscard]] std::optional<ReceivedDatagram> receiveDatagram(
    int descriptor, std::span<std::uint8_t> buffer, double wallAhead);

} // namespace tarnwick
