// The real network: the system's resolver on a detached thread, and datagram ICMP sockets.
#pragma once

#include "core/Pinger/PingNetwork.h"
#include "core/RunLoop.h"

#include <map>
#include <vector>

namespace tarnwick {

/// At most one lookup is in flight for each host text; further questions wait for its answer. Main thread.
class SystemPingNetwork final : public PingNetwork {
public:
    /// May block. Called on a detached thread; for an address literal, on the main thread. It must own all
    /// that it touches.
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
    /// Answers on their way hold it weakly: they find it gone once the network is destroyed.
    std::shared_ptr<Waiting> waiting_ = std::make_shared<Waiting>();
};

} // namespace tarnwick
