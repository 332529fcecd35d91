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

struct Typed {
    const char* text;
    std::optional<int> expected;
};

class ParsedInterval : public testing::TestWithParam<Typed> {};

INSTANTIATE_TEST_SUITE_P(
    Number, ParsedInterval,
    testing::Values(
        Typed{"7", 7}, Typed{" \t7 \n", 7}, Typed{"\r\n7\v\f", 7}, Typed{"\u00A07\u2003", 7}, Typed{"0", 1},
        Typed{"90", 60}, Typed{"2.5", 3}, Typed{"2.4", 2}, Typed{"1e1", 10}, Typed{"+5", 5}, Typed{"-5", 1},
        Typed{"inf", 60}, Typed{"-inf", 1}, Typed{"nan", 1}, Typed{"1e999", 60}, Typed{"1e-999", 1}));
INSTANTIATE_TEST_SUITE_P(
    NoNumber, ParsedInterval,
    testing::Values(
        Typed{"", {}}, Typed{" \n", {}}, Typed{"7s", {}}, Typed{"s7", {}}, Typed{"7 8", {}}, Typed{"2,5", {}},
        Typed{"1e", {}}, Typed{"-", {}}, Typed{"- 5", {}}, Typed{"ten", {}}, Typed{"1_000", {}},
        Typed{"0x10", {}}));

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
