// The timers of a run loop, in virtual time.
#include "platform/loop/TimerQueue.h"

#include <algorithm>
#include <chrono>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tarnwick {

namespace {

using std::chrono::nanoseconds;
using testing::ElementsAre;

/// A thread that is woken exactly at the queue's times.
class TimerQueueTest : public testing::Test {
protected:
    using Schedule = TimerQueue::Schedule;

    [[nodiscard]] RunLoop::Handle add(const Schedule& schedule, RunLoop::Task task = [] {}) {
        return queue_.add(schedule, std::move(task));
    }

    /// A timer that notes its name and the time.
    [[nodiscard]] RunLoop::Handle addNoting(const std::string& name, const Schedule& schedule) {
        return add(schedule, [this, name] { note(name); });
    }

    void note(const std::string& name) { ran_.emplace_back(name, now_); }

    void advanceTo(double end) {
        for (auto time = queue_.wakeUp(); time && seconds(*time) <= end; time = queue_.wakeUp()) {
            now_ = std::max(now_, seconds(*time));
            ++wakeUps_;
            queue_.runDue();
        }
        now_ = end;
    }

    [[nodiscard]] std::vector<std::string> names() const {
        std::vector<std::string> names;
        for (const auto& [name, time] : ran_) {
            names.push_back(name);
        }
        return names;
    }

    static double seconds(nanoseconds time) { return std::chrono::duration<double>(time).count(); }

    static std::pair<std::string, double> at(const std::string& name, double time) { return {name, time}; }

    double now_ = 100;
    int changes_ = 0;
    int wakeUps_ = 0;
    std::vector<std::pair<std::string, double>> ran_;
    TimerQueue queue_{[this] { return now_; }, [this] { ++changes_; }};
};

constexpr std::chrono::seconds operator""_s(unsigned long long seconds) {
    return std::chrono::seconds(seconds);
}

} // namespace

TEST_F(TimerQueueTest, WithoutTimersThereIsNothingToWaitFor) {
    EXPECT_EQ(queue_.wakeUp(), std::nullopt);
}

TEST_F(TimerQueueTest, TheWakeUpIsTheEarliestTime) {
    const auto later = add({.firstFire = 107});
    const auto sooner = add({.firstFire = 103});

    EXPECT_EQ(queue_.wakeUp(), 103_s);
}

TEST_F(TimerQueueTest, ATimerThatHasEndedIsNotWaitedFor) {
    const auto later = add({.firstFire = 107});
    auto sooner = add({.firstFire = 103});

    sooner.reset();

    EXPECT_EQ(queue_.wakeUp(), 107_s);
}

TEST_F(TimerQueueTest, ATimeInThePastIsDueAtOnce) {
    const auto timer = addNoting("late", {.firstFire = -5});

    EXPECT_EQ(queue_.wakeUp(), 0_s);
    queue_.runDue();

    EXPECT_THAT(ran_, ElementsAre(at("late", 100)));
}

TEST_F(TimerQueueTest, ATimeBeyondAllRunsIsStillATime) {
    const auto timer = add({.firstFire = 1e300});

    ASSERT_TRUE(queue_.wakeUp());
    EXPECT_GT(*queue_.wakeUp(), std::chrono::hours(24 * 365 * 100));
}

TEST_F(TimerQueueTest, WhatIsWaitedForIsDueByThen) {
    const double betweenTwoNanoseconds = 100 + 1.0 / 3;
    const auto timer = add({.firstFire = betweenTwoNanoseconds});

    ASSERT_TRUE(queue_.wakeUp());

    EXPECT_EQ(*queue_.wakeUp(), nanoseconds(100'333'333'334));
}

TEST_F(TimerQueueTest, ATaskRunsOnceAtItsTime) {
    const auto timer = addNoting("once", {.firstFire = 103});

    advanceTo(200);

    EXPECT_THAT(ran_, ElementsAre(at("once", 103)));
    EXPECT_EQ(queue_.wakeUp(), std::nullopt);
}

TEST_F(TimerQueueTest, NothingRunsBeforeItsTime) {
    const auto timer = addNoting("later", {.firstFire = 103});
    now_ = 102.999;

    queue_.runDue();

    EXPECT_THAT(ran_, testing::IsEmpty());
}

TEST_F(TimerQueueTest, ARepeatedTaskRunsAtEachTimeCountedFromTheFirst) {
    const auto timer = addNoting("tick", {.firstFire = 101, .interval = 2});

    advanceTo(106);

    EXPECT_THAT(ran_, ElementsAre(at("tick", 101), at("tick", 103), at("tick", 105)));
    EXPECT_EQ(queue_.wakeUp(), 107_s);
}

TEST_F(TimerQueueTest, LatenessDoesNotAddUp) {
    const auto timer = add({.firstFire = 101, .interval = 2}, [this] { now_ += 0.75; });

    advanceTo(1000);

    EXPECT_EQ(queue_.wakeUp(), 1001_s);
}

TEST_F(TimerQueueTest, OneRunStandsForAllTimesMissedBeforeIt) {
    const auto timer = addNoting("tick", {.firstFire = 101, .interval = 2});
    now_ = 107.5;

    queue_.runDue();

    EXPECT_THAT(ran_, ElementsAre(at("tick", 107.5)));
    EXPECT_EQ(queue_.wakeUp(), 109_s);
}

TEST_F(TimerQueueTest, ATimeMissedWhileAnotherTaskRanIsPassedOverToo) {
    const auto slow = add({.firstFire = 101}, [this] { now_ += 3.5; });
    const auto timer = addNoting("tick", {.firstFire = 101, .interval = 1});
    now_ = 101;

    queue_.runDue();

    EXPECT_THAT(ran_, ElementsAre(at("tick", 104.5)));
    EXPECT_EQ(queue_.wakeUp(), 105_s);
}

TEST_F(TimerQueueTest, NoTimeIsServedTwiceHoweverTheDivisionRounds) {
    const auto timer = addNoting("tick", {.firstFire = 100.1, .interval = 0.1});

    advanceTo(150);

    EXPECT_NEAR(static_cast<double>(ran_.size()), 500, 1);
    EXPECT_EQ(std::ranges::adjacent_find(ran_), ran_.end());
}

TEST_F(TimerQueueTest, WhatIsDueTogetherRunsInTheOrderOfItsTimes) {
    const auto second = addNoting("second", {.firstFire = 102});
    const auto third = addNoting("third", {.firstFire = 103});
    const auto first = addNoting("first", {.firstFire = 101});
    const auto alsoSecond = addNoting("made after the second", {.firstFire = 102});
    now_ = 104;

    queue_.runDue();

    EXPECT_THAT(names(), ElementsAre("first", "second", "made after the second", "third"));
}

TEST_F(TimerQueueTest, APatientTimerSharesTheWakeUpOfAPunctualOneAndRunsAfterIt) {
    const auto patient = addNoting("patient", {.firstFire = 101, .interval = 1, .tolerance = 0.2});
    const auto punctual = addNoting("punctual", {.firstFire = 101.125, .interval = 1});

    advanceTo(102.5);

    EXPECT_THAT(
        ran_, ElementsAre(
                  at("punctual", 101.125), at("patient", 101.125), at("punctual", 102.125),
                  at("patient", 102.125)));
    EXPECT_EQ(wakeUps_, 2);
}

TEST_F(TimerQueueTest, APatientTimerWithoutCompanyRunsAtTheEndOfItsPatience) {
    const auto patient = addNoting("patient", {.firstFire = 101, .interval = 10, .tolerance = 0.25});
    const auto punctual = addNoting("punctual", {.firstFire = 101.5});

    advanceTo(105);

    EXPECT_THAT(ran_, ElementsAre(at("patient", 101.25), at("punctual", 101.5)));
}

TEST_F(TimerQueueTest, APatientTimerIsNeverEarly) {
    const auto patient = addNoting("patient", {.firstFire = 101, .tolerance = 5});
    const auto punctual = addNoting("punctual", {.firstFire = 100.999});

    advanceTo(100.9995);

    EXPECT_THAT(names(), ElementsAre("punctual"));
}

TEST_F(TimerQueueTest, TheLatenessOfAPatientTimerDoesNotAddUp) {
    const auto patient = addNoting("patient", {.firstFire = 101, .interval = 1, .tolerance = 0.25});

    advanceTo(104);

    EXPECT_THAT(ran_, ElementsAre(at("patient", 101.25), at("patient", 102.25), at("patient", 103.25)));
}

TEST_F(TimerQueueTest, PatientTimersShareTheWakeUpOfTheOneThatCanWaitLeast) {
    const auto first = addNoting("due first", {.firstFire = 101, .tolerance = 2});
    const auto second = addNoting("due second", {.firstFire = 101.5, .tolerance = 0.25});

    advanceTo(110);

    EXPECT_THAT(ran_, ElementsAre(at("due first", 101.75), at("due second", 101.75)));
}

TEST_F(TimerQueueTest, ATaskMayEndItsOwnTimerAndGoOn) {
    RunLoop::Handle timer;
    timer = add({.firstFire = 101, .interval = 1}, [this, &timer, name = std::string("ended itself")] {
        timer.reset();
        note(name);
    });

    advanceTo(110);

    EXPECT_THAT(ran_, ElementsAre(at("ended itself", 101)));
    EXPECT_EQ(queue_.wakeUp(), std::nullopt);
}

TEST_F(TimerQueueTest, ATaskMayEndAnotherTimerThatIsDueAsWell) {
    RunLoop::Handle second;
    const auto first = add({.firstFire = 101}, [this, &second] {
        note("first");
        second.reset();
    });
    second = addNoting("second", {.firstFire = 101});

    advanceTo(110);

    EXPECT_THAT(names(), ElementsAre("first"));
}

TEST_F(TimerQueueTest, ATaskMayOwnAnotherTimerWhichEndsWithIt) {
    auto owned = std::make_shared<RunLoop::Handle>(addNoting("owned", {.firstFire = 105}));
    auto owner = add({.firstFire = 101}, [owned = std::move(owned)] { EXPECT_TRUE(*owned); });

    owner.reset();
    advanceTo(110);

    EXPECT_THAT(ran_, testing::IsEmpty());
}

TEST_F(TimerQueueTest, WhatATaskAddsHasItsTurnTheNextTime) {
    std::vector<RunLoop::Handle> timers;
    timers.push_back(add({.firstFire = 101}, [&] {
        note("first");
        timers.push_back(addNoting("added", {.firstFire = now_}));
    }));
    now_ = 101;

    queue_.runDue();
    EXPECT_THAT(names(), ElementsAre("first"));
    EXPECT_EQ(queue_.wakeUp(), 101_s);

    queue_.runDue();
    EXPECT_THAT(names(), ElementsAre("first", "added"));
}

TEST_F(TimerQueueTest, AnEventLoopInsideATaskRunsWhatElseIsDue) {
    const auto opening = add({.firstFire = 101}, [this] {
        note("opens");
        queue_.runDue();
        note("closes");
    });
    const auto other = addNoting("other", {.firstFire = 101});
    now_ = 101;

    queue_.runDue();

    EXPECT_THAT(names(), ElementsAre("opens", "other", "closes"));
}

TEST_F(TimerQueueTest, ARunningTaskIsNotRunAgainAndHasNoDeadline) {
    int depth = 0;
    int runs = 0;
    std::optional<nanoseconds> wakeUpInside = 0_s;
    const auto timer = add({.firstFire = 101, .interval = 1}, [&] {
        ++runs;
        EXPECT_EQ(++depth, 1);
        wakeUpInside = queue_.wakeUp();
        now_ += 5;
        queue_.runDue();
        --depth;
    });
    now_ = 101;

    queue_.runDue();

    EXPECT_EQ(runs, 1);
    EXPECT_EQ(wakeUpInside, std::nullopt);
    EXPECT_EQ(queue_.wakeUp(), 102_s); // missed inside itself: one late run is still to come
}

TEST_F(TimerQueueTest, EachTimerThatComesOrGoesIsAChange) {
    auto timer = add({.firstFire = 101});
    EXPECT_EQ(changes_, 1);

    timer.reset();

    EXPECT_EQ(changes_, 2);
}

TEST_F(TimerQueueTest, ARunOfDueTasksIsOneChange) {
    const auto first = add({.firstFire = 101, .interval = 1});
    const auto second = add({.firstFire = 101, .interval = 1});
    now_ = 101;
    changes_ = 0;

    queue_.runDue();

    EXPECT_EQ(changes_, 1);
}

} // namespace tarnwick
