// Signals that are asked for over a connection to a bus.
#include "tests/platform/bus/BusConnectionTest.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

namespace tarnwick {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// Connected, and asks for signals of a test's own.
class BusMatchTest : public BusConnectionTest {
protected:
    void SetUp() override {
        BusConnectionTest::SetUp();
        ASSERT_TRUE(runUntilConnected());
    }

    [[nodiscard]] Subscription countSignals() {
        return bus_.addMatch("type='signal',interface='test.Signals'", [this](BusMessage& message) {
            const auto values = message.read<std::string>();
            heard_.push_back(values ? std::get<0>(*values) : "");
            if (const auto act = onHeard_) {
                act();
            }
        });
    }

    static void emit(BusPeer& peer, const std::string& text) {
        peer.emit({"/signals", "test.Signals"}, "Spoken", text);
    }

    std::function<void()> onHeard_;
    std::vector<std::string> heard_;
    Subscription match_ = countSignals();
};

} // namespace

TEST_F(BusMatchTest, SignalsThatMatchAreHandedOver) {
    emit(addPeer(), "hello");

    ASSERT_TRUE(runUntil([this] { return !heard_.empty(); }));
    EXPECT_THAT(heard_, ElementsAre("hello"));
}

TEST_F(BusMatchTest, AMatchMayBeAddedWhileConnected) {
    match_ = countSignals();

    emit(addPeer(), "hello");

    EXPECT_TRUE(runUntil([this] { return !heard_.empty(); }));
}

TEST_F(BusMatchTest, AMatchHoldsOnTheNextConnectionToo) {
    stopBus();
    ASSERT_TRUE(runUntilUnavailable());
    ASSERT_TRUE(daemon_.start());
    ASSERT_TRUE(runUntilConnected());

    emit(addPeer(), "again");

    ASSERT_TRUE(runUntil([this] { return !heard_.empty(); }));
    EXPECT_THAT(heard_, ElementsAre("again"));
}

TEST_F(BusMatchTest, AnEndedMatchHearsNothing) {
    match_.reset();
    BusPeer& peer = addPeer();
    emit(peer, "hello");

    ASSERT_TRUE(runUntilHeardBy(peer));
    EXPECT_TRUE(heard_.empty());
}

TEST_F(BusMatchTest, AMatchMayEndInsideItsHandler) {
    onHeard_ = [this] { match_.reset(); };
    BusPeer& peer = addPeer();

    emit(peer, "first");
    emit(peer, "second");

    ASSERT_TRUE(runUntilHeardBy(peer));
    EXPECT_THAT(heard_, ElementsAre("first"));
}

TEST_F(BusMatchTest, AnExceptionInAHandlerConcernsThatMessageOnly) {
    onHeard_ = [] { throw std::runtime_error("not today"); };
    BusPeer& peer = addPeer();

    emit(peer, "first");
    emit(peer, "second");

    ASSERT_TRUE(runUntilHeardBy(peer));
    EXPECT_THAT(heard_, ElementsAre("first", "second"));
    EXPECT_EQ(bus_.state(), State::connected);
}

TEST_F(BusMatchTest, ASignalWithOtherContentsThanExpectedHasNoValues) {
    BusPeer& peer = addPeer();

    peer.emit({"/signals", "test.Signals"}, "Spoken", std::uint32_t{7});
    peer.emit({"/signals", "test.Signals"}, "Spoken");

    ASSERT_TRUE(runUntilHeardBy(peer));
    EXPECT_THAT(heard_, ElementsAre("", ""));
}

TEST_F(BusMatchTest, ANestedLoopInAHandlerWaitsWithoutSpinning) {
    int nestedTurns = 0;
    onHeard_ = [&] {
        onHeard_ = nullptr;
        nestedTurns = turnsWithin(0.3);
        EXPECT_THAT(heard_, ElementsAre("first"));
    };
    BusPeer& peer = addPeer();

    // The second one is still at the bus when the first is handled.
    emit(peer, "first");
    ASSERT_TRUE(peer.call({"org.freedesktop.DBus", "/", "org.freedesktop.DBus"}, "GetId") != nullptr);
    emit(peer, "second");

    ASSERT_TRUE(runUntil([this] { return heard_.size() == 2; }));
    EXPECT_THAT(heard_, ElementsAre("first", "second"));
    EXPECT_LE(nestedTurns, 2);
}

TEST_F(BusMatchTest, ANestedLoopAtATimeoutWaitsWithoutSpinning) {
    addEcho();
    BusPeer& peer = addPeer();

    int nestedTurns = 0;
    callBus<NoResult>(bus_, echoCall("Wait", 0.05), std::tuple(), [&](const std::optional<NoResult>&) {
        emit(peer, "for later");
        nestedTurns = turnsWithin(0.3);
        EXPECT_THAT(heard_, IsEmpty());
    });

    ASSERT_TRUE(runUntil([this] { return !heard_.empty(); }));
    EXPECT_LE(nestedTurns, 2);
}

} // namespace tarnwick
