// What all tests against a private bus share.
#pragma once

#include "tests/platform/bus/BusPeer.h"
#include "tests/platform/bus/PrivateBus.h"

#include "platform/bus/BusConnection.h"
#include "platform/loop/EpollRunLoop.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

namespace tarnwick {

class BusTest : public testing::Test {
protected:
    /// The bus runs, but nobody is on it yet.
    void SetUp() override { ASSERT_TRUE(daemon_.start()); }

    /// What a connection that is still being opened has in hand would look like a leak.
    void TearDown() override {
        EXPECT_TRUE(runUntil([] {
            using Tasks = std::filesystem::directory_iterator;
            return std::distance(Tasks("/proc/self/task"), Tasks()) == 1;
        }));
    }

    /// On the bus until the end of the test, or until the bus is stopped.
    BusPeer& addPeer() { return *peers_.emplace_back(std::make_unique<BusPeer>(daemon_.address())); }

    void stopBus() {
        peers_.clear();
        daemon_.stop();
    }

    /// Lets everybody work until the condition holds; false when it does not within reason.
    [[nodiscard]] bool runUntil(const std::function<bool()>& condition) {
        const double end = loop_.now() + 20;
        while (loop_.now() < end) {
            for (const auto& peer : peers_) {
                peer->process();
            }
            if (condition()) {
                return true;
            }
            loop_.runOne(0.005);
        }
        return false;
    }

    /// For what must not happen.
    void runFor(double seconds) {
        const double end = loop_.now() + seconds;
        (void)runUntil([this, end] { return loop_.now() >= end; });
    }

    [[nodiscard]] bool runUntilConnected() {
        return runUntil([this] { return bus_.state() == BusConnection::State::connected; });
    }

    [[nodiscard]] bool runUntilAnswered(const std::shared_ptr<BusPeer::Answer>& answer) {
        return runUntil([&answer] { return answer->hasCome; });
    }

    /// Until all that our program has sent so far has arrived at the peer.
    [[nodiscard]] bool runUntilHeardBy(BusPeer& peer) {
        if (bus_.connection() == nullptr) {
            return false;
        }
        return runUntilAnswered(
            peer.call({bus_.connection()->getUniqueName(), "/", "org.freedesktop.DBus.Peer"}, "Ping"));
    }

    PrivateBus daemon_;
    EpollRunLoop loop_;
    BusConnection bus_{loop_, daemon_.address()};
    std::vector<std::unique_ptr<BusPeer>> peers_;
};

} // namespace tarnwick
