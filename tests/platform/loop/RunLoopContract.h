// What every run loop promises, as tests over a driver that knows how to run one kind of loop. Each loop's
// test file instantiates RunLoopContract, and RealRunLoopContract too when real time and threads drive it.
#pragma once

#include "core/FileDescriptor.h"
#include "core/RunLoop.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <fcntl.h>
#include <functional>
#include <future>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

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

/// Keeps the thread busy.
inline void spendBusily(double seconds) {
    const std::chrono::duration<double> time(seconds);
    for (const auto start = std::chrono::steady_clock::now();
         std::chrono::steady_clock::now() - start < time;) {
    }
}

/// `Driver` offers: `RunLoop& loop()`; `bool runUntil(condition)`, which runs the loop until the condition
/// holds and gives up after a bounded time; `void isWatched(int descriptor)`, told of every descriptor that a
/// test watches; `void spend(double seconds)`, which keeps the thread busy where that is possible; `void
/// close()`, which destroys the loop.
template<class Driver>
class RunLoopContract : public testing::Test {
protected:
    /// Long beside what a timer is late by, short beside a person's patience.
    static constexpr double step = 0.02;

    RunLoop& loop() { return driver_.loop(); }

    [[nodiscard]] bool runUntil(const std::function<bool()>& condition) {
        return driver_.runUntil(condition);
    }

    /// Runs the loop until all that is due within `seconds` has had its turn.
    [[nodiscard]] bool runFor(double seconds) {
        bool isOver = false;
        const RunLoop::Handle end = loop().after(seconds, [&] { isOver = true; });
        return runUntil([&] { return isOver; });
    }

    [[nodiscard]] RunLoop::Handle watch(const WatchedPipe& pipe, RunLoop::Task task) {
        driver_.isWatched(pipe.readingEnd());
        return loop().watchReadable(pipe.readingEnd(), std::move(task));
    }

    [[nodiscard]] RunLoop::Handle watchForRoom(int descriptor, RunLoop::Task task) {
        driver_.isWatched(descriptor);
        return loop().watchWritable(descriptor, std::move(task));
    }

    Driver driver_;
};

TYPED_TEST_SUITE_P(RunLoopContract);

TYPED_TEST_P(RunLoopContract, PostedTasksRunInTheOrderOfTheirPosting) {
    std::vector<int> ran;
    for (int task = 0; task < 5; ++task) {
        this->loop().post([&ran, task] { ran.push_back(task); });
    }

    ASSERT_TRUE(this->runUntil([&] { return ran.size() >= 5; }));

    EXPECT_THAT(ran, testing::ElementsAre(0, 1, 2, 3, 4));
}

TYPED_TEST_P(RunLoopContract, APostedTaskNeverRunsInsideTheCall) {
    bool hasRun = false;
    this->loop().post([&] { hasRun = true; });
    EXPECT_FALSE(hasRun);

    ASSERT_TRUE(this->runUntil([&] { return hasRun; }));
}

TYPED_TEST_P(RunLoopContract, ATaskPostedByATaskWaitsForThoseBeforeIt) {
    std::vector<std::string> ran;
    this->loop().post([&] {
        this->loop().post([&] { ran.emplace_back("posted by the first"); });
        ran.emplace_back("first");
    });
    this->loop().post([&] { ran.emplace_back("second"); });

    ASSERT_TRUE(this->runUntil([&] { return ran.size() >= 3; }));

    EXPECT_THAT(ran, testing::ElementsAre("first", "second", "posted by the first"));
}

TYPED_TEST_P(RunLoopContract, ADelayedTaskRunsOnceAndNotBeforeItsTime) {
    const double start = this->loop().now();
    std::vector<double> times;
    const auto timer = this->loop().after(this->step, [&] { times.push_back(this->loop().now()); });

    ASSERT_TRUE(this->runFor(3 * this->step));

    ASSERT_EQ(times.size(), 1u);
    EXPECT_GE(times[0], start + this->step - 1e-6);
}

TYPED_TEST_P(RunLoopContract, ANegativeDelayIsDueAtOnceButNotInsideTheCall) {
    std::vector<std::string> ran;
    const auto later = this->loop().after(this->step, [&] { ran.emplace_back("later"); });
    const auto overdue = this->loop().after(-5, [&] { ran.emplace_back("overdue"); });
    EXPECT_TRUE(ran.empty());

    ASSERT_TRUE(this->runUntil([&] { return ran.size() >= 2; }));

    EXPECT_THAT(ran, testing::ElementsAre("overdue", "later"));
}

TYPED_TEST_P(RunLoopContract, TimersRunInTheOrderOfTheirTimesNotOfTheirMaking) {
    std::vector<int> ran;
    const auto third = this->loop().after(3 * this->step, [&] { ran.push_back(3); });
    const auto first = this->loop().after(1 * this->step, [&] { ran.push_back(1); });
    const auto second = this->loop().after(2 * this->step, [&] { ran.push_back(2); });

    ASSERT_TRUE(this->runUntil([&] { return ran.size() >= 3; }));

    EXPECT_THAT(ran, testing::ElementsAre(1, 2, 3));
}

TYPED_TEST_P(RunLoopContract, DestroyingTheHandleCancelsADelayedTask) {
    bool hasRun = false;
    auto timer = this->loop().after(this->step, [&] { hasRun = true; });
    timer.reset();

    ASSERT_TRUE(this->runFor(2 * this->step));

    EXPECT_FALSE(hasRun);
}

TYPED_TEST_P(RunLoopContract, DestroyingTheHandleOfATaskThatIsAlreadyDueCancelsItToo) {
    std::array<RunLoop::Handle, 2> timers;
    int runs = 0;
    for (std::size_t timer = 0; timer < timers.size(); ++timer) {
        timers.at(timer) = this->loop().after(-1, [&, other = 1 - timer] {
            ++runs;
            timers.at(other).reset();
        });
    }

    ASSERT_TRUE(this->runFor(this->step));

    EXPECT_EQ(runs, 1);
}

TYPED_TEST_P(RunLoopContract, ADelayedTaskMayDestroyItsOwnHandleAndGoOn) {
    RunLoop::Handle timer;
    std::string finished;
    timer =
        this->loop().after(0, [&timer, &finished, captured = std::string("still there after its handle")] {
            timer.reset();
            finished = captured;
        });

    ASSERT_TRUE(this->runUntil([&] { return !finished.empty(); }));

    EXPECT_EQ(finished, "still there after its handle");
}

TYPED_TEST_P(RunLoopContract, ARepeatedTaskFirstRunsAtItsFirstTime) {
    const double first = this->loop().now() + 2 * this->step;
    std::vector<double> times;
    const auto timer = this->loop().every(first, this->step, [&] { times.push_back(this->loop().now()); });

    ASSERT_TRUE(this->runUntil([&] { return !times.empty(); }));

    EXPECT_GE(times[0], first - 1e-6);
}

TYPED_TEST_P(RunLoopContract, ARepeatedTaskRunsAtMostOnceForEachOfItsTimes) {
    const double first = this->loop().now() + this->step;
    std::vector<double> fires;
    const auto timer = this->loop().every(first, this->step, [&] {
        fires.push_back(std::floor((this->loop().now() - first) / this->step + 1e-6));
    });

    ASSERT_TRUE(this->runUntil([&] { return fires.size() >= 8; }));

    EXPECT_TRUE(std::ranges::is_sorted(fires, std::less_equal<>())) << testing::PrintToString(fires);
}

TYPED_TEST_P(RunLoopContract, TimeSpentInARepeatedTaskDoesNotShiftItsSchedule) {
    const double interval = 0.1;
    const double first = this->loop().now() + this->step;
    std::vector<double> lateness;
    const auto timer = this->loop().every(first, interval, [&] {
        const double sinceFirst = this->loop().now() - first + 1e-9;
        lateness.push_back(sinceFirst - std::floor(sinceFirst / interval) * interval);
        this->driver_.spend(0.3 * interval);
    });

    ASSERT_TRUE(this->runUntil([&] { return lateness.size() >= 5; }));

    // A schedule counted from the end of each run would be a third of the interval later each time.
    EXPECT_LT(*std::min_element(lateness.begin() + 1, lateness.end()), 0.1 * interval)
        << testing::PrintToString(lateness);
}

TYPED_TEST_P(RunLoopContract, OneLateRunStandsForAllThatWereMissedBeforeIt) {
    const double interval = 5 * this->step;
    const double first = this->loop().now() - 2.5 * interval;
    const double firstAhead = first + 3 * interval;
    std::vector<double> times;
    const auto timer = this->loop().every(first, interval, [&] { times.push_back(this->loop().now()); });
    EXPECT_TRUE(times.empty());

    ASSERT_TRUE(this->runUntil([&] { return times.size() >= 2; }));

    EXPECT_GE(times[1], firstAhead - 1e-6);
}

TYPED_TEST_P(RunLoopContract, DestroyingTheHandleEndsARepeatedTask) {
    int runs = 0;
    auto timer = this->loop().every(this->loop().now(), this->step, [&] { ++runs; });
    ASSERT_TRUE(this->runUntil([&] { return runs >= 2; }));
    timer.reset();
    const int before = runs;

    ASSERT_TRUE(this->runFor(3 * this->step));

    EXPECT_EQ(runs, before);
}

TYPED_TEST_P(RunLoopContract, ARepeatedTaskMayDestroyItsOwnHandleAndNeverRunsAgain) {
    RunLoop::Handle timer;
    std::vector<std::string> runs;
    timer = this->loop().every(
        this->loop().now(), this->step, [&timer, &runs, captured = std::string("a run that ended itself")] {
            timer.reset();
            runs.push_back(captured);
        });

    ASSERT_TRUE(this->runFor(4 * this->step));

    EXPECT_THAT(runs, testing::ElementsAre("a run that ended itself"));
}

TYPED_TEST_P(RunLoopContract, ARoughlyRepeatedTaskNeedsNoCompanyAndIsNeverEarly) {
    const double first = this->loop().now() + this->step;
    std::vector<double> fires;
    std::vector<double> lateness;
    const auto timer = this->loop().everyRoughly(first, this->step, this->step / 2, [&] {
        const double passed = (this->loop().now() - first) / this->step + 1e-6;
        fires.push_back(std::floor(passed));
        lateness.push_back(passed - fires.back());
    });

    ASSERT_TRUE(this->runUntil([&] { return fires.size() >= 5; }));

    EXPECT_THAT(fires, testing::Each(testing::Ge(0)));
    EXPECT_TRUE(std::ranges::is_sorted(fires, std::less_equal<>())) << testing::PrintToString(fires);
    // Half a step is what it may be late by, and the machine by a little more.
    EXPECT_LT(*std::ranges::min_element(lateness), 0.9);
}

TYPED_TEST_P(RunLoopContract, DestroyingTheHandleEndsARoughlyRepeatedTask) {
    int runs = 0;
    auto timer = this->loop().everyRoughly(this->loop().now(), this->step, this->step / 4, [&] { ++runs; });
    ASSERT_TRUE(this->runUntil([&] { return runs >= 2; }));
    timer.reset();
    const int before = runs;

    ASSERT_TRUE(this->runFor(3 * this->step));

    EXPECT_EQ(runs, before);
}

TYPED_TEST_P(RunLoopContract, AWatchLeavesTheDescriptorBlockingAsItWas) {
    std::array<int, 2> ends{-1, -1};
    ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    const FileDescriptor reading(ends[0]);
    const FileDescriptor writing(ends[1]);
    int runs = 0;
    char byte = 0;
    this->driver_.isWatched(reading.get());
    const auto watching = this->loop().watchReadable(reading.get(), [&] {
        EXPECT_EQ(::read(reading.get(), &byte, 1), 1);
        ++runs;
    });
    ASSERT_EQ(::write(writing.get(), "ab", 2), 2);

    ASSERT_TRUE(this->runUntil([&] { return runs >= 2; }));

    EXPECT_EQ(::fcntl(reading.get(), F_GETFL) & O_NONBLOCK, 0);
}

TYPED_TEST_P(RunLoopContract, AWatchRunsForAsLongAsThereIsSomethingToRead) {
    const WatchedPipe pipe;
    std::string taken;
    const auto watching = this->watch(pipe, [&] { taken += pipe.take().value_or('?'); });
    pipe.put("abc");

    ASSERT_TRUE(this->runUntil([&] { return taken.size() >= 3; }));
    ASSERT_TRUE(this->runFor(this->step));

    EXPECT_EQ(taken, "abc");
}

TYPED_TEST_P(RunLoopContract, AWatchIsSilentUntilThereIsSomethingToRead) {
    const WatchedPipe pipe;
    int runs = 0;
    const auto watching = this->watch(pipe, [&] {
        ++runs;
        EXPECT_TRUE(pipe.take());
    });
    ASSERT_TRUE(this->runFor(this->step));
    EXPECT_EQ(runs, 0);
    pipe.put("x");

    ASSERT_TRUE(this->runUntil([&] { return runs > 0; }));

    EXPECT_EQ(runs, 1);
}

TYPED_TEST_P(RunLoopContract, OnlyTheWatchOfTheReadableDescriptorRuns) {
    const WatchedPipe silent;
    const WatchedPipe talking;
    int silentRuns = 0;
    int talkingRuns = 0;
    const auto watchingSilent = this->watch(silent, [&] { ++silentRuns; });
    const auto watchingTalking = this->watch(talking, [&] {
        ++talkingRuns;
        EXPECT_TRUE(talking.take());
    });
    talking.put("x");

    ASSERT_TRUE(this->runUntil([&] { return talkingRuns > 0; }));

    EXPECT_EQ(silentRuns, 0);
}

TYPED_TEST_P(RunLoopContract, AWatchThatDestroysItsOwnHandleNeverRunsAgain) {
    const WatchedPipe pipe;
    RunLoop::Handle watching;
    std::vector<std::string> runs;
    watching = this->watch(pipe, [&, captured = std::string("a run that ended its watch")] {
        watching.reset();
        runs.push_back(captured);
    });
    pipe.put("unread");

    ASSERT_TRUE(this->runUntil([&] { return !runs.empty(); }));
    ASSERT_TRUE(this->runFor(2 * this->step));

    EXPECT_THAT(runs, testing::ElementsAre("a run that ended its watch"));
}

TYPED_TEST_P(RunLoopContract, DestroyingTheHandleEndsAWatchAndLeavesTheDescriptorOpen) {
    const WatchedPipe pipe;
    int runs = 0;
    auto watching = this->watch(pipe, [&] { ++runs; });
    pipe.put("unread");
    watching.reset();

    ASSERT_TRUE(this->runFor(2 * this->step));

    EXPECT_EQ(runs, 0);
    EXPECT_EQ(pipe.take(), 'u');
}

TYPED_TEST_P(RunLoopContract, ADescriptorMayBeWatchedAgainAfterItsFirstWatchHasEnded) {
    const WatchedPipe pipe;
    this->watch(pipe, [] { ADD_FAILURE() << "the first watch has ended"; }).reset();
    std::string taken;
    const auto second = this->watch(pipe, [&] { taken += pipe.take().value_or('?'); });
    pipe.put("x");

    ASSERT_TRUE(this->runUntil([&] { return !taken.empty(); }));

    EXPECT_EQ(taken, "x");
}

TYPED_TEST_P(RunLoopContract, ADescriptorMayBeClosedAndReplacedOnceItsWatchHasEndedInItsOwnTask) {
    auto first = std::make_unique<WatchedPipe>();
    std::optional<WatchedPipe> second;
    RunLoop::Handle watching;
    std::string taken;
    watching = this->watch(*first, [&] {
        watching.reset();
        first.reset();
        second.emplace(); // likely to get the numbers that have just become free
        second->put("x");
        watching = this->watch(*second, [&] { taken += second->take().value_or('?'); });
    });
    first->put("unread");

    ASSERT_TRUE(this->runUntil([&] { return !taken.empty(); }));

    EXPECT_EQ(taken, "x");
}

TYPED_TEST_P(RunLoopContract, AWatchMayEndAnotherWhoseTurnItIs) {
    std::array<WatchedPipe, 2> pipes;
    std::array<RunLoop::Handle, 2> watching;
    int runs = 0;
    for (std::size_t index = 0; index < pipes.size(); ++index) {
        watching.at(index) = this->watch(pipes.at(index), [&, index] {
            ++runs;
            EXPECT_TRUE(pipes.at(index).take());
            watching.at(1 - index).reset();
        });
    }
    pipes[0].put("x");
    pipes[1].put("x");

    ASSERT_TRUE(this->runFor(2 * this->step));

    EXPECT_EQ(runs, 1);
}

TYPED_TEST_P(RunLoopContract, AWritingWatchRunsForAsLongAsThereIsRoom) {
    const WatchedPipe pipe;
    const std::string block(4096, 'x');
    bool isFull = false;
    const auto watching = this->watchForRoom(pipe.writingEnd(), [&] {
        EXPECT_FALSE(isFull) << "there is no room";
        EXPECT_EQ(::write(pipe.writingEnd(), block.data(), block.size()), static_cast<ssize_t>(block.size()));
        pollfd room{.fd = pipe.writingEnd(), .events = POLLOUT, .revents = 0};
        isFull = ::poll(&room, 1, 0) == 0;
    });
    ASSERT_TRUE(this->runUntil([&] { return isFull; }));
    ASSERT_TRUE(this->runFor(this->step));

    while (pipe.take()) {
    }
    isFull = false;

    EXPECT_TRUE(this->runUntil([&] { return isFull; }));
}

TYPED_TEST_P(RunLoopContract, DestroyingTheHandleEndsAWritingWatchAlsoInItsOwnTask) {
    const WatchedPipe pipe;
    RunLoop::Handle watching;
    int runs = 0;
    watching = this->watchForRoom(pipe.writingEnd(), [&] {
        ++runs;
        watching.reset();
    });

    ASSERT_TRUE(this->runFor(2 * this->step));

    EXPECT_EQ(runs, 1);
}

TYPED_TEST_P(RunLoopContract, OneDescriptorMayBeWatchedForReadingAndWriting) {
    std::array<int, 2> ends{-1, -1};
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
    const FileDescriptor near(ends[0]);
    const FileDescriptor far(ends[1]);
    std::vector<std::string> ran;
    this->driver_.isWatched(near.get());
    char byte = 0;
    const auto reading = this->loop().watchReadable(near.get(), [&] {
        EXPECT_EQ(::read(near.get(), &byte, 1), 1);
        ran.emplace_back("reading");
    });
    RunLoop::Handle writing = this->loop().watchWritable(near.get(), [&] {
        writing.reset();
        ran.emplace_back("writing");
    });
    ASSERT_NE(reading, nullptr);
    ASSERT_NE(writing, nullptr);
    ASSERT_TRUE(this->runFor(this->step));
    EXPECT_THAT(ran, testing::ElementsAre("writing"));

    ASSERT_EQ(::write(far.get(), "x", 1), 1);
    ASSERT_TRUE(this->runUntil([&] { return ran.size() >= 2; }));
    ASSERT_TRUE(this->runFor(this->step));

    EXPECT_THAT(ran, testing::ElementsAre("writing", "reading"));
}

TYPED_TEST_P(RunLoopContract, TheEndOfOneWatchLeavesTheOtherOfTheSameDescriptor) {
    std::array<int, 2> ends{-1, -1};
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
    const FileDescriptor near(ends[0]);
    const FileDescriptor far(ends[1]);
    int readingRuns = 0;
    int writingRuns = 0;
    this->driver_.isWatched(near.get());
    RunLoop::Handle writing = this->loop().watchWritable(near.get(), [&] { ++writingRuns; });
    RunLoop::Handle reading = this->loop().watchReadable(near.get(), [&] {
        ++readingRuns;
        reading.reset();
    });
    ASSERT_EQ(::write(far.get(), "unread", 6), 6);
    ASSERT_TRUE(this->runUntil([&] { return readingRuns > 0; }));
    const int before = writingRuns;

    EXPECT_TRUE(this->runUntil([&] { return writingRuns >= before + 3; }));

    EXPECT_EQ(readingRuns, 1);
}

TYPED_TEST_P(RunLoopContract, ASecondWatchOfTheSameKindGetsNoHandle) {
    const WatchedPipe pipe;
    std::string taken;
    auto first = this->watch(pipe, [&] { taken += pipe.take().value_or('?'); });

    EXPECT_EQ(this->watch(pipe, [] { ADD_FAILURE() << "not watched"; }), nullptr);

    pipe.put("x");
    EXPECT_TRUE(this->runUntil([&] { return !taken.empty(); }));
    EXPECT_EQ(taken, "x");
}

TYPED_TEST_P(RunLoopContract, TheResultOfDetachedWorkRunsOnTheMainThreadAndNotInsideTheCall) {
    std::optional<std::thread::id> ranOn;
    const bool isDetached = this->loop().detach(
        [&ranOn] { return RunLoop::Task([&ranOn] { ranOn = std::this_thread::get_id(); }); });
    EXPECT_TRUE(isDetached);
    EXPECT_FALSE(ranOn);

    ASSERT_TRUE(this->runUntil([&] { return ranOn.has_value(); }));

    EXPECT_EQ(ranOn, std::this_thread::get_id());
}

REGISTER_TYPED_TEST_SUITE_P(
    RunLoopContract, PostedTasksRunInTheOrderOfTheirPosting, APostedTaskNeverRunsInsideTheCall,
    ATaskPostedByATaskWaitsForThoseBeforeIt, ADelayedTaskRunsOnceAndNotBeforeItsTime,
    ANegativeDelayIsDueAtOnceButNotInsideTheCall, TimersRunInTheOrderOfTheirTimesNotOfTheirMaking,
    DestroyingTheHandleCancelsADelayedTask, DestroyingTheHandleOfATaskThatIsAlreadyDueCancelsItToo,
    ADelayedTaskMayDestroyItsOwnHandleAndGoOn, ARepeatedTaskFirstRunsAtItsFirstTime,
    ARepeatedTaskRunsAtMostOnceForEachOfItsTimes, TimeSpentInARepeatedTaskDoesNotShiftItsSchedule,
    OneLateRunStandsForAllThatWereMissedBeforeIt, DestroyingTheHandleEndsARepeatedTask,
    ARepeatedTaskMayDestroyItsOwnHandleAndNeverRunsAgain, ARoughlyRepeatedTaskNeedsNoCompanyAndIsNeverEarly,
    DestroyingTheHandleEndsARoughlyRepeatedTask, AWatchLeavesTheDescriptorBlockingAsItWas,
    AWatchRunsForAsLongAsThereIsSomethingToRead, AWatchIsSilentUntilThereIsSomethingToRead,
    OnlyTheWatchOfTheReadableDescriptorRuns, AWatchThatDestroysItsOwnHandleNeverRunsAgain,
    DestroyingTheHandleEndsAWatchAndLeavesTheDescriptorOpen,
    ADescriptorMayBeWatchedAgainAfterItsFirstWatchHasEnded,
    ADescriptorMayBeClosedAndReplacedOnceItsWatchHasEndedInItsOwnTask, AWatchMayEndAnotherWhoseTurnItIs,
    AWritingWatchRunsForAsLongAsThereIsRoom, DestroyingTheHandleEndsAWritingWatchAlsoInItsOwnTask,
    OneDescriptorMayBeWatchedForReadingAndWriting, TheEndOfOneWatchLeavesTheOtherOfTheSameDescriptor,
    ASecondWatchOfTheSameKindGetsNoHandle, TheResultOfDetachedWorkRunsOnTheMainThreadAndNotInsideTheCall);

/// What only a loop with real time and real threads can be asked for.
template<class Driver>
class RealRunLoopContract : public RunLoopContract<Driver> {
protected:
    static constexpr std::chrono::seconds patience{20};

    /// Tells when its last copy has gone.
    struct EndSignal {
        std::promise<void> ended;

        EndSignal() = default;
        EndSignal(const EndSignal&) = delete;
        EndSignal& operator=(const EndSignal&) = delete;

        ~EndSignal() { ended.set_value(); }
    };
};

TYPED_TEST_SUITE_P(RealRunLoopContract);

TYPED_TEST_P(RealRunLoopContract, ATaskPostedFromAnotherThreadWakesTheLoopAndRunsOnTheMainThread) {
    std::optional<std::thread::id> ranOn;
    std::thread other([&] { this->loop().post([&] { ranOn = std::this_thread::get_id(); }); });

    EXPECT_TRUE(this->runUntil([&] { return ranOn.has_value(); }));

    other.join();
    EXPECT_EQ(ranOn, std::this_thread::get_id());
}

TYPED_TEST_P(RealRunLoopContract, TasksPostedFromManyThreadsAllRunEachThreadsInItsOrder) {
    constexpr int threadCount = 4;
    constexpr int postsEach = 250;
    std::array<std::vector<int>, threadCount> ran;
    std::vector<std::thread> threads;
    for (std::vector<int>& own : ran) {
        threads.emplace_back([this, &own] {
            for (int post = 0; post < postsEach; ++post) {
                this->loop().post([&own, post] { own.push_back(post); });
            }
        });
    }

    EXPECT_TRUE(this->runUntil(
        [&] { return std::ranges::all_of(ran, [](const auto& own) { return own.size() == postsEach; }); }));

    std::ranges::for_each(threads, &std::thread::join);
    for (const std::vector<int>& own : ran) {
        EXPECT_TRUE(std::ranges::is_sorted(own));
    }
}

TYPED_TEST_P(RealRunLoopContract, DetachedWorkRunsOffTheMainThread) {
    std::optional<std::thread::id> workedOn;
    ASSERT_TRUE(this->loop().detach([&workedOn] {
        return RunLoop::Task([&workedOn, id = std::this_thread::get_id()] { workedOn = id; });
    }));

    ASSERT_TRUE(this->runUntil([&] { return workedOn.has_value(); }));

    EXPECT_NE(workedOn, std::this_thread::get_id());
}

TYPED_TEST_P(RealRunLoopContract, SlowDetachedWorkHoldsUpNoOtherTask) {
    auto release = std::make_shared<std::promise<void>>();
    bool hasResult = false;
    bool hasTimerRun = false;
    ASSERT_TRUE(this->loop().detach([released = release->get_future().share(), &hasResult] {
        released.wait();
        return RunLoop::Task([&hasResult] { hasResult = true; });
    }));
    const auto timer = this->loop().after(this->step, [&] { hasTimerRun = true; });

    EXPECT_TRUE(this->runUntil([&] { return hasTimerRun; }));
    EXPECT_FALSE(hasResult);

    release->set_value();
    EXPECT_TRUE(this->runUntil([&] { return hasResult; }));
}

TYPED_TEST_P(RealRunLoopContract, DetachedWorkThatDoesNotReturnDoesNotHoldUpTheEndAndItsResultIsDropped) {
    auto release = std::make_shared<std::promise<void>>();
    auto started = std::make_shared<std::promise<void>>();
    auto isResultRun = std::make_shared<std::atomic<bool>>(false);
    auto endSignal = std::make_shared<typename TestFixture::EndSignal>();
    std::future<void> ended = endSignal->ended.get_future();
    ASSERT_TRUE(this->loop().detach(
        [released = release->get_future().share(), started, isResultRun, held = std::move(endSignal)] {
            started->set_value();
            released.wait();
            return RunLoop::Task([isResultRun] { *isResultRun = true; });
        }));
    ASSERT_EQ(started->get_future().wait_for(this->patience), std::future_status::ready);

    this->driver_.close();
    EXPECT_NE(ended.wait_for(std::chrono::seconds(0)), std::future_status::ready);

    release->set_value();
    EXPECT_EQ(ended.wait_for(this->patience), std::future_status::ready);
    EXPECT_FALSE(*isResultRun);
}

TYPED_TEST_P(RealRunLoopContract, AfterABusySpellARepeatedTaskRunsOnceForAllThatItMissed) {
    const double interval = 0.1;
    const double first = this->loop().now();
    std::vector<double> fires;
    const auto timer = this->loop().every(first, interval, [&] {
        fires.push_back((this->loop().now() - first) / interval);
        if (fires.size() == 1) {
            this->driver_.spend(3.5 * interval);
        }
    });

    ASSERT_TRUE(this->runUntil([&] { return fires.size() >= 3; }));

    EXPECT_GE(fires[1], 3.5);
    EXPECT_GE(fires[2], std::floor(fires[1]) + 1 - 1e-6);
}

TYPED_TEST_P(RealRunLoopContract, AFloodOfInputStarvesNothingElse) {
    const WatchedPipe endless;
    const WatchedPipe other;
    bool hasOtherRun = false;
    bool hasTimerRun = false;
    bool hasPostRun = false;
    endless.put("unread");
    other.put("x");
    const auto flood = this->watch(endless, [] {});
    const auto watching = this->watch(other, [&] { hasOtherRun = other.take().has_value(); });
    const auto timer = this->loop().after(this->step, [&] { hasTimerRun = true; });
    this->loop().post([&] { hasPostRun = true; });

    EXPECT_TRUE(this->runUntil([&] { return hasOtherRun && hasTimerRun && hasPostRun; }));
}

TYPED_TEST_P(RealRunLoopContract, AFloodOfPostedTasksStarvesNothingElse) {
    const WatchedPipe pipe;
    bool hasWatchRun = false;
    bool hasTimerRun = false;
    const std::function<void()> postAgain = [&] { this->loop().post(postAgain); };
    postAgain();
    pipe.put("x");
    const auto watching = this->watch(pipe, [&] { hasWatchRun = pipe.take().has_value(); });
    const auto timer = this->loop().after(this->step, [&] { hasTimerRun = true; });

    EXPECT_TRUE(this->runUntil([&] { return hasWatchRun && hasTimerRun; }));
}

TYPED_TEST_P(RealRunLoopContract, AFloodOfDueTimersStarvesNothingElse) {
    const WatchedPipe pipe;
    bool hasWatchRun = false;
    bool hasPostRun = false;
    RunLoop::Handle timer;
    const std::function<void()> startAgain = [&] { timer = this->loop().after(0, startAgain); };
    startAgain();
    pipe.put("x");
    const auto watching = this->watch(pipe, [&] { hasWatchRun = pipe.take().has_value(); });
    this->loop().post([&] { hasPostRun = true; });

    EXPECT_TRUE(this->runUntil([&] { return hasWatchRun && hasPostRun; }));
}

TYPED_TEST_P(RealRunLoopContract, TheOtherEndsClosingMakesBothWatchesRun) {
    std::array<int, 2> ends{-1, -1};
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends.data()), 0);
    const FileDescriptor near(ends[0]);
    FileDescriptor far(ends[1]);
    const std::string block(65536, 'x');
    while (::write(near.get(), block.data(), block.size()) > 0) {
    }
    std::optional<ssize_t> read;
    std::optional<int> writeError;
    char byte = 0;
    const auto reading = this->loop().watchReadable(near.get(), [&] { read = ::read(near.get(), &byte, 1); });
    const auto writing = this->loop().watchWritable(near.get(), [&] {
        const ssize_t sent = ::send(near.get(), "x", 1, MSG_NOSIGNAL);
        writeError = sent == -1 ? errno : 0;
    });
    ASSERT_TRUE(this->runFor(this->step));
    EXPECT_FALSE(read);
    EXPECT_FALSE(writeError);

    far.reset();

    ASSERT_TRUE(this->runUntil([&] { return read && writeError; }));
    EXPECT_LE(*read, 0);
    EXPECT_EQ(*writeError, EPIPE);
}

TYPED_TEST_P(RealRunLoopContract, TheEndOfAPipesWriterMakesTheReadingWatchRun) {
    WatchedPipe pipe;
    bool hasRun = false;
    const auto watching = this->watch(pipe, [&] { hasRun = true; });
    ASSERT_TRUE(this->runFor(this->step));
    EXPECT_FALSE(hasRun);

    pipe.closeWritingEnd();

    EXPECT_TRUE(this->runUntil([&] { return hasRun; }));
}

TYPED_TEST_P(RealRunLoopContract, PostedTasksThatHaveNotRunEndWithTheLoop) {
    auto release = std::make_shared<std::promise<void>>();
    auto endSignal = std::make_shared<typename TestFixture::EndSignal>();
    const std::future<void> ended = endSignal->ended.get_future();
    ASSERT_TRUE(this->loop().detach([released = release->get_future().share()] {
        released.wait();
        return RunLoop::Task([] {});
    }));
    auto timer = std::make_shared<RunLoop::Handle>(this->loop().after(100, [] {}));
    this->loop().post([timer = std::move(timer), held = std::move(endSignal)] {});

    this->driver_.close();

    EXPECT_EQ(ended.wait_for(std::chrono::seconds(0)), std::future_status::ready);
    release->set_value();
}

TYPED_TEST_P(RealRunLoopContract, WhatTheSystemCannotWatchGetsNoHandle) {
    constexpr int notOpen = 1'000'000;
    const FileDescriptor nothing(::open("/dev/null", O_RDWR | O_CLOEXEC));
    const FileDescriptor file(::open("/proc/self/exe", O_RDONLY | O_CLOEXEC));
    ASSERT_TRUE(nothing.isOpen());
    ASSERT_TRUE(file.isOpen());

    for (const int descriptor : {notOpen, nothing.get(), file.get()}) {
        EXPECT_EQ(this->loop().watchReadable(descriptor, [] {}), nullptr) << descriptor;
        EXPECT_EQ(this->loop().watchWritable(descriptor, [] {}), nullptr) << descriptor;
    }
}

TYPED_TEST_P(RealRunLoopContract, ItsClocksAreThoseOfTheSystem) {
    const auto steady = [] {
        return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
    };
    const double before = steady();
    const auto wallBefore = std::chrono::system_clock::now();

    const double now = this->loop().now();
    const RunLoop::WallTime wall = this->loop().wallNow();

    EXPECT_GE(now, before - 1e-6);
    EXPECT_LE(now, steady() + 1e-6);
    EXPECT_GE(wall, wallBefore);
    EXPECT_LE(wall, std::chrono::system_clock::now());
}

TYPED_TEST_P(RealRunLoopContract, ATimerBeyondAllRunsDoesNotFireEarly) {
    bool hasFired = false;
    const auto never = this->loop().after(1e300, [&] { hasFired = true; });

    ASSERT_TRUE(this->runFor(this->step));

    EXPECT_FALSE(hasFired);
}

TYPED_TEST_P(RealRunLoopContract, ATaskThatMayBeLateRunsInTheSameWakeUpAsAPunctualOne) {
    const double first = this->loop().now() + this->step;
    std::vector<std::string> ran;
    const auto punctual = this->loop().every(first + 0.005, 10, [&] { ran.emplace_back("punctual"); });
    const auto patient = this->loop().everyRoughly(first, 10, 0.5, [&] { ran.emplace_back("patient"); });

    ASSERT_TRUE(this->runUntil([&] { return !ran.empty(); }));

    EXPECT_THAT(ran, testing::ElementsAre("punctual", "patient"));
}

REGISTER_TYPED_TEST_SUITE_P(
    RealRunLoopContract, ATaskPostedFromAnotherThreadWakesTheLoopAndRunsOnTheMainThread,
    TasksPostedFromManyThreadsAllRunEachThreadsInItsOrder, DetachedWorkRunsOffTheMainThread,
    SlowDetachedWorkHoldsUpNoOtherTask, DetachedWorkThatDoesNotReturnDoesNotHoldUpTheEndAndItsResultIsDropped,
    AfterABusySpellARepeatedTaskRunsOnceForAllThatItMissed, AFloodOfInputStarvesNothingElse,
    AFloodOfPostedTasksStarvesNothingElse, AFloodOfDueTimersStarvesNothingElse,
    TheOtherEndsClosingMakesBothWatchesRun, TheEndOfAPipesWriterMakesTheReadingWatchRun,
    PostedTasksThatHaveNotRunEndWithTheLoop, WhatTheSystemCannotWatchGetsNoHandle,
    ItsClocksAreThoseOfTheSystem, ATimerBeyondAllRunsDoesNotFireEarly,
    ATaskThatMayBeLateRunsInTheSameWakeUpAsAPunctualOne);

} // namespace tarnwick
