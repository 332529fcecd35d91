// The login manager, played by a test: it announces sleeps, and knows who wants them to wait.
#pragma once

#include "BusPeer.h"

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
                const std::string& what, const std::string& who, const std::string& why,
                const std::string& mode) { return inhibit(what, who, why, mode); });
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

    [[nodiscard]] BusPeer& peer() { return peer_; }

    static constexpr const char* interface = "org.freedesktop.login1.Manager";

private:
    sdbus::UnixFd inhibit(
        const std::string& what, const std::string& who, const std::string& why, const std::string& mode) {
        requests_.push_back({.what = what, .who = who, .why = why, .mode = mode});
        if (refuses) {
            throw sdbus::Error("org.freedesktop.login1.OperationInProgress", "a sleep is under way");
        }
        std::array<int, 2> ends{-1, -1};
        if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
            throw sdbus::Error("org.freedesktop.DBus.Error.Failed", "no pipe");
        }
        watched_.emplace_back(ends[0]);
        return {ends[1], sdbus::adopt_fd};
    }

    BusPeer& peer_;
    std::unique_ptr<sdbus::IObject> object_;
    std::vector<Request> requests_;
    std::vector<FileDescriptor> watched_; ///< readable ends of what was handed out
};

} // namespace tarnwick
