// Two clocks read at the same moment.
#include "core/ClockPair.h"

#include <gtest/gtest.h>

#include <cmath>
#include <deque>
#include <sys/syscall.h>
#include <unistd.h>

namespace tarnwick {
namespace {

/// What the next readings of any clock give, in seconds; afterwards the clocks are the system's again.
std::deque<double> nextReadings;

} // namespace
} // namespace tarnwick

// In place of that of the C library.
extern "C" int clock_gettime(clockid_t clock, timespec* time) noexcept {
    auto& readings = tarnwick::nextReadings;
    if (readings.empty()) {
        return static_cast<int>(::syscall(SYS_clock_gettime, clock, time));
    }
    const double whole = std::floor(readings.front());
    *time = {
        .tv_sec = static_cast<time_t>(whole),
        .tv_nsec = std::lround((readings.front() - whole) * 1e9),
    };
    readings.pop_front();
    return 0;
}

namespace tarnwick {
namespace {

TEST(ClockPair, TheWholeAndTheFractionOfASecondAddUp) {
    EXPECT_DOUBLE_EQ(seconds({.tv_sec = 7, .tv_nsec = 250'000'000}), 7.25);
}

TEST(ClockPair, EachReadingIsOnItsOwnClock) {
    const double monotonicBefore = secondsOn(CLOCK_MONOTONIC);
    const double wallBefore = secondsOn(CLOCK_REALTIME);

    const ClockPair pair = ClockPair::read(CLOCK_REALTIME);

    EXPECT_GE(pair.monotonic, monotonicBefore);
    EXPECT_LE(pair.monotonic, secondsOn(CLOCK_MONOTONIC));
    EXPECT_GE(pair.other, wallBefore);
    EXPECT_LE(pair.other, secondsOn(CLOCK_REALTIME));
}

/// Three readings an attempt: the monotonic clock before and after the other one.
class ClockPairAttempts : public testing::Test {
protected:
    ~ClockPairAttempts() override { nextReadings.clear(); }

    /// The other clock shows `other`; the monotonic one goes on by `span` seconds.
    static void attempt(double other, double span) {
        nextReadings.insert(nextReadings.end(), {other, other * 100, other + span});
    }

    /// Which attempt has given the pair, told by its other clock.
    [[nodiscard]] static double chosen() { return ClockPair::read(CLOCK_REALTIME).other / 100; }
};

TEST_F(ClockPairAttempts, TheFirstUninterruptedOneIsTaken) {
    attempt(1, 0.5);
    attempt(2, 0.000004);
    attempt(3, 0.000002);

    EXPECT_EQ(chosen(), 2);
    EXPECT_EQ(nextReadings.size(), 3U);
}

TEST_F(ClockPairAttempts, OfFiveInterruptedOnesTheShortestIsTaken) {
    for (const double other : {1, 2, 3, 4, 5, 6}) {
        attempt(other, other == 2 ? 0.25 : 0.5);
    }

    EXPECT_EQ(chosen(), 2);
    EXPECT_EQ(nextReadings.size(), 3U);
}

TEST(ClockPair, TheDifferenceIsTheLeadOfTheOtherClock) {
    EXPECT_DOUBLE_EQ((ClockPair{.monotonic = 5, .other = 7.5}).difference(), 2.5);
}

} // namespace
} // namespace tarnwick
