// What every run loop promises, as tests over a driver that knows how to run one kind of loop. Each kind
// instantiates RunLoopContract, and RealRunLoopContract too when real time and threads drive it. The tests
// are in RunLoopTimersContract.cpp, RunLoopWatchesContract.cpp and RealRunLoopContract.cpp.
#pragma once

#include "core/FileDescriptor.h"
#include "core/RunLoop.h"
#include "tests/support/CaseName.h"

#include <array>
#include <chrono>
#include <fcntl.h>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <string>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace tarnwick {

/// A pipe whose ends are watched.
class WatchedPipe {
public:
    WatchedPipe() {
        std::array<int, 2> ends{-1, -1};
        EXPECT_EQ(::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK), 0);
        reading_ = FileDescriptor(ends[0]);
        writing_ = FileDescriptor(ends[1]);
    }

    [[nodiscard]] int readingEnd() const { return reading_.get(); }

    [[nodiscard]] int writingEnd() const { return writing_.get(); }

    void closeWritingEnd() { writing_.reset(); }

    void put(const std::string& bytes) const {
        EXPECT_EQ(::write(writing_.get(), bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }

    /// Reads one byte; nothing when none waits.
    [[nodiscard]] std::optional<char> take() const {
        char byte = 0;
        return ::read(reading_.get(), &byte, 1) == 1 ? std::optional(byte) : std::nullopt;
    }

private:
    FileDescriptor reading_;
    FileDescriptor writing_;
};

/// Two ends that are connected.
inline std::pair<FileDescriptor, FileDescriptor> socketPair(int flags = 0) {
    std::array<int, 2> ends{-1, -1};
    EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | flags, 0, ends.data()), 0);
    return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

/// Knows how to run one kind of loop.
class LoopDriver {
public:
    LoopDriver() = default;
    LoopDriver(const LoopDriver&) = delete;
    LoopDriver& operator=(const LoopDriver&) = delete;
    virtual ~LoopDriver() = default;

    virtual RunLoop& loop() = 0;

    /// Runs the loop until the condition holds; gives up after a bounded time.
    virtual bool runUntil(const std::function<bool()>& condition) = 0;

    /// Told of every descriptor that a test watches.
    virtual void isWatched(int /*descriptor*/) {}

    /// Keeps the thread busy, where time passes while a task runs.
    virtual void spend(double seconds) {
        const std::chrono::duration<double> time(seconds);
        for (const auto start = std::chrono::steady_clock::now();
             std::chrono::steady_clock::now() - start < time;) {
        }
    }

    /// Destroys the loop.
    virtual void close() {}
};

struct LoopKind {
    std::string name;
    std::function<std::unique_ptr<LoopDriver>()> makeDriver;

    friend void PrintTo(const LoopKind& kind, std::ostream* out) { *out << kind.name; }
};

template<class Driver>
LoopKind loopKind(const std::string& name) {
    return {name, [] { return std::make_unique<Driver>(); }};
}

class RunLoopContract : public testing::TestWithParam<LoopKind> {
protected:
    /// Long beside what a timer is late by, short beside a person's patience.
    static constexpr double step = 0.02;

    [[nodiscard]] LoopDriver& driver() const { return *driver_; }

    [[nodiscard]] RunLoop& loop() const { return driver_->loop(); }

    [[nodiscard]] bool runUntil(const std::function<bool()>& condition) const {
        return driver_->runUntil(condition);
    }

    /// Runs the loop until all that is due within `seconds` has had its turn.
    [[nodiscard]] bool runFor(double seconds) const {
        bool isOver = false;
        const RunLoop::Handle end = loop().after(seconds, [&] { isOver = true; });
        return runUntil([&] { return isOver; });
    }

    [[nodiscard]] RunLoop::Handle watch(const WatchedPipe& pipe, RunLoop::Task task) const {
        driver_->isWatched(pipe.readingEnd());
        return loop().watchReadable(pipe.readingEnd(), std::move(task));
    }

    [[nodiscard]] RunLoop::Handle watchForRoom(int descriptor, RunLoop::Task task) const {
        driver_->isWatched(descriptor);
        return loop().watchWritable(descriptor, std::move(task));
    }

private:
    std::unique_ptr<LoopDriver> driver_ = GetParam().makeDriver();
};

class RealRunLoopContract : public RunLoopContract {};

} // namespace tarnwick
