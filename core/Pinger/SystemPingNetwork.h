// The real network: the system's resolver on a detached thread, and datagram ICMP sockets.
#pragma once

#include "core/Lifeline.h"
#include "core/Pinger/PingNetwork.h"
#include "core/RunLoop.h"

#include <cstdint>
#include <map>
#include <string>

namespace tarnwick {

/// Each question is a lookup of its own, since an older one may still ask the network before. At most three
/// are in flight for a host text: of further questions the latest waits until one of them ends, and the
/// others get no answer. Main thread.
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
    struct Question {
        std::string host;
        ResolveDone done;
    };

    void lookUp(Question question);
    void answered(std::uint64_t number, const Resolution& resolution);

    RunLoop& loop_;
    BlockingResolver resolver_;
    std::map<std::uint64_t, Question> inFlight_; ///< by a number that is never used again
    std::map<std::string, ResolveDone> waiting_; ///< by host
    std::uint64_t nextNumber_ = 0;
    Lifeline lifeline_;
};

} // namespace tarnwick
