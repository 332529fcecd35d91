// What every path monitor promises, as tests over a driver that knows how to change one kind of path.
#pragma once

#include "platform/PathMonitor.h"
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
        return driver_.runUntil([&] {
            return !updates_.empty() && updates_.back().satisfied
                   && updates_.back().interfaces == std::vector{interface};
        });
    }

    [[nodiscard]] bool runUntilDisconnected() {
        return driver_.runUntil([&] { return !updates_.empty() && !updates_.back().satisfied; });
    }

    Driver driver_;
    std::vector<NetworkPath> updates_;
};

TYPED_TEST_SUITE_P(PathMonitorContract);

TYPED_TEST_P(PathMonitorContract, NothingIsToldBeforeTheStart) {
    this->driver_.connect("wan0");
    this->driver_.settle();

    EXPECT_TRUE(this->updates_.empty());
}

TYPED_TEST_P(PathMonitorContract, AWayToTheNetworkIsToldWithItsInterface) {
    this->start();

    this->driver_.connect("wan0");

    EXPECT_TRUE(this->runUntilConnectedOver("wan0"));
}

TYPED_TEST_P(PathMonitorContract, ALostWayIsTold) {
    this->start();
    this->driver_.connect("wan0");
    ASSERT_TRUE(this->runUntilConnectedOver("wan0"));

    this->driver_.disconnect();

    EXPECT_TRUE(this->runUntilDisconnected());
}

TYPED_TEST_P(PathMonitorContract, AnotherInterfaceIsTold) {
    this->start();
    this->driver_.connect("wan0");
    ASSERT_TRUE(this->runUntilConnectedOver("wan0"));

    this->driver_.connect("wan1");

    EXPECT_TRUE(this->runUntilConnectedOver("wan1"));
}

TYPED_TEST_P(PathMonitorContract, EachChangeIsToldOnce) {
    this->start();
    this->driver_.connect("wan0");
    ASSERT_TRUE(this->runUntilConnectedOver("wan0"));
    this->updates_.clear();

    this->driver_.disconnect();
    this->driver_.settle();
    this->driver_.connect("wan0");
    this->driver_.settle();

    ASSERT_EQ(this->updates_.size(), 2U);
    EXPECT_FALSE(this->updates_[0].satisfied);
    EXPECT_TRUE(this->updates_[1].satisfied);
}

TYPED_TEST_P(PathMonitorContract, NothingIsToldWithoutAChange) {
    this->start();
    this->driver_.connect("wan0");
    ASSERT_TRUE(this->runUntilConnectedOver("wan0"));
    this->updates_.clear();

    this->driver_.settle();

    EXPECT_TRUE(this->updates_.empty());
}

TYPED_TEST_P(PathMonitorContract, NothingIsToldAfterTheMonitorHasGone) {
    this->start();
    this->driver_.connect("wan0");
    ASSERT_TRUE(this->runUntilConnectedOver("wan0"));
    this->updates_.clear();

    this->driver_.close();
    this->driver_.disconnect();
    this->driver_.settle();

    EXPECT_TRUE(this->updates_.empty());
}

REGISTER_TYPED_TEST_SUITE_P(
    PathMonitorContract, NothingIsToldBeforeTheStart, AWayToTheNetworkIsToldWithItsInterface, ALostWayIsTold,
    AnotherInterfaceIsTold, EachChangeIsToldOnce, NothingIsToldWithoutAChange,
    NothingIsToldAfterTheMonitorHasGone);

} // namespace tarnwick
