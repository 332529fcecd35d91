// What is taken for the object in a file.
#include "core/Storage/JsonObject.h"

#include "tests/support/CaseName.h"

#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <set>
#include <string>

namespace tarnwick {
namespace {

/// An object that holds a list of lists, `depth` deep.
std::string nested(std::size_t depth) {
    return R"({"a":)" + std::string(depth, '[') + std::string(depth, ']') + "}";
}

TEST(JsonObject, HasWhatStandsInTheText) {
    const std::optional<nlohmann::json> object = parseJsonObject(R"({"a": 1, "b": {"c": [2]}})");
    ASSERT_TRUE(object);
    EXPECT_EQ(object->at("a"), 1);
    EXPECT_EQ(object->at("b").at("c").at(0), 2);
}

class NoJsonObject : public testing::TestWithParam<const char*> {};

INSTANTIATE_TEST_SUITE_P(JsonObject, NoJsonObject, testing::Values("", "{", "{} x", "[]", "1", "null"));

TEST_P(NoJsonObject, IsNone) {
    EXPECT_FALSE(parseJsonObject(GetParam()));
}

TEST(JsonObject, OfManyMembersIsReadInTimeProportionalToTheirNumber) {
    const auto secondsFor = [](int members) {
        std::string text = "{";
        for (int member = 0; member < members; ++member) {
            text += (member > 0 ? ",\"" : "\"") + std::to_string(member) + "\":{\"sent\":1}";
        }
        text += "}";
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(parseJsonObject(text).value().size(), static_cast<std::size_t>(members));
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    };
    secondsFor(1000);
    // In quadratic time it would be 256 times as long.
    EXPECT_LT(secondsFor(32'000), 64 * secondsFor(2000));
}

TEST(JsonObject, TellsTheLineOfEachKey) {
    const JsonReading reading = readJsonObject("{\n\"a\":\n1, \"b\": {\n\"c\": 2}\n,\n\n\"d\": 3}");
    EXPECT_FALSE(reading.mistake);
    EXPECT_EQ(reading.lines, (std::map<std::string, int>{{"a", 2}, {"b", 3}, {"d", 7}}));
}

TEST(JsonObject, HasTheLastValueAndLineOfAKeyThatIsThereTwice) {
    const JsonReading reading = readJsonObject("{\"a\": 1,\n\"a\": 2}");
    EXPECT_EQ(reading.object.dump(), R"({"a":2})");
    EXPECT_EQ(reading.lines, (std::map<std::string, int>{{"a", 2}}));
    EXPECT_EQ(reading.repeated, std::set<std::string>{"a"});
}

struct Mistaken {
    std::string name;
    std::string text;
    int line;
    std::string reason;
    std::string before; ///< the part that is read

    friend void PrintTo(const Mistaken& mistaken, std::ostream* out) { *out << mistaken.name; }
};

class MistakenJson : public testing::TestWithParam<Mistaken> {};

INSTANTIATE_TEST_SUITE_P(
    JsonObject, MistakenJson,
    testing::Values(
        Mistaken{
            "TrailingComma", "{\n\"a\": 1,\n}", 3, "unexpected '}'; expected string literal", R"({"a":1})"},
        Mistaken{"List", "[1]", 1, "it must be one JSON object: { ... }", "{}"},
        Mistaken{
            "MissingComma", "{\"a\": 1\n \"b\": 2}", 2, "unexpected string literal; expected '}'",
            R"({"a":1})"},
        Mistaken{"Empty", "", 1, "it is empty", "{}"}, Mistaken{"Blank", " \n\t", 1, "it is empty", "{}"},
        Mistaken{"Comment", "{\"a\": 1,\n // x\n\"b\": 2}", 2, "JSON has no comments", R"({"a":1})"},
        Mistaken{"CommentOfShells", "# x\n{\"b\": 2}", 1, "JSON has no comments", "{}"},
        Mistaken{
            "NumberTooLarge", "{\"a\": 1,\n\"b\": 1e400}", 2, "the number 1e400 is too large", R"({"a":1})"},
        Mistaken{"TooDeep", "{\n" + nested(101).substr(1), 2, "it is nested too deep", ""}),
    test::caseName);

TEST_P(MistakenJson, IsToldWithItsLineAndWhatStandsBeforeIt) {
    const JsonReading reading = readJsonObject(GetParam().text);

    ASSERT_TRUE(reading.mistake);
    EXPECT_EQ(reading.mistake->line, GetParam().line);
    EXPECT_EQ(reading.mistake->text, GetParam().reason);
    if (!GetParam().before.empty()) {
        EXPECT_EQ(reading.object.dump(), GetParam().before);
    }
}

struct Salvaged {
    std::string name;
    std::string text;
    std::string object;
    int line = 0; ///< of the mistake

    friend void PrintTo(const Salvaged& salvaged, std::ostream* out) { *out << salvaged.name; }
};

class SalvagedJson : public testing::TestWithParam<Salvaged> {};

INSTANTIATE_TEST_SUITE_P(
    JsonObject, SalvagedJson,
    testing::Values(
        Salvaged{"TrailingComma", "{\"a\": 1,\n}", R"({"a":1})", 2},
        Salvaged{"LineComment", "{\"a\": 1, // \"x\": 1\n\"b\": 2}", R"({"a":1,"b":2})", 1},
        Salvaged{"BlockComment", "/*\n\"x\": 1\n*/{\"b\": 2}", R"({"b":2})", 1},
        Salvaged{"OpenComment", R"({"a": 1, /* "x": 1})", R"({"a":1})", 1},
        Salvaged{"ShellComment", "{\n# \"x\": 1\n\"b\": 2}", R"({"b":2})", 2},
        Salvaged{"CommentInList", R"({"a": [1, /* x */ 2]})", R"({"a":[1,2]})", 1},
        Salvaged{"MissingComma", "{\"a\": 1\n\"b\": \"x\"\n\"c\": 3}", R"({"a":1,"b":"x","c":3})", 2},
        Salvaged{"MissingValue", "{\"a\":\n\"b\": 2}", R"({"b":2})", 2},
        Salvaged{"MissingQuote", "{\"a\": \"x,\n\"b\": 2}", R"({"b":2})", 1},
        Salvaged{"MissingBraces", R"("a": 1, "b": 2)", R"({"a":1,"b":2})", 1},
        Salvaged{"NumberTooLarge", R"({"a": 1e400, "b": 2})", R"({"b":2})", 1},
        Salvaged{"UnknownWord", R"({"a": yes, "b": 2})", R"({"b":2})", 1},
        Salvaged{"QuotesInTexts", R"({"a": "\"x\": 1", "b\\": 2,})", R"({"a":"\"x\": 1","b\\":2})", 1},
        Salvaged{"NestedTooDeep", "{\"x\":" + std::string(200, '[') + ",\n\"b\": 2}", R"({"b":2})", 1},
        Salvaged{"NestedOneTooDeep", nested(101) + R"(, "b": 2})", R"({"b":2})", 1},
        Salvaged{"NothingToRead", "PingTimeout = 2", "{}", 1}, Salvaged{"Empty", "", "{}", 1}),
    test::caseName);

TEST_P(SalvagedJson, HasEveryMemberThatCanBeRead) {
    const JsonReading reading = salvageJsonObject(GetParam().text);

    ASSERT_TRUE(reading.mistake);
    EXPECT_EQ(reading.mistake->line, GetParam().line);
    EXPECT_EQ(reading.object.dump(), GetParam().object);
}

TEST(JsonObject, SalvagedHasTheLineOfEachKeyAndThoseThatAreRepeated) {
    const JsonReading reading = salvageJsonObject("{\"a\": 1\n// x\n\"b\":\n[\n2],\n\"a\": 3}");
    EXPECT_EQ(reading.object.dump(), R"({"a":3,"b":[2]})");
    EXPECT_EQ(reading.lines, (std::map<std::string, int>{{"a", 6}, {"b", 3}}));
    EXPECT_EQ(reading.repeated, std::set<std::string>{"a"});
}

TEST(JsonObject, SalvagingEndsSoonWhateverTheTextHolds) {
    std::string text;
    for (int member = 0; member < 100'000; ++member) {
        text += "\"a\":[";
    }
    EXPECT_EQ(salvageJsonObject(text).object.dump(), "{}");

    std::string escaped = "{\"a\": x, \"";
    for (int quote = 0; quote < 1'000'000; ++quote) {
        escaped += "\\\"";
    }
    EXPECT_EQ(salvageJsonObject(escaped + "\n\"b\": 2}").object.dump(), R"({"b":2})");
}

TEST(JsonObject, WithoutAMistakeIsSalvagedAsItIs) {
    const JsonReading reading = salvageJsonObject(R"({"a": {"b": 1}})");
    EXPECT_FALSE(reading.mistake);
    EXPECT_EQ(reading.object.dump(), R"({"a":{"b":1}})");
}

TEST(JsonObject, MayHoldValuesAHundredDeep) {
    EXPECT_TRUE(parseJsonObject(nested(100)));
    EXPECT_FALSE(parseJsonObject(nested(101)));
    EXPECT_FALSE(parseJsonObject(nested(100'000)));
}

} // namespace
} // namespace tarnwick
