// When the network path is looked up and told, in virtual time.
#include "tests/platform/linux/RoutePathTest.h"

#include "tests/simulation/VirtualRunLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace tarnwick {

namespace {

/// With the kernel's answers made up. Its messages come when the test delivers them.
class ScriptedPathTest : public RoutePathTest {
protected:
    void TearDown() override { monitor_.reset(); }

    void startScripted() {
        monitor_.emplace(virtualLoop_, [this] {
            ++lookUps_;
            return answer_;
        });
        start();
    }

    /// Whatever descriptor the monitor watches.
    void deliverMessages() {
        constexpr int moreThanAreOpen = 256;
        for (int descriptor = 0; descriptor < moreThanAreOpen; ++descriptor) {
            virtualLoop_.makeReadable(descriptor);
        }
    }

    simulation::VirtualRunLoop virtualLoop_;
    std::optional<RoutedPath> answer_ = RoutedPath{{true, {"wan0"}}, std::nullopt};
};

} // namespace

TEST_F(ScriptedPathTest, TheFirstUpdateComesSoonButNotFromInsideStart) {
    startScripted();
    EXPECT_TRUE(updates_.empty());

    virtualLoop_.runPending();

    EXPECT_THAT(updates_, testing::ElementsAre(NetworkPath{true, {"wan0"}}));
}

TEST_F(ScriptedPathTest, ALastingPathIsNotLookedUpAgainByItself) {
    startScripted();

    virtualLoop_.advance(24 * 3600);

    EXPECT_EQ(lookUps_, 1);
    EXPECT_EQ(virtualLoop_.timerCount(), 0U);
}

TEST_F(ScriptedPathTest, AnExpiringPathIsLookedUpSlowly) {
    answer_->expiresIn = 1800;
    startScripted();

    virtualLoop_.advance(60);

    EXPECT_GE(lookUps_, 11);
    EXPECT_LE(lookUps_, 13);
    EXPECT_EQ(updates_.size(), 1U);
}

TEST_F(ScriptedPathTest, AnExpiringPathIsLookedUpAsSoonAsItsTimeIsOver) {
    answer_->expiresIn = 2;
    startScripted();
    virtualLoop_.advance(2);
    ASSERT_EQ(lookUps_, 1);
    answer_ = RoutedPath{{false, {}}, std::nullopt};

    virtualLoop_.advance(0.1);

    EXPECT_THAT(updates_, testing::ElementsAre(NetworkPath{true, {"wan0"}}, NetworkPath{false, {}}));
}

TEST_F(ScriptedPathTest, AnExpiryThatIsTooNearToBeToldIsStillLookedUp) {
    answer_->expiresIn = 3;
    startScripted();
    virtualLoop_.advance(2.995);
    change("link set dev lo down");
    answer_->expiresIn.reset();
    deliverMessages();
    virtualLoop_.advance(RoutePathMonitor::settleTime);
    ASSERT_EQ(lookUps_, 2);
    answer_ = RoutedPath{{false, {}}, std::nullopt};

    virtualLoop_.advance(0.1);

    EXPECT_THAT(updates_, testing::ElementsAre(NetworkPath{true, {"wan0"}}, NetworkPath{false, {}}));
}

TEST_F(ScriptedPathTest, APathThatNoLongerExpiresIsLookedUpOnceMoreAndThenLeftAlone) {
    answer_->expiresIn = 1800;
    startScripted();
    virtualLoop_.runPending();
    answer_->expiresIn.reset();

    virtualLoop_.advance(3600);

    EXPECT_EQ(lookUps_, 3);
    EXPECT_EQ(virtualLoop_.timerCount(), 0U);
}

TEST_F(ScriptedPathTest, ABurstThatDoesNotEndIsLookedUpSoonAfterItsFirstMessage) {
    startScripted();
    virtualLoop_.runPending();
    const auto tellAgain = [this](const std::string& address) {
        change("address add " + address + " dev lo");
        deliverMessages();
        virtualLoop_.advance(0.4 * RoutePathMonitor::settleTime);
    };

    tellAgain("10.1.0.1");
    tellAgain("10.1.0.2");
    ASSERT_EQ(lookUps_, 1);
    tellAgain("10.1.0.3");

    EXPECT_EQ(lookUps_, 2);
}

TEST_F(ScriptedPathTest, AQuestionWithoutAnAnswerTellsNothingAndIsAskedAgain) {
    answer_.reset();
    startScripted();
    virtualLoop_.runPending();
    ASSERT_TRUE(updates_.empty());
    answer_ = RoutedPath{{true, {"wan0"}}, std::nullopt};

    virtualLoop_.advance(RoutePathMonitor::slowInterval + 1);

    EXPECT_EQ(updates_.size(), 1U);
    EXPECT_EQ(lookUps_, 2);
}

TEST_F(ScriptedPathTest, ABareChangeOfOrderIsTold) {
    answer_ = RoutedPath{{true, {"wan0", "wan1"}}, 1.0};
    startScripted();
    virtualLoop_.runPending();
    answer_ = RoutedPath{{true, {"wan1", "wan0"}}, std::nullopt};

    virtualLoop_.advance(2);

    EXPECT_THAT(
        updates_,
        testing::ElementsAre(NetworkPath{true, {"wan0", "wan1"}}, NetworkPath{true, {"wan1", "wan0"}}));
}

} // namespace tarnwick
