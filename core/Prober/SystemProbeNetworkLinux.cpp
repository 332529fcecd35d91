// Linux: errors that concern a socket's datagrams wait in its error queue.
#include "core/Prober/SystemProbeNetwork.h"

#include "core/ClockPair.h"
#include "core/Pinger/EchoMessage.h"
#include "core/Pinger/IcmpSocket.h"
#include "core/Pinger/KernelStamp.h"
#include "core/Pinger/ReceiveTime.h"
#include "core/Prober/RouterError.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <deque>
#include <linux/errqueue.h>
#include <netdb.h>
#include <netinet/in.h>
#include <random>
#include <span>
#include <sys/socket.h>

namespace tarnwick {

namespace {

using AnswerKind = ProbeAnswer::Kind;

/// Requests whose answers may still come. At one a second, more than any router waits.
constexpr std::size_t mostOutstanding = 64;
/// Our requests, with what a router may put behind its quotation.
constexpr std::size_t largestMessage = 1024;

struct Message {
    std::span<const std::uint8_t> content;
    double at;
    sockaddr_storage from; ///< of a reply: its sender; of an error: where the request went
    std::optional<sock_extended_err> error;
    sockaddr_storage offender; ///< who sent the error
};

/// A request whose answer may still come.
struct Asked {
    std::uint64_t id;
    std::string host;
};

std::string numericAddress(const sockaddr_storage& address) {
    std::array<char, NI_MAXHOST> text{};
    const socklen_t size = address.ss_family == AF_INET ? sizeof(sockaddr_in) : sizeof(sockaddr_in6);
    const auto* generic = reinterpret_cast<const sockaddr*>(&address);
    ::getnameinfo(generic, size, text.data(), text.size(), nullptr, 0, NI_NUMERICHOST);
    return text.data();
}

/// The kernel writes the sender's address behind its description of the error.
void readError(msghdr& message, Message& received) {
    for (cmsghdr* part = CMSG_FIRSTHDR(&message); part != nullptr; part = CMSG_NXTHDR(&message, part)) {
        const bool isError = (part->cmsg_level == SOL_IP && part->cmsg_type == IP_RECVERR)
                             || (part->cmsg_level == SOL_IPV6 && part->cmsg_type == IPV6_RECVERR);
        const std::size_t size = part->cmsg_len - CMSG_LEN(0);
        if (isError && size >= sizeof(sock_extended_err)) {
            std::memcpy(&received.error.emplace(), CMSG_DATA(part), sizeof(sock_extended_err));
            const std::size_t rest = std::min(size - sizeof(sock_extended_err), sizeof received.offender);
            std::memcpy(&received.offender, CMSG_DATA(part) + sizeof(sock_extended_err), rest);
        }
    }
}

std::optional<AnswerKind> kindOf(const sock_extended_err& error) {
    switch (error.ee_origin) {
    case SO_EE_ORIGIN_ICMP:
        return RouterError::kindOf4(error.ee_type, error.ee_code);
    case SO_EE_ORIGIN_ICMP6:
        return RouterError::kindOf6(error.ee_type, error.ee_code);
    default:
        return std::nullopt;
    }
}

class LinuxProbeSocket final : public ProbeSocket {
public:
    LinuxProbeSocket(RunLoop& loop, std::int32_t family, IcmpSocket socket, std::function<void()> onReadable)
        : family_(family),
          socket_(std::move(socket)),
          watch_(loop.watchReadable(socket_.descriptor.get(), std::move(onReadable))) {}

    [[nodiscard]] bool isWatched() const { return watch_ != nullptr; }

    bool send(std::uint64_t id, const ResolvedAddress& to, int hopLimit) override {
        wallAhead_ = wallAheadOfMonotonic();
        sockaddr_storage host{};
        std::memcpy(&host, to.sockaddr.data(), std::min(sizeof host, to.sockaddr.size()));
        outstanding_.push_back({.id = id, .host = numericAddress(host)});
        if (outstanding_.size() > mostOutstanding) {
            outstanding_.pop_front();
        }
        const EchoMessage message = echoRequest(id, socket_.identifier, family_);
        return setHopLimit(hopLimit) && (sendTo(message, to) || sendTo(message, to));
    }

    std::optional<ProbeAnswer> receive() override {
        // Others' errors and nonsense are skipped.
        while (const std::optional<Message> message = read(MSG_ERRQUEUE)) {
            if (auto answer = answerOfError(*message)) {
                return answer;
            }
        }
        while (const std::optional<Message> message = read(0)) {
            const auto id = parseReply(message->content, family_, socket_.identifier);
            if (id && isOutstanding(*id)) {
                return ProbeAnswer{
                    .kind = AnswerKind::reply,
                    .id = *id,
                    .sender = numericAddress(message->from),
                    .at = message->at};
            }
        }
        return std::nullopt;
    }

private:
    [[nodiscard]] bool setHopLimit(int hopLimit) const {
        const int level = family_ == AF_INET ? SOL_IP : SOL_IPV6;
        const int option = family_ == AF_INET ? IP_TTL : IPV6_UNICAST_HOPS;
        return ::setsockopt(socket_.descriptor.get(), level, option, &hopLimit, sizeof hopLimit) == 0;
    }

    /// An error of an earlier request makes one send fail.
    [[nodiscard]] bool sendTo(const EchoMessage& message, const ResolvedAddress& to) const {
        const auto* address = reinterpret_cast<const sockaddr*>(to.sockaddr.data());
        const auto length = static_cast<socklen_t>(to.sockaddr.size());
        return ::sendto(socket_.descriptor.get(), message.data(), message.size(), 0, address, length)
               == static_cast<ssize_t>(message.size());
    }

    std::optional<Message> read(int flags) {
        iovec part{.iov_base = buffer_.data(), .iov_len = buffer_.size()};
        constexpr std::size_t room = 512; // for the stamp, the error, and its sender
        alignas(cmsghdr) std::array<char, room> control{};
        Message received{};
        msghdr message{};
        message.msg_name = &received.from;
        message.msg_namelen = sizeof received.from;
        message.msg_iov = &part;
        message.msg_iovlen = 1;
        message.msg_control = control.data();
        message.msg_controllen = control.size();
        const ssize_t size = ::recvmsg(socket_.descriptor.get(), &message, flags);
        if (size < 0) {
            return std::nullopt;
        }
        const ClockPair now = ClockPair::read(CLOCK_REALTIME);
        received.at = receiveTime({now.monotonic, now.other, kernelStamp(message)}, wallAhead_);
        received.content = std::span(buffer_).first(static_cast<std::size_t>(size));
        readError(message, received);
        return received;
    }

    [[nodiscard]] std::optional<ProbeAnswer> answerOfError(const Message& message) const {
        const auto kind = message.error ? kindOf(*message.error) : std::nullopt;
        const auto quoted = parseQuotation(message.content, family_, socket_.identifier);
        if (!kind || !quoted || message.offender.ss_family != family_) {
            return std::nullopt;
        }
        const auto isQuoted = [&, host = numericAddress(message.from)](const Asked& one) {
            return (one.id & 0xFFFF) == quoted->sequence && one.host == host;
        };
        const auto asked = std::ranges::find_if(outstanding_, isQuoted);
        if (asked == outstanding_.end() || (quoted->id && *quoted->id != asked->id)) {
            return std::nullopt;
        }
        return ProbeAnswer{
            .kind = *kind, .id = asked->id, .sender = numericAddress(message.offender), .at = message.at};
    }

    [[nodiscard]] bool isOutstanding(std::uint64_t id) const {
        return std::ranges::find(outstanding_, id, &Asked::id) != outstanding_.end();
    }

    std::int32_t family_;
    IcmpSocket socket_;
    std::deque<Asked> outstanding_;
    std::array<std::uint8_t, largestMessage> buffer_{};
    double wallAhead_ = 0;  ///< at the last request
    RunLoop::Handle watch_; // last member: ends before the descriptor is closed
};

bool enableErrors(int descriptor, std::int32_t family) {
    const int on = 1;
    return family == AF_INET ? ::setsockopt(descriptor, SOL_IP, IP_RECVERR, &on, sizeof on) == 0
                             : ::setsockopt(descriptor, SOL_IPV6, IPV6_RECVERR, &on, sizeof on) == 0;
}

} // namespace

ProbeNetwork::OpenResult SystemProbeNetwork::open(std::int32_t family, std::function<void()> onReadable) {
    std::random_device random;
    auto opened = openIcmpSocket(family, static_cast<std::uint16_t>(random()));
    if (auto* error = std::get_if<SocketError>(&opened)) {
        return std::move(*error);
    }
    auto& socket = std::get<IcmpSocket>(opened);
    if (!enableErrors(socket.descriptor.get(), family)) {
        return SocketError{std::strerror(errno)};
    }
    auto watched =
        std::make_unique<LinuxProbeSocket>(loop_, family, std::move(socket), std::move(onReadable));
    if (!watched->isWatched()) {
        return SocketError{"the limit of watched descriptors is reached"};
    }
    return watched;
}

} // namespace tarnwick
