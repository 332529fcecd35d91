// The real network: datagram ICMP sockets that also receive the errors of routers. No privileges are needed.
#pragma once

#include "core/Prober/ProbeNetwork.h"
#include "core/RunLoop.h"

namespace tarnwick {

/// Answers count only if they quote a request of the socket: its identifier, and its number, mark and id as
/// far as the router quotes them.
class SystemProbeNetwork final : public ProbeNetwork {
public:
    explicit SystemProbeNetwork(RunLoop& loop) : loop_(loop) {}

    [[nodiscard]] OpenResult open(std::int32_t family, std::function<void()> onReadable) override;

private:
    RunLoop& loop_;
};

} // namespace tarnwick
