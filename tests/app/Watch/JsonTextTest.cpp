// The library must read the same values back.
#include "app/Watch/JsonText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <nlohmann/json.hpp>
#include <rapidcheck/gtest.h>

namespace tarnwick {

namespace {

using Json = nlohmann::ordered_json;

template<class Value>
std::string objectWith(const Value& value) {
    JsonText object;
    object.add("key", value);
    return object.take();
}

template<class Value>
Json readBack(const Value& value) {
    return Json::parse(objectWith(value)).at("key");
}

} // namespace

TEST(JsonText, WithoutMembersIsAnEmptyObject) {
    EXPECT_EQ(JsonText().take(), "{}");
}

TEST(JsonText, MembersKeepTheirOrder) {
    JsonText object;
    object.add("z", 1);
    object.add("a", true);
    object.addNull("m");

    EXPECT_EQ(object.take(), R"({"z":1,"a":true,"m":null})");
}

TEST(JsonText, AnObjectInsideEndsBeforeTheMembersBehindIt) {
    JsonText object;
    object.add("before", 1);
    object.beginObject("inside");
    object.add("x", 2);
    object.add("y", 3);
    object.endObject();
    object.beginObject("empty");
    object.endObject();
    object.add("after", 4);

    EXPECT_EQ(object.take(), R"({"before":1,"inside":{"x":2,"y":3},"empty":{},"after":4})");
}

TEST(JsonText, ATextThatEndsWithABraceIsFollowedByAComma) {
    JsonText object;
    object.add("a", "{");
    object.add("b", "}");

    EXPECT_EQ(object.take(), R"({"a":"{","b":"}"})");
}

TEST(JsonText, AnAbsentValueIsNull) {
    EXPECT_EQ(objectWith(std::optional<double>()), R"({"key":null})");
    EXPECT_EQ(objectWith(std::optional<std::string>()), R"({"key":null})");
    EXPECT_EQ(objectWith(std::optional<double>(0.5)), R"({"key":0.5})");
    EXPECT_EQ(objectWith(std::optional<std::string>("")), R"({"key":""})");
}

TEST(JsonText, AWholeFloatingPointNumberKeepsItsPoint) {
    EXPECT_EQ(objectWith(40.0), R"({"key":40.0})");
    EXPECT_EQ(objectWith(-0.0), R"({"key":-0.0})");
}

TEST(JsonText, NumbersThatJsonDoesNotKnowAreNull) {
    EXPECT_TRUE(readBack(std::numeric_limits<double>::quiet_NaN()).is_null());
    EXPECT_TRUE(readBack(std::numeric_limits<double>::infinity()).is_null());
    EXPECT_TRUE(readBack(-std::numeric_limits<double>::infinity()).is_null());
}

TEST(JsonText, ExtremeNumbersReadBackAsTheSame) {
    for (const double value :
         {std::numeric_limits<double>::max(), std::numeric_limits<double>::lowest(),
          std::numeric_limits<double>::denorm_min(), 1e22, 1e-7, 0.1 + 0.2}) {
        EXPECT_EQ(readBack(value).get<double>(), value);
    }
    for (const std::int64_t value :
         {std::numeric_limits<std::int64_t>::max(), std::numeric_limits<std::int64_t>::min()}) {
        EXPECT_EQ(readBack(value).get<std::int64_t>(), value);
    }
}

TEST(JsonText, WhatIsNotUtf8IsMarked) {
    EXPECT_EQ(readBack("caf\xE9!"), "caf\uFFFD!");
}

TEST(JsonText, ControlCharactersQuotesAndBackslashesAreEscaped) {
    EXPECT_EQ(objectWith("a\"b\\c\n\x01\x7F"), "{\"key\":\"a\\\"b\\\\c\\n\\u0001\x7F\"}");
}

TEST(JsonText, AListHasItsTextsInOrder) {
    const auto listWith = [](const std::vector<std::string>& values) { return objectWith(values); };

    EXPECT_EQ(listWith({}), R"({"key":[]})");
    EXPECT_EQ(listWith({"one"}), R"({"key":["one"]})");
    EXPECT_EQ(listWith({"a \"b\"", "", "two"}), R"({"key":["a \"b\"","","two"]})");
}

RC_GTEST_PROP(JsonText, AnyFloatingPointNumberReadsBackAsTheSame, (double value)) {
    const Json read = readBack(value);
    RC_ASSERT(read.is_number_float());
    RC_ASSERT(read.get<double>() == value);
}

RC_GTEST_PROP(JsonText, AnyWholeNumberReadsBackAsTheSame, (std::int64_t value)) {
    const Json read = readBack(value);
    RC_ASSERT(read.is_number_integer());
    RC_ASSERT(read.get<std::int64_t>() == value);
}

RC_GTEST_PROP(JsonText, AnyTextStaysOneLineAndReadsAsTheLibraryWouldWriteIt, (const std::string& value)) {
    const std::string written = objectWith(value);
    RC_ASSERT(written.find('\n') == std::string::npos);
    const std::string expected = Json(value).dump(-1, ' ', false, Json::error_handler_t::replace);
    RC_ASSERT(Json::parse(written).at("key") == Json::parse(expected));
}

} // namespace tarnwick
