#include "tests/simulation/VirtualNetwork.h"

#include "core/Pinger/EchoMessage.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cstring>
#include <deque>
#include <netinet/in.h>
#include <stdexcept>
#include <utility>

namespace tarnwick::simulation {

namespace {

std::uint64_t bigEndian(std::span<const std::uint8_t> field) {
    std::uint64_t value = 0;
    for (const std::uint8_t byte : field) {
        value = value << 8 | byte;
    }
    return value;
}

template<class Address>
std::vector<std::uint8_t> bytesOf(const Address& address) {
    std::vector<std::uint8_t> bytes(sizeof address);
    std::memcpy(bytes.data(), &address, sizeof address);
    return bytes;
}

} // namespace

class VirtualNetwork::Socket final : public EchoSocket {
public:
    Socket(
        VirtualNetwork& network, std::uint64_t number, std::int32_t family, std::uint16_t identifier,
        std::function<void()> onReadable)
        : network_(network),
          number_(number),
          family_(family),
          identifier_(identifier),
          onReadable_(std::move(onReadable)) {
        network_.sockets_.emplace(number_, this);
    }

    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    ~Socket() override { network_.sockets_.erase(number_); }

    [[nodiscard]] std::uint16_t identifier() const override { return identifier_; }

    SendOutcome send(std::span<const std::uint8_t> message, const ResolvedAddress& to) override {
        const SentRequest request{
            .at = network_.loop_.now(),
            .address = to.display,
            .id = bigEndian(message.subspan(16, 8)),
            .identifier = static_cast<std::uint16_t>(bigEndian(message.subspan(4, 2))),
        };
        network_.sent_.push_back(request);
        if (network_.sendFails_) {
            return {.isSent = false, .at = request.at};
        }
        network_.transmit(*this, request);
        return {.isSent = true, .at = request.at};
    }

    std::optional<ReceivedDatagram> receive(std::span<std::uint8_t> buffer) override {
        if (waiting_.empty()) {
            return std::nullopt;
        }
        const Waiting datagram = std::move(waiting_.front());
        waiting_.pop_front();
        const std::size_t size = std::min(datagram.bytes.size(), buffer.size());
        std::ranges::copy_n(datagram.bytes.begin(), static_cast<std::ptrdiff_t>(size), buffer.begin());
        return ReceivedDatagram{size, datagram.at};
    }

    void deliver(const std::vector<std::uint8_t>& datagram, std::size_t copies = 1, double waited = 0) {
        waiting_.insert(waiting_.end(), copies, Waiting{datagram, network_.loop_.now() - waited});
        // Copied: the reader may close this socket.
        const auto onReadable = onReadable_;
        onReadable();
    }

    [[nodiscard]] std::size_t unread() const { return waiting_.size(); }

    [[nodiscard]] std::uint64_t number() const { return number_; }

    [[nodiscard]] std::int32_t family() const { return family_; }

private:
    struct Waiting {
        std::vector<std::uint8_t> bytes;
        double at; ///< monotonic seconds of its arrival
    };

    VirtualNetwork& network_;
    std::uint64_t number_;
    std::int32_t family_;
    std::uint16_t identifier_;
    std::function<void()> onReadable_;
    std::deque<Waiting> waiting_;
};

ResolvedAddress VirtualNetwork::address(const std::string& text) {
    if (text.find(':') != std::string::npos) {
        sockaddr_in6 v6{};
        v6.sin6_family = AF_INET6;
        if (::inet_pton(AF_INET6, text.c_str(), &v6.sin6_addr) != 1) {
            throw std::invalid_argument("no IPv6 address: " + text);
        }
        return {AF_INET6, bytesOf(v6), text};
    }
    sockaddr_in v4{};
    v4.sin_family = AF_INET;
    if (::inet_pton(AF_INET, text.c_str(), &v4.sin_addr) != 1) {
        throw std::invalid_argument("no IPv4 address: " + text);
    }
    return {AF_INET, bytesOf(v4), text};
}

void VirtualNetwork::setHost(const std::string& host, Resolution resolution, double delay) {
    hosts_[host] = {std::move(resolution), delay};
}

void VirtualNetwork::setHangingHost(const std::string& host) {
    hosts_[host] = {PingError::resolution("never told"), std::nullopt};
}

void VirtualNetwork::setBehavior(const std::string& address, Behavior behavior) {
    behaviors_[address] = std::move(behavior);
}

void VirtualNetwork::setSocketError(std::int32_t family, std::optional<std::string> text) {
    if (text) {
        socketErrors_[family] = *text;
    } else {
        socketErrors_.erase(family);
    }
}

std::vector<std::uint8_t> VirtualNetwork::echoReply(
    std::uint64_t id, std::uint16_t identifier, std::int32_t family) {
    EchoMessage reply = echoRequest(id, identifier, family);
    reply[0] = family == AF_INET ? 0 : 129;
    return {reply.begin(), reply.end()};
}

void VirtualNetwork::deliver(std::int32_t family, const std::vector<std::uint8_t>& datagram) {
    deliverTogether(family, datagram, 1);
}

void VirtualNetwork::deliverTogether(
    std::int32_t family, const std::vector<std::uint8_t>& datagram, std::size_t copies) {
    for (const std::uint64_t number : socketsOf(family)) {
        if (const auto socket = sockets_.find(number); socket != sockets_.end()) {
            socket->second->deliver(datagram, copies);
        }
    }
}

std::size_t VirtualNetwork::unread() const {
    std::size_t count = 0;
    for (const auto& [number, socket] : sockets_) {
        count += socket->unread();
    }
    return count;
}

std::vector<std::uint64_t> VirtualNetwork::socketsOf(std::int32_t family) const {
    std::vector<std::uint64_t> numbers;
    for (const auto& [number, socket] : sockets_) {
        if (socket->family() == family) {
            numbers.push_back(number);
        }
    }
    return numbers;
}

int VirtualNetwork::lookups(const std::string& host) const {
    const auto found = lookups_.find(host);
    return found != lookups_.end() ? found->second : 0;
}

VirtualNetwork::Host VirtualNetwork::hostFor(const std::string& host) const {
    if (const auto found = hosts_.find(host); found != hosts_.end()) {
        return found->second;
    }
    return {std::vector{address(host)}, 0};
}

void VirtualNetwork::resolve(const std::string& host, ResolveDone done) {
    ++lookups_[host];
    const Host answer = hostFor(host);
    if (answer.delay) {
        later(*answer.delay, [done = std::move(done), answer] { done(answer.resolution); });
    }
}

PingNetwork::OpenResult VirtualNetwork::open(
    std::int32_t family, std::uint16_t wantedIdentifier, std::function<void()> onReadable) {
    if (const auto error = socketErrors_.find(family); error != socketErrors_.end()) {
        return SocketError{error->second};
    }
    return std::make_unique<Socket>(
        *this, nextSocket_++, family, identifier_.value_or(wantedIdentifier), std::move(onReadable));
}

void VirtualNetwork::transmit(const Socket& socket, const SentRequest& request) {
    const auto rule = behaviors_.find(request.address);
    const Answer answer = (rule != behaviors_.end() ? rule->second : behavior_)(request);
    const auto reply = echoReply(request.id, request.identifier, socket.family());
    for (int copy = 0; copy < answer.copies; ++copy) {
        later(answer.delay, [this, number = socket.number(), reply, waited = answer.waited] {
            // The socket was closed before the reply came.
            if (const auto receiver = sockets_.find(number); receiver != sockets_.end()) {
                receiver->second->deliver(reply, 1, waited);
            }
        });
    }
}

void VirtualNetwork::later(double delay, RunLoop::Task task) {
    const std::uint64_t number = nextOnItsWay_++;
    onTheirWay_[number] = loop_.after(delay, [this, number, task = std::move(task)] {
        // Kept while it runs: dropping the handle destroys this very task.
        const RunLoop::Handle self = std::move(onTheirWay_.at(number));
        onTheirWay_.erase(number);
        task();
    });
}

} // namespace tarnwick::simulation
