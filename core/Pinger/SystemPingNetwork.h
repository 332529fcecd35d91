// The real network: the system's resolver on a thread of its own, and its datagram ICMP sockets.
#pragma once

#include "core/Pinger/PingNetwork.h"
#include "core/RunLoop.h"

#include <map>
#include <vector>

namespace tarnwick {

/// At most one lookup is in flight for a host text; who asks again meanwhile gets that one's answer. Main
/// thread.
class SystemPingNetwork final : public PingNetwork {
public:
    /// Blocking; called on a detached thread, so it must own all that it touches.
    using BlockingResolver = std::function<Resolution(const std::string& host)>;

    explicit SystemPingNetwork(RunLoop& loop);
    SystemPingNetwork(RunLoop& loop, BlockingResolver resolver);

    void resolve(const std::string& host, ResolveDone done) override;
    [[nodiscard]] OpenResult open(
        std::int32_t family, std::uint16_t wantedIdentifier, std::function<void()> onReadable) override;

private:
    using Waiting = std::map<std::string, std::vector<ResolveDone>>;

    RunLoop& loop_;
    BlockingResolver resolver_;
    /// Shared with the answers on their way, which find it gone when the network is.
    std::shared_ptr<Waiting> waiting_ = std::make_shared<Waiting>();
};

} // namespace tarnwick
