// What is taken for the object in a file.
#include "core/Storage/JsonObject.h"

#include <gtest/gtest.h>

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

TEST(JsonObject, MayHoldValuesAHundredDeep) {
    EXPECT_TRUE(parseJsonObject(nested(100)));
    EXPECT_FALSE(parseJsonObject(nested(101)));
    EXPECT_FALSE(parseJsonObject(nested(100'000)));
}

} // namespace
} // namespace tarnwick
