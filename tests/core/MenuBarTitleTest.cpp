// The short text beside the signal bars, and the gates that keep parts of it in place.
#include "core/MenuBarTitle.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick::MenuBarTitle {
namespace {

using testing::ElementsAre;

struct Latency {
    double ms;
    const char* expected;
};

class LatencyText : public testing::TestWithParam<Latency> {};

INSTANTIATE_TEST_SUITE_P(
    MenuBarTitle, LatencyText,
    testing::Values(
        Latency{0, "0ms"}, Latency{0.4, "0ms"}, Latency{0.5, "1ms"}, Latency{42, "42ms"},
        Latency{42.5, "43ms"}, Latency{99, "99ms"}, Latency{99.4, "99ms"}, Latency{99.5, "0.1s"},
        Latency{100, "0.1s"}, Latency{149.9, "0.1s"}, Latency{150, "0.2s"}, Latency{250, "0.3s"},
        Latency{1234, "1.2s"}, Latency{9849, "9.8s"}, Latency{9850, "9.9s"}, Latency{60000, "9.9s"},
        Latency{1e12, "9.9s"}, Latency{-5, "0ms"}));

TEST_P(LatencyText, HasFourCharactersAtMost) {
    EXPECT_EQ(ping(GetParam().ms), GetParam().expected);
    EXPECT_LE(ping(GetParam().ms).size(), 4U);
}

struct Loss {
    double percent;
    int shown;
};

class LossText : public testing::TestWithParam<Loss> {};

INSTANTIATE_TEST_SUITE_P(
    MenuBarTitle, LossText,
    testing::Values(
        Loss{0, 0}, Loss{0.4, 0}, Loss{0.5, 1}, Loss{2.5, 3}, Loss{3.333, 3}, Loss{98.4, 98}, Loss{98.6, 99},
        Loss{99, 99}, Loss{100, 99}, Loss{-1, 0}, Loss{-0.5, 0}));

TEST_P(LossText, ShowsAWholePercentageBelowAHundred) {
    EXPECT_EQ(displayedLoss(GetParam().percent), GetParam().shown);
    EXPECT_EQ(lossSuffix(GetParam().percent), " (" + std::to_string(GetParam().shown) + "%)");
}

TEST(Title, IsTheLatencyAloneWithoutALossFigure) {
    EXPECT_EQ(title(42, std::nullopt), "42ms");
}

TEST(Title, IsFollowedByTheLossWhenThatIsGiven) {
    EXPECT_EQ(title(42, 3), "42ms (3%)");
    EXPECT_EQ(title(1234, 15), "1.2s (15%)");
    EXPECT_EQ(title(42, 0), "42ms (0%)");
}

TEST(Figure, IsTheLatencyWithoutTheUnitOfMilliseconds) {
    EXPECT_EQ(figure(0), "0");
    EXPECT_EQ(figure(42.4), "42");
    EXPECT_EQ(figure(99.4), "99");
    EXPECT_EQ(figure(99.5), "0.1s");
    EXPECT_EQ(figure(1240), "1.2s");
}

TEST(Title, HasItsOwnTextsForWaitingAndFailing) {
    EXPECT_EQ(waiting, "\u2026");
    EXPECT_EQ(failed, "Failed");
}

TEST(LossIsShown, NeverInModeOff) {
    EXPECT_FALSE(showsLoss(LossMode::off, false));
    EXPECT_FALSE(showsLoss(LossMode::off, true));
}

TEST(LossIsShown, WhileTheGateIsOpenInModeWhenLossy) {
    EXPECT_FALSE(showsLoss(LossMode::whenLossy, false));
    EXPECT_TRUE(showsLoss(LossMode::whenLossy, true));
}

TEST(LossIsShown, AlwaysInModeAlways) {
    EXPECT_TRUE(showsLoss(LossMode::always, false));
    EXPECT_TRUE(showsLoss(LossMode::always, true));
}

TEST(WidestTitles, WithoutLossHaveNoSuffix) {
    EXPECT_THAT(widestCandidates(std::nullopt), ElementsAre("88ms", "8.8s", "Failed", "\u2026"));
}

struct Digits {
    int digits;
    const char* suffix;
};

class WidestLoss : public testing::TestWithParam<Digits> {};

INSTANTIATE_TEST_SUITE_P(
    MenuBarTitle, WidestLoss,
    testing::Values(
        Digits{-1, " (8%)"}, Digits{0, " (8%)"}, Digits{1, " (8%)"}, Digits{2, " (88%)"},
        Digits{3, " (88%)"}));

TEST_P(WidestLoss, HasOneDigitOrTwo) {
    const std::string suffix = GetParam().suffix;
    EXPECT_THAT(
        widestCandidates(GetParam().digits),
        ElementsAre("88ms" + suffix, "8.8s" + suffix, "Failed", "\u2026"));
}

TEST(LossModeText, GoesThereAndBack) {
    EXPECT_EQ(rawValue(LossMode::off), "off");
    EXPECT_EQ(rawValue(LossMode::whenLossy), "whenLossy");
    EXPECT_EQ(rawValue(LossMode::always), "always");
    for (const LossMode mode : allLossModes) {
        EXPECT_EQ(lossMode(rawValue(mode)), mode);
    }
}

TEST(LossModeText, OfAnyOtherSpellingGivesNoMode) {
    for (const char* text : {"whenlossy", "WhenLossy", "Off", "ALWAYS", "", " off", "off ", "never"}) {
        EXPECT_EQ(lossMode(text), std::nullopt) << text;
    }
}

TEST(LossModes, AreListedInTheirOrder) {
    EXPECT_THAT(allLossModes, ElementsAre(LossMode::off, LossMode::whenLossy, LossMode::always));
}

TEST(HoldGate, BeginsClosed) {
    EXPECT_FALSE(HoldGate(10).isOpen());
}

TEST(HoldGate, StaysOpenForItsTimeAndClosesExactlyAtIt) {
    HoldGate gate(10);
    EXPECT_TRUE(gate.update(true, 0));
    EXPECT_TRUE(gate.update(false, 9.9));
    EXPECT_FALSE(gate.update(false, 10.0));
    EXPECT_FALSE(gate.update(false, 10.5));
    EXPECT_FALSE(gate.isOpen());
}

TEST(HoldGate, IsNotHeldLongerByInactiveUpdates) {
    HoldGate gate(10);
    gate.update(true, 0);
    gate.update(false, 5);
    gate.update(false, 9);
    EXPECT_FALSE(gate.update(false, 10));
}

TEST(HoldGate, IsHeldAnewByEveryActiveUpdate) {
    HoldGate gate(10);
    gate.update(true, 0);
    gate.update(true, 8);
    EXPECT_TRUE(gate.update(false, 17.9));
    EXPECT_FALSE(gate.update(false, 18));
}

TEST(HoldGate, OpensAgainAfterItWasClosed) {
    HoldGate gate(10);
    gate.update(true, 0);
    gate.update(false, 10);
    EXPECT_TRUE(gate.update(true, 11));
    EXPECT_TRUE(gate.isOpen());
}

TEST(HoldGate, IsNotOpenedByAnInactiveUpdate) {
    HoldGate gate(10);
    EXPECT_FALSE(gate.update(false, 0));
}

TEST(HoldGate, OfTheLossSuffixHoldsTenSecondsAndOfItsSecondDigitThirty) {
    for (auto [gate, seconds] : {std::pair{HoldGate::lossSuffix(), 10}, {HoldGate::twoDigitLoss(), 30}}) {
        gate.update(true, 0);
        EXPECT_TRUE(gate.update(false, seconds - 0.5)) << seconds;
        EXPECT_FALSE(gate.update(false, seconds)) << seconds;
    }
}

} // namespace
} // namespace tarnwick::MenuBarTitle
