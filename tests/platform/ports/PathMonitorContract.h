// What every path monitor promises, as tests over a driver that knows how to change one kind of path.
#pragma once

#include "platform/ports/PathMonitor.h"
#include "tests/core/Required.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace tarnwick {

/// `Driver` offers: `std::string obstacle()`, why it can't run here, or nothing; `PathMonitor& monitor()`;
/// `void connect(interface)` and `void disconnect()`, after which the path is satisfied over that interface
/// alone, or not at all; `bool runUntil(condition)`, which gives up after a bounded time; `void settle()`,
/// after which all is told; `void close()`, which destroys the monitor.
template<class Driver>
class PathMonitorContract : public testing::Test {
protected:
    void SetUp() override {
        if (const std::string obstacle = driver_.obstacle(); !obstacle.empty()) {
            TARNWICK_CANNOT_RUN(obstacle);
        }
    }

    void start() {
        driver_.monitor().start([this](const NetworkPath& path) { updates_.push_back(path); });
    }

    [[nodiscard]] bool runUntilConnectedOver(const std::string& interface) {
        return runUntilPathIs({true, {interface}});
    }

    [[nodiscard]] bool runUntilDisconnected() { return runUntilPathIs({false, {}}); }

    /// With the path over that interface told and forgotten.
    void startConnectedOver(const std::string& interface) {
        driver_.connect(interface);
        start();
        ASSERT_TRUE(runUntilConnectedOver(interface));
        driver_.settle();
        updates_.clear();
    }

    Driver driver_;
    std::vector<NetworkPath> updates_;

private:
    [[nodiscard]] bool runUntilPathIs(const NetworkPath& path) {
        return driver_.runUntil([&] { return !updates_.empty() && updates_.back() == path; });
    }
};

TYPED_TEST_SUITE_P(PathMonitorContract);

TYPED_TEST_P(PathMonitorContract, NothingIsToldBeforeTheStart) {
    this->driver_.connect("wan0");
    this->driver_.settle();

    EXPECT_TRUE(this->updates_.empty());
}

TYPED_TEST_P(PathMonitorContract, ThePresentWayIsToldSoonAfterTheStartButNotFromInsideIt) {
    this->driver_.connect("wan0");
    this->driver_.settle();

    this->start();
    EXPECT_TRUE(this->updates_.empty());

    EXPECT_TRUE(this->runUntilConnectedOver("wan0"));
    EXPECT_EQ(this->updates_.size(), 1U);
}

TYPED_TEST_P(PathMonitorContract, ThatThereIsNoWayIsToldSoonAfterTheStartToo) {
    this->driver_.connect("wan0");
    this->driver_.disconnect();

    this->start();

    EXPECT_TRUE(this->runUntilDisconnected());
    EXPECT_EQ(this->updates_.size(), 1U);
}

TYPED_TEST_P(PathMonitorContract, AWayToTheNetworkIsToldWithItsInterface) {
    this->start();

    this->driver_.connect("wan0");

    EXPECT_TRUE(this->runUntilConnectedOver("wan0"));
}

TYPED_TEST_P(PathMonitorContract, ALostWayIsTold) {
    this->startConnectedOver("wan0");

    this->driver_.disconnect();

    EXPECT_TRUE(this->runUntilDisconnected());
}

TYPED_TEST_P(PathMonitorContract, AnotherInterfaceIsTold) {
    this->startConnectedOver("wan0");

    this->driver_.connect("wan1");

    EXPECT_TRUE(this->runUntilConnectedOver("wan1"));
}

TYPED_TEST_P(PathMonitorContract, EachChangeIsToldOnce) {
    this->startConnectedOver("wan0");

    this->driver_.disconnect();
    ASSERT_TRUE(this->runUntilDisconnected());
    this->driver_.connect("wan0");
    ASSERT_TRUE(this->runUntilConnectedOver("wan0"));
    this->driver_.settle();

    EXPECT_EQ(this->updates_, (std::vector<NetworkPath>{{false, {}}, {true, {"wan0"}}}));
}

TYPED_TEST_P(PathMonitorContract, AWayThatIsMadeAgainJustAsItIsIsNotTold) {
    this->startConnectedOver("wan0");

    this->driver_.connect("wan0");
    this->driver_.settle();

    EXPECT_TRUE(this->updates_.empty());
}

TYPED_TEST_P(PathMonitorContract, WhatWaitsToBeToldGoesWithTheMonitor) {
    this->driver_.connect("wan0");
    this->start();

    this->driver_.close();
    this->driver_.settle();

    EXPECT_TRUE(this->updates_.empty());
}

REGISTER_TYPED_TEST_SUITE_P(
    PathMonitorContract, NothingIsToldBeforeTheStart, ThePresentWayIsToldSoonAfterTheStartButNotFromInsideIt,
    ThatThereIsNoWayIsToldSoonAfterTheStartToo, AWayToTheNetworkIsToldWithItsInterface, ALostWayIsTold,
    AnotherInterfaceIsTold, EachChangeIsToldOnce, AWayThatIsMadeAgainJustAsItIsIsNotTold,
    WhatWaitsToBeToldGoesWithTheMonitor);

} // namespace tarnwick
