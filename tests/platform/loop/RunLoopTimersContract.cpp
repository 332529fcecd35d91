// What every run loop promises of posted tasks, timers and detached work.
#include "tests/platform/loop/RunLoopContract.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <gmock/gmock.h>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace tarnwick {

TEST_P(RunLoopContract, PostedTasksRunInTheOrderOfTheirPosting) {
    std::vector<int> ran;
    for (int task = 0; task < 5; ++task) {
        loop().post([&ran, task] { ran.push_back(task); });
    }

    ASSERT_TRUE(runUntil([&] { return ran.size() >= 5; }));

    EXPECT_THAT(ran, testing::ElementsAre(0, 1, 2, 3, 4));
}

TEST_P(RunLoopContract, APostedTaskNeverRunsInsideTheCall) {
    bool hasRun = false;
    loop().post([&] { hasRun = true; });
    EXPECT_FALSE(hasRun);

    ASSERT_TRUE(runUntil([&] { return hasRun; }));
}

TEST_P(RunLoopContract, ATaskPostedByATaskWaitsForThoseBeforeIt) {
    std::vector<std::string> ran;
    loop().post([&] {
        loop().post([&] { ran.emplace_back("posted by the first"); });
        ran.emplace_back("first");
    });
    loop().post([&] { ran.emplace_back("second"); });

    ASSERT_TRUE(runUntil([&] { return ran.size() >= 3; }));

    EXPECT_THAT(ran, testing::ElementsAre("first", "second", "posted by the first"));
}

TEST_P(RunLoopContract, ADelayedTaskRunsOnceAndNotBeforeItsTime) {
    const double start = loop().now();
    std::vector<double> times;
    const auto timer = loop().after(step, [&] { times.push_back(loop().now()); });

    ASSERT_TRUE(runFor(3 * step));

    ASSERT_EQ(times.size(), 1u);
    EXPECT_GE(times[0], start + step - 1e-6);
}

TEST_P(RunLoopContract, ANegativeDelayIsDueAtOnceButNotInsideTheCall) {
    std::vector<std::string> ran;
    const auto later = loop().after(step, [&] { ran.emplace_back("later"); });
    const auto overdue = loop().after(-5, [&] { ran.emplace_back("overdue"); });
    EXPECT_TRUE(ran.empty());

    ASSERT_TRUE(runUntil([&] { return ran.size() >= 2; }));

    EXPECT_THAT(ran, testing::ElementsAre("overdue", "later"));
}

TEST_P(RunLoopContract, TimersRunInTheOrderOfTheirTimesNotOfTheirMaking) {
    std::vector<int> ran;
    const auto third = loop().after(3 * step, [&] { ran.push_back(3); });
    const auto first = loop().after(1 * step, [&] { ran.push_back(1); });
    const auto second = loop().after(2 * step, [&] { ran.push_back(2); });

    ASSERT_TRUE(runUntil([&] { return ran.size() >= 3; }));

    EXPECT_THAT(ran, testing::ElementsAre(1, 2, 3));
}

TEST_P(RunLoopContract, DestroyingTheHandleCancelsADelayedTask) {
    bool hasRun = false;
    auto timer = loop().after(step, [&] { hasRun = true; });
    timer.reset();

    ASSERT_TRUE(runFor(2 * step));

    EXPECT_FALSE(hasRun);
}

TEST_P(RunLoopContract, DestroyingTheHandleOfATaskThatIsAlreadyDueCancelsItToo) {
    std::array<RunLoop::Handle, 2> timers;
    int runs = 0;
    for (std::size_t timer = 0; timer < timers.size(); ++timer) {
        timers.at(timer) = loop().after(-1, [&, other = 1 - timer] {
            ++runs;
            timers.at(other).reset();
        });
    }

    ASSERT_TRUE(runFor(step));

    EXPECT_EQ(runs, 1);
}

TEST_P(RunLoopContract, ADelayedTaskMayDestroyItsOwnHandleAndGoOn) {
    RunLoop::Handle timer;
    std::string finished;
    timer = loop().after(0, [&timer, &finished, captured = std::string("still there after its handle")] {
        timer.reset();
        finished = captured;
    });

    ASSERT_TRUE(runUntil([&] { return !finished.empty(); }));

    EXPECT_EQ(finished, "still there after its handle");
}

TEST_P(RunLoopContract, ARepeatedTaskFirstRunsAtItsFirstTime) {
    const double first = loop().now() + 2 * step;
    std::vector<double> times;
    const auto timer = loop().every(first, step, [&] { times.push_back(loop().now()); });

    ASSERT_TRUE(runUntil([&] { return !times.empty(); }));

    EXPECT_GE(times[0], first - 1e-6);
}

TEST_P(RunLoopContract, ARepeatedTaskRunsAtMostOnceForEachOfItsTimes) {
    const double first = loop().now() + step;
    std::vector<double> fires;
    const auto timer =
        loop().every(first, step, [&] { fires.push_back(std::floor((loop().now() - first) / step + 1e-6)); });

    ASSERT_TRUE(runUntil([&] { return fires.size() >= 8; }));

    EXPECT_TRUE(std::ranges::is_sorted(fires, std::less_equal<>())) << testing::PrintToString(fires);
}

TEST_P(RunLoopContract, TimeSpentInARepeatedTaskDoesNotShiftItsSchedule) {
    const double interval = 0.1;
    const double first = loop().now() + step;
    std::vector<double> lateness;
    const auto timer = loop().every(first, interval, [&] {
        const double sinceFirst = loop().now() - first + 1e-9;
        lateness.push_back(sinceFirst - std::floor(sinceFirst / interval) * interval);
        driver().spend(0.3 * interval);
    });

    ASSERT_TRUE(runUntil([&] { return lateness.size() >= 5; }));

    // A schedule counted from the end of each run would be a third of the interval later each time.
    EXPECT_LT(*std::min_element(lateness.begin() + 1, lateness.end()), 0.1 * interval)
        << testing::PrintToString(lateness);
}

TEST_P(RunLoopContract, OneLateRunStandsForAllThatWereMissedBeforeIt) {
    const double interval = 5 * step;
    const double first = loop().now() - 2.5 * interval;
    const double firstAhead = first + 3 * interval;
    std::vector<double> times;
    const auto timer = loop().every(first, interval, [&] { times.push_back(loop().now()); });
    EXPECT_TRUE(times.empty());

    ASSERT_TRUE(runUntil([&] { return times.size() >= 2; }));

    EXPECT_GE(times[1], firstAhead - 1e-6);
}

TEST_P(RunLoopContract, DestroyingTheHandleEndsARepeatedTask) {
    int runs = 0;
    auto timer = loop().every(loop().now(), step, [&] { ++runs; });
    ASSERT_TRUE(runUntil([&] { return runs >= 2; }));
    timer.reset();
    const int before = runs;

    ASSERT_TRUE(runFor(3 * step));

    EXPECT_EQ(runs, before);
}

TEST_P(RunLoopContract, ARepeatedTaskMayDestroyItsOwnHandleAndNeverRunsAgain) {
    RunLoop::Handle timer;
    std::vector<std::string> runs;
    timer =
        loop().every(loop().now(), step, [&timer, &runs, captured = std::string("a run that ended itself")] {
            timer.reset();
            runs.push_back(captured);
        });

    ASSERT_TRUE(runFor(4 * step));

    EXPECT_THAT(runs, testing::ElementsAre("a run that ended itself"));
}

TEST_P(RunLoopContract, ARoughlyRepeatedTaskNeedsNoCompanyAndIsNeverEarly) {
    const double first = loop().now() + step;
    std::vector<double> fires;
    std::vector<double> lateness;
    const auto timer = loop().everyRoughly(first, step, step / 2, [&] {
        const double passed = (loop().now() - first) / step + 1e-6;
        fires.push_back(std::floor(passed));
        lateness.push_back(passed - fires.back());
    });

    ASSERT_TRUE(runUntil([&] { return fires.size() >= 5; }));

    EXPECT_THAT(fires, testing::Each(testing::Ge(0)));
    EXPECT_TRUE(std::ranges::is_sorted(fires, std::less_equal<>())) << testing::PrintToString(fires);
    // Half a step is what it may be late by, and the machine by a little more.
    EXPECT_LT(*std::ranges::min_element(lateness), 0.9);
}

TEST_P(RunLoopContract, DestroyingTheHandleEndsARoughlyRepeatedTask) {
    int runs = 0;
    auto timer = loop().everyRoughly(loop().now(), step, step / 4, [&] { ++runs; });
    ASSERT_TRUE(runUntil([&] { return runs >= 2; }));
    timer.reset();
    const int before = runs;

    ASSERT_TRUE(runFor(3 * step));

    EXPECT_EQ(runs, before);
}

TEST_P(RunLoopContract, TheResultOfDetachedWorkRunsLaterOnTheMainThread) {
    std::optional<std::thread::id> ranOn;
    const bool isDetached =
        loop().detach([&ranOn] { return RunLoop::Task([&ranOn] { ranOn = std::this_thread::get_id(); }); });
    EXPECT_TRUE(isDetached);
    EXPECT_FALSE(ranOn);

    ASSERT_TRUE(runUntil([&] { return ranOn.has_value(); }));

    EXPECT_EQ(ranOn, std::this_thread::get_id());
}

} // namespace tarnwick
