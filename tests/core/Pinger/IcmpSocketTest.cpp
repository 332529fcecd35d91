// Datagram ICMP sockets of the real kernel, on the loopback interface only.
#include "core/Pinger/IcmpSocket.h"

#include "core/MonotonicClock.h"
#include "core/Pinger/EchoMessage.h"
#include "tests/core/ChildProcess.h"
#include "tests/core/Pinger/PingSockets.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>

namespace tarnwick {
namespace {

using namespace test;

IcmpSocket opened(std::int32_t family, std::uint16_t wantedIdentifier) {
    auto result = openIcmpSocket(family, wantedIdentifier);
    if (const auto* error = std::get_if<SocketError>(&result)) {
        ADD_FAILURE() << error->text;
        return {};
    }
    return std::move(std::get<IcmpSocket>(result));
}

std::uint16_t boundPort(int descriptor) {
    sockaddr_in6 address{};
    socklen_t length = sizeof address;
    EXPECT_EQ(::getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &length), 0);
    return ntohs(address.sin6_port); // at the same place in both families
}

int option(int descriptor, int name) {
    int value = -1;
    socklen_t length = sizeof value;
    EXPECT_EQ(::getsockopt(descriptor, SOL_SOCKET, name, &value, &length), 0);
    return value;
}

class IcmpSocketTest : public testing::TestWithParam<Loopback> {
protected:
    void SetUp() override { TARNWICK_NEED_PING_SOCKETS(GetParam()); }

    [[nodiscard]] static IcmpSocket open(std::uint16_t wantedIdentifier) {
        return opened(GetParam().family, wantedIdentifier);
    }

    static void send(const IcmpSocket& socket, std::uint64_t id, std::uint16_t identifier) {
        const EchoMessage request = echoRequest(id, identifier, GetParam().family);
        const ResolvedAddress address = addressOf(GetParam());
        ASSERT_EQ(
            ::sendto(
                socket.descriptor.get(), request.data(), request.size(), 0,
                reinterpret_cast<const sockaddr*>(address.sockaddr.data()),
                static_cast<socklen_t>(address.sockaddr.size())),
            static_cast<ssize_t>(request.size()));
    }

    [[nodiscard]] static bool becomesReadable(const IcmpSocket& socket) {
        pollfd ready{.fd = socket.descriptor.get(), .events = POLLIN, .revents = 0};
        return ::poll(&ready, 1, 5000) == 1;
    }

    [[nodiscard]] static std::optional<ReceivedDatagram> receive(
        const IcmpSocket& socket, EchoMessage& buffer) {
        return receiveDatagram(socket.descriptor.get(), buffer, wallAheadOfMonotonic());
    }

    /// Lets a reply wait for 30 ms; the seconds from when it could be read to when it is said to have come.
    [[nodiscard]] static double latenessOfAReplyReadLate(const IcmpSocket& socket) {
        const double wallAhead = wallAheadOfMonotonic();
        send(socket, 7, socket.identifier);
        EXPECT_TRUE(becomesReadable(socket));
        const double arrived = MonotonicClock::now();
        while (MonotonicClock::now() < arrived + 0.03) {
            // Busy, as a program that draws.
        }
        EchoMessage buffer{};
        const auto datagram = receiveDatagram(socket.descriptor.get(), buffer, wallAhead);
        EXPECT_TRUE(datagram);
        return datagram ? datagram->at - arrived : 1;
    }

    /// The id in the next datagram that waits.
    [[nodiscard]] static std::optional<std::uint64_t> receivedId(const IcmpSocket& socket) {
        EchoMessage buffer{};
        const std::optional<ReceivedDatagram> datagram = receive(socket, buffer);
        return datagram
                   ? parseReply(std::span(buffer).first(datagram->size), GetParam().family, socket.identifier)
                   : std::nullopt;
    }
};

INSTANTIATE_TEST_SUITE_P(
    Loopback, IcmpSocketTest, testing::Values(ipv4Loopback, ipv6Loopback),
    [](const auto& tested) { return tested.param.name; });

TEST_P(IcmpSocketTest, HasTheIdentifierThatWasAskedFor) {
    const std::uint16_t wanted = identifierOfOurOwn();
    const IcmpSocket socket = open(wanted);
    EXPECT_EQ(socket.identifier, wanted);
    EXPECT_EQ(boundPort(socket.descriptor.get()), wanted);
}

TEST_P(IcmpSocketTest, HasTheKernelsIdentifierWhenTheOneAskedForIsTaken) {
    const IcmpSocket first = open(identifierOfOurOwn());
    const IcmpSocket second = open(first.identifier);
    ASSERT_TRUE(second.descriptor.isOpen());
    EXPECT_NE(second.identifier, first.identifier);
    EXPECT_NE(second.identifier, 0);
    EXPECT_EQ(second.identifier, boundPort(second.descriptor.get()));
    const IcmpSocket third = open(first.identifier);
    EXPECT_NE(third.identifier, first.identifier);
    EXPECT_NE(third.identifier, second.identifier);
}

TEST_P(IcmpSocketTest, HasTheKernelsIdentifierWhenNoneIsAskedFor) {
    const IcmpSocket socket = open(0);
    EXPECT_NE(socket.identifier, 0);
    EXPECT_EQ(socket.identifier, boundPort(socket.descriptor.get()));
}

TEST_P(IcmpSocketTest, DoesNotTakeTheIdentifierOfAnotherProgramThatAllowsIt) {
    const FileDescriptor foreign = plainPingSocket(GetParam().family);
    sockaddr_in6 address{};
    address.sin6_family = static_cast<sa_family_t>(GetParam().family);
    address.sin6_port = htons(identifierOfOurOwn());
    const auto length = GetParam().family == AF_INET ? sizeof(sockaddr_in) : sizeof(sockaddr_in6);
    ASSERT_EQ(
        ::bind(foreign.get(), reinterpret_cast<sockaddr*>(&address), static_cast<socklen_t>(length)), 0);

    const IcmpSocket socket = open(boundPort(foreign.get()));
    EXPECT_NE(socket.identifier, boundPort(foreign.get()));
}

TEST_P(IcmpSocketTest, HasAddressReuseOff) {
    EXPECT_EQ(option(open(identifierOfOurOwn()).descriptor.get(), SO_REUSEADDR), 0);
}

TEST_P(IcmpSocketTest, KeepsItsRepliesFromASecondSocketThatWantedItsIdentifier) {
    const IcmpSocket first = open(identifierOfOurOwn());
    const IcmpSocket second = open(first.identifier);
    send(first, 1, first.identifier);
    send(second, 2, second.identifier);

    ASSERT_TRUE(becomesReadable(first));
    ASSERT_TRUE(becomesReadable(second));
    EXPECT_EQ(receivedId(first), 1U);
    EXPECT_EQ(receivedId(second), 2U);
    EXPECT_EQ(receivedId(first), std::nullopt);
    EXPECT_EQ(receivedId(second), std::nullopt);
}

TEST_P(IcmpSocketTest, SendsItsOwnIdentifierWhateverTheMessageSays) {
    const IcmpSocket socket = open(identifierOfOurOwn());
    send(socket, 1, static_cast<std::uint16_t>(socket.identifier + 1));
    ASSERT_TRUE(becomesReadable(socket));
    EXPECT_EQ(receivedId(socket), 1U);
}

TEST_P(IcmpSocketTest, IsFreeAgainOnceItIsClosed) {
    const std::uint16_t wanted = identifierOfOurOwn();
    static_cast<void>(open(wanted));
    EXPECT_EQ(open(wanted).identifier, wanted);
}

TEST_P(IcmpSocketTest, NeverWaits) {
    const IcmpSocket socket = open(identifierOfOurOwn());
    EXPECT_NE(::fcntl(socket.descriptor.get(), F_GETFL) & O_NONBLOCK, 0);
    EXPECT_EQ(receivedId(socket), std::nullopt);
}

TEST_P(IcmpSocketTest, IsClosedInProgramsThatAreStarted) {
    const IcmpSocket socket = open(identifierOfOurOwn());
    EXPECT_NE(::fcntl(socket.descriptor.get(), F_GETFD) & FD_CLOEXEC, 0);
}

TEST_P(IcmpSocketTest, IsBoundToNoAddressSoThatItOutlivesAChangeOfAddress) {
    const IcmpSocket socket = open(identifierOfOurOwn());
    sockaddr_in6 address{};
    socklen_t length = sizeof address;
    ASSERT_EQ(::getsockname(socket.descriptor.get(), reinterpret_cast<sockaddr*>(&address), &length), 0);
    if (GetParam().family == AF_INET) {
        EXPECT_EQ(reinterpret_cast<const sockaddr_in&>(address).sin_addr.s_addr, INADDR_ANY);
    } else {
        EXPECT_TRUE(IN6_IS_ADDR_UNSPECIFIED(&address.sin6_addr));
    }
}

TEST_P(IcmpSocketTest, DeliversTheReplyWithoutAnIpHeaderAndNotTheRequest) {
    const IcmpSocket socket = open(identifierOfOurOwn());
    send(socket, 7, socket.identifier);
    ASSERT_TRUE(becomesReadable(socket));
    EchoMessage buffer{};
    const std::optional<ReceivedDatagram> datagram = receive(socket, buffer);
    ASSERT_TRUE(datagram);
    EXPECT_EQ(datagram->size, buffer.size());
    EXPECT_EQ(buffer[0], GetParam().family == AF_INET ? 0 : 129);
    EXPECT_FALSE(receive(socket, buffer));
}

TEST_P(IcmpSocketTest, CutsADatagramToTheBuffer) {
    const IcmpSocket socket = open(identifierOfOurOwn());
    send(socket, 7, socket.identifier);
    ASSERT_TRUE(becomesReadable(socket));
    std::array<std::uint8_t, 10> buffer{};
    const auto datagram = receiveDatagram(socket.descriptor.get(), buffer, wallAheadOfMonotonic());
    ASSERT_TRUE(datagram);
    EXPECT_EQ(datagram->size, buffer.size());
}

TEST_P(IcmpSocketTest, GivesTheTimeOfArrivalBetweenSendingAndReading) {
    const IcmpSocket socket = open(identifierOfOurOwn());
    const double before = MonotonicClock::now();
    send(socket, 7, socket.identifier);
    ASSERT_TRUE(becomesReadable(socket));
    EchoMessage buffer{};
    const std::optional<ReceivedDatagram> datagram = receive(socket, buffer);
    const double after = MonotonicClock::now();
    ASSERT_TRUE(datagram);
    constexpr double clocksReadApart = 0.0001;
    EXPECT_GE(datagram->at, before - clocksReadApart);
    EXPECT_LE(datagram->at, after);
}

TEST_P(IcmpSocketTest, GivesTheTimeOfArrivalToAReaderThatComesLate) {
    const IcmpSocket socket = open(identifierOfOurOwn());
    // The kernel begins to stamp a little after the first socket has asked for it, and until then stamps at
    // reading.
    double lateness = 1;
    for (int attempt = 0; attempt < 50 && lateness > 0.002; ++attempt) {
        lateness = latenessOfAReplyReadLate(socket);
    }
    EXPECT_LT(lateness, 0.002);
}

/// Without address reuse the kernel gives an identifier to one socket, of whatever family.
TEST(IcmpSocket, OfTheSecondFamilyHasAnIdentifierOfItsOwnToo) {
    TARNWICK_NEED_PING_SOCKETS(ipv4Loopback);
    TARNWICK_NEED_PING_SOCKETS(ipv6Loopback);
    const std::uint16_t wanted = identifierOfOurOwn();
    const IcmpSocket four = opened(AF_INET, wanted);
    const IcmpSocket six = opened(AF_INET6, wanted);
    EXPECT_EQ(four.identifier, wanted);
    EXPECT_NE(six.identifier, 0);
    EXPECT_EQ(six.identifier, boundPort(six.descriptor.get()));
}

TEST(IcmpSocket, ThatCannotBeOpenedSaysSoInTheSystemsWords) {
    const auto result = openIcmpSocket(AF_UNIX, 1);
    const auto* error = std::get_if<SocketError>(&result);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->text, std::strerror(EPROTONOSUPPORT));
}

TEST(IcmpSocket, ThatHasNoDescriptorLeftSaysSoInTheSystemsWords) {
    TARNWICK_NEED_PING_SOCKETS(ipv4Loopback);
    EXPECT_EQ(
        exitStatusOf([] {
            const rlimit none{.rlim_cur = 0, .rlim_max = 0};
            ::setrlimit(RLIMIT_NOFILE, &none);
            const auto result = openIcmpSocket(AF_INET, 1);
            const auto* error = std::get_if<SocketError>(&result);
            return error != nullptr && error->text == std::strerror(EMFILE) ? 0 : 1;
        }),
        0);
}

} // namespace
} // namespace tarnwick
