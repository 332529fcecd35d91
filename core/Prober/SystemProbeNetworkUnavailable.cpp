// Systems that these sockets are not written for yet: opening one fails with a message.
#include "core/Prober/SystemProbeNetwork.h"

namespace tarnwick {

ProbeNetwork::OpenResult SystemProbeNetwork::open(
    std::int32_t /*family*/, std::function<void()> /*onReadable*/) {
    static_cast<void>(loop_);
    return SocketError{"not supported on this system"};
}

} // namespace tarnwick
