// The command line of the desktop program.
#include "app/CommandLine/AppOptions.h"

#include "app/CommandLine/ArgumentParser.h"

#include <array>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {

namespace {

AppOptions appOptions(const std::vector<std::string>& arguments) {
    const auto parsed = parseAppOptions(arguments);
    if (const auto* error = std::get_if<UsageError>(&parsed)) {
        ADD_FAILURE() << error->text;
        return {};
    }
    return std::get<AppOptions>(parsed);
}

std::string appRefusal(const std::vector<std::string>& arguments) {
    const auto parsed = parseAppOptions(arguments);
    const auto* error = std::get_if<UsageError>(&parsed);
    EXPECT_NE(error, nullptr);
    return error != nullptr ? error->text : "";
}

} // namespace

TEST(ArgumentsOf, LeavesOutTheNameOfTheProgram) {
    const std::array words{"tarnwick", "--help", "x"};

    EXPECT_THAT(argumentsOf(3, words.data()), testing::ElementsAre("--help", "x"));
    EXPECT_THAT(argumentsOf(1, words.data()), testing::IsEmpty());
}

TEST(ArgumentsOf, IsEmptyWithoutAName) {
    const std::array<const char*, 1> words{nullptr};

    EXPECT_THAT(argumentsOf(0, words.data()), testing::IsEmpty());
}

TEST(AppOptions, WithoutArgumentsEverythingIsAsStored) {
    const AppOptions options = appOptions({});

    EXPECT_FALSE(options.help);
    EXPECT_FALSE(options.version);
    EXPECT_TRUE(options.settings.empty());
}

TEST(AppOptions, SettingsAreTaken) {
    EXPECT_THAT(
        appOptions({"--set", "PingInterval=5", "--set=PanelFace=wide"}).settings,
        testing::UnorderedElementsAre(
            Setting("PingInterval", 5.0), Setting("PanelFace", std::string("wide"))));
}

TEST(AppOptions, ARestartGoesOnWithTheSameSettingsAndOpensNothing) {
    const AppOptions restarted = appOptions(
        appOptions({"--show", "--set", "PingInterval=5", "--set=Hostname=a.example"}).forRestart());

    EXPECT_EQ(restarted.request, AppOptions::Request::stay);
    EXPECT_THAT(
        restarted.settings, testing::UnorderedElementsAre(
                                Setting("PingInterval", 5.0), Setting("Hostname", std::string("a.example"))));
}

TEST(AppOptions, ARequestIsTaken) {
    using Request = AppOptions::Request;

    EXPECT_EQ(appOptions({}).request, Request::none);
    EXPECT_EQ(appOptions({"--show"}).request, Request::show);
    EXPECT_EQ(appOptions({"--settings", "--settings"}).request, Request::settings);
    EXPECT_EQ(appOptions({"--outages"}).request, Request::outages);
    EXPECT_EQ(appOptions({"--quit"}).request, Request::quit);
    EXPECT_EQ(appOptions({"--from-session"}).request, Request::stay);
}

TEST(AppOptions, ThereIsOnlyOneRequest) {
    EXPECT_EQ(
        appRefusal({"--show", "--quit"}),
        "only one of --show, --settings, --outages, --from-session, --pause and --quit is possible");
    EXPECT_EQ(
        appRefusal({"--pause", "60", "--quit"}),
        "only one of --show, --settings, --outages, --from-session, --pause and --quit is possible");
    EXPECT_EQ(appRefusal({"--quit", "--set", "PingInterval=5"}), "--quit takes no --set");
    EXPECT_EQ(appRefusal({"--set", "PingInterval=5", "--pause=60"}), "--pause takes no --set");
}

TEST(AppOptions, APauseHasALengthInSeconds) {
    for (const int seconds : {0, 1, 3600, 86'400}) {
        const AppOptions options = appOptions({"--pause", std::to_string(seconds)});
        EXPECT_EQ(options.request, AppOptions::Request::pause);
        EXPECT_EQ(options.pauseSeconds, seconds);
    }
    EXPECT_EQ(appOptions({"--pause=60", "--pause=90"}).pauseSeconds, 90);
}

TEST(AppOptions, APauseOfAnotherLengthIsRefused) {
    for (const std::string text : {"-1", "86401", "1e300", "0.5", "3600.5", "nan", "inf", "an hour", ""}) {
        EXPECT_EQ(
            appRefusal({"--pause=" + text}),
            "--pause takes a whole number of seconds, 1 to 86400, or 0 to resume, not \"" + text + "\"");
    }
    EXPECT_EQ(appRefusal({"--pause"}), "--pause needs a value");
}

TEST(AppOptions, HelpHasAShortForm) {
    EXPECT_TRUE(appOptions({"-h"}).help);
    EXPECT_EQ(appRefusal({"-x"}), "unknown option \"-x\"");
}

TEST(AppOptions, HelpAndVersionAreTaken) {
    EXPECT_TRUE(appOptions({"--help"}).help);
    EXPECT_TRUE(appOptions({"--version"}).version);
}

TEST(AppOptions, TheUsageNamesEveryOptionAndListsTheSettings) {
    for (const std::string& part :
         {std::string("--set KEY=VALUE"), std::string("--help"), std::string("--version"),
          std::string("--show"), std::string("--settings"), std::string("--outages"),
          std::string("--pause SECONDS"), std::string("--quit"), std::string("--from-session"),
          settingsUsage()}) {
        EXPECT_THAT(usageOf(AppOptions::table()), testing::HasSubstr(part));
    }
}

TEST(AppOptions, WhatIsUnknownIsNamed) {
    EXPECT_EQ(appRefusal({"--json"}), "unknown option \"--json\"");
    EXPECT_EQ(appRefusal({"-x"}), "unknown option \"-x\"");
    EXPECT_EQ(appRefusal({"example.org"}), "unknown argument \"example.org\"");
}

TEST(AppOptions, AMissingOrWrongValueIsNamed) {
    EXPECT_EQ(appRefusal({"--set"}), "--set needs a value");
    EXPECT_EQ(appRefusal({"--set", "ShowIcon=2"}), "ShowIcon must be true or false, not \"2\"");
    EXPECT_EQ(appRefusal({"--help=me"}), "--help takes no value");
}

} // namespace tarnwick
