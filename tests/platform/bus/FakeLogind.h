// The login manager, played by a test: it announces sleeps, and knows which programs delay them.
#pragma once

#include "tests/platform/bus/BusPeer.h"

#include "core/FileDescriptor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <poll.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace tarnwick {

class FakeLogind {
public:
    explicit FakeLogind(BusPeer& peer)
        : peer_(peer), calls_(peer.takeCalls(path, [this](BusMessage& call) { answer(call); })) {
        peer_.requestName(name);
    }

    void announce(bool isStart) { peer_.emit({path, interface}, "PrepareForSleep", isStart); }

    struct Request {
        std::string what;
        std::string who;
        std::string why;
        std::string mode;
    };

    [[nodiscard]] const std::vector<Request>& requests() const { return requests_; }

    /// How many delay a sleep now.
    [[nodiscard]] std::ptrdiff_t inhibitors() const {
        return std::ranges::count_if(watched_, [](const FileDescriptor& end) {
            pollfd state{.fd = end.get(), .events = 0, .revents = 0};
            return ::poll(&state, 1, 0) == 0;
        });
    }

    /// As it does while a sleep is under way.
    bool refuses = false;
    /// It leaves requests without an answer.
    bool hangs = false;

    [[nodiscard]] BusPeer& peer() { return peer_; }

    static constexpr const char* name = "org.freedesktop.login1";
    static constexpr const char* path = "/org/freedesktop/login1";
    static constexpr const char* interface = "org.freedesktop.login1.Manager";

private:
    void answer(BusMessage& call) {
        const auto arguments = call.read<std::string, std::string, std::string, std::string>();
        if (!arguments || call.member() != "Inhibit") {
            call.reply({.name = BusError::invalidArguments, .text = call.member()}).send();
            return;
        }
        const auto& [what, who, why, mode] = *arguments;
        requests_.push_back({.what = what, .who = who, .why = why, .mode = mode});
        if (hangs) {
            return;
        }
        if (refuses) {
            call.reply({.name = "org.freedesktop.login1.OperationInProgress", .text = "under way"}).send();
            return;
        }
        std::array<int, 2> ends{-1, -1};
        ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
        watched_.emplace_back(ends[0]);
        BusMessage reply = call.reply();
        ASSERT_TRUE(reply.append(FileDescriptor(ends[1])) && reply.send());
    }

    BusPeer& peer_;
    std::vector<Request> requests_;
    std::vector<FileDescriptor> watched_; ///< readable ends of what was handed out
    Subscription calls_;
};

} // namespace tarnwick
