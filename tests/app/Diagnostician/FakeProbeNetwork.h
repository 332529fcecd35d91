// A path of routers in virtual time: each answers at once, unless it is silent.
#pragma once

#include "core/Prober/ProbeNetwork.h"
#include "core/RunLoop.h"

#include <algorithm>
#include <deque>
#include <string>
#include <utility>
#include <vector>

namespace tarnwick::simulation {

class FakeProbeNetwork final : public ProbeNetwork {
public:
    FakeProbeNetwork(RunLoop& loop, std::vector<std::string> way) : hops(std::move(way)), loop_(loop) {}

    [[nodiscard]] OpenResult open(std::int32_t /*family*/, std::function<void()> onReadable) override {
        ++opened;
        if (!hasSockets) {
            return SocketError{"Operation not permitted"};
        }
        return std::make_unique<Socket>(*this, std::move(onReadable));
    }

    std::vector<std::string> hops; ///< ends with the host
    bool hasSockets = true;
    /// From this hop on (counted from 1) nothing answers; 0: all do.
    int silentFrom = 0;
    /// This hop says that there is no way on; 0: none does.
    int refusingHop = 0;
    ProbeAnswer::Kind refusal = ProbeAnswer::Kind::unreachable;
    /// Milliseconds that each answer from `lateFrom` on takes longer.
    int lateFrom = 0;
    double extraMs = 0;

    /// The hop limits of all probes.
    std::vector<int> sent;
    int opened = 0;
    std::size_t copies = 1;         ///< of each answer
    std::size_t read = 0;           ///< answers
    std::size_t mostReadAtOnce = 0; ///< likewise

private:
    class Socket final : public ProbeSocket {
    public:
        Socket(FakeProbeNetwork& network, std::function<void()> onReadable)
            : network_(network), onReadable_(std::move(onReadable)) {}

        bool send(std::uint64_t id, const ResolvedAddress& /*to*/, int hopLimit) override {
            network_.sent.push_back(hopLimit);
            const int last = static_cast<int>(network_.hops.size());
            const int hop = std::min(hopLimit, last);
            if (network_.silentFrom > 0 && hop >= network_.silentFrom) {
                return true;
            }
            const bool isRefused = network_.refusingHop > 0 && hop > network_.refusingHop;
            const int sender = isRefused ? network_.refusingHop : hop;
            const auto kind = isRefused     ? network_.refusal
                              : hop == last ? ProbeAnswer::Kind::reply
                                            : ProbeAnswer::Kind::timeExceeded;
            const double ms =
                2.0 * hop + (network_.lateFrom > 0 && hop >= network_.lateFrom ? network_.extraMs : 0);
            waiting_.resize(
                waiting_.size() + network_.copies,
                {.kind = kind,
                 .id = id,
                 .sender = network_.hops[static_cast<std::size_t>(sender) - 1],
                 .at = network_.loop_.now() + ms / 1000});
            network_.loop_.post([this] { tell(); });
            return true;
        }

        std::optional<ProbeAnswer> receive() override {
            if (waiting_.empty()) {
                return std::nullopt;
            }
            const ProbeAnswer answer = waiting_.front();
            waiting_.pop_front();
            ++network_.read;
            return answer;
        }

    private:
        /// As long as something waits, as a loop does.
        void tell() {
            const std::size_t before = network_.read;
            onReadable_();
            network_.mostReadAtOnce = std::max(network_.mostReadAtOnce, network_.read - before);
            if (!waiting_.empty()) {
                network_.loop_.post([this] { tell(); });
            }
        }

        FakeProbeNetwork& network_;
        std::function<void()> onReadable_;
        std::deque<ProbeAnswer> waiting_;
    };

    RunLoop& loop_;
};

} // namespace tarnwick::simulation
