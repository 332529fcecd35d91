// The login manager, played by a test: it announces sleeps, and knows who wants them to wait.
#pragma once

#include "tests/platform/bus/BusPeer.h"

#include "core/FileDescriptor.h"

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <memory>
#include <poll.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace tarnwick {

class FakeLogind {
public:
    explicit FakeLogind(BusPeer& peer) : peer_(peer) {
        object_ = sdbus::createObject(peer_.connection(), "/org/freedesktop/login1");
        object_->registerMethod("Inhibit").onInterface(interface).implementedAs(
            [this](
                sdbus::Result<sdbus::UnixFd>&& result, const std::string& what, const std::string& who,
                const std::string& why, const std::string& mode) {
                requests_.push_back({.what = what, .who = who, .why = why, .mode = mode});
                answer(result);
            });
        object_->registerSignal("PrepareForSleep").onInterface(interface).withParameters<bool>();
        object_->finishRegistration();
        peer_.connection().requestName("org.freedesktop.login1");
    }

    void announce(bool isStart) {
        object_->emitSignal("PrepareForSleep").onInterface(interface).withArguments(isStart);
    }

    struct Request {
        std::string what;
        std::string who;
        std::string why;
        std::string mode;
    };

    [[nodiscard]] const std::vector<Request>& requests() const { return requests_; }

    /// How many hold a sleep up now.
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

    static constexpr const char* interface = "org.freedesktop.login1.Manager";

private:
    void answer(const sdbus::Result<sdbus::UnixFd>& result) {
        if (hangs) {
            return;
        }
        if (refuses) {
            result.returnError(
                sdbus::Error("org.freedesktop.login1.OperationInProgress", "a sleep is under way"));
            return;
        }
        std::array<int, 2> ends{-1, -1};
        if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
            result.returnError(sdbus::Error("org.freedesktop.DBus.Error.Failed", "no pipe"));
            return;
        }
        watched_.emplace_back(ends[0]);
        result.returnResults(sdbus::UnixFd(ends[1], sdbus::adopt_fd));
    }

    BusPeer& peer_;
    std::unique_ptr<sdbus::IObject> object_;
    std::vector<Request> requests_;
    std::vector<FileDescriptor> watched_; ///< readable ends of what was handed out
};

} // namespace tarnwick
