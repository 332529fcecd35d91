// Pings one host: resolves it, opens the sockets, sends when asked, matches answers, fails over between
// addresses.
#pragma once

#include "core/AddressSelector.h"
#include "core/Lifeline.h"
#include "core/Pinger/EchoMessage.h"
#include "core/Pinger/PingNetwork.h"
#include "core/RunLoop.h"

#include <map>
#include <optional>

namespace tarnwick {

/// Its owner chooses when to send and with which ids, keeps the statistics, and starts it again after a
/// failure. The owner may stop, restart or destroy the pinger while it handles an event. Main thread.
class Pinger {
public:
    static constexpr std::span<const std::uint8_t, 8> magic = echoMagic;

    /// The sockets are open; this is the address that the run begins with.
    struct Started {
        ResolvedAddress address;
    };

    /// Another address is the current one now.
    struct Switched {
        ResolvedAddress address;
    };

    /// Resolution failed, or no socket could be opened; nothing more happens until the next `start`.
    struct Failed {
        PingError error;
    };

    /// An answer to ping `id` arrived at monotonic second `at`; a busy thread reads it later.
    struct Reply {
        std::uint64_t id;
        double at;
    };

    using Event = std::variant<Started, Switched, Failed, Reply>;

    /// Where a run stands among the host's addresses.
    struct Place {
        ResolvedAddress address;
        bool isInVain; ///< it has not answered: the next run begins with the address after it
    };

    /// `responseDeadline`: seconds that an address may stay silent before the next one is tried.
    Pinger(
        RunLoop& loop, PingNetwork& network, std::string hostName, std::uint16_t identifier,
        double responseDeadline, std::optional<Place> goOnFrom = std::nullopt);

    Pinger(const Pinger&) = delete;
    Pinger& operator=(const Pinger&) = delete;

    /// Ends the present run and begins another, which goes on from its place; the outcome comes later as
    /// `Started` or `Failed`.
    void start();
    /// Closes the sockets; no event of this run comes after it.
    void stop();
    /// Sends one echo request to the current address; while there is none, it sends nothing.
    SendOutcome send(std::uint64_t id);

    [[nodiscard]] bool isRunning() const { return !sockets_.empty(); }

    /// The current address; nothing while there is none.
    [[nodiscard]] const ResolvedAddress* address() const;

    /// Of this run, else of the one before; nothing while the host has never had an address.
    [[nodiscard]] std::optional<Place> place() const;

    [[nodiscard]] const std::vector<ResolvedAddress>& addresses() const { return addresses_; }

    [[nodiscard]] const std::string& hostName() const { return hostName_; }

    [[nodiscard]] std::uint16_t identifier() const { return identifier_; }

    /// Events are dropped while it is unset.
    std::function<void(const Event&)> onEvent;

private:
    /// Which of the addresses a run begins with.
    [[nodiscard]] int firstIndex() const;
    void open(const std::vector<ResolvedAddress>& resolved);
    void readAvailable(std::int32_t family);
    void receivedReply(std::uint64_t id, double at);
    void rememberAddressOf(std::uint64_t id);
    void reportSwitch();
    void emit(const Event& event) const;

    RunLoop& loop_;
    PingNetwork& network_;
    std::string hostName_;
    std::uint16_t identifier_;
    double responseDeadline_;
    std::vector<ResolvedAddress> addresses_;
    AddressSelector selector_;
    std::optional<Place> placeBefore_;    ///< of the run before
    std::map<std::uint64_t, int> sentTo_; ///< index in `addresses_` by ping id
    std::map<std::int32_t, std::unique_ptr<EchoSocket>> sockets_;
    int generation_ = 0; ///< counts runs; results of earlier ones are dropped
    Lifeline lifeline_;
};

} // namespace tarnwick
