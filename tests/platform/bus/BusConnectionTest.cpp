// The connection to a bus, whatever becomes of the bus.
#include "platform/bus/BusConnection.h"

#include "tests/platform/bus/BusTest.h"

#include "core/FileDescriptor.h"
#include "platform/bus/BusCall.h"
#include "platform/bus/BusLink.h"
#include "tests/support/LoopTurn.h"

#include <gmock/gmock.h>
#include <systemd/sd-bus.h>

#include <array>
#include <fcntl.h>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <sys/socket.h>
#include <tuple>
#include <unistd.h>
#include <vector>

namespace tarnwick {

namespace {

using State = BusConnection::State;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

class BusConnectionTest : public BusTest {
protected:
    /// A program that answers "Echo" with what it got, and "Wait" never.
    void addEcho() {
        BusPeer& peer = addPeer();
        peer.requestName("test.Echo");
        echo_ = peer.takeCalls("/echo", [](BusMessage& call) {
            if (call.member() == "Echo") {
                BusMessage reply = call.reply();
                ASSERT_TRUE(reply.append(std::get<0>(call.read<std::string>().value())));
                ASSERT_TRUE(reply.send());
            }
        });
    }

    [[nodiscard]] static BusConnection::Call echoCall(const char* method) {
        return {.destination = "test.Echo", .path = "/echo", .interface = "test.Echo", .method = method};
    }

    Subscription echo_;
};

/// The same where no bus is running.
class WithoutBusTest : public BusConnectionTest {
protected:
    void SetUp() override {}
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
    ASSERT_TRUE(runUntil([this] { return bus_.state() == State::unavailable; }));
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
            bus_.call(
                {.destination = "test.Echo",
                 .path = "/echo",
                 .interface = "test.Echo",
                 .method = "Wait",
                 .timeout = 0.1},
                [](BusMessage&) { return true; }, [](BusMessage*) {});
            stopBus();
            EXPECT_TRUE(runUntil([this] { return bus_.state() == State::unavailable; }));
        }
    });
    const Subscription second = bus_.onStateChange([&] { states.push_back(bus_.state()); });

    ASSERT_TRUE(runUntil([&states] { return !states.empty(); }));

    EXPECT_THAT(states, Each(State::unavailable));
}

TEST_F(WithoutBusTest, AnAbsentBusIsAState) {
    EXPECT_TRUE(runUntil([this] { return bus_.state() == State::unavailable; }));
}

TEST_F(WithoutBusTest, ABusThatComesLateIsFound) {
    ASSERT_TRUE(runUntil([this] { return bus_.state() == State::unavailable; }));

    ASSERT_TRUE(daemon_.start());

    EXPECT_TRUE(runUntilConnected());
}

TEST_F(WithoutBusTest, RetriesComeFartherApart) {
    ASSERT_TRUE(runUntil([this] { return bus_.state() == State::unavailable; }));
    const double end = loop_.now() + 3.5;
    int tasks = 0;
    while (loop_.now() < end) {
        tasks += test::runOneTurn(loop_, 0.1) ? 1 : 0;
    }

    // After one second, and two more after that; nothing but a timer each time.
    EXPECT_EQ(tasks, 2);
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
    const double start = loop_.now();
    const BusConnection connection(loop_, daemon_.silentAddress());

    runFor(0.2);

    EXPECT_EQ(connection.state(), State::connecting);
    EXPECT_LT(loop_.now() - start, 1);
}

TEST_F(BusConnectionTest, OfSeveralAddressesTheFirstThatListensIsTaken) {
    const BusConnection connection(loop_, "unix:path=/nowhere/at/all;" + daemon_.address());

    EXPECT_TRUE(runUntil([&connection] { return connection.state() == State::connected; }));
}

TEST_F(BusConnectionTest, ACallIsAnswered) {
    addEcho();
    ASSERT_TRUE(runUntilConnected());

    std::optional<std::string> answer;
    callBus<std::string>(
        bus_, echoCall("Echo"), std::tuple(std::string("hello")),
        [&answer](const std::optional<std::string>& text) { answer = text; });

    EXPECT_TRUE(runUntil([&answer] { return answer == "hello"; }));
}

TEST_F(BusConnectionTest, AMessageLargerThanTheSocketTakesGetsThrough) {
    addEcho();
    ASSERT_TRUE(runUntilConnected());
    const std::string longText(8'000'000, 'x');

    std::optional<std::string> answer;
    callBus<std::string>(
        bus_, echoCall("Echo"), std::tuple(longText),
        [&answer](const std::optional<std::string>& text) { answer = text; });

    EXPECT_TRUE(runUntil([&] { return answer == longText; }));
}

TEST_F(BusConnectionTest, ACallOfAMissingServiceFails) {
    ASSERT_TRUE(runUntilConnected());

    std::optional<bool> hasResult;
    callBus<std::string>(
        bus_, echoCall("Echo"), std::tuple(std::string("hello")),
        [&hasResult](const std::optional<std::string>& text) { hasResult = text.has_value(); });

    EXPECT_TRUE(runUntil([&hasResult] { return hasResult == false; }));
}

TEST_F(BusConnectionTest, ACallWithAnotherResultThanExpectedFails) {
    addEcho();
    ASSERT_TRUE(runUntilConnected());

    std::optional<bool> hasResult;
    callBus<std::uint32_t>(
        bus_, echoCall("Echo"), std::tuple(std::string("hello")),
        [&hasResult](const std::optional<std::uint32_t>& number) { hasResult = number.has_value(); });

    EXPECT_TRUE(runUntil([&hasResult] { return hasResult == false; }));
}

TEST_F(BusConnectionTest, ACallThatIsNotAnsweredFailsAfterItsTimeout) {
    addEcho();
    ASSERT_TRUE(runUntilConnected());
    BusConnection::Call call = echoCall("Wait");
    call.timeout = 0.2;
    const double start = loop_.now();

    std::optional<bool> hasResult;
    callBus<NoResult>(bus_, call, std::tuple(), [&hasResult](const std::optional<NoResult>& done) {
        hasResult = done.has_value();
    });

    ASSERT_TRUE(runUntil([&hasResult] { return hasResult == false; }));
    EXPECT_GE(loop_.now() - start, 0.2);
}

TEST_F(BusConnectionTest, ALostConnectionAnswersItsCallsOnceAfterTheListenersKnow) {
    addEcho();
    ASSERT_TRUE(runUntilConnected());
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

TEST_F(BusConnectionTest, ABusThatBreaksTheProtocolIsLostAndItsCallsAreAnswered) {
    addEcho();
    ASSERT_TRUE(runUntilConnected());
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
    BusConnection::Call wakeUp = echoCall("Wait");
    wakeUp.timeout = 0.05;
    callBus<NoResult>(bus_, wakeUp, std::tuple(), count);

    ASSERT_TRUE(runUntil([this] { return bus_.state() == State::unavailable; }));
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

namespace {

/// Counts signals of a test's own.
class BusMatchTest : public BusConnectionTest {
protected:
    [[nodiscard]] Subscription countSignals() {
        return bus_.addMatch("type='signal',interface='test.Signals'", [this](BusMessage& message) {
            const auto values = message.read<std::string>();
            heard_.push_back(values ? std::get<0>(*values) : "");
            if (onHeard_) {
                onHeard_();
            }
        });
    }

    static void emit(BusPeer& peer, const std::string& text) {
        peer.emit({"/signals", "test.Signals"}, "Spoken", text);
    }

    std::function<void()> onHeard_;
    std::vector<std::string> heard_;
};

} // namespace

TEST_F(BusMatchTest, SignalsThatMatchAreHandedOver) {
    const Subscription match = countSignals();
    ASSERT_TRUE(runUntilConnected());

    emit(addPeer(), "hello");

    ASSERT_TRUE(runUntil([this] { return !heard_.empty(); }));
    EXPECT_THAT(heard_, ElementsAre("hello"));
}

TEST_F(BusMatchTest, AMatchMayBeAddedWhileConnected) {
    ASSERT_TRUE(runUntilConnected());
    const Subscription match = countSignals();

    emit(addPeer(), "hello");

    EXPECT_TRUE(runUntil([this] { return !heard_.empty(); }));
}

TEST_F(BusMatchTest, AMatchHoldsOnTheNextConnectionToo) {
    const Subscription match = countSignals();
    ASSERT_TRUE(runUntilConnected());
    stopBus();
    ASSERT_TRUE(runUntil([this] { return bus_.state() == State::unavailable; }));
    ASSERT_TRUE(daemon_.start());
    ASSERT_TRUE(runUntilConnected());

    emit(addPeer(), "again");

    ASSERT_TRUE(runUntil([this] { return !heard_.empty(); }));
    EXPECT_THAT(heard_, ElementsAre("again"));
}

TEST_F(BusMatchTest, AnEndedMatchHearsNothing) {
    Subscription match = countSignals();
    ASSERT_TRUE(runUntilConnected());

    match.reset();
    BusPeer& peer = addPeer();
    emit(peer, "hello");

    ASSERT_TRUE(runUntilHeardBy(peer));
    EXPECT_TRUE(heard_.empty());
}

TEST_F(BusMatchTest, AMatchMayEndInsideItsHandler) {
    Subscription match = countSignals();
    onHeard_ = [&match] { match.reset(); };
    ASSERT_TRUE(runUntilConnected());
    BusPeer& peer = addPeer();

    emit(peer, "first");
    emit(peer, "second");

    ASSERT_TRUE(runUntilHeardBy(peer));
    EXPECT_THAT(heard_, ElementsAre("first"));
}

TEST_F(BusMatchTest, AnExceptionInAHandlerConcernsThatMessageOnly) {
    const Subscription match = countSignals();
    onHeard_ = [] { throw std::runtime_error("not today"); };
    ASSERT_TRUE(runUntilConnected());
    BusPeer& peer = addPeer();

    emit(peer, "first");
    emit(peer, "second");

    ASSERT_TRUE(runUntilHeardBy(peer));
    EXPECT_THAT(heard_, ElementsAre("first", "second"));
    EXPECT_EQ(bus_.state(), State::connected);
}

TEST_F(BusMatchTest, ASignalWithOtherContentsThanExpectedHasNoValues) {
    const Subscription match = countSignals();
    ASSERT_TRUE(runUntilConnected());
    BusPeer& peer = addPeer();

    peer.emit({"/signals", "test.Signals"}, "Spoken", std::uint32_t{7});
    peer.emit({"/signals", "test.Signals"}, "Spoken");

    ASSERT_TRUE(runUntilHeardBy(peer));
    EXPECT_THAT(heard_, ElementsAre("", ""));
}

TEST_F(BusMatchTest, ANestedLoopInAHandlerWaitsWithoutSpinning) {
    const Subscription match = countSignals();
    int nestedTasks = 0;
    onHeard_ = [&] {
        onHeard_ = nullptr;
        const double end = loop_.now() + 0.3;
        while (loop_.now() < end) {
            nestedTasks += test::runOneTurn(loop_, 0.05) ? 1 : 0;
        }
        EXPECT_THAT(heard_, ElementsAre("first"));
    };
    ASSERT_TRUE(runUntilConnected());
    BusPeer& peer = addPeer();

    // The second one is still at the bus when the first is handled.
    emit(peer, "first");
    ASSERT_TRUE(peer.call({"org.freedesktop.DBus", "/", "org.freedesktop.DBus"}, "GetId") != nullptr);
    emit(peer, "second");

    ASSERT_TRUE(runUntil([this] { return heard_.size() == 2; }));
    EXPECT_THAT(heard_, ElementsAre("first", "second"));
    EXPECT_LE(nestedTasks, 2);
}

TEST_F(BusMatchTest, ANestedLoopAtATimeoutWaitsWithoutSpinning) {
    addEcho();
    const Subscription match = countSignals();
    ASSERT_TRUE(runUntilConnected());
    BusPeer& peer = addPeer();
    BusConnection::Call call = echoCall("Wait");
    call.timeout = 0.05;

    int nestedTasks = 0;
    callBus<NoResult>(bus_, call, std::tuple(), [&](const std::optional<NoResult>&) {
        emit(peer, "for later");
        const double end = loop_.now() + 0.3;
        while (loop_.now() < end) {
            nestedTasks += test::runOneTurn(loop_, 0.05) ? 1 : 0;
        }
        EXPECT_THAT(heard_, IsEmpty());
    });

    ASSERT_TRUE(runUntil([this] { return !heard_.empty(); }));
    EXPECT_LE(nestedTasks, 2);
}

} // namespace tarnwick
