// What only a loop with real time and real threads can be asked for.
#include "tests/platform/loop/RunLoopContract.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cmath>
#include <fcntl.h>
#include <future>
#include <gmock/gmock.h>
#include <memory>
#include <optional>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace tarnwick {

namespace {

constexpr std::chrono::seconds joinPatience{20};

/// Tells when its last copy has gone.
struct EndSignal {
    std::promise<void> ended;

    EndSignal() = default;
    EndSignal(const EndSignal&) = delete;
    EndSignal& operator=(const EndSignal&) = delete;

    ~EndSignal() { ended.set_value(); }
};

} // namespace

TEST_P(RealRunLoopContract, ATaskPostedFromAnotherThreadRunsOnTheMainThread) {
    std::optional<std::thread::id> ranOn;
    std::thread other([&] { loop().post([&] { ranOn = std::this_thread::get_id(); }); });

    EXPECT_TRUE(runUntil([&] { return ranOn.has_value(); }));

    other.join();
    EXPECT_EQ(ranOn, std::this_thread::get_id());
}

TEST_P(RealRunLoopContract, TasksPostedFromManyThreadsAllRunEachThreadsInItsOrder) {
    constexpr int threadCount = 4;
    constexpr int postsEach = 250;
    std::array<std::vector<int>, threadCount> ran;
    std::vector<std::thread> threads;
    for (std::vector<int>& own : ran) {
        threads.emplace_back([this, &own] {
            for (int post = 0; post < postsEach; ++post) {
                loop().post([&own, post] { own.push_back(post); });
            }
        });
    }

    EXPECT_TRUE(runUntil(
        [&] { return std::ranges::all_of(ran, [](const auto& own) { return own.size() == postsEach; }); }));

    std::ranges::for_each(threads, &std::thread::join);
    for (const std::vector<int>& own : ran) {
        EXPECT_TRUE(std::ranges::is_sorted(own));
    }
}

TEST_P(RealRunLoopContract, DetachedWorkRunsOffTheMainThread) {
    std::optional<std::thread::id> workedOn;
    ASSERT_TRUE(loop().detach([&workedOn] {
        return RunLoop::Task([&workedOn, id = std::this_thread::get_id()] { workedOn = id; });
    }));

    ASSERT_TRUE(runUntil([&] { return workedOn.has_value(); }));

    EXPECT_NE(workedOn, std::this_thread::get_id());
}

TEST_P(RealRunLoopContract, SlowDetachedWorkHoldsUpNoOtherTask) {
    auto release = std::make_shared<std::promise<void>>();
    bool hasResult = false;
    bool hasTimerRun = false;
    ASSERT_TRUE(loop().detach([released = release->get_future().share(), &hasResult] {
        released.wait();
        return RunLoop::Task([&hasResult] { hasResult = true; });
    }));
    const auto timer = loop().after(step, [&] { hasTimerRun = true; });

    EXPECT_TRUE(runUntil([&] { return hasTimerRun; }));
    EXPECT_FALSE(hasResult);

    release->set_value();
    EXPECT_TRUE(runUntil([&] { return hasResult; }));
}

TEST_P(RealRunLoopContract, UnfinishedDetachedWorkDoesNotHoldUpTheEndAndHasNoResult) {
    auto release = std::make_shared<std::promise<void>>();
    auto started = std::make_shared<std::promise<void>>();
    auto isResultRun = std::make_shared<std::atomic<bool>>(false);
    auto endSignal = std::make_shared<EndSignal>();
    std::future<void> ended = endSignal->ended.get_future();
    ASSERT_TRUE(loop().detach(
        [released = release->get_future().share(), started, isResultRun, held = std::move(endSignal)] {
            started->set_value();
            released.wait();
            return RunLoop::Task([isResultRun] { *isResultRun = true; });
        }));
    ASSERT_EQ(started->get_future().wait_for(joinPatience), std::future_status::ready);

    driver().close();
    EXPECT_NE(ended.wait_for(std::chrono::seconds(0)), std::future_status::ready);

    release->set_value();
    EXPECT_EQ(ended.wait_for(joinPatience), std::future_status::ready);
    EXPECT_FALSE(*isResultRun);
}

TEST_P(RealRunLoopContract, AfterABusySpellARepeatedTaskRunsOnceForAllThatItMissed) {
    const double interval = 0.1;
    const double first = loop().now();
    std::vector<double> fires;
    const auto timer = loop().every(first, interval, [&] {
        fires.push_back((loop().now() - first) / interval);
        if (fires.size() == 1) {
            driver().spend(3.5 * interval);
        }
    });

    ASSERT_TRUE(runUntil([&] { return fires.size() >= 3; }));

    EXPECT_GE(fires[1], 3.5);
    EXPECT_GE(fires[2], std::floor(fires[1]) + 1 - 1e-6);
}

TEST_P(RealRunLoopContract, AFloodOfInputStarvesNothingElse) {
    const WatchedPipe endless;
    const WatchedPipe other;
    bool hasOtherRun = false;
    bool hasTimerRun = false;
    bool hasPostRun = false;
    endless.put("unread");
    other.put("x");
    const auto flood = watch(endless, [] {});
    const auto watching = watch(other, [&] { hasOtherRun = other.take().has_value(); });
    const auto timer = loop().after(step, [&] { hasTimerRun = true; });
    loop().post([&] { hasPostRun = true; });

    EXPECT_TRUE(runUntil([&] { return hasOtherRun && hasTimerRun && hasPostRun; }));
}

TEST_P(RealRunLoopContract, AFloodOfPostedTasksStarvesNothingElse) {
    const WatchedPipe pipe;
    bool hasWatchRun = false;
    bool hasTimerRun = false;
    const std::function<void()> postAgain = [&] { loop().post(postAgain); };
    postAgain();
    pipe.put("x");
    const auto watching = watch(pipe, [&] { hasWatchRun = pipe.take().has_value(); });
    const auto timer = loop().after(step, [&] { hasTimerRun = true; });

    EXPECT_TRUE(runUntil([&] { return hasWatchRun && hasTimerRun; }));
}

TEST_P(RealRunLoopContract, AFloodOfDueTimersStarvesNothingElse) {
    const WatchedPipe pipe;
    bool hasWatchRun = false;
    bool hasPostRun = false;
    RunLoop::Handle timer;
    const std::function<void()> startAgain = [&] { timer = loop().after(0, startAgain); };
    startAgain();
    pipe.put("x");
    const auto watching = watch(pipe, [&] { hasWatchRun = pipe.take().has_value(); });
    loop().post([&] { hasPostRun = true; });

    EXPECT_TRUE(runUntil([&] { return hasWatchRun && hasPostRun; }));
}

TEST_P(RealRunLoopContract, TheOtherEndsClosingMakesBothWatchesRun) {
    auto [near, far] = socketPair(SOCK_NONBLOCK);
    const std::string block(65536, 'x');
    while (::write(near.get(), block.data(), block.size()) > 0) {
    }
    std::optional<ssize_t> read;
    std::optional<int> writeError;
    char byte = 0;
    const auto reading = loop().watchReadable(near.get(), [&] { read = ::read(near.get(), &byte, 1); });
    const auto writing = loop().watchWritable(near.get(), [&] {
        const ssize_t sent = ::send(near.get(), "x", 1, MSG_NOSIGNAL);
        writeError = sent == -1 ? errno : 0;
    });
    ASSERT_TRUE(runFor(step));
    EXPECT_FALSE(read);
    EXPECT_FALSE(writeError);

    far.reset();

    ASSERT_TRUE(runUntil([&] { return read && writeError; }));
    EXPECT_LE(*read, 0);
    EXPECT_EQ(*writeError, EPIPE);
}

TEST_P(RealRunLoopContract, TheEndOfAPipesWriterMakesTheReadingWatchRun) {
    WatchedPipe pipe;
    bool hasRun = false;
    const auto watching = watch(pipe, [&] { hasRun = true; });
    ASSERT_TRUE(runFor(step));
    EXPECT_FALSE(hasRun);

    pipe.closeWritingEnd();

    EXPECT_TRUE(runUntil([&] { return hasRun; }));
}

TEST_P(RealRunLoopContract, PostedTasksThatHaveNotRunEndWithTheLoop) {
    auto release = std::make_shared<std::promise<void>>();
    auto endSignal = std::make_shared<EndSignal>();
    const std::future<void> ended = endSignal->ended.get_future();
    ASSERT_TRUE(loop().detach([released = release->get_future().share()] {
        released.wait();
        return RunLoop::Task([] {});
    }));
    auto timer = std::make_shared<RunLoop::Handle>(loop().after(100, [] {}));
    loop().post([timer = std::move(timer), held = std::move(endSignal)] {});

    driver().close();

    EXPECT_EQ(ended.wait_for(std::chrono::seconds(0)), std::future_status::ready);
    release->set_value();
}

TEST_P(RealRunLoopContract, WhatTheSystemCannotWatchGetsNoHandle) {
    constexpr int notOpen = 1'000'000;
    const FileDescriptor nothing(::open("/dev/null", O_RDWR | O_CLOEXEC));
    const FileDescriptor file(::open("/proc/self/exe", O_RDONLY | O_CLOEXEC));
    ASSERT_TRUE(nothing.isOpen());
    ASSERT_TRUE(file.isOpen());

    for (const int descriptor : {notOpen, nothing.get(), file.get()}) {
        EXPECT_EQ(loop().watchReadable(descriptor, [] {}), nullptr) << descriptor;
        EXPECT_EQ(loop().watchWritable(descriptor, [] {}), nullptr) << descriptor;
    }
}

TEST_P(RealRunLoopContract, ItsClocksAreThoseOfTheSystem) {
    const auto steady = [] {
        return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
    };
    const double before = steady();
    const auto wallBefore = std::chrono::system_clock::now();

    const double now = loop().now();
    const RunLoop::WallTime wall = loop().wallNow();

    EXPECT_GE(now, before - 1e-6);
    EXPECT_LE(now, steady() + 1e-6);
    EXPECT_GE(wall, wallBefore);
    EXPECT_LE(wall, std::chrono::system_clock::now());
}

TEST_P(RealRunLoopContract, ATimerBeyondAllRunsDoesNotFireEarly) {
    bool hasFired = false;
    const auto never = loop().after(1e300, [&] { hasFired = true; });

    ASSERT_TRUE(runFor(step));

    EXPECT_FALSE(hasFired);
}

TEST_P(RealRunLoopContract, ATaskThatMayBeLateRunsInTheSameWakeUpAsAPunctualOne) {
    const double first = loop().now() + step;
    std::vector<std::string> ran;
    const auto punctual = loop().every(first + 0.005, 10, [&] { ran.emplace_back("punctual"); });
    const auto patient = loop().everyRoughly(first, 10, 0.5, [&] { ran.emplace_back("patient"); });

    ASSERT_TRUE(runUntil([&] { return !ran.empty(); }));

    EXPECT_THAT(ran, testing::ElementsAre("punctual", "patient"));
}

} // namespace tarnwick
