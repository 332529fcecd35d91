// A connection to a private bus, and a program there to call.
#pragma once

#include "platform/bus/BusCall.h"
#include "tests/platform/bus/BusTest.h"

#include <optional>
#include <string>
#include <tuple>

namespace tarnwick {

class BusConnectionTest : public BusTest {
protected:
    using State = BusConnection::State;

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

    /// `timeout` in seconds.
    [[nodiscard]] static BusConnection::Call echoCall(
        const char* method, double timeout = BusConnection::callTimeout) {
        return {
            .destination = "test.Echo",
            .path = "/echo",
            .interface = "test.Echo",
            .method = method,
            .timeout = timeout};
    }

    /// How often the loop has something to run within `seconds`, in which the peers do nothing.
    [[nodiscard]] int turnsWithin(double seconds) {
        const double end = loop_.now() + seconds;
        int turns = 0;
        while (loop_.now() < end) {
            turns += test::runOneTurn(loop_, 0.05) ? 1 : 0;
        }
        return turns;
    }

    Subscription echo_;
};

} // namespace tarnwick
