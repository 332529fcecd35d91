// Settings as they are written behind --set, and how the usage texts list them.
#include "app/CommandLine/SettingArgument.h"

#include "app/Preferences/Preferences.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <sstream>
#include <string_view>

namespace tarnwick {

namespace {

std::string error(const std::string& argument) {
    const auto parsed = parseSetting(argument);
    const auto* error = std::get_if<UsageError>(&parsed);
    return error != nullptr ? error->text : "";
}

class AcceptedSetting : public testing::TestWithParam<std::pair<std::string, UserDefaults::Value>> {};

class RefusedSetting : public testing::TestWithParam<std::string> {};

UserDefaults::Value text(const std::string& value) {
    return value;
}

} // namespace

TEST_P(AcceptedSetting, HasTheTypeOfItsKeyAndTheFormOfItsRule) {
    const auto& [argument, value] = GetParam();

    const auto parsed = parseSetting(argument);

    ASSERT_EQ(parsed.index(), 0u) << error(argument);
    EXPECT_EQ(std::get<0>(parsed), Setting(argument.substr(0, argument.find('=')), value));
}

INSTANTIATE_TEST_SUITE_P(
    Settings, AcceptedSetting,
    testing::Values(
        std::pair("Hostname=example.org", text("example.org")),
        std::pair("Hostname= 2001:db8::9 ", text("2001:db8::9")),
        std::pair("Hostname=https://one.example/?a=b", text("one.example")),
        std::pair("PingTimeout=2.5", 2.5), std::pair("PingTimeout=1e1", 10.0),
        std::pair("PingTimeout=0.5", 0.5), std::pair("PingInterval=5", 5.0),
        std::pair("PingInterval=60", 60.0), std::pair("PingInterval=1.0", 1.0),
        std::pair("PingTimeout=0.01", 0.01), std::pair("PingTimeout=3600", 3600.0),
        std::pair("SlowPingLowThreshold=250", 250.0), std::pair("ShowIcon=true", true),
        std::pair("ShowText=false", false), std::pair("ShowNotifications=true", true),
        std::pair("PacketLossTextMode=off", text("off")),
        std::pair("PacketLossTextMode=whenLossy", text("whenLossy")),
        std::pair("PacketLossTextMode=always", text("always")), std::pair("PanelFace=auto", text("auto")),
        std::pair("PanelFace=label", text("label")), std::pair("PanelFace=wide", text("wide")),
        std::pair("PanelFace=square", text("square")), std::pair("PanelInk=light", text("light")),
        std::pair("ShowPacketLossText=true", true)));

TEST_P(RefusedSetting, IsNamedInOneLine) {
    const std::string message = error(GetParam());

    EXPECT_THAT(message, testing::HasSubstr(GetParam().substr(0, GetParam().find('='))));
    EXPECT_THAT(message, testing::Not(testing::ContainsRegex("[\r\n]")));
}

INSTANTIATE_TEST_SUITE_P(
    UnknownKey, RefusedSetting,
    testing::Values("Nonsense=1", "hostname=example.org", "PingTimeout =4", "Hostname2=x"));
INSTANTIATE_TEST_SUITE_P(
    NoValue, RefusedSetting, testing::Values("PingTimeout", "PingTimeout=", "Hostname=", "Hostname=  "));
INSTANTIATE_TEST_SUITE_P(
    NoHost, RefusedSetting, testing::Values("Hostname=a=b", "Hostname=a b", "Hostname=a:b", "Hostname=[a]"));
INSTANTIATE_TEST_SUITE_P(
    NoNumber, RefusedSetting,
    testing::Values(
        "PingTimeout=fast", "PingTimeout=true", "PingTimeout=4s", "PingTimeout= 4", "PingTimeout=0",
        "PingTimeout=-1", "PingTimeout=nan", "PingTimeout=inf", "PingTimeout=1e999", "PingTimeout=0x10",
        "PingTimeout=0.009", "PingTimeout=3601", "PingTimeout=1e300", "PingInterval=0", "PingInterval=61",
        "PingInterval=1.5", "PingInterval=600", "PingInterval=-1", "PingInterval=", "PingInterval=one",
        "PingInterval=nan", "PingInterval=0x10", "SlowPingLowThreshold=0", "SlowPingLowThreshold=slow"));
INSTANTIATE_TEST_SUITE_P(
    NoChoice, RefusedSetting,
    testing::Values(
        "ShowIcon=1", "ShowIcon=yes", "ShowIcon=True", "ShowText=", "ShowNotifications=0",
        "PacketLossTextMode=sometimes", "PacketLossTextMode=Always",
        "PacketLossTextMode=", "ShowPacketLossText=1", "PanelFace=tall", "PanelFace=", "PanelInk=red"));

TEST(SettingArgument, AnErrorSaysWhatWasExpected) {
    EXPECT_EQ(
        error("PingTimeout=soon"), "PingTimeout must be a number of seconds, 0.01 to 3600, not \"soon\"");
    EXPECT_EQ(error("ShowIcon=1"), "ShowIcon must be true or false, not \"1\"");
    EXPECT_EQ(
        error("PacketLossTextMode=never"),
        "PacketLossTextMode must be off, whenLossy or always, not \"never\"");
    EXPECT_EQ(
        error("Hostname=one example"),
        "Hostname must be a host name or address, not \"one example\": it has a blank in it");
    EXPECT_EQ(
        error("Hostname=fe80::1"), "Hostname must be a host name or address, not \"fe80::1\": a link-local "
                                   "address needs its interface, as "
                                   "in fe80::1%eth0");
    EXPECT_EQ(error("Nonsense=1"), "unknown setting \"Nonsense\"");
    EXPECT_EQ(error("PingTimeout"), "--set takes KEY=VALUE, not \"PingTimeout\"");
}

TEST(SettingArgument, EveryDefaultIsAValueOfItsSetting) {
    for (const SettingRow& row : settingTable) {
        const std::string argument = std::string(row.key) + "=" + defaultText(row);
        const auto parsed = parseSetting(argument);
        ASSERT_EQ(parsed.index(), 0u) << error(argument);
        EXPECT_EQ(std::get<0>(parsed), Setting(row.key, defaultOf(row)));
    }
}

TEST(SettingArgument, EveryListedChoiceIsAValueOfItsSetting) {
    for (const SettingRow& row : settingTable) {
        for (const std::string_view choice : choicesOf(row)) {
            EXPECT_TRUE(parsedSetting(row, std::string(choice))) << row.key << "=" << choice;
            EXPECT_THAT(row.values, testing::HasSubstr(choice)) << row.key;
        }
        const bool isListed =
            row.values.find(" or ") != std::string_view::npos && row.rule != SettingRule::host;
        EXPECT_NE(choicesOf(row).empty(), isListed) << row.key;
    }
}

TEST(SettingArgument, TheUsageListsEverySettingThatIsForUsers) {
    constexpr std::array notForUsers{"ShowPacketLossText", "LastUpdateCheckDate", "SkippedUpdate"};
    std::istringstream usage(settingsUsage());
    std::string line;
    std::getline(usage, line);
    EXPECT_EQ(line, "Settings and their defaults:");
    for (const SettingRow& row : settingTable) {
        if (std::ranges::find(notForUsers, std::string_view(row.key)) != notForUsers.end()) {
            continue;
        }
        std::getline(usage, line);
        EXPECT_THAT(line, testing::StartsWith("  " + std::string(row.key) + "=" + defaultText(row) + "  "));
        EXPECT_THAT(line, testing::EndsWith("  " + description(row)));
        EXPECT_LE(line.size(), 100u);
    }
    EXPECT_FALSE(std::getline(usage, line));
}

} // namespace tarnwick
