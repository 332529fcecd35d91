// Linux: the port that a datagram ICMP socket is bound to is the identifier of its requests and replies.
#include "core/ClockPair.h"
#include "core/Pinger/IcmpSocket.h"
#include "core/Pinger/KernelStamp.h"
#include "core/Pinger/ReceiveTime.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <netinet/in.h>
#include <netinet/ip_icmp.h>
#include <sys/socket.h>

namespace tarnwick {

namespace {

/// Large enough for either family; the port lies at the same place in both.
union SocketAddress {
    sockaddr any;
    sockaddr_in v4;
    sockaddr_in6 v6;
};

SocketError socketError() {
    return {std::strerror(errno)};
}

/// Binds to the any-address: a source address would tie the socket to an interface that may go away.
bool bindTo(int descriptor, std::int32_t family, std::uint16_t identifier) {
    SocketAddress address{};
    socklen_t length = 0;
    if (family == AF_INET) {
        address.v4.sin_family = AF_INET;
        address.v4.sin_port = htons(identifier);
        length = sizeof address.v4;
    } else {
        address.v6.sin6_family = AF_INET6;
        address.v6.sin6_port = htons(identifier);
        length = sizeof address.v6;
    }
    return ::bind(descriptor, &address.any, length) == 0;
}

std::optional<std::uint16_t> boundIdentifier(int descriptor, std::int32_t family) {
    SocketAddress address{};
    socklen_t length = sizeof address;
    if (::getsockname(descriptor, &address.any, &length) != 0) {
        return std::nullopt;
    }
    return ntohs(family == AF_INET ? address.v4.sin_port : address.v6.sin6_port);
}

void setOption(int descriptor, int option, int value) {
    ::setsockopt(descriptor, SOL_SOCKET, option, &value, sizeof value);
}

} // namespace

std::variant<IcmpSocket, SocketError> openIcmpSocket(std::int32_t family, std::uint16_t wantedIdentifier) {
    const int protocol = family == AF_INET ? int{IPPROTO_ICMP} : int{IPPROTO_ICMPV6};
    FileDescriptor descriptor(::socket(family, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, protocol));
    if (!descriptor.isOpen()) {
        return socketError();
    }
    // These sockets start with address reuse on: a bind to the identifier of another program would succeed
    // and take its replies away.
    setOption(descriptor.get(), SO_REUSEADDR, 0);
    setOption(descriptor.get(), SO_TIMESTAMPNS, 1);
    if (!bindTo(descriptor.get(), family, wantedIdentifier) && !bindTo(descriptor.get(), family, 0)) {
        return socketError();
    }
    const std::optional<std::uint16_t> identifier = boundIdentifier(descriptor.get(), family);
    if (!identifier) {
        return socketError();
    }
    return IcmpSocket{std::move(descriptor), *identifier};
}

double wallAheadOfMonotonic() {
    return ClockPair::read(CLOCK_REALTIME).difference();
}

std::optional<ReceivedDatagram> receiveDatagram(
    int descriptor, std::span<std::uint8_t> buffer, double wallAhead) {
    iovec part{.iov_base = buffer.data(), .iov_len = buffer.size()};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(timespec))> control{};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    const ssize_t size = ::recvmsg(descriptor, &message, 0);
    if (size < 1) {
        return std::nullopt;
    }
    const ClockPair now = ClockPair::read(CLOCK_REALTIME);
    const ReceiveReadings readings{now.monotonic, now.other, kernelStamp(message)};
    return ReceivedDatagram{static_cast<std::size_t>(size), receiveTime(readings, wallAhead)};
}

} // namespace tarnwick
