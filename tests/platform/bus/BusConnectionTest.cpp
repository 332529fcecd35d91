// The connection to a bus, whatever becomes of the bus, and its calls.
#include "tests/platform/bus/BusConnectionTest.h"

#include "core/FileDescriptor.h"
#include "platform/bus/BusLink.h"

#include <gmock/gmock.h>
#include <systemd/sd-bus.h>

#include <array>
#include <cstdint>
#include <fcntl.h>
#include <optional>
#include <string>
#include <sys/socket.h>
#include <tuple>
#include <unistd.h>
#include <vector>

namespace tarnwick {

namespace {

using testing::Each;
using testing::ElementsAre;

/// The same where no bus is running.
class WithoutBusTest : public BusConnectionTest {
protected:
    void SetUp() override {}
};

/// Connected, with a program to call.
class BusCallTest : public BusConnectionTest {
protected:
    void SetUp() override {
        BusConnectionTest::SetUp();
        addEcho();
        ASSERT_TRUE(runUntilConnected());
    }

    /// Calls, and runs until the answer has come. Nothing when the call has failed.
    template<typename Result, typename... Arguments>
    std::optional<Result> answer(const BusConnection::Call& call, const Arguments&... arguments) {
        std::optional<std::optional<Result>> answer;
        callBus<Result>(bus_, call, std::tuple(arguments...), [&answer](const std::optional<Result>& result) {
            answer = result;
        });
        EXPECT_TRUE(runUntil([&answer] { return answer.has_value(); }));
        return answer.value_or(std::nullopt);
    }
};

} // namespace

TEST_F(BusConnectionTest, ItConnectsAfterItsMaking) {
    EXPECT_EQ(bus_.state(), State::connecting);

    EXPECT_TRUE(runUntilConnected());

    EXPECT_NE(bus_.uniqueName(), "");
}

TEST_F(BusConnectionTest, AConnectionThatIsNotNeededIsNotOpened) {
    BusConnection unneeded(loop_, daemon_.address(), BusConnection::Opening::whenNeeded);
    ASSERT_TRUE(runUntilConnected());
    runFor(0.2);
    EXPECT_EQ(unneeded.state(), State::connecting);

    unneeded.need();

    EXPECT_TRUE(runUntil([&unneeded] { return unneeded.state() == State::connected; }));
}

TEST_F(BusConnectionTest, NothingRunsWhileNothingHappens) {
    ASSERT_TRUE(runUntilConnected());
    runFor(0.2);

    EXPECT_FALSE(test::runOneTurn(loop_, 1.5));
}

TEST_F(BusConnectionTest, ABusThatGoesAwayAndComesBackIsToldEachTime) {
    std::vector<State> states;
    const Subscription subscription = bus_.onStateChange([&] { states.push_back(bus_.state()); });
    ASSERT_TRUE(runUntilConnected());

    stopBus();
    ASSERT_TRUE(runUntilUnavailable());
    EXPECT_EQ(bus_.uniqueName(), "");
    ASSERT_TRUE(daemon_.start());
    ASSERT_TRUE(runUntilConnected());

    EXPECT_THAT(states, ElementsAre(State::connected, State::unavailable, State::connected));
}

TEST_F(BusConnectionTest, AConnectionLostWhileItIsToldIsNotToldAsConnected) {
    addEcho();
    std::vector<State> states;
    const Subscription first = bus_.onStateChange([this] {
        if (bus_.state() == State::connected) {
            // Its time-out lets the connection notice the loss; its descriptor is not watched in here.
            callBus<NoResult>(bus_, echoCall("Wait", 0.1), std::tuple(), [](const auto&) {});
            stopBus();
            EXPECT_TRUE(runUntilUnavailable());
        }
    });
    const Subscription second = bus_.onStateChange([&] { states.push_back(bus_.state()); });

    ASSERT_TRUE(runUntil([&states] { return !states.empty(); }));

    EXPECT_THAT(states, Each(State::unavailable));
}

TEST_F(WithoutBusTest, AnAbsentBusIsAState) {
    EXPECT_TRUE(runUntilUnavailable());
}

TEST_F(WithoutBusTest, ABusThatComesLateIsFound) {
    ASSERT_TRUE(runUntilUnavailable());

    ASSERT_TRUE(daemon_.start());

    EXPECT_TRUE(runUntilConnected());
}

TEST_F(WithoutBusTest, RetriesComeFartherApart) {
    constexpr double enough = 20;
    const double start = loop_.now();
    ASSERT_TRUE(runUntilUnavailable());

    ASSERT_TRUE(test::runOneTurn(loop_, enough));
    EXPECT_GE(loop_.now() - start, BusConnection::firstRetry);
    ASSERT_TRUE(test::runOneTurn(loop_, enough));
    EXPECT_GE(loop_.now() - start, 3 * BusConnection::firstRetry);
}

TEST_F(WithoutBusTest, WithoutAnAddressThereIsNoBus) {
    const BusConnection noBus(loop_, "");

    EXPECT_TRUE(runUntil([&noBus] { return noBus.state() == State::unavailable; }));
}

TEST_F(BusConnectionTest, ItMayEndWhileItConnects) {
    ASSERT_TRUE(runUntilConnected());
    std::optional<BusConnection> connection(std::in_place, loop_, daemon_.address());
    ASSERT_TRUE(test::runOneTurn(loop_, 1));
    ASSERT_EQ(connection->state(), State::connecting);

    connection.reset();

    BusPeer& peer = addPeer();
    EXPECT_TRUE(runUntilHeardBy(peer));
}

TEST_F(BusConnectionTest, ABusThatAcceptsAndSaysNothingHoldsNothingUp) {
    ASSERT_TRUE(runUntilConnected());
    const FileDescriptor silent = daemon_.listenSilently();
    ASSERT_TRUE(silent.isOpen());
    BusPeer& peer = addPeer();
    const BusConnection connection(loop_, daemon_.silentAddress());

    runFor(0.2);

    EXPECT_EQ(connection.state(), State::connecting);
    EXPECT_TRUE(runUntilHeardBy(peer));
}

TEST_F(BusConnectionTest, OfSeveralAddressesTheFirstThatListensIsTaken) {
    const BusConnection connection(loop_, "unix:path=/nowhere/at/all;" + daemon_.address());

    EXPECT_TRUE(runUntil([&connection] { return connection.state() == State::connected; }));
}

// Calls.

TEST_F(BusCallTest, ACallIsAnswered) {
    EXPECT_EQ(answer<std::string>(echoCall("Echo"), std::string("hello")), "hello");
}

TEST_F(BusCallTest, AMessageLargerThanTheSocketTakesGetsThrough) {
    const std::string longText(8'000'000, 'x');

    EXPECT_TRUE(answer<std::string>(echoCall("Echo"), longText) == longText);
}

TEST_F(BusCallTest, ACallOfAMissingServiceFails) {
    BusConnection::Call call = echoCall("Echo");
    call.destination = "test.Missing";

    EXPECT_EQ(answer<std::string>(call, std::string("hello")), std::nullopt);
}

TEST_F(BusCallTest, ACallWithAnotherResultThanExpectedFails) {
    EXPECT_EQ(answer<std::uint32_t>(echoCall("Echo"), std::string("hello")), std::nullopt);
}

TEST_F(BusCallTest, ACallThatIsNotAnsweredFailsAfterItsTimeout) {
    const double start = loop_.now();

    EXPECT_FALSE(answer<NoResult>(echoCall("Wait", 0.2)).has_value());

    EXPECT_GE(loop_.now() - start, 0.2);
}

TEST_F(BusCallTest, ALostConnectionAnswersItsCallsOnceAfterTheListenersKnow) {
    std::vector<State> statesWhenAnswered;
    for (int call = 0; call < 2; ++call) {
        callBus<NoResult>(bus_, echoCall("Wait"), std::tuple(), [&](const std::optional<NoResult>& done) {
            EXPECT_FALSE(done.has_value());
            statesWhenAnswered.push_back(bus_.state());
        });
    }

    stopBus();

    ASSERT_TRUE(runUntil([&] { return !statesWhenAnswered.empty(); }));
    runFor(0.1);
    EXPECT_THAT(statesWhenAnswered, ElementsAre(State::unavailable, State::unavailable));
}

TEST_F(BusCallTest, ABusThatBreaksTheProtocolIsLostAndItsCallsAreAnswered) {
    int answers = 0;
    const auto count = [&answers](const std::optional<NoResult>& done) {
        EXPECT_FALSE(done.has_value());
        ++answers;
    };
    callBus<NoResult>(bus_, echoCall("Wait"), std::tuple(), count);
    // In the place of the bus.
    std::array<int, 2> sockets{};
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, sockets.data()), 0);
    const FileDescriptor otherBus(sockets[0]);
    const FileDescriptor ours(sockets[1]);
    ASSERT_GE(::dup3(ours.get(), sd_bus_get_fd(bus_.link()->get()), O_CLOEXEC), 0);
    const std::string noMessage(1000, 'x');
    ASSERT_GT(::write(otherBus.get(), noMessage.data(), noMessage.size()), 0);

    // The exchanged socket is not watched: the connection reads from it at the time-out of this call.
    callBus<NoResult>(bus_, echoCall("Wait", 0.05), std::tuple(), count);

    ASSERT_TRUE(runUntilUnavailable());
    EXPECT_EQ(answers, 2);
}

TEST_F(WithoutBusTest, ACallWithoutABusFailsLater) {
    std::optional<bool> hasResult;
    callBus<NoResult>(
        bus_, echoCall("Wait"), std::tuple(),
        [&hasResult](const std::optional<NoResult>& done) { hasResult = done.has_value(); });

    EXPECT_EQ(hasResult, std::nullopt);
    EXPECT_TRUE(runUntil([&hasResult] { return hasResult == false; }));
}

} // namespace tarnwick
