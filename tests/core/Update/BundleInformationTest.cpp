// What a bundle tells of itself.
#include "core/Update/BundleInformation.h"

#include "tests/support/CaseName.h"
#include "tests/support/MinisignKey.h"

#include <gtest/gtest.h>

namespace tarnwick {
namespace {

using test::MinisignKey;

nlohmann::json information() {
    return {
        {"version", "0.1.0"},
        {"feedAddress", "https://one.example/tarnwick/feed.json"},
        {"publicKeys", {MinisignKey(1).publicLine(), MinisignKey(2).publicLine()}},
        {"checkInterval", 43200},
        {"channel", "beta"}};
}

BundleInformation parsedInformation(const nlohmann::json& object) {
    const auto parsed = parseBundleInformation(object.dump());
    const auto* const mistake = std::get_if<DocumentMistake>(&parsed);
    EXPECT_FALSE(mistake) << mistake->text;
    return mistake != nullptr ? BundleInformation{} : std::get<BundleInformation>(parsed);
}

std::string mistakeOf(const std::string& text) {
    const auto parsed = parseBundleInformation(text);
    const auto* const mistake = std::get_if<DocumentMistake>(&parsed);
    return mistake != nullptr ? mistake->text : "";
}

TEST(BundleInformation, HasWhatTheFileSays) {
    const BundleInformation parsed = parsedInformation(information());
    EXPECT_EQ(parsed.version.text(), "0.1.0");
    ASSERT_TRUE(parsed.source);
    EXPECT_EQ(parsed.source->feedAddress, "https://one.example/tarnwick/feed.json");
    ASSERT_EQ(parsed.source->publicKeys.size(), 2U);
    EXPECT_EQ(parsed.source->publicKeys[1], Minisign::parsePublicKey(MinisignKey(2).publicLine()));
    EXPECT_EQ(parsed.checkInterval, std::chrono::hours(12));
    EXPECT_EQ(parsed.channel, "beta");
}

TEST(BundleInformation, OfABuildWithoutUpdaterHasNoSource) {
    const BundleInformation parsed = parsedInformation({{"version", "0.1.0"}});
    EXPECT_FALSE(parsed.source);
    EXPECT_EQ(parsed.checkInterval, std::chrono::hours(24));
    EXPECT_EQ(parsed.channel, "stable");
}

TEST(BundleInformation, MayHaveMembersOfLaterVersions) {
    nlohmann::json object = information();
    object["later"] = {{"a", 1}};
    EXPECT_TRUE(parsedInformation(object).source);
}

class CheckInterval : public testing::TestWithParam<int> {};

INSTANTIATE_TEST_SUITE_P(BundleInformation, CheckInterval, testing::Values(3600, 86400, 30 * 86400));

TEST_P(CheckInterval, IsFromAnHourToThirtyDays) {
    nlohmann::json object = information();
    object["checkInterval"] = GetParam();
    EXPECT_EQ(parsedInformation(object).checkInterval, std::chrono::seconds(GetParam()));
}

struct WrongMember {
    std::string name;
    std::string key;
    nlohmann::json value; ///< discarded: the member is missing
    std::string mistake;

    friend void PrintTo(const WrongMember& wrong, std::ostream* out) { *out << wrong.name; }
};

class WrongInformation : public testing::TestWithParam<WrongMember> {};

const nlohmann::json missing(nlohmann::json::value_t::discarded);
const std::string mustBeAddress = "feedAddress must be an address that begins with https://";
const std::string mustBeKeys = "publicKeys must be a list of 1 to 8 elements";
const std::string mustBeInterval = "checkInterval must be a whole number from 3600 to 2592000";

INSTANTIATE_TEST_SUITE_P(
    BundleInformation, WrongInformation,
    testing::Values(
        WrongMember{"NoVersion", "version", missing, "version must be a text of up to 4096 bytes"},
        WrongMember{"VersionIsNumber", "version", 1, "version must be a text of up to 4096 bytes"},
        WrongMember{"VersionIsNone", "version", "1.2-rc1", "version must be a version"},
        WrongMember{"NoAddress", "feedAddress", missing, "feedAddress must be a text of up to 2048 bytes"},
        WrongMember{"PlainAddress", "feedAddress", "http://one.example/feed.json", mustBeAddress},
        WrongMember{"EmptyAddress", "feedAddress", "", mustBeAddress},
        WrongMember{"NoKeys", "publicKeys", missing, mustBeKeys},
        WrongMember{"EmptyKeys", "publicKeys", nlohmann::json::array(), mustBeKeys},
        WrongMember{
            "TooManyKeys", "publicKeys", std::vector<std::string>(9, MinisignKey(1).publicLine()),
            mustBeKeys},
        WrongMember{"KeysAreText", "publicKeys", MinisignKey(1).publicLine(), mustBeKeys},
        WrongMember{
            "SecondKeyIsNone",
            "publicKeys",
            {MinisignKey(1).publicLine(), "RWx"},
            "publicKeys[1] must be a public key of minisign"},
        WrongMember{"KeyIsNumber", "publicKeys", {1}, "publicKeys[0] must be a public key of minisign"},
        WrongMember{"TooOften", "checkInterval", 3599, mustBeInterval},
        WrongMember{"TooSeldom", "checkInterval", 2592001, mustBeInterval},
        WrongMember{"IntervalIsNegative", "checkInterval", -86400, mustBeInterval},
        WrongMember{"IntervalIsFraction", "checkInterval", 86400.0, mustBeInterval},
        WrongMember{"IntervalIsText", "checkInterval", "86400", mustBeInterval},
        WrongMember{"ChannelIsEmpty", "channel", "", "channel must be a word"},
        WrongMember{"ChannelIsLong", "channel", std::string(33, 'a'), "channel must be a word"},
        WrongMember{"ChannelHasBlank", "channel", "a b", "channel must be a word"}),
    test::caseName);

TEST_P(WrongInformation, IsRefusedWithAReason) {
    nlohmann::json object = information();
    object.erase(GetParam().key);
    if (!GetParam().value.is_discarded()) {
        object[GetParam().key] = GetParam().value;
    }
    EXPECT_EQ(mistakeOf(object.dump()), GetParam().mistake);
}

TEST(BundleInformation, ThatIsNoObjectIsRefusedWithAReason) {
    EXPECT_EQ(mistakeOf(""), "line 1: it is empty");
    EXPECT_EQ(mistakeOf("[]"), "line 1: it must be one JSON object: { ... }");
    EXPECT_EQ(mistakeOf("{\"version\": \"1\",\n \"version\": \"2\"}"), "version is there twice");
}

TEST(BundleInformation, ThatIsTooLargeIsRefusedUnread) {
    std::string text = information().dump();
    text.resize(largestBundleInformation, ' ');
    EXPECT_EQ(mistakeOf(text), "");
    EXPECT_EQ(mistakeOf(text + " "), "it has more than 65536 bytes");
}

} // namespace
} // namespace tarnwick
