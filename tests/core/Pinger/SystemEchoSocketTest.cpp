// Requests that the kernel answers on the loopback interface, through the network that the program uses.
#include "core/FileDescriptor.h"
#include "core/MonotonicClock.h"
#include "core/Pinger/EchoMessage.h"
#include "core/Pinger/SystemPingNetwork.h"
#include "platform/loop/EpollRunLoop.h"
#include "tests/core/ChildProcess.h"
#include "tests/core/Pinger/PingSockets.h"
#include "tests/support/LoopTurn.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <fstream>
#include <sched.h>

namespace tarnwick {
namespace {

using namespace test;
using testing::ElementsAre;
using testing::IsEmpty;

class SystemEchoSocketTest : public testing::TestWithParam<Loopback> {
protected:
    void SetUp() override { TARNWICK_NEED_PING_SOCKETS(GetParam()); }

    [[nodiscard]] std::unique_ptr<EchoSocket> open(std::function<void()> onReadable) {
        auto result = network.open(GetParam().family, identifierOfOurOwn(), std::move(onReadable));
        if (const auto* error = std::get_if<SocketError>(&result)) {
            ADD_FAILURE() << error->text;
            return nullptr;
        }
        return std::move(std::get<std::unique_ptr<EchoSocket>>(result));
    }

    [[nodiscard]] static bool send(EchoSocket& socket, std::uint64_t id) {
        return socket.send(echoRequest(id, socket.identifier(), GetParam().family), addressOf(GetParam()))
            .isSent;
    }

    /// All that waits in the socket, as ping ids.
    static void drain(EchoSocket& socket, std::vector<std::uint64_t>& ids) {
        std::array<std::uint8_t, 2048> buffer{};
        while (const std::optional<ReceivedDatagram> datagram = socket.receive(buffer)) {
            const auto bytes = std::span(buffer).first(datagram->size);
            ids.push_back(parseReply(bytes, GetParam().family, socket.identifier()).value_or(0));
        }
    }

    /// False when `isDone` has not become true within five seconds.
    [[nodiscard]] bool runUntil(const std::function<bool()>& isDone) {
        const double deadline = loop.now() + 5;
        while (!isDone() && loop.now() < deadline) {
            test::runOneTurn(loop, 0.1);
        }
        return isDone();
    }

    EpollRunLoop loop;
    SystemPingNetwork network{loop};
    std::vector<std::uint64_t> received;
    std::unique_ptr<EchoSocket> socket;
};

INSTANTIATE_TEST_SUITE_P(
    Loopback, SystemEchoSocketTest, testing::Values(ipv4Loopback, ipv6Loopback),
    [](const auto& tested) { return tested.param.name; });

TEST_P(SystemEchoSocketTest, ReceivesTheKernelsReplyToItsRequest) {
    socket = open([this] { drain(*socket, received); });
    ASSERT_TRUE(send(*socket, 0x1122334455667788));
    EXPECT_TRUE(runUntil([this] { return !received.empty(); }));
    EXPECT_THAT(received, ElementsAre(0x1122334455667788));
}

TEST_P(SystemEchoSocketTest, ReceivesTheRepliesToABurstInTheirOrder) {
    socket = open([this] { drain(*socket, received); });
    for (std::uint64_t id = 1; id <= 5; ++id) {
        ASSERT_TRUE(send(*socket, id));
    }
    EXPECT_TRUE(runUntil([this] { return received.size() >= 5; }));
    EXPECT_THAT(received, ElementsAre(1, 2, 3, 4, 5));
}

TEST_P(SystemEchoSocketTest, IsCalledAgainWhileDatagramsWait) {
    int calls = 0;
    socket = open([&calls] { ++calls; });
    ASSERT_TRUE(send(*socket, 1));
    EXPECT_TRUE(runUntil([&calls] { return calls >= 3; }));
}

TEST_P(SystemEchoSocketTest, IsNotCalledAgainOnceItsDatagramsAreRead) {
    int calls = 0;
    socket = open([this, &calls] {
        ++calls;
        drain(*socket, received);
    });
    ASSERT_TRUE(send(*socket, 1));
    ASSERT_TRUE(runUntil([this] { return !received.empty(); }));
    const int callsForTheReply = calls;
    EXPECT_FALSE(test::runOneTurn(loop, 0.05));
    EXPECT_EQ(calls, callsForTheReply);
}

TEST_P(SystemEchoSocketTest, IsNotCalledAfterItsEnd) {
    bool isCalled = false;
    std::unique_ptr<EchoSocket> doomed = open([&isCalled] { isCalled = true; });
    socket = open([this] { drain(*socket, received); });
    ASSERT_TRUE(send(*doomed, 1));
    doomed.reset();

    ASSERT_TRUE(send(*socket, 2));
    EXPECT_TRUE(runUntil([this] { return !received.empty(); }));
    EXPECT_FALSE(isCalled);
}

TEST_P(SystemEchoSocketTest, MayBeEndedByItsOwnCall) {
    bool isCalled = false;
    socket = open([this, &isCalled] {
        isCalled = true;
        socket.reset();
    });
    ASSERT_TRUE(send(*socket, 1));
    EXPECT_TRUE(runUntil([&isCalled] { return isCalled; }));
    EXPECT_EQ(socket, nullptr);
}

TEST_P(SystemEchoSocketTest, TellsThatAMessageIsTooLongToBeSent) {
    socket = open([] {});
    const std::vector<std::uint8_t> tooLong(70'000);
    EXPECT_FALSE(socket->send(tooLong, addressOf(GetParam())).isSent);
}

TEST_P(SystemEchoSocketTest, TellsThatAnAddressCannotBeSentTo) {
    socket = open([] {});
    ResolvedAddress cut = addressOf(GetParam());
    cut.sockaddr.resize(4);
    EXPECT_FALSE(socket->send(echoRequest(1, socket->identifier(), GetParam().family), cut).isSent);
}

TEST_P(SystemEchoSocketTest, StillSendsAfterASendHasFailed) {
    socket = open([this] { drain(*socket, received); });
    const std::vector<std::uint8_t> tooLong(70'000);
    static_cast<void>(socket->send(tooLong, addressOf(GetParam())));
    ASSERT_TRUE(send(*socket, 2));
    EXPECT_TRUE(runUntil([this] { return !received.empty(); }));
    EXPECT_THAT(received, ElementsAre(2));
}

TEST_P(SystemEchoSocketTest, HasNothingToReceiveBeforeARequest) {
    socket = open([] {});
    drain(*socket, received);
    EXPECT_THAT(received, IsEmpty());
}

TEST_P(SystemEchoSocketTest, TellsATimeOfSendingThatIsNotAfterTheArrivalOfTheReply) {
    std::optional<ReceivedDatagram> reply;
    std::array<std::uint8_t, 2048> buffer{};
    socket = open([&] { reply = socket->receive(buffer); });
    const EchoMessage request = echoRequest(4, socket->identifier(), GetParam().family);

    const double before = loop.now();
    const SendOutcome outcome = socket->send(request, addressOf(GetParam()));
    ASSERT_TRUE(runUntil([&reply] { return reply.has_value(); }));

    // The kernel answers on loopback before the call returns.
    EXPECT_GE(outcome.at, before);
    EXPECT_LE(outcome.at, reply->at);
}

TEST_P(SystemEchoSocketTest, ReachesTheAddressThatTheSystemsResolverGives) {
    std::optional<Resolution> resolution;
    network.resolve(GetParam().address, [&resolution](const Resolution& found) { resolution = found; });
    ASSERT_TRUE(runUntil([&resolution] { return resolution.has_value(); }));
    const auto* addresses = std::get_if<std::vector<ResolvedAddress>>(&*resolution);
    ASSERT_NE(addresses, nullptr);

    socket = open([this] { drain(*socket, received); });
    const EchoMessage request = echoRequest(3, socket->identifier(), GetParam().family);
    ASSERT_TRUE(socket->send(request, addresses->front()).isSent);
    EXPECT_TRUE(runUntil([this] { return !received.empty(); }));
    EXPECT_THAT(received, ElementsAre(3));
}

/// Moves this process's monotonic clock, so that the wall clock looks as if it had been set. Only in a
/// process without threads.
bool moveMonotonicClock(int seconds) {
    if (::unshare(CLONE_NEWTIME) != 0) {
        return false;
    }
    std::ofstream("/proc/self/timens_offsets") << "monotonic " << seconds << " 0\n";
    const FileDescriptor namespaceOfChildren(::open("/proc/self/ns/time_for_children", O_RDONLY | O_CLOEXEC));
    const double before = MonotonicClock::now();
    return ::setns(namespaceOfChildren.get(), CLONE_NEWTIME) == 0
           && MonotonicClock::now() - before > seconds - 1;
}

/// Reads the reply 20 ms late and returns whether it counts as arrived when it was readable.
bool arrivesBeforeItIsRead(EpollRunLoop& loop, EchoSocket& socket, std::optional<double>& readable) {
    readable.reset();
    const double deadline = MonotonicClock::now() + 5;
    if (!socket.send(echoRequest(1, socket.identifier(), AF_INET), addressOf(ipv4Loopback)).isSent) {
        return false;
    }
    while (!readable && MonotonicClock::now() < deadline) {
        test::runOneTurn(loop, 0.1);
    }
    constexpr double lateness = 0.02;
    while (readable && MonotonicClock::now() < *readable + lateness) {
    }
    std::array<std::uint8_t, 2048> buffer{};
    const std::optional<ReceivedDatagram> datagram = socket.receive(buffer);
    return readable && datagram && datagram->at <= *readable;
}

TEST(SystemPingNetwork, TrustsTheStampOfAReplyAfterTheWallClockWasSet) {
    TARNWICK_NEED_PING_SOCKETS(ipv4Loopback);

    enum Outcome { trusted, distrusted, noNamespace };

    const std::optional<int> outcome = exitStatusOf([]() -> int {
        EpollRunLoop childsLoop;
        SystemPingNetwork childsNetwork(childsLoop);
        std::optional<double> readable;
        auto opened = childsNetwork.open(AF_INET, identifierOfOurOwn(), [&readable] {
            readable = readable.value_or(MonotonicClock::now());
        });
        auto* const echoSocket = std::get_if<std::unique_ptr<EchoSocket>>(&opened);
        if (echoSocket == nullptr || !moveMonotonicClock(3600)) {
            return noNamespace;
        }
        // The kernel starts to stamp a little after the first socket has asked for it.
        const double deadline = MonotonicClock::now() + 5;
        while (MonotonicClock::now() < deadline) {
            if (arrivesBeforeItIsRead(childsLoop, **echoSocket, readable)) {
                return trusted;
            }
        }
        return distrusted;
    });
    if (outcome == noNamespace) {
        TARNWICK_CANNOT_RUN("this machine gives no time namespaces");
    }
    EXPECT_EQ(outcome, trusted);
}

TEST(SystemPingNetwork, SaysInTheSystemsWordsThatASocketCannotBeOpened) {
    EpollRunLoop loop;
    SystemPingNetwork network(loop);
    const auto result = network.open(AF_UNIX, 1, [] {});
    const auto* error = std::get_if<SocketError>(&result);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->text, std::strerror(EPROTONOSUPPORT));
}

} // namespace
} // namespace tarnwick
