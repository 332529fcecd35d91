// The interface's own traffic, from its byte counters.
#include "core/Diagnosis/LineLoad.h"

#include <gtest/gtest.h>

namespace tarnwick {
namespace {

constexpr std::uint64_t mbit = 125'000; // bytes

TEST(LineLoadTest, OneReadingTellsNothing) {
    LineLoad line;
    line.note(50 * mbit, 50 * mbit, 10);

    EXPECT_EQ(line.load().sentMbit, 0);
    EXPECT_EQ(line.load().seconds, 0);
}

TEST(LineLoadTest, TwoTellTheRateOfTheTimeBetween) {
    LineLoad line;
    line.note(0, 0, 10);
    line.note(18 * mbit, 3 * mbit, 12);

    EXPECT_DOUBLE_EQ(line.load().sentMbit, 9);
    EXPECT_DOUBLE_EQ(line.load().receivedMbit, 1.5);
    EXPECT_DOUBLE_EQ(line.load().seconds, 2);
}

TEST(LineLoadTest, SecondsOfLoadAddUpWhileEitherWayIsLoaded) {
    LineLoad line;
    line.note(0, 0, 10);
    line.note(9 * mbit, 0, 11);
    line.note(9 * mbit, 9 * mbit, 12);
    EXPECT_DOUBLE_EQ(line.load().seconds, 2);

    line.note(9 * mbit + mbit / 2, 9 * mbit, 13);
    EXPECT_DOUBLE_EQ(line.load().sentMbit, 0.5);
    EXPECT_EQ(line.load().seconds, 0);
}

TEST(LineLoadTest, CountersThatHaveFallenBeginAnew) {
    LineLoad line;
    line.note(0, 50 * mbit, 10);
    line.note(9 * mbit, 59 * mbit, 11);
    line.note(18 * mbit, 0, 12); // the interface was made again
    EXPECT_EQ(line.load().sentMbit, 0);
    EXPECT_EQ(line.load().seconds, 0);

    line.note(27 * mbit, 0, 13);
    EXPECT_DOUBLE_EQ(line.load().sentMbit, 9);
    EXPECT_DOUBLE_EQ(line.load().seconds, 1);
}

TEST(LineLoadTest, TwoReadingsAtOneTimeTellNothing) {
    LineLoad line;
    line.note(0, 0, 10);
    line.note(9 * mbit, 0, 10);

    EXPECT_EQ(line.load().sentMbit, 0);
}

TEST(LineLoadTest, WhatIsForgottenIsNoReading) {
    LineLoad line;
    line.note(0, 0, 10);
    line.note(9 * mbit, 0, 11);
    line.forget();
    EXPECT_EQ(line.load().sentMbit, 0);

    line.note(90 * mbit, 0, 12);
    EXPECT_EQ(line.load().sentMbit, 0);
}

} // namespace
} // namespace tarnwick
