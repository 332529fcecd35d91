// Two clocks read at the same moment.
#include "core/ClockPair.h"

#include <gtest/gtest.h>

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

TEST(ClockPair, TheDifferenceIsTheLeadOfTheOtherClock) {
    EXPECT_DOUBLE_EQ((ClockPair{.monotonic = 5, .other = 7.5}).difference(), 2.5);
}

} // namespace
} // namespace tarnwick
