// Whether a connection is metered, as a network manager tells.
#include "platform/bus/NetworkManagerCost.h"

#include "tests/platform/bus/NetworkManagerTest.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <string>

namespace tarnwick {

namespace {

class NetworkManagerCostTest : public NetworkManagerTest {
protected:
    /// Nothing without an answer.
    [[nodiscard]] std::optional<bool> isMetered() {
        std::optional<bool> answer;
        cost_->ask([&answer](bool isMetered) { answer = isMetered; });
        EXPECT_FALSE(answer); // not before the call has returned
        EXPECT_TRUE(runUntil([&answer] { return answer.has_value(); }));
        return answer;
    }

    [[nodiscard]] std::optional<bool> isMeteredWith(std::uint32_t metered) {
        addNetworkManager("Metered", metered);
        EXPECT_TRUE(runUntilConnected());
        return isMetered();
    }

    std::unique_ptr<NetworkManagerCost> cost_ = std::make_unique<NetworkManagerCost>(bus_, patience);
};

} // namespace

TEST_F(NetworkManagerCostTest, AConnectionThatTheUserCallsMeteredIs) {
    EXPECT_EQ(isMeteredWith(1), true);
}

TEST_F(NetworkManagerCostTest, AConnectionThatIsGuessedMeteredIs) {
    EXPECT_EQ(isMeteredWith(3), true);
}

TEST_F(NetworkManagerCostTest, AnUnknownConnectionIsNotMetered) {
    EXPECT_EQ(isMeteredWith(0), false);
}

TEST_F(NetworkManagerCostTest, AConnectionThatTheUserCallsUnmeteredIsNot) {
    EXPECT_EQ(isMeteredWith(2), false);
}

TEST_F(NetworkManagerCostTest, AConnectionThatIsGuessedUnmeteredIsNot) {
    EXPECT_EQ(isMeteredWith(4), false);
}

TEST_F(NetworkManagerCostTest, AnAnswerThatIsNoneDoesNotCount) {
    addNetworkManager("Metered", std::string("yes"));
    ASSERT_TRUE(runUntilConnected());

    EXPECT_EQ(isMetered(), false);
}

TEST_F(NetworkManagerCostTest, AnOldNetworkManagerKnowsOfNoMeteredConnections) {
    addNetworkManager("Connectivity", std::uint32_t{1});
    ASSERT_TRUE(runUntilConnected());

    EXPECT_EQ(isMetered(), false);
}

TEST_F(NetworkManagerCostTest, WithoutANetworkManagerNoConnectionIsMetered) {
    ASSERT_TRUE(runUntilConnected());

    EXPECT_EQ(isMetered(), false);
}

TEST_F(NetworkManagerCostTest, WithoutABusNoConnectionIsMetered) {
    stopBus();
    ASSERT_TRUE(runUntilUnavailable());

    EXPECT_EQ(isMetered(), false);
}

TEST_F(NetworkManagerCostTest, ANetworkManagerThatHangsIsNotWaitedFor) {
    addNetworkManager("Metered", std::uint32_t{1});
    ASSERT_TRUE(runUntilConnected());
    const auto hanging = std::move(peers_.back());
    peers_.pop_back();
    const double start = loop_.now();

    EXPECT_EQ(isMetered(), false);

    EXPECT_GE(loop_.now() - start, patience - 0.01);
}

TEST_F(NetworkManagerCostTest, ABusThatHangsIsNotWaitedFor) {
    ASSERT_TRUE(runUntilConnected());
    daemon_.hang();
    const double start = loop_.now();

    EXPECT_EQ(isMetered(), false);

    EXPECT_GE(loop_.now() - start, patience - 0.01);
    EXPECT_LT(loop_.now() - start, BusConnection::callTimeout);
}

TEST_F(NetworkManagerCostTest, NothingIsCalledAfterItsEnd) {
    BusPeer& peer = addNetworkManager("Metered", std::uint32_t{1});
    ASSERT_TRUE(runUntilConnected());
    bool isAnswered = false;
    cost_->ask([&isAnswered](bool) { isAnswered = true; });

    cost_.reset();

    ASSERT_TRUE(runUntilHeardBy(peer));
    EXPECT_FALSE(isAnswered);
}

} // namespace tarnwick
