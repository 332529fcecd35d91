// Whole seconds from 1 to 60, whatever is stored or typed.
#include "core/PingIntervalSetting.h"

#include <gtest/gtest.h>

#include <limits>

namespace tarnwick {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

struct Number {
    double seconds;
    int expected;
};

class ClampedInterval : public testing::TestWithParam<Number> {};

INSTANTIATE_TEST_SUITE_P(
    PingIntervalSetting, ClampedInterval,
    testing::Values(
        Number{0.49, 1}, Number{0.5, 1}, Number{1, 1}, Number{1.49, 1}, Number{1.5, 2}, Number{2.5, 3},
        Number{59.49, 59}, Number{59.5, 60}, Number{60, 60}, Number{60.5, 60}, Number{90, 60}, Number{0, 1},
        Number{-0.5, 1}, Number{-3, 1}, Number{infinity, 60}, Number{-infinity, 1},
        Number{std::numeric_limits<double>::quiet_NaN(), 1}, Number{1e18, 60}, Number{-1e18, 1}));

TEST_P(ClampedInterval, IsTheNearestWholeSecondInRange) {
    EXPECT_EQ(PingIntervalSetting::clamped(GetParam().seconds), GetParam().expected);
}

TEST(PingIntervalSetting, SurvivesANumberBeyondEveryInteger) {
    EXPECT_EQ(PingIntervalSetting::clamped(1e300), 60);
    EXPECT_EQ(PingIntervalSetting::clamped(-1e300), 1);
}

struct Text {
    const char* text;
    std::optional<int> expected;
};

class ParsedInterval : public testing::TestWithParam<Text> {};

INSTANTIATE_TEST_SUITE_P(
    Number, ParsedInterval,
    testing::Values(
        Text{"7", 7}, Text{" \t7 \n", 7}, Text{"\r\n7\v\f", 7}, Text{"\u00A07\u2003", 7}, Text{"0", 1},
        Text{"90", 60}, Text{"2.5", 3}, Text{"2.4", 2}, Text{"1e1", 10}, Text{"+5", 5}, Text{"-5", 1},
        Text{"inf", 60}, Text{"-inf", 1}, Text{"nan", 1}, Text{"1e999", 60}, Text{"1e-999", 1}));
INSTANTIATE_TEST_SUITE_P(
    NoNumber, ParsedInterval,
    testing::Values(
        Text{"", {}}, Text{" \n", {}}, Text{"7s", {}}, Text{"s7", {}}, Text{"7 8", {}}, Text{"2,5", {}},
        Text{"1e", {}}, Text{"-", {}}, Text{"- 5", {}}, Text{"ten", {}}, Text{"1_000", {}},
        Text{"0x10", {}}));

TEST_P(ParsedInterval, IsClampedOrNothing) {
    EXPECT_EQ(PingIntervalSetting::parse(GetParam().text), GetParam().expected) << GetParam().text;
}

TEST(PingIntervalSetting, TakesNoTextWithAZeroByteInIt) {
    EXPECT_EQ(PingIntervalSetting::parse(std::string_view("7\0", 2)), std::nullopt);
}

TEST(PingIntervalSetting, RunsFromOneToSixtyAndStartsWithOne) {
    EXPECT_EQ(PingIntervalSetting::range.lowest, 1);
    EXPECT_EQ(PingIntervalSetting::range.highest, 60);
    EXPECT_EQ(PingIntervalSetting::defaultSeconds, 1);
}

} // namespace
} // namespace tarnwick
