// Numbers and texts that do not depend on the locale.
#include "core/Text.h"

#include "tests/core/Required.h"
#include "tests/support/MadeLocale.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <limits>
#include <locale>
#include <string>

namespace tarnwick {
namespace {

TEST(TrimmedText, LosesWhiteSpaceAndLineBreaksAtBothEndsOnly) {
    EXPECT_EQ(Text::trimmed(" \t\r\n a b \v\f\n"), "a b");
}

TEST(TrimmedText, LosesTheWhiteSpaceOfOtherScriptsToo) {
    EXPECT_EQ(Text::trimmed("\u00A0\u2003a\u00A0b\u3000\u2028\u0085"), "a\u00A0b");
}

TEST(TrimmedText, KeepsLettersWhoseBytesOccurInWhiteSpace) {
    EXPECT_EQ(Text::trimmed("à\u2026"), "à\u2026");
}

TEST(TrimmedText, OfWhiteSpaceAloneIsEmpty) {
    EXPECT_EQ(Text::trimmed(" \n\t "), "");
    EXPECT_EQ(Text::trimmed(""), "");
}

TEST(TrimmedText, WithoutWhiteSpaceIsUnchanged) {
    EXPECT_EQ(Text::trimmed("1.1.1.1"), "1.1.1.1");
}

TEST(SpaceInText, IsFoundAnywhereAndInEveryScript) {
    for (const char* text : {"a b", " a", "a\n", "a\u00A0b", "\u3000"}) {
        EXPECT_TRUE(Text::hasSpace(text)) << '"' << text << '"';
    }
    EXPECT_FALSE(Text::hasSpace(""));
    EXPECT_FALSE(Text::hasSpace("à\u2026b"));
}

constexpr double unbounded = std::numeric_limits<double>::infinity();

struct Numeral {
    const char* text;
    std::optional<double> expected;
};

class ParsedText : public testing::TestWithParam<Numeral> {};

INSTANTIATE_TEST_SUITE_P(
    Number, ParsedText,
    testing::Values(
        Numeral{"0", 0.0}, Numeral{"-1.5", -1.5}, Numeral{"+2", 2.0}, Numeral{".5", 0.5},
        Numeral{"1e3", 1000.0}, Numeral{"1E-2", 0.01}, Numeral{"inf", unbounded}, Numeral{"-inf", -unbounded},
        Numeral{"1e999", unbounded}, Numeral{"-1e999", -unbounded}, Numeral{"1e-999", 0.0},
        Numeral{"-1E-999", 0.0}, Numeral{"", {}}, Numeral{" 1", {}}, Numeral{"1 ", {}}, Numeral{"\n1", {}},
        Numeral{"1x", {}}, Numeral{"1e999x", {}}, Numeral{"1,5", {}}, Numeral{"--1", {}}, Numeral{"+-1", {}},
        Numeral{"++1", {}}, Numeral{"+", {}}, Numeral{"0x10", {}}, Numeral{"0x1p4", {}}));

TEST_P(ParsedText, TakesANumberFromEndToEnd) {
    EXPECT_EQ(Text::parseNumber(GetParam().text), GetParam().expected) << '"' << GetParam().text << '"';
}

TEST(ParsedNumber, OutOfRangeIsJudgedByItsSizeAndNotByItsExponent) {
    const std::string zeros(400, '0');
    EXPECT_EQ(Text::parseNumber("0." + zeros + "1"), 0.0);
    EXPECT_EQ(Text::parseNumber("1" + zeros), unbounded);
    EXPECT_EQ(Text::parseNumber("-1" + zeros + "e-5"), -unbounded);
    EXPECT_EQ(Text::parseNumber("0." + zeros + "1e5"), 0.0);
}

/// Writes one and a half as "1,5".
class DecimalComma : public std::numpunct<char> {
protected:
    char do_decimal_point() const override { return ','; }
};

TEST(ParsedNumber, OutOfRangeKeepsItsPointWhateverTheGlobalLocale) {
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new DecimalComma));
    const std::optional<double> number = Text::parseNumber("1.5e-999");
    std::locale::global(before);
    EXPECT_EQ(number, 0.0);
}

TEST(ParsedNumber, MayBeNotANumber) {
    const std::optional<double> number = Text::parseNumber("nan");
    ASSERT_TRUE(number);
    EXPECT_TRUE(std::isnan(*number));
}

struct Whole {
    double value;
    const char* expected;
};

class RoundedText : public testing::TestWithParam<Whole> {};

INSTANTIATE_TEST_SUITE_P(
    WholeNumber, RoundedText,
    testing::Values(
        Whole{0, "0"}, Whole{0.4, "0"}, Whole{-0.4, "0"}, Whole{0.5, "1"}, Whole{2.5, "3"}, Whole{-2.5, "-3"},
        Whole{1234567.8, "1234568"}, Whole{1e15, "1000000000000000"}));

TEST_P(RoundedText, RoundsHalvesAwayFromZero) {
    EXPECT_EQ(Text::whole(GetParam().value), GetParam().expected);
}

TEST(WholeNumberText, OfTheLargestNumberHasAllItsDigits) {
    EXPECT_EQ(Text::whole(std::numeric_limits<double>::max()).size(), 309U);
}

TEST(FixedText, HasAsManyDigitsAsAskedFor) {
    EXPECT_EQ(Text::fixed(3.14159, 2), "3.14");
    EXPECT_EQ(Text::fixed(3, 3), "3.000");
    EXPECT_EQ(Text::fixed(-0.25, 1), "-0.2");
    EXPECT_EQ(Text::fixed(12.75, 0), "13");
}

TEST(FixedText, OfTheLargestNumberHasAllItsDigits) {
    EXPECT_EQ(Text::fixed(-std::numeric_limits<double>::max(), 3).size(), 1U + 309 + 1 + 3);
}

TEST(PrintableText, HasAQuestionMarkForEveryControlCharacter) {
    EXPECT_EQ(Text::printable(std::string_view("a\x1B[31m\n\tb\0\x7F", 11)), "a?[31m??b??");
}

TEST(PrintableText, HasAQuestionMarkForTheControlCharactersBehindAscii) {
    EXPECT_EQ(Text::printable("a\u0080\u009B31m\u009F\u00A0b"), "a??31m?\u00A0b");
}

TEST(PrintableText, HasAQuestionMarkForWhatTurnsTheLettersAround) {
    EXPECT_EQ(Text::printable("a\u202Eb\u202A\u2066c\u2069\u200E\u200F\u061Cd\u2028\u2029"), "a?b??c????d??");
    EXPECT_EQ(Text::printable("\u200Da\u2070\u2065"), "\u200Da\u2070\u2065");
}

TEST(PrintableText, HasNoByteThatBelongsToNoCharacter) {
    EXPECT_EQ(Text::printable("a\x9B\xC3"), "a\uFFFD\uFFFD");
}

TEST(PrintableText, KeepsLettersOfEveryScript) {
    EXPECT_EQ(Text::printable("Bücher “1”…"), "Bücher “1”…");
}

TEST(NumberText, KeepsItsPointWhereTheLocaleHasAComma) {
    const test::MadeLocale german("de_DE");
    if (!german.isMade()) {
        TARNWICK_CANNOT_RUN("localedef is missing");
    }
    ASSERT_NE(std::setlocale(LC_NUMERIC, german.name()), nullptr);
    ASSERT_STREQ(std::localeconv()->decimal_point, ",");

    const std::string fixed = Text::fixed(1.5, 1);
    const std::optional<double> withPoint = Text::parseNumber("1.5");
    const std::optional<double> withComma = Text::parseNumber("1,5");

    std::setlocale(LC_NUMERIC, "C");
    EXPECT_EQ(fixed, "1.5");
    EXPECT_EQ(withPoint, 1.5);
    EXPECT_EQ(withComma, std::nullopt);
}

} // namespace
} // namespace tarnwick
