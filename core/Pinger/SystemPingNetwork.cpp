#include "core/Pinger/SystemPingNetwork.h"

#include "core/MonotonicClock.h"
#include "core/Pinger/IcmpSocket.h"
#include "core/Pinger/Resolve.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <netinet/in.h>
#include <sys/socket.h>
#include <utility>

namespace tarnwick {

namespace {

class SystemEchoSocket final : public EchoSocket {
public:
    SystemEchoSocket(RunLoop& loop, IcmpSocket socket, std::function<void()> onReadable)
        : socket_(std::move(socket)),
          watch_(loop.watchReadable(socket_.descriptor.get(), std::move(onReadable))) {}

    [[nodiscard]] bool isWatched() const { return watch_ != nullptr; }

    [[nodiscard]] std::uint16_t identifier() const override { return socket_.identifier; }

    SendOutcome send(std::span<const std::uint8_t> message, const ResolvedAddress& to) override {
        wallAhead_ = wallAheadOfMonotonic();
        const auto* address = reinterpret_cast<const sockaddr*>(to.sockaddr.data());
        const auto length = static_cast<socklen_t>(to.sockaddr.size());
        // After the call it may be too late: the answering side can have had the processor by then.
        const double at = MonotonicClock::now();
        const ssize_t sent =
            ::sendto(socket_.descriptor.get(), message.data(), message.size(), 0, address, length);
        return {.isSent = sent == static_cast<ssize_t>(message.size()), .at = at};
    }

    std::optional<ReceivedDatagram> receive(std::span<std::uint8_t> buffer) override {
        return receiveDatagram(socket_.descriptor.get(), buffer, wallAhead_);
    }

private:
    IcmpSocket socket_;
    double wallAhead_ = 0;  ///< at the last request
    RunLoop::Handle watch_; // last member: ends before the descriptor is closed
};

/// A lookup that hangs takes a thread, for minutes.
constexpr std::ptrdiff_t mostLookupsOfAHost = 3;

bool isNumericAddress(const std::string& host) {
    std::array<std::uint8_t, sizeof(in6_addr)> address{};
    return ::inet_pton(AF_INET, host.c_str(), address.data()) == 1
           || ::inet_pton(AF_INET6, host.c_str(), address.data()) == 1;
}

} // namespace

SystemPingNetwork::SystemPingNetwork(RunLoop& loop)
    : SystemPingNetwork(loop, [](const std::string& host) { return tarnwick::resolve(host); }) {
}

SystemPingNetwork::SystemPingNetwork(RunLoop& loop, BlockingResolver resolver)
    : loop_(loop), resolver_(std::move(resolver)) {
}

void SystemPingNetwork::resolve(const std::string& host, ResolveDone done) {
    const auto isOfHost = [&](const auto& lookup) { return lookup.second.host == host; };
    if (std::ranges::count_if(inFlight_, isOfHost) >= mostLookupsOfAHost) {
        waiting_[host] = std::move(done);
    } else {
        lookUp({host, std::move(done)});
    }
}

void SystemPingNetwork::lookUp(Question question) {
    const std::uint64_t number = nextNumber_++;
    const std::string host = question.host;
    inFlight_.emplace(number, std::move(question));
    const auto answer =
        lifeline_.guarded([this, number](const Resolution& resolution) { answered(number, resolution); });
    if (isNumericAddress(host)) {
        // No name server is asked, so nothing can block: not worth a thread.
        loop_.post([answer, resolution = resolver_(host)] { answer(resolution); });
        return;
    }
    const bool started = loop_.detach([resolver = resolver_, host, answer]() -> RunLoop::Task {
        return [answer, resolution = resolver(host)] { answer(resolution); };
    });
    if (!started) {
        loop_.post([answer] { answer(PingError::resolution("no thread for the lookup")); });
    }
}

void SystemPingNetwork::answered(std::uint64_t number, const Resolution& resolution) {
    const auto ended = inFlight_.extract(number);
    const Question& question = ended.mapped();
    if (auto next = waiting_.extract(question.host)) {
        lookUp({question.host, std::move(next.mapped())});
    }
    question.done(resolution); // the last step: it may destroy this network
}

PingNetwork::OpenResult SystemPingNetwork::open(
    std::int32_t family, std::uint16_t wantedIdentifier, std::function<void()> onReadable) {
    auto opened = openIcmpSocket(family, wantedIdentifier);
    if (auto* error = std::get_if<SocketError>(&opened)) {
        return std::move(*error);
    }
    auto socket = std::make_unique<SystemEchoSocket>(
        loop_, std::move(std::get<IcmpSocket>(opened)), std::move(onReadable));
    if (!socket->isWatched()) {
        return SocketError{"the limit of watched descriptors is reached"};
    }
    return socket;
}

} // namespace tarnwick
