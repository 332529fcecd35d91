// A second process made by fork, for what must not happen to the test program itself.
#pragma once

#include <array>
#include <chrono>
#include <csignal>
#include <functional>
#include <optional>
#include <poll.h>
#include <stdexcept>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace tarnwick::test {

/// Ends, by force if need be, with this object. Made before the test has threads.
class ChildProcess {
public:
    using Report = std::function<void()>; ///< tells the parent that the child has come so far

    /// The child's exit status is what `work` returns.
    explicit ChildProcess(const std::function<int(const Report&)>& work) {
        if (::pipe(pipe_.data()) != 0 || (id_ = ::fork()) < 0) {
            throw std::runtime_error("no second process");
        }
        if (id_ == 0) {
            ::close(pipe_[0]);
            const int status = work([this] { static_cast<void>(!::write(pipe_[1], "x", 1)); });
            ::_exit(status);
        }
        ::close(pipe_[1]);
    }

    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    ~ChildProcess() {
        kill();
        ::close(pipe_[0]);
    }

    /// True when the child has reported within ten seconds.
    [[nodiscard]] bool hasReported() const {
        pollfd ready{.fd = pipe_[0], .events = POLLIN, .revents = 0};
        char byte = 0;
        return ::poll(&ready, 1, 10'000) == 1 && ::read(pipe_[0], &byte, 1) == 1;
    }

    /// Its exit status; nothing when it died of a signal or has not ended within ten seconds.
    [[nodiscard]] std::optional<int> exitStatus() {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        int status = 0;
        pid_t ended = 0;
        while ((ended = ::waitpid(id_, &status, WNOHANG)) == 0
               && std::chrono::steady_clock::now() < deadline) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        if (ended != id_) {
            return std::nullopt;
        }
        id_ = -1;
        return WIFEXITED(status) ? std::optional(WEXITSTATUS(status)) : std::nullopt;
    }

    void kill() {
        if (id_ > 0) {
            ::kill(id_, SIGKILL);
            ::waitpid(id_, nullptr, 0);
            id_ = -1;
        }
    }

private:
    std::array<int, 2> pipe_{};
    pid_t id_ = -1;
};

/// Runs `work` in a process of its own and returns its exit status.
inline std::optional<int> exitStatusOf(const std::function<int()>& work) {
    ChildProcess child([&work](const ChildProcess::Report&) { return work(); });
    return child.exitStatus();
}

} // namespace tarnwick::test
