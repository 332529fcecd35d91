// The scale of the slow-ping threshold.
#include "app/SettingsView/Model/ThresholdScale.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <cmath>
#include <limits>
#include <set>

namespace tarnwick {

namespace {

using testing::DoubleNear;
using ThresholdScale::highestMs;
using ThresholdScale::lowestMs;

constexpr double infinite = std::numeric_limits<double>::infinity();

} // namespace

TEST(ThresholdScaleTest, ItReachesFromTheLogarithmOfFiftyToThatOfTwoThousand) {
    EXPECT_THAT(ThresholdScale::place(50), DoubleNear(3.912023005428146, 1e-15));
    EXPECT_THAT(ThresholdScale::place(2000), DoubleNear(7.600902459542082, 1e-15));
}

TEST(ThresholdScaleTest, ItsEndsAreFiftyAndTwoThousand) {
    EXPECT_EQ(ThresholdScale::thresholdAtPosition(0), 50);
    EXPECT_EQ(ThresholdScale::thresholdAtPosition(ThresholdScale::positions), 2000);
}

TEST(ThresholdScaleTest, APlaceGivesTheNearestMultipleOfTen) {
    EXPECT_EQ(ThresholdScale::thresholdAt(std::log(104.9)), 100);
    EXPECT_EQ(ThresholdScale::thresholdAt(std::log(105.1)), 110);
}

TEST(ThresholdScaleTest, APlaceBeyondAnEndGivesThatEnd) {
    EXPECT_EQ(ThresholdScale::thresholdAt(0), 50);
    EXPECT_EQ(ThresholdScale::thresholdAt(10), 2000);
}

TEST(ThresholdScaleTest, TheMiddleIsTheGeometricMean) {
    EXPECT_EQ(ThresholdScale::thresholdAtPosition(ThresholdScale::positions / 2), 320);
}

TEST(ThresholdScaleTest, EveryMultipleOfTenHasAPositionThatGivesIt) {
    for (double ms = lowestMs; ms <= highestMs; ms += 10) {
        EXPECT_EQ(ThresholdScale::thresholdAtPosition(ThresholdScale::positionOf(ms)), ms);
    }
}

TEST(ThresholdScaleTest, EveryPositionGivesAMultipleOfTenInsideTheScale) {
    rc::check([] {
        const int position = *rc::gen::inRange(0, ThresholdScale::positions + 1);
        const double ms = ThresholdScale::thresholdAtPosition(position);
        RC_ASSERT(ms >= lowestMs && ms <= highestMs);
        RC_ASSERT(std::fmod(ms, 10) == 0.0);
    });
}

TEST(ThresholdScaleTest, WhateverIsStoredHasAPosition) {
    EXPECT_EQ(ThresholdScale::positionOf(0), 0);
    EXPECT_EQ(ThresholdScale::positionOf(-300), 0);
    EXPECT_EQ(ThresholdScale::positionOf(std::nan("")), 0);
    EXPECT_EQ(ThresholdScale::positionOf(5000), ThresholdScale::positions);
    EXPECT_EQ(ThresholdScale::positionOf(infinite), ThresholdScale::positions);
}

TEST(ThresholdScaleTest, AStepIsTenMilliseconds) {
    EXPECT_EQ(ThresholdScale::stepped(100, 1), 110);
    EXPECT_EQ(ThresholdScale::stepped(100, -1), 90);
    EXPECT_EQ(ThresholdScale::stepped(100, 10), 200);
}

TEST(ThresholdScaleTest, FromBetweenTwoStepsTheFirstOneIsShorter) {
    EXPECT_EQ(ThresholdScale::stepped(105, 1), 110);
    EXPECT_EQ(ThresholdScale::stepped(105, -1), 100);
}

TEST(ThresholdScaleTest, StepsEndAtTheEnds) {
    EXPECT_EQ(ThresholdScale::stepped(50, -1), 50);
    EXPECT_EQ(ThresholdScale::stepped(1990, 10), 2000);
    EXPECT_EQ(ThresholdScale::stepped(9000, -1), 1990);
}

TEST(ThresholdScaleTest, StepsUpReachEveryMultipleOfTen) {
    std::set<double> reached{lowestMs};
    for (double ms = lowestMs; ms < highestMs;) {
        ms = ThresholdScale::stepped(ms, 1);
        ASSERT_TRUE(reached.insert(ms).second);
    }
    EXPECT_EQ(reached.size(), 196);
}

} // namespace tarnwick
