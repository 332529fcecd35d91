// The command line of the terminal program.
#include "app/CommandLine/WatchOptions.h"

#include "app/Preferences/SettingTable.h"
#include "core/HostText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck.h>

namespace tarnwick {

namespace {

using Arguments = std::vector<std::string>;

Setting text(const std::string& key, const std::string& value) {
    return {key, value};
}

/// In parts that a name may have.
std::string longestName() {
    std::string name;
    while (name.size() < longestHost) {
        name += std::string(63, 'a') + '.';
    }
    name.back() = 'a';
    name[name.size() - 2] = '.';
    return name;
}

/// What a command line asks for.
struct Request {
    bool json = false;
    std::optional<double> forSeconds = std::nullopt;
    UserDefaults::Table settings{};
    bool help = false;
    bool version = false;

    friend bool operator==(const Request&, const Request&) = default;
};

/// Fails the test when the arguments are refused.
Request accepted(const Arguments& arguments) {
    const auto parsed = parseWatchOptions(arguments);
    if (const auto* error = std::get_if<UsageError>(&parsed)) {
        ADD_FAILURE() << error->text;
        return {};
    }
    const auto& options = std::get<WatchOptions>(parsed);
    return {options.json, options.forSeconds, options.settings, options.help, options.version};
}

/// Why the arguments are refused; fails the test when they are not.
std::string refused(const Arguments& arguments) {
    const auto parsed = parseWatchOptions(arguments);
    const auto* error = std::get_if<UsageError>(&parsed);
    EXPECT_NE(error, nullptr) << testing::PrintToString(arguments);
    return error != nullptr ? error->text : "";
}

MATCHER(IsOneLine, "is one line of text") {
    return !arg.empty() && arg.find_first_of("\r\n") == std::string::npos;
}

struct Accepted {
    Arguments arguments;
    Request request;
};

class AcceptedCommandLine : public testing::TestWithParam<Accepted> {};

struct Refused {
    Arguments arguments;
    std::string culprit; ///< that the message names
};

class RefusedCommandLine : public testing::TestWithParam<Refused> {};

} // namespace

TEST_P(AcceptedCommandLine, AsksForWhatItSays) {
    EXPECT_EQ(accepted(GetParam().arguments), GetParam().request);
}

INSTANTIATE_TEST_SUITE_P(
    Options, AcceptedCommandLine,
    testing::Values(
        Accepted{{}, {}}, Accepted{{"--json"}, {.json = true}}, Accepted{{"--help"}, {.help = true}},
        Accepted{{"--version"}, {.version = true}}, Accepted{{"--for", "90"}, {.forSeconds = 90}},
        Accepted{{"--for=2.5"}, {.forSeconds = 2.5}},
        Accepted{
            {"--json", "--for", "3", "--set", "ShowIcon=false", "example.org"},
            {true, 3, {{"ShowIcon", false}, text("Hostname", "example.org")}}},
        Accepted{
            {"example.org", "--set", "ShowIcon=false", "--for", "3", "--json"},
            {true, 3, {{"ShowIcon", false}, text("Hostname", "example.org")}}}));
INSTANTIATE_TEST_SUITE_P(
    TheLastOfAKeyWins, AcceptedCommandLine,
    testing::Values(
        Accepted{
            {"--set", "PingTimeout=2", "--set", "PingInterval=5", "--set", "PingTimeout=3"},
            {.settings = {{"PingTimeout", 3.0}, {"PingInterval", 5.0}}}},
        Accepted{
            {"argument.example", "--set", "Hostname=setting.example"},
            {.settings = {text("Hostname", "argument.example")}}}));
INSTANTIATE_TEST_SUITE_P(
    Hosts, AcceptedCommandLine,
    testing::Values(
        Accepted{{" example.org\t"}, {.settings = {text("Hostname", "example.org")}}},
        Accepted{{"https://example.org:8443/x"}, {.settings = {text("Hostname", "example.org")}}},
        Accepted{{"--set=Hostname= example.org "}, {.settings = {text("Hostname", "example.org")}}},
        Accepted{{"--", "example.org"}, {.settings = {text("Hostname", "example.org")}}},
        Accepted{{longestName()}, {.settings = {text("Hostname", longestName())}}}));

TEST(Options, OneCommandLineDoesNotLeakIntoTheNext) {
    static_cast<void>(refused({"--json", "--nonsense", "example.org"}));

    EXPECT_EQ(accepted({"example.org"}), (Request{.settings = {text("Hostname", "example.org")}}));
}

TEST_P(RefusedCommandLine, IsExplainedInOneLineThatNamesTheCulprit) {
    EXPECT_THAT(
        refused(GetParam().arguments), testing::AllOf(IsOneLine(), testing::HasSubstr(GetParam().culprit)));
}

INSTANTIATE_TEST_SUITE_P(
    UnknownOption, RefusedCommandLine,
    testing::Values(
        Refused{{"--nonsense"}, "--nonsense"}, Refused{{"example.org", "--nonsense"}, "--nonsense"},
        Refused{{"--nonsense", "example.org"}, "--nonsense"},
        Refused{{"--json", "--nonsense", "--for", "3"}, "--nonsense"}, Refused{{"-x"}, "-x"},
        Refused{{"--json", "-x"}, "-x"}, Refused{{"-xyz"}, "-x"}, Refused{{"example.org", "-xyz"}, "-x"}));
INSTANTIATE_TEST_SUITE_P(
    Value, RefusedCommandLine,
    testing::Values(
        Refused{{"--json=yes"}, "--json takes no value"}, Refused{{"--for"}, "--for"},
        Refused{{"--json", "--set"}, "--set"}, Refused{{"--for", "long"}, "long"},
        Refused{{"--for", "0"}, "--for"}, Refused{{"--for", "-5"}, "-5"}, Refused{{"--for", "inf"}, "inf"},
        Refused{{"--for", ""}, "--for"}, Refused{{"--for", "nan"}, "nan"}, Refused{{"--for", "5s"}, "5s"},
        Refused{{"--for", "0x10"}, "0x10"}));
INSTANTIATE_TEST_SUITE_P(
    Host, RefusedCommandLine,
    testing::Values(
        Refused{{"one.example", "two.example"}, "two.example"}, Refused{{""}, "HOST"},
        Refused{{"  "}, "HOST"},
        Refused{
            {"one example"},
            "HOST must be a host name or address, not \"one example\": it has a blank in it"},
        Refused{{"--", "--json"}, "begins with a dash"}, Refused{{std::string(1025, 'a')}, "HOST"},
        Refused{{"--set", "Hostname=" + std::string(1025, 'a')}, "Hostname"}));
INSTANTIATE_TEST_SUITE_P(
    LineBreak, RefusedCommandLine,
    testing::Values(
        Refused{{"--set", "PingTimeout=4\n5"}, "PingTimeout"},
        Refused{{"--set", "Ping\nTimeout=4"}, "Timeout"}, Refused{{"--non\nsense"}, "--non"},
        Refused{{"--for", "1\n"}, "--for"}));
INSTANTIATE_TEST_SUITE_P(
    FirstOfTwoErrors, RefusedCommandLine,
    testing::Values(Refused{{"--set", "First=1", "--second"}, "First"}));

TEST(Options, EveryCommandLineIsAcceptedOrRefusedInOneLine) {
    EXPECT_TRUE(rc::check("any arguments", [](const Arguments& arguments) {
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

TEST(Options, TheUsageNamesEveryOption) {
    for (const char* option : {"--json", "--for SECONDS", "--set KEY=VALUE", "--help", "--version", "HOST"}) {
        EXPECT_THAT(usageOf(WatchOptions::table()), testing::HasSubstr(option));
    }
    EXPECT_THAT(usageOf(WatchOptions::table()), testing::HasSubstr(settingsUsage()));
}

} // namespace tarnwick
