// Characters of text that may be malformed.
#include "core/Utf8.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tarnwick {

namespace {

std::u32string charactersOf(std::string_view text) {
    std::u32string characters;
    while (!text.empty()) {
        characters += Utf8::takeCharacter(text);
    }
    return characters;
}

} // namespace

struct Utf8Text {
    std::string name;
    std::string bytes;
    std::u32string characters;
};

class Utf8Characters : public testing::TestWithParam<Utf8Text> {};

TEST_P(Utf8Characters, AreTakenOneByOne) {
    EXPECT_EQ(charactersOf(GetParam().bytes), GetParam().characters);
    EXPECT_EQ(Utf8::length(GetParam().bytes), GetParam().characters.size());
}

INSTANTIATE_TEST_SUITE_P(
    WellFormed, Utf8Characters,
    testing::Values(
        Utf8Text{"Empty", "", U""}, Utf8Text{"OfEachLength", "aä€😀", U"aä€😀"},
        Utf8Text{"Null", std::string("a\0b", 3), std::u32string(U"a\0b", 3)},
        Utf8Text{"SmallestOfEachLength", "\u0080\u0800\U00010000", U"\u0080\u0800\U00010000"},
        Utf8Text{"LargestOfEachLength", "\x7F\u07FF\uFFFF\U0010FFFF", U"\x7F\u07FF\uFFFF\U0010FFFF"},
        Utf8Text{"BesideTheSurrogates", "\uD7FF\uE000", U"\uD7FF\uE000"}),
    [](const auto& test) { return test.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Malformed, Utf8Characters,
    testing::Values(
        Utf8Text{"LoneContinuation", "\x80z", U"\uFFFDz"},
        Utf8Text{"NoFirstByte", "\xFF\xF8z", U"\uFFFD\uFFFDz"},
        Utf8Text{"OverlongOfTwoBytes", "\xC1\xBF", U"\uFFFD\uFFFD"},
        Utf8Text{"OverlongOfThreeBytes", "\xE0\x9F\xBF", U"\uFFFD\uFFFD\uFFFD"},
        Utf8Text{"OverlongOfFourBytes", "\xF0\x8F\xBF\xBF", U"\uFFFD\uFFFD\uFFFD\uFFFD"},
        Utf8Text{"FirstSurrogate", "\xED\xA0\x80", U"\uFFFD\uFFFD\uFFFD"},
        Utf8Text{"LastSurrogate", "\xED\xBF\xBF", U"\uFFFD\uFFFD\uFFFD"},
        Utf8Text{"BeyondTheLastCharacter", "\xF4\x90\x80\x80", U"\uFFFD\uFFFD\uFFFD\uFFFD"},
        Utf8Text{"CutOffAtTheEnd", "a\xF0\x9F\x98", U"a\uFFFD\uFFFD\uFFFD"},
        Utf8Text{"CutOffByALetter", "\xE2\x82z", U"\uFFFD\uFFFDz"},
        Utf8Text{"CutOffByACharacter", "\xE2ä", U"\uFFFDä"}),
    [](const auto& test) { return test.param.name; });

TEST(Utf8CharactersTest, AreNotReadBeyondTheEndOfTheText) {
    const std::string_view whole = "a€";

    EXPECT_EQ(charactersOf(whole.substr(0, 3)), U"a\uFFFD\uFFFD");
}

} // namespace tarnwick
