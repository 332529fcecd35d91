// When the title shows the loss, and how many digits it makes room for.
#include "app/Reading/LossGates.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {

namespace {

using MenuBarTitle::LossMode;

constexpr std::optional<int> none;

/// Gates that have seen `loss` at second 0.
LossGates gatesAfter(double loss, LossMode mode = LossMode::whenLossy) {
    LossGates gates;
    gates.update(loss, mode, 0);
    return gates;
}

} // namespace

// At once.

struct FirstUpdate {
    std::optional<double> loss;
    LossMode mode;
    std::optional<int> digits;
};

class LossGatesAtOnce : public testing::TestWithParam<FirstUpdate> {};

TEST_P(LossGatesAtOnce, GiveTheDigits) {
    LossGates gates;

    EXPECT_EQ(gates.update(GetParam().loss, GetParam().mode, 100), GetParam().digits);
    EXPECT_FALSE(gates.isHolding());
}

INSTANTIATE_TEST_SUITE_P(
    Off, LossGatesAtOnce,
    testing::Values(FirstUpdate{0, LossMode::off, none}, FirstUpdate{50, LossMode::off, none}));

INSTANTIATE_TEST_SUITE_P(
    WhenLossy, LossGatesAtOnce,
    testing::Values(
        FirstUpdate{0, LossMode::whenLossy, none}, FirstUpdate{std::nullopt, LossMode::whenLossy, none},
        FirstUpdate{-3, LossMode::whenLossy, none}, FirstUpdate{0.1, LossMode::whenLossy, 1},
        FirstUpdate{9.4, LossMode::whenLossy, 1}, FirstUpdate{9.5, LossMode::whenLossy, 2},
        FirstUpdate{12.4, LossMode::whenLossy, 2}, FirstUpdate{99.6, LossMode::whenLossy, 2},
        FirstUpdate{100, LossMode::whenLossy, 2}));

INSTANTIATE_TEST_SUITE_P(
    Always, LossGatesAtOnce,
    testing::Values(
        FirstUpdate{0, LossMode::always, 1}, FirstUpdate{std::nullopt, LossMode::always, 1},
        FirstUpdate{9.4, LossMode::always, 1}, FirstUpdate{9.5, LossMode::always, 2}));

TEST(LossGates, ALossOf99Point6CountsAs99) {
    EXPECT_EQ(MenuBarTitle::displayedLoss(99.6), 99);
    EXPECT_EQ(gatesAfter(99.6).update(99.6, LossMode::whenLossy, 1), 2);
}

// After the loss has ended.

TEST(LossGates, TheLossTextStaysForTenSecondsAfterTheLastLoss) {
    LossGates gates = gatesAfter(3);

    EXPECT_EQ(gates.update(0, LossMode::whenLossy, 9.99), 1);
    EXPECT_EQ(gates.update(0, LossMode::whenLossy, 10), none);
    EXPECT_EQ(gates.update(0, LossMode::whenLossy, 11), none);
}

TEST(LossGates, NewLossStartsTheTenSecondsAnew) {
    LossGates gates = gatesAfter(3);
    EXPECT_EQ(gates.update(0, LossMode::whenLossy, 5), 1);
    EXPECT_EQ(gates.update(1, LossMode::whenLossy, 9), 1);

    EXPECT_EQ(gates.update(0, LossMode::whenLossy, 18), 1);
    EXPECT_EQ(gates.update(0, LossMode::whenLossy, 19), none);
}

TEST(LossGates, UnknownLossCountsAsNone) {
    LossGates gates = gatesAfter(3);

    EXPECT_EQ(gates.update(std::nullopt, LossMode::whenLossy, 5), 1);
    EXPECT_EQ(gates.update(std::nullopt, LossMode::whenLossy, 10), none);
}

TEST(LossGates, RoomForTwoDigitsStaysForThirtySecondsAfterTheyWereNeeded) {
    LossGates gates = gatesAfter(12.4);

    EXPECT_EQ(gates.update(4, LossMode::whenLossy, 1), 2);
    EXPECT_EQ(gates.update(4, LossMode::whenLossy, 29.99), 2);
    EXPECT_EQ(gates.update(4, LossMode::whenLossy, 30), 1);
}

TEST(LossGates, RoomForTwoDigitsStaysThoughTheLossTextHasGone) {
    LossGates gates = gatesAfter(12.4);

    EXPECT_EQ(gates.update(0, LossMode::whenLossy, 1), 2);
    EXPECT_EQ(gates.update(0, LossMode::whenLossy, 12), none);
    EXPECT_EQ(gates.update(2, LossMode::whenLossy, 20), 2);
}

TEST(LossGates, WhereLossIsAlwaysShownItFallsBackToOneDigit) {
    LossGates gates = gatesAfter(12.4, LossMode::always);

    EXPECT_EQ(gates.update(0, LossMode::always, 29), 2);
    EXPECT_EQ(gates.update(0, LossMode::always, 30), 1);
}

TEST(LossGates, GoOnFollowingTheLossWhileItIsNotShown) {
    LossGates gates = gatesAfter(12.4, LossMode::off);

    EXPECT_EQ(gates.update(0, LossMode::whenLossy, 9), 2);
}

// Whether another look is due although nothing changes.

TEST(LossGates, HoldOnlyFromTheEndOfTheLossUntilTheyClose) {
    LossGates gates = gatesAfter(3);
    EXPECT_FALSE(gates.isHolding());

    gates.update(0, LossMode::whenLossy, 1);
    EXPECT_TRUE(gates.isHolding());

    gates.update(0, LossMode::whenLossy, 10);
    EXPECT_FALSE(gates.isHolding());
}

TEST(LossGates, HoldWhileOnlyTheSecondDigitIsNoLongerNeeded) {
    LossGates gates = gatesAfter(12.4);

    gates.update(4, LossMode::whenLossy, 1);
    EXPECT_TRUE(gates.isHolding());

    gates.update(4, LossMode::whenLossy, 30);
    EXPECT_FALSE(gates.isHolding());
}

TEST(LossGates, AreLookedAtAgainAfterFiveSeconds) {
    EXPECT_EQ(LossGates::recheckAfter, 5.0);
    LossGates gates = gatesAfter(12.4);
    std::vector<double> shown;
    double now = 1;
    for (auto digits = gates.update(0, LossMode::whenLossy, now); digits; now += LossGates::recheckAfter) {
        shown.push_back(now);
        ASSERT_TRUE(gates.isHolding());
        digits = gates.update(0, LossMode::whenLossy, now + LossGates::recheckAfter);
    }

    EXPECT_THAT(shown, testing::ElementsAre(1, 6));
}

} // namespace tarnwick
