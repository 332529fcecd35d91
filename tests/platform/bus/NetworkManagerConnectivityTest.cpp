// How far the network lets this machine through, as a network manager tells.
#include "platform/bus/NetworkManagerConnectivity.h"

#include "tests/platform/bus/NetworkManagerTest.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace tarnwick {

namespace {

class NetworkManagerConnectivityTest : public NetworkManagerTest {
protected:
    /// Nothing without an answer.
    [[nodiscard]] std::optional<Connectivity> answer() {
        std::optional<Connectivity> result;
        check_->ask([&result](Connectivity connectivity) { result = connectivity; });
        EXPECT_FALSE(result); // not before the call has returned
        EXPECT_TRUE(runUntil([&result] { return result.has_value(); }));
        return result;
    }

    std::unique_ptr<NetworkManagerConnectivity> check_ =
        std::make_unique<NetworkManagerConnectivity>(bus_, patience);
};

/// A number of NetworkManager's, and what it means.
using Meaning = std::pair<std::uint32_t, Connectivity>;

class NetworkManagerConnectivityNumbers : public NetworkManagerConnectivityTest,
                                          public testing::WithParamInterface<Meaning> {};

} // namespace

TEST_P(NetworkManagerConnectivityNumbers, HaveTheirMeanings) {
    const auto& [number, meaning] = GetParam();
    addNetworkManager("Connectivity", number);
    ASSERT_TRUE(runUntilConnected());

    EXPECT_EQ(answer(), meaning);
}

INSTANTIATE_TEST_SUITE_P(
    NetworkManagerConnectivity, NetworkManagerConnectivityNumbers,
    testing::Values(
        Meaning(0, Connectivity::unknown), Meaning(1, Connectivity::unknown),
        Meaning(2, Connectivity::portal), Meaning(3, Connectivity::unknown),
        Meaning(4, Connectivity::unknown), Meaning(5, Connectivity::unknown)));

TEST_F(NetworkManagerConnectivityTest, AnAnswerThatIsNoneDoesNotCount) {
    addNetworkManager("Connectivity", std::string("2"));
    ASSERT_TRUE(runUntilConnected());

    EXPECT_EQ(answer(), Connectivity::unknown);
}

TEST_F(NetworkManagerConnectivityTest, WithoutANetworkManagerNothingIsKnown) {
    ASSERT_TRUE(runUntilConnected());

    EXPECT_EQ(answer(), Connectivity::unknown);
}

TEST_F(NetworkManagerConnectivityTest, WithoutABusNothingIsKnown) {
    stopBus();
    ASSERT_TRUE(runUntilUnavailable());

    EXPECT_EQ(answer(), Connectivity::unknown);
}

TEST_F(NetworkManagerConnectivityTest, ANetworkManagerThatHangsIsNotWaitedFor) {
    addNetworkManager("Connectivity", std::uint32_t{2});
    ASSERT_TRUE(runUntilConnected());
    const auto hanging = std::move(peers_.back());
    peers_.pop_back();
    const double start = loop_.now();

    EXPECT_EQ(answer(), Connectivity::unknown);

    EXPECT_GE(loop_.now() - start, patience - 0.01);
}

TEST_F(NetworkManagerConnectivityTest, NothingIsCalledAfterItsEnd) {
    BusPeer& peer = addNetworkManager("Connectivity", std::uint32_t{2});
    ASSERT_TRUE(runUntilConnected());
    bool isAnswered = false;
    check_->ask([&isAnswered](Connectivity) { isAnswered = true; });

    check_.reset();

    ASSERT_TRUE(runUntilHeardBy(peer));
    EXPECT_FALSE(isAnswered);
}

} // namespace tarnwick
