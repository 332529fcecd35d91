// How figures are written for people.
#include "app/Reading/Format.h"

#include <clocale>
#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <rapidcheck.h>

namespace tarnwick {

namespace {

const Format::Grouping comma{.separator = ",", .sizes = {3}};

} // namespace

TEST(Format, WholeMillisecondsAreRoundedHalvesAwayFromZero) {
    EXPECT_EQ(Format::wholeMs(23), "23 ms");
    EXPECT_EQ(Format::wholeMs(23.4), "23 ms");
    EXPECT_EQ(Format::wholeMs(22.5), "23 ms");
    EXPECT_EQ(Format::wholeMs(0.5), "1 ms");
    EXPECT_EQ(Format::wholeMs(0.49), "0 ms");
    EXPECT_EQ(Format::wholeMs(1234.5), "1235 ms");
}

TEST(Format, IntegersAreGroupedFromTheRight) {
    EXPECT_EQ(Format::integer(0, comma), "0");
    EXPECT_EQ(Format::integer(999, comma), "999");
    EXPECT_EQ(Format::integer(1204, comma), "1,204");
    EXPECT_EQ(Format::integer(88310, comma), "88,310");
    EXPECT_EQ(Format::integer(1000000, comma), "1,000,000");
    EXPECT_EQ(Format::integer(-123456, comma), "-123,456");
    EXPECT_EQ(Format::integer(-123, comma), "-123");
}

TEST(Format, ALocaleWithoutASeparatorDoesNotGroup) {
    EXPECT_EQ(Format::integer(1234567, {}), "1234567");
    EXPECT_EQ(Format::integer(1234567, {.separator = ",", .sizes = {}}), "1234567");
}

TEST(Format, TheLastGroupSizeRepeats) {
    EXPECT_EQ(Format::integer(123456789, {.separator = ",", .sizes = {3, 2}}), "12,34,56,789");
}

TEST(Format, AGroupOfNoneEndsTheGrouping) {
    EXPECT_EQ(Format::integer(123456789, {.separator = ",", .sizes = {3, 0}}), "123456,789");
}

TEST(Format, ASeparatorMayBeMoreThanOneByte) {
    EXPECT_EQ(Format::integer(1234567, {.separator = "\u202F", .sizes = {3}}), "1\u202F234\u202F567");
}

TEST(Format, TheLargestAndSmallestIntegersAreWrittenInFull) {
    EXPECT_EQ(Format::integer(std::numeric_limits<std::int64_t>::max(), comma), "9,223,372,036,854,775,807");
    EXPECT_EQ(Format::integer(std::numeric_limits<std::int64_t>::min(), comma), "-9,223,372,036,854,775,808");
}

TEST(Format, WithoutItsSeparatorsAGroupedIntegerIsTheIntegerItself) {
    EXPECT_TRUE(rc::check("grouping only inserts separators", [](std::int64_t value) {
        std::string text = Format::integer(value, comma);
        std::erase(text, ',');
        RC_ASSERT(text == std::to_string(value));
    }));
}

TEST(Format, AnUnknownLocaleOfTheUserDoesNotGroup) {
    ::setenv("LC_ALL", "no_SUCH.locale", 1);

    const Format::Grouping grouping = Format::Grouping::ofUser();

    ::unsetenv("LC_ALL");
    EXPECT_EQ(Format::integer(1234567, grouping), "1234567");
}

TEST(Format, TheLocaleOfTheUserIsAskedForWithoutBecomingThatOfTheProcess) {
    ::setenv("LC_ALL", "C.UTF-8", 1);

    const Format::Grouping grouping = Format::Grouping::ofUser();

    ::unsetenv("LC_ALL");
    EXPECT_EQ(Format::integer(1234567, grouping), "1234567");
    EXPECT_EQ(std::string(std::setlocale(LC_ALL, nullptr)), "C");
}

} // namespace tarnwick
