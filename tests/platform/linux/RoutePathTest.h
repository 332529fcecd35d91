// What all tests of the path on a real kernel share: a network of their own and a monitor that looks at it.
#pragma once

#include "tests/platform/linux/NetworkNamespace.h"

#include "platform/linux/RoutePathMonitor.h"
#include "platform/loop/EpollRunLoop.h"
#include "tests/core/Required.h"
#include "tests/support/LoopTurn.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

inline void PrintTo(const NetworkPath& path, std::ostream* out) {
    *out << (path.satisfied ? "satisfied" : "unsatisfied") << testing::PrintToString(path.interfaces);
}

class RoutePathTest : public testing::Test {
protected:
    using Interfaces = std::vector<std::string>;

    void SetUp() override {
        if (!namespace_.isEntered()) {
            TARNWICK_CANNOT_RUN("this machine gives no network namespace");
        }
        if (!test::NetworkNamespace::ip("link set lo up")) {
            TARNWICK_CANNOT_RUN("there is no ip command here (Debian: iproute2)");
        }
    }

    static void change(const std::string& commands) { EXPECT_TRUE(test::NetworkNamespace::ip(commands)); }

    static void change6(const std::string& commands) {
        EXPECT_TRUE(test::NetworkNamespace::ip(commands, "-6"));
    }

    static void addLink(const std::string& name) { EXPECT_TRUE(test::NetworkNamespace::addLink(name)); }

    /// A link with IPv4's usual configuration in network 10.`net`.
    static void addLinkWithDefault(const std::string& name, int net, int metric) {
        const std::string prefix = "10." + std::to_string(net) + ".0.";
        addLink(name);
        change(
            "address add " + prefix + "1/24 dev " + name + "\nroute add default via " + prefix + "2 dev "
            + name + " metric " + std::to_string(metric));
    }

    void start() {
        monitor_->start([this](const NetworkPath& path) {
            updates_.push_back(path);
            updatedAt_ = loop_.now();
        });
    }

    /// With the first update told.
    void startAndSettle() {
        start();
        ASSERT_TRUE(runUntil([this] { return !updates_.empty(); }));
    }

    [[nodiscard]] bool runUntil(const std::function<bool()>& condition) {
        const double patience = loop_.now() + 20;
        while (!condition() && loop_.now() < patience) {
            wakeUps_ += test::runOneTurn(loop_, 0.1) ? 1 : 0;
        }
        return condition();
    }

    [[nodiscard]] bool runUntilPathIs(bool satisfied, const Interfaces& interfaces) {
        const NetworkPath path{satisfied, interfaces};
        return runUntil([&] { return !updates_.empty() && updates_.back() == path; });
    }

    [[nodiscard]] bool runUntilSatisfiedOver(const Interfaces& interfaces) {
        return runUntilPathIs(true, interfaces);
    }

    [[nodiscard]] bool runUntilUnsatisfied() { return runUntilPathIs(false, {}); }

    /// Long enough for all that waits to have been read, settled and looked up.
    void runThroughABurst() {
        const double end = loop_.now() + 3 * RoutePathMonitor::settleTime;
        while (loop_.now() < end) {
            wakeUps_ += test::runOneTurn(loop_, end - loop_.now()) ? 1 : 0;
        }
    }

    test::NetworkNamespace namespace_;
    EpollRunLoop loop_;
    std::vector<NetworkPath> updates_;
    double updatedAt_ = 0;
    int lookUps_ = 0;
    int wakeUps_ = 0;
    std::optional<RoutePathMonitor> monitor_{std::in_place, loop_, [this] {
                                                 ++lookUps_;
                                                 return RoutedPath::present();
                                             }};
};

} // namespace tarnwick
