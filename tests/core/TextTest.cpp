// Numbers and texts that read the same under every locale.
#include "core/Text.h"

#include "tests/core/Required.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdlib>
#include <limits>
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

struct Numeral {
    const char* text;
    std::optional<double> expected;
};

class ParsedText : public testing::TestWithParam<Numeral> {};

INSTANTIATE_TEST_SUITE_P(
    Number, ParsedText,
    testing::Values(
        Numeral{"0", 0.0}, Numeral{"-1.5", -1.5}, Numeral{"+2", 2.0}, Numeral{"1e3", 1000.0},
        Numeral{"1E-2", 0.01}, Numeral{"0x10", {}}, Numeral{"-0X1p4", {}},
        Numeral{"inf", std::numeric_limits<double>::infinity()},
        Numeral{"1e999", std::numeric_limits<double>::infinity()}, Numeral{"", {}}, Numeral{" 1", {}},
        Numeral{"1 ", {}}, Numeral{"\n1", {}}, Numeral{"1x", {}}, Numeral{"1,5", {}}, Numeral{"--1", {}}));

TEST_P(ParsedText, TakesANumberFromEndToEnd) {
    EXPECT_EQ(Text::parseNumber(GetParam().text), GetParam().expected) << '"' << GetParam().text << '"';
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

TEST(PrintableText, KeepsLettersOfEveryScript) {
    EXPECT_EQ(Text::printable("Bücher “1”…"), "Bücher “1”…");
}

/// A locale that writes a comma for the decimal point, until the end of the test. Few machines have one
/// installed, so it is made.
class CommaLocale {
public:
    CommaLocale() {
        const std::string file = folder_.path() / "de_DE.UTF-8";
        const std::string command = "localedef -i de_DE -f UTF-8 '" + file + "' >/dev/null 2>&1";
        setenv("LOCPATH", folder_.path().c_str(), 1);
        isSet_ = std::system(command.c_str()) == 0 && std::setlocale(LC_ALL, "de_DE.UTF-8") != nullptr;
    }

    CommaLocale(const CommaLocale&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;

    ~CommaLocale() {
        std::setlocale(LC_ALL, "C");
        unsetenv("LOCPATH");
    }

    [[nodiscard]] bool isSet() const { return isSet_; }

private:
    test::TemporaryFolder folder_;
    bool isSet_ = false;
};

TEST(NumberText, KeepsItsPointWhereTheLocaleHasAComma) {
    const CommaLocale comma;
    if (!comma.isSet()) {
        TARNWICK_CANNOT_RUN("no locale with a decimal comma can be made");
    }
    EXPECT_EQ(Text::fixed(1.5, 1), "1.5");
    EXPECT_EQ(Text::parseNumber("1.5"), 1.5);
    EXPECT_EQ(Text::parseNumber("1,5"), std::nullopt);
}

} // namespace
} // namespace tarnwick
