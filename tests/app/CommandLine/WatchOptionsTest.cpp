// The command line of the terminal program.
#include "app/CommandLine/WatchOptions.h"

#include "app/Preferences/Preferences.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck.h>

namespace tarnwick {

namespace {

using Arguments = std::vector<std::string>;
using Setting = std::pair<std::string, UserDefaults::Value>;

/// What the arguments mean; fails the test when they are refused.
WatchOptions accepted(const Arguments& arguments) {
    const auto parsed = parseWatchOptions(arguments);
    if (const auto* error = std::get_if<UsageError>(&parsed)) {
        ADD_FAILURE() << error->text;
        return {};
    }
    return std::get<WatchOptions>(parsed);
}

/// Why the arguments are refused; fails the test when they are not.
std::string refused(const Arguments& arguments) {
    const auto parsed = parseWatchOptions(arguments);
    const auto* error = std::get_if<UsageError>(&parsed);
    EXPECT_NE(error, nullptr) << testing::PrintToString(arguments);
    return error != nullptr ? error->text : "";
}

Setting text(const std::string& key, const std::string& value) {
    return {key, value};
}

MATCHER(IsOneLine, "is one line of text") {
    return !arg.empty() && arg.find_first_of("\r\n") == std::string::npos;
}

} // namespace

TEST(Options, WithoutArgumentsEverythingIsAsStored) {
    const WatchOptions options = accepted({});

    EXPECT_FALSE(options.json);
    EXPECT_FALSE(options.help);
    EXPECT_FALSE(options.version);
    EXPECT_EQ(options.forSeconds, std::nullopt);
    EXPECT_THAT(options.settings, testing::IsEmpty());
}

TEST(Options, EachOptionIsTaken) {
    EXPECT_TRUE(accepted({"--json"}).json);
    EXPECT_TRUE(accepted({"--help"}).help);
    EXPECT_TRUE(accepted({"--version"}).version);
    EXPECT_EQ(accepted({"--for", "90"}).forSeconds, 90);
    EXPECT_EQ(accepted({"--for=2.5"}).forSeconds, 2.5);
    EXPECT_THAT(
        accepted({"--set", "PingInterval=5"}).settings, testing::ElementsAre(Setting("PingInterval", 5.0)));
    EXPECT_THAT(
        accepted({"--set=PingInterval=5"}).settings, testing::ElementsAre(Setting("PingInterval", 5.0)));
}

TEST(Options, AllOptionsGoTogetherInAnyOrder) {
    for (const Arguments& arguments :
         {Arguments{"--json", "--for", "3", "--set", "ShowIcon=false", "example.org"},
          Arguments{"example.org", "--set", "ShowIcon=false", "--for", "3", "--json"}}) {
        const WatchOptions options = accepted(arguments);

        EXPECT_TRUE(options.json);
        EXPECT_EQ(options.forSeconds, 3);
        EXPECT_THAT(
            options.settings,
            testing::ElementsAre(Setting("ShowIcon", false), text("Hostname", "example.org")));
    }
}

TEST(Options, SettingsKeepTheirOrderSoThatTheLastOfAKeyWins) {
    EXPECT_THAT(
        accepted({"--set", "PingTimeout=2", "--set", "PingInterval=5", "--set", "PingTimeout=3"}).settings,
        testing::ElementsAre(
            Setting("PingTimeout", 2.0), Setting("PingInterval", 5.0), Setting("PingTimeout", 3.0)));
}

TEST(Options, TheHostArgumentWinsOverTheHostSettingWhereverItStands) {
    EXPECT_THAT(
        accepted({"argument.example", "--set", "Hostname=setting.example"}).settings,
        testing::ElementsAre(text("Hostname", "setting.example"), text("Hostname", "argument.example")));
}

TEST(Options, WhiteSpaceAroundAHostIsDropped) {
    EXPECT_THAT(accepted({" example.org\t"}).settings, testing::ElementsAre(text("Hostname", "example.org")));
    EXPECT_THAT(
        accepted({"--set", "Hostname= example.org "}).settings,
        testing::ElementsAre(text("Hostname", "example.org")));
}

TEST(Options, AfterTwoDashesEverythingIsAHost) {
    EXPECT_THAT(accepted({"--", "--json"}).settings, testing::ElementsAre(text("Hostname", "--json")));
}

TEST(Options, OneCommandLineDoesNotLeakIntoTheNext) {
    static_cast<void>(refused({"--json", "--nonsense", "example.org"}));

    EXPECT_THAT(accepted({"example.org"}).settings, testing::ElementsAre(text("Hostname", "example.org")));
    EXPECT_FALSE(accepted({}).json);
}

// Settings.

class AcceptedSetting : public testing::TestWithParam<std::pair<std::string, Setting>> {};

TEST_P(AcceptedSetting, HasTheTypeOfItsKey) {
    const auto parsed = parseSetting(GetParam().first);

    ASSERT_EQ(parsed.index(), 0u) << std::get<UsageError>(parsed).text;
    EXPECT_EQ(std::get<0>(parsed), GetParam().second);
}

INSTANTIATE_TEST_SUITE_P(
    Options, AcceptedSetting,
    testing::Values(
        std::pair("Hostname=example.org", text("Hostname", "example.org")),
        std::pair("Hostname=2001:db8::9", text("Hostname", "2001:db8::9")),
        std::pair("Hostname=a=b", text("Hostname", "a=b")),
        std::pair("PingTimeout=2.5", Setting("PingTimeout", 2.5)),
        std::pair("PingTimeout=1e1", Setting("PingTimeout", 10.0)),
        std::pair("PingInterval=5", Setting("PingInterval", 5.0)),
        std::pair("PingInterval=600", Setting("PingInterval", 600.0)),
        std::pair("PingInterval=0.2", Setting("PingInterval", 0.2)),
        std::pair("SlowPingLowThreshold=250", Setting("SlowPingLowThreshold", 250.0)),
        std::pair("ShowIcon=true", Setting("ShowIcon", true)),
        std::pair("ShowText=false", Setting("ShowText", false)),
        std::pair("ShowNotifications=true", Setting("ShowNotifications", true)),
        std::pair("PacketLossTextMode=off", text("PacketLossTextMode", "off")),
        std::pair("PacketLossTextMode=whenLossy", text("PacketLossTextMode", "whenLossy")),
        std::pair("PacketLossTextMode=always", text("PacketLossTextMode", "always")),
        std::pair("PanelFace=auto", text("PanelFace", "auto")),
        std::pair("PanelFace=label", text("PanelFace", "label")),
        std::pair("PanelFace=wide", text("PanelFace", "wide")),
        std::pair("PanelFace=square", text("PanelFace", "square")),
        std::pair("ShowPacketLossText=true", Setting("ShowPacketLossText", true))));

TEST(Options, EveryStoredSettingCanBeSetForOneRun) {
    for (const auto& [key, value] : Preferences::registeredDefaults()) {
        const auto written = std::visit(
            [](const auto& held) -> std::string {
                if constexpr (std::is_same_v<std::decay_t<decltype(held)>, std::string>) {
                    return held;
                } else if constexpr (std::is_same_v<std::decay_t<decltype(held)>, bool>) {
                    return held ? "true" : "false";
                } else {
                    return std::to_string(held);
                }
            },
            value);
        const auto parsed = parseSetting(key + "=" + written);
        ASSERT_EQ(parsed.index(), 0u) << std::get<UsageError>(parsed).text;
        EXPECT_EQ(std::get<0>(parsed), Setting(key, value));
    }
}

class RefusedSetting : public testing::TestWithParam<std::string> {};

TEST_P(RefusedSetting, IsNamedInOneLine) {
    const std::string error = refused({"--set", GetParam()});

    EXPECT_THAT(error, IsOneLine());
    const std::string key = GetParam().substr(0, GetParam().find('='));
    EXPECT_THAT(error, testing::HasSubstr(key));
}

INSTANTIATE_TEST_SUITE_P(
    UnknownKey, RefusedSetting,
    testing::Values("Nonsense=1", "hostname=example.org", "PingTimeout =4", "Hostname2=x"));
INSTANTIATE_TEST_SUITE_P(
    NoValue, RefusedSetting, testing::Values("PingTimeout", "PingTimeout=", "Hostname=", ""));
INSTANTIATE_TEST_SUITE_P(
    WrongType, RefusedSetting,
    testing::Values(
        "PingTimeout=fast", "PingTimeout=true", "PingTimeout=4s", "PingTimeout= 4", "PingTimeout=0",
        "PingTimeout=-1", "PingTimeout=nan", "PingTimeout=inf", "PingTimeout=1e999",
        "PingInterval=", "PingInterval=one", "PingInterval=nan", "SlowPingLowThreshold=0",
        "SlowPingLowThreshold=slow", "ShowIcon=1", "ShowIcon=yes", "ShowIcon=True",
        "ShowText=", "ShowNotifications=0", "PacketLossTextMode=sometimes", "PacketLossTextMode=Always",
        "PacketLossTextMode=", "ShowPacketLossText=1", "Hostname=  ", "PanelFace=tall", "PanelFace="));

TEST(Options, TheErrorOfASettingSaysWhatWasExpected) {
    EXPECT_EQ(
        refused({"--set", "PingTimeout=soon"}),
        "PingTimeout must be a number of seconds above 0, not \"soon\"");
    EXPECT_EQ(refused({"--set", "ShowIcon=1"}), "ShowIcon must be true or false, not \"1\"");
    EXPECT_EQ(
        refused({"--set", "PacketLossTextMode=never"}),
        "PacketLossTextMode must be off, whenLossy or always, not \"never\"");
}

// Command lines that are refused.

struct Wrong {
    std::string name;
    Arguments arguments;
    std::string named; ///< that the error must name
};

class RefusedCommandLine : public testing::TestWithParam<Wrong> {};

TEST_P(RefusedCommandLine, IsExplainedInOneLineThatNamesTheCulprit) {
    const std::string error = refused(GetParam().arguments);

    EXPECT_THAT(error, IsOneLine());
    EXPECT_THAT(error, testing::HasSubstr(GetParam().named));
}

INSTANTIATE_TEST_SUITE_P(
    Options, RefusedCommandLine,
    testing::Values(
        Wrong{"UnknownOption", {"--nonsense"}, "--nonsense"},
        Wrong{"UnknownOptionAfterAHost", {"example.org", "--nonsense"}, "--nonsense"},
        Wrong{"UnknownOptionBeforeAHost", {"--nonsense", "example.org"}, "--nonsense"},
        Wrong{"UnknownOptionAmongOthers", {"--json", "--nonsense", "--for", "3"}, "--nonsense"},
        Wrong{"UnknownShortOption", {"-x"}, "-x"},
        Wrong{"UnknownShortOptionAfterAnother", {"--json", "-x"}, "-x"},
        Wrong{"BundledShortOptions", {"-xyz"}, "-x"},
        Wrong{"BundledShortOptionsAfterAHost", {"example.org", "-xyz"}, "-x"},
        Wrong{"ValueForAnOptionWithoutOne", {"--json=yes"}, "--json"},
        Wrong{"ForWithoutAValue", {"--for"}, "--for"},
        Wrong{"SetWithoutAValue", {"--json", "--set"}, "--set"},
        Wrong{"ForANumberOfWords", {"--for", "long"}, "long"}, Wrong{"ForNoTime", {"--for", "0"}, "--for"},
        Wrong{"ForLessThanNoTime", {"--for", "-5"}, "-5"}, Wrong{"ForEver", {"--for", "inf"}, "inf"},
        Wrong{"ForNothing", {"--for", ""}, "--for"}, Wrong{"ForNotANumber", {"--for", "nan"}, "nan"},
        Wrong{"ForWithAUnit", {"--for", "5s"}, "5s"},
        Wrong{"TwoHosts", {"one.example", "two.example"}, "two.example"}, Wrong{"AnEmptyHost", {""}, "HOST"},
        Wrong{"ABlankHost", {"  "}, "HOST"},
        Wrong{"ALineBreakInAValue", {"--set", "PingTimeout=4\n5"}, "PingTimeout"},
        Wrong{"ALineBreakInAKey", {"--set", "Ping\nTimeout=4"}, "Timeout"},
        Wrong{"ALineBreakInAnOption", {"--non\nsense"}, "--non"},
        Wrong{"ALineBreakInATime", {"--for", "1\n"}, "--for"}),
    [](const auto& test) { return test.param.name; });

TEST(Options, TheFirstOfTwoErrorsIsReported) {
    EXPECT_THAT(refused({"--set", "First=1", "--second"}), testing::HasSubstr("First"));
}

TEST(Options, NoCommandLineIsTooStrangeToBeAnsweredInOneLine) {
    EXPECT_TRUE(rc::check("any arguments are taken or refused", [](const Arguments& arguments) {
        for (const std::string& argument : arguments) {
            RC_PRE(argument.find('\0') == std::string::npos);
        }
        const auto parsed = parseWatchOptions(arguments);
        if (const auto* error = std::get_if<UsageError>(&parsed)) {
            RC_ASSERT(!error->text.empty());
            RC_ASSERT(error->text.find('\n') == std::string::npos);
        }
    }));
}

// The help text.

TEST(Options, TheUsageNamesEveryOptionAndEverySetting) {
    const std::string usage = WatchOptions::usage();

    for (const char* option : {"--json", "--for SECONDS", "--set KEY=VALUE", "--help", "--version", "HOST"}) {
        EXPECT_THAT(usage, testing::HasSubstr(option));
    }
    for (const auto& [key, value] : Preferences::registeredDefaults()) {
        EXPECT_THAT(usage, testing::HasSubstr(key + "="));
    }
    EXPECT_THAT(usage, testing::HasSubstr("PacketLossTextMode="));
}

TEST(Options, TheDefaultsOfTheUsageAreThoseOfTheSettings) {
    const std::string usage = WatchOptions::usage();

    for (const char* setting :
         {"Hostname=1.1.1.1", "PingInterval=1 ", "PingTimeout=4 ", "SlowPingLowThreshold=100 ",
          "PacketLossTextMode=whenLossy", "ShowIcon=true", "ShowText=true", "ShowNotifications=false"}) {
        EXPECT_THAT(usage, testing::HasSubstr(setting));
    }
}

} // namespace tarnwick
