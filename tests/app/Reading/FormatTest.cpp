// How figures are written for people.
#include "app/Reading/Format.h"

#include "tests/core/Required.h"
#include "tests/support/MadeLocale.h"
#include "tests/support/Variable.h"

#include <gtest/gtest.h>

#include <clocale>
#include <limits>
#include <string>

namespace tarnwick {

using namespace std::string_literals;

TEST(Format, WholeMillisecondsAreRoundedHalvesAwayFromZero) {
    EXPECT_EQ(Format::wholeMs(23), "23 ms");
    EXPECT_EQ(Format::wholeMs(23.4), "23 ms");
    EXPECT_EQ(Format::wholeMs(22.5), "23 ms");
    EXPECT_EQ(Format::wholeMs(0.5), "1 ms");
    EXPECT_EQ(Format::wholeMs(0.49), "0 ms");
    EXPECT_EQ(Format::wholeMs(1234.5), "1235 ms");
}

TEST(Format, ALongTextLosesItsMiddle) {
    EXPECT_EQ(Format::elided("one.one.one.one", 15), "one.one.one.one");
    EXPECT_EQ(Format::elided("one.one.one.one", 8), "one.…one");
    EXPECT_EQ(Format::elided("one.one.one.one", 9), "one.….one");
    EXPECT_EQ(Format::elided("ääääöööö", 5), "ää…öö");
    EXPECT_EQ(Format::elided("", 5), "");
}

struct Grouped {
    const char* locale;
    std::int64_t value;
    const char* text;
};

class GroupedInteger : public testing::TestWithParam<Grouped> {};

TEST_P(GroupedInteger, IsWrittenAsTheLocaleWritesIt) {
    const test::MadeLocale locale(GetParam().locale);
    if (!locale.isMade()) {
        TARNWICK_CANNOT_RUN("localedef is missing");
    }
    const Format::Grouping grouping(locale.name());

    EXPECT_EQ(Format::integer(GetParam().value, grouping), GetParam().text);
    EXPECT_EQ(Format::integer(-GetParam().value, grouping), "-"s + GetParam().text);
    EXPECT_EQ(Format::integer(999, grouping), "999");
}

INSTANTIATE_TEST_SUITE_P(
    Format, GroupedInteger,
    testing::Values(
        Grouped{"en_US", 1000000, "1,000,000"}, Grouped{"en_IN", 123456789, "12,34,56,789"},
        Grouped{"de_DE", 1204, "1.204"},
        Grouped{
            "fr_FR", std::numeric_limits<std::int64_t>::max(),
            "9\u202F223\u202F372\u202F036\u202F854\u202F775\u202F807"}));

TEST(Format, WithoutALocaleIntegersAreNotGrouped) {
    EXPECT_EQ(Format::integer(0, {}), "0");
    EXPECT_EQ(Format::integer(std::numeric_limits<std::int64_t>::min(), {}), "-9223372036854775808");
}

TEST(Format, ALocaleThatIsNotInstalledDoesNotGroup) {
    EXPECT_EQ(Format::integer(1234567, Format::Grouping("no_SUCH.locale")), "1234567");
}

TEST(Format, TheUsersLocaleStaysApartFromThatOfTheProcess) {
    const test::MadeLocale locale("en_US");
    if (!locale.isMade()) {
        TARNWICK_CANNOT_RUN("localedef is missing");
    }
    const test::Variable environment("LC_ALL", locale.name());

    EXPECT_EQ(Format::integer(1234567, Format::Grouping::ofUser()), "1,234,567");
    EXPECT_EQ(std::string(std::setlocale(LC_ALL, nullptr)), "C");
    EXPECT_EQ(::uselocale(nullptr), LC_GLOBAL_LOCALE);
}

TEST(Format, ANumberWithoutGroupingDoesNotFollowTheLocaleOfTheProcess) {
    const test::MadeLocale locale("de_DE");
    if (!locale.isMade()) {
        TARNWICK_CANNOT_RUN("localedef is missing");
    }
    ASSERT_NE(std::setlocale(LC_NUMERIC, locale.name()), nullptr);

    const std::string text = Format::integer(1234567, {});

    std::setlocale(LC_NUMERIC, "C");
    EXPECT_EQ(text, "1234567");
}

} // namespace tarnwick
