// What all tests against a private bus share.
#pragma once

#include "tests/platform/bus/BusPeer.h"
#include "tests/platform/bus/PrivateBus.h"

#include "platform/bus/BusConnection.h"
#include "platform/loop/EpollRunLoop.h"
#include "tests/support/LoopTurn.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tarnwick {

class BusTest : public testing::Test {
protected:
    /// The bus runs; no program is on it yet.
    void SetUp() override { ASSERT_TRUE(daemon_.start()); }

    /// On the bus until the end of the test, or until the bus is stopped.
    BusPeer& addPeer() { return *peers_.emplace_back(std::make_unique<BusPeer>(daemon_.address())); }

    /// The bus goes first: it would answer a call to a peer that leaves.
    void stopBus() {
        daemon_.stop();
        peers_.clear();
    }

    /// Lets program and peers work until the condition holds; false when it does not hold in 20 seconds.
    [[nodiscard]] bool runUntil(const std::function<bool()>& condition) {
        const double end = loop_.now() + 20;
        while (loop_.now() < end) {
            for (const auto& peer : peers_) {
                peer->process();
            }
            if (condition()) {
                return true;
            }
            test::runOneTurn(loop_, 0.005);
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

    [[nodiscard]] bool runUntilUnavailable() {
        return runUntil([this] { return bus_.state() == BusConnection::State::unavailable; });
    }

    [[nodiscard]] bool runUntilAnswered(const std::shared_ptr<BusPeer::Answer>& answer) {
        return runUntil([&answer] { return answer->hasCome; });
    }

    /// Until all that our program has sent so far has arrived at the peer.
    [[nodiscard]] bool runUntilHeardBy(BusPeer& peer) {
        const auto answer = peer.call({bus_.uniqueName(), "/", "org.freedesktop.DBus.Peer"}, "Ping");
        return answer && runUntilAnswered(answer);
    }

    PrivateBus daemon_;
    EpollRunLoop loop_;
    BusConnection bus_{loop_, daemon_.address()};
    std::vector<std::unique_ptr<BusPeer>> peers_;
};

} // namespace tarnwick
