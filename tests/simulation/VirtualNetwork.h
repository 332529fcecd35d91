// A network that exists only in virtual time: hosts, addresses, delays, losses, lookups and sockets by
// script.
#pragma once

#include "core/Pinger/PingNetwork.h"
#include "tests/simulation/VirtualRunLoop.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tarnwick::simulation {

/// What a pinged address does with one request.
struct Answer {
    double delay = 0.02; ///< seconds until the reply can be read
    int copies = 1;      ///< 0: silence
    double waited = 0;   ///< of them, seconds that it had already lain in the socket by its time stamp
};

struct SentRequest {
    double at; ///< monotonic seconds
    std::string address;
    std::uint64_t id;
    std::uint16_t identifier;
};

class VirtualNetwork final : public PingNetwork {
public:
    /// Decides the fate of a request by when it was sent and to which address.
    using Behavior = std::function<Answer(const SentRequest&)>;

    explicit VirtualNetwork(VirtualRunLoop& loop) : loop_(loop) {}

    /// An address whose family follows from its text (a colon makes it IPv6).
    [[nodiscard]] static ResolvedAddress address(const std::string& text);

    /// What `host` resolves to from now on, and after how many seconds. Without a script a host is its own
    /// address.
    void setHost(const std::string& host, Resolution resolution, double delay = 0);
    /// Lookups of `host` never end.
    void setHangingHost(const std::string& host);

    /// All addresses behave like this unless told otherwise; the first rule is an answer after 20 ms.
    void setBehavior(Behavior behavior) { behavior_ = std::move(behavior); }

    void setBehavior(const std::string& address, Behavior behavior);

    /// Every send fails, as without a route.
    void setSendFails(bool fails) { sendFails_ = fails; }

    /// Opening a socket of this family fails with this text from now on; without a text it succeeds again.
    void setSocketError(std::int32_t family, std::optional<std::string> text);

    /// Sockets opened from now on get this identifier, whatever they ask for.
    void setIdentifier(std::optional<std::uint16_t> identifier) { identifier_ = identifier; }

    /// The bytes of a valid reply to such a request.
    [[nodiscard]] static std::vector<std::uint8_t> echoReply(
        std::uint64_t id, std::uint16_t identifier, std::int32_t family);
    /// Puts a datagram into every open socket of the family.
    void deliver(std::int32_t family, const std::vector<std::uint8_t>& datagram);
    /// Puts this many copies of it there before the reader wakes up, once.
    void deliverTogether(std::int32_t family, const std::vector<std::uint8_t>& datagram, std::size_t copies);
    /// Datagrams that no reader has taken yet, in all open sockets.
    [[nodiscard]] std::size_t unread() const;

    [[nodiscard]] const std::vector<SentRequest>& sent() const { return sent_; }

    [[nodiscard]] int lookups(const std::string& host) const;

    [[nodiscard]] std::size_t openSockets() const { return sockets_.size(); }

    void resolve(const std::string& host, ResolveDone done) override;
    [[nodiscard]] OpenResult open(
        std::int32_t family, std::uint16_t wantedIdentifier, std::function<void()> onReadable) override;

private:
    class Socket;

    struct Host {
        Resolution resolution;
        std::optional<double> delay; ///< none: the lookup never ends
    };

    /// The open sockets of a family by number: a reader may close any of them.
    [[nodiscard]] std::vector<std::uint64_t> socketsOf(std::int32_t family) const;
    [[nodiscard]] Host hostFor(const std::string& host) const;
    void transmit(const Socket& socket, const SentRequest& request);
    /// Handles of what is on its way; each removes itself when done.
    void later(double delay, RunLoop::Task task);

    VirtualRunLoop& loop_;
    std::map<std::string, Host> hosts_;
    std::map<std::string, int> lookups_;
    Behavior behavior_ = [](const SentRequest&) { return Answer{}; };
    std::map<std::string, Behavior> behaviors_;
    bool sendFails_ = false;
    std::map<std::int32_t, std::string> socketErrors_;
    std::optional<std::uint16_t> identifier_;
    std::vector<SentRequest> sent_;
    std::map<std::uint64_t, Socket*> sockets_; ///< open ones, by a number that is never used again
    std::uint64_t nextSocket_ = 0;
    std::map<std::uint64_t, RunLoop::Handle> onTheirWay_;
    std::uint64_t nextOnItsWay_ = 0;
};

} // namespace tarnwick::simulation
