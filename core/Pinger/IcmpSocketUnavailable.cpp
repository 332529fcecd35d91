// Systems that these sockets are not written for yet: opening one fails with a message.
#include "core/Pinger/IcmpSocket.h"

namespace tarnwick {

std::variant<IcmpSocket, SocketError> openIcmpSocket(
    std::int32_t /*family*/, std::uint16_t /*wantedIdentifier*/) {
    return SocketError{"not supported on this system"};
}

double wallAheadOfMonotonic() {
    return 0;
}

std::optional<ReceivedDatagram> receiveDatagram(
    int /*descriptor*/, std::span<std::uint8_t> /*buffer*/, double /*wallAhead*/) {
    return std::nullopt;
}

} // namespace tarnwick
