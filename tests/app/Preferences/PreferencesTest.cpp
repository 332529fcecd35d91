// How settings are read from the store.
#include "tests/app/Preferences/PreferencesTest.h"

#include "tests/support/CaseName.h"

#include <gmock/gmock.h>

namespace tarnwick::test {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Display = Preferences::Display;
using Form = StatusItem::Form;
using Ink = StatusItem::InkChoice;
using MenuBarTitle::LossMode;

struct Stored {
    std::string name;
    UserDefaults::Table store;
    Settings read;

    friend void PrintTo(const Stored& stored, std::ostream* out) { *out << stored.name; }
};

class StoredSettings : public PreferencesTest, public testing::WithParamInterface<Stored> {};

struct Scoring {
    UserDefaults::Table stored; ///< in addition to the settings before it
    ScoringConfig config;
};

} // namespace

TEST_P(StoredSettings, AreReadAtCreationAndNothingIsWritten) {
    put(GetParam().store);

    const Preferences prefs(defaults_);

    EXPECT_EQ(all(prefs), GetParam().read);
    EXPECT_THAT(defaults_.changes(), IsEmpty());
}

TEST_P(StoredSettings, AreReadInTheSameWayAtReloading) {
    Preferences prefs(defaults_);
    EXPECT_EQ(all(prefs), Settings{});
    put(GetParam().store);

    prefs.reload();

    EXPECT_EQ(all(prefs), GetParam().read);
    EXPECT_THAT(defaults_.changes(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Preferences, StoredSettings,
    testing::Values(
        Stored{"None", {}, {}},
        Stored{
            "Each",
            {{"Hostname", text("example.org")},
             {"SlowPingLowThreshold", 250.0},
             {"PingTimeout", 2.5},
             {"PingInterval", 5.0},
             {"ShowIcon", true},
             {"ShowText", false},
             {"PacketLossTextMode", text("off")},
             {"ShowNotifications", true},
             {"KeepHistory", false},
             {"PanelFace", text("wide")},
             {"PanelInk", text("dark")},
             {"CheckForUpdates", false},
             {"InstallUpdates", true},
             {"LastUpdateCheckDate", 1.8e9},
             {"SkippedUpdate", text("1.2")}},
            {"example.org", 250, 2.5, 5, Display::iconOnly, LossMode::off, true, false, Form::wide, Ink::dark,
             false, true, secondsSince1970(1'800'000'000), "1.2"}},
        Stored{"CheckBeforeThereWereDates", {{"LastUpdateCheckDate", -1.0}}, {}},
        Stored{"CheckBeyondTheClock", {{"LastUpdateCheckDate", 1e18}}, {}},
        Stored{"HostOfAnotherType", {{"Hostname", 8.8}}, {}},
        Stored{"IntervalOfAnotherType", {{"PingInterval", text("5")}}, {}},
        Stored{"HighThreshold", {{"SlowPingLowThreshold", 1e6}}, {.slowPingThresholdMs = 1e6}},
        Stored{"NegativeThreshold", {{"SlowPingLowThreshold", -1.0}}, {}},
        Stored{"NegativeTimeout", {{"PingTimeout", -3.0}}, {}},
        Stored{"TimeoutOfDays", {{"PingTimeout", 1e6}}, {}},
        Stored{"NoTimeToAnswer", {{"PingTimeout", 1e-9}}, {}},
        Stored{"BlankHost", {{"Hostname", text(" ")}}, {}},
        Stored{"EndlessHost", {{"Hostname", text(std::string(4000, 'a'))}}, {}},
        Stored{"BlankInHost", {{"Hostname", text("one example")}}, {}},
        Stored{"Url", {{"Hostname", text("https://example.org/x")}}, {.hostname = "example.org"}},
        Stored{"HostInWhiteSpace", {{"Hostname", text(" example.org\n")}}, {.hostname = "example.org"}},
        Stored{"ShortInterval", {{"PingInterval", 0.2}}, {.pingInterval = 1}},
        Stored{"NegativeInterval", {{"PingInterval", -3.0}}, {.pingInterval = 1}},
        Stored{"LongInterval", {{"PingInterval", 600.0}}, {.pingInterval = 60}},
        Stored{"LongestInterval", {{"PingInterval", 60.0}}, {.pingInterval = 60}},
        Stored{"IntervalRoundedUp", {{"PingInterval", 2.5}}, {.pingInterval = 3}},
        Stored{"IntervalRoundedDown", {{"PingInterval", 2.4}}, {.pingInterval = 2}},
        Stored{"IconAndText", {{"ShowIcon", true}, {"ShowText", true}}, {.display = Display::iconAndText}},
        Stored{"TextOnly", {{"ShowIcon", false}, {"ShowText", true}}, {.display = Display::textOnly}},
        Stored{
            "NeitherIconNorText", {{"ShowIcon", false}, {"ShowText", false}}, {.display = Display::textOnly}},
        Stored{"NoTextAlone", {{"ShowText", false}}, {.display = Display::iconOnly}},
        Stored{"NoIconAlone", {{"ShowIcon", false}}, {.display = Display::textOnly}},
        Stored{"LossWhenLossy", {{"PacketLossTextMode", text("whenLossy")}}, {}},
        Stored{
            "LossAlwaysOverTheOlderForm",
            {{"PacketLossTextMode", text("always")}, {"ShowPacketLossText", false}},
            {.lossTextMode = LossMode::always}},
        Stored{
            "LossOffOverTheOlderForm",
            {{"PacketLossTextMode", text("off")}, {"ShowPacketLossText", true}},
            {.lossTextMode = LossMode::off}},
        Stored{"UnknownLoss", {{"PacketLossTextMode", text("sometimes")}}, {}},
        Stored{"LossInCapitals", {{"PacketLossTextMode", text("Always")}}, {}},
        Stored{"LossOfAnotherType", {{"PacketLossTextMode", 2.0}}, {}},
        Stored{
            "UnknownLossOverTheOlderForm",
            {{"PacketLossTextMode", text("")}, {"ShowPacketLossText", true}},
            {.lossTextMode = LossMode::always}},
        Stored{"OlderFormOn", {{"ShowPacketLossText", true}}, {.lossTextMode = LossMode::always}},
        Stored{"OlderFormOff", {{"ShowPacketLossText", false}}, {.lossTextMode = LossMode::off}},
        Stored{"OlderFormAsANumber", {{"ShowPacketLossText", 1.0}}, {}},
        Stored{"OlderFormAsAText", {{"ShowPacketLossText", text("true")}}, {}},
        Stored{"LabelFace", {{"PanelFace", text("label")}}, {.panelForm = Form::label}},
        Stored{"SquareFace", {{"PanelFace", text("square")}}, {.panelForm = Form::square}},
        Stored{"AutomaticFace", {{"PanelFace", text("auto")}}, {}},
        Stored{"UnknownFace", {{"PanelFace", text("Wide")}}, {}},
        Stored{"FaceOfAnotherType", {{"PanelFace", 1.0}}, {}},
        Stored{"LightInk", {{"PanelInk", text("light")}}, {.panelInk = Ink::light}},
        Stored{"AutomaticInk", {{"PanelInk", text("auto")}}, {}},
        Stored{"UnknownInk", {{"PanelInk", text("Light")}}, {}}),
    caseName);

TEST_F(PreferencesTest, RegisteredAreTheDefaultsOfSettingsWithoutAMigration) {
    const Preferences prefs(defaults_);

    EXPECT_EQ(
        defaults_.registered(), (UserDefaults::Table{
                                    {"Hostname", text("1.1.1.1")},
                                    {"PingTimeout", 4.0},
                                    {"PingInterval", 1.0},
                                    {"SlowPingLowThreshold", 100.0},
                                    {"ShowIcon", true},
                                    {"ShowText", true},
                                    {"ShowNotifications", false},
                                    {"KeepHistory", true},
                                }));
}

TEST_F(PreferencesTest, WhatCanNotBeMeantChangesNothingAtReloading) {
    put({{"Hostname", text("example.org")}, {"PingTimeout", 2.0}, {"SlowPingLowThreshold", 50.0}});
    Preferences prefs(defaults_);
    for (const char* blank : {"", " ", "\t\n"}) {
        put({
            {"Hostname", text(blank)},
            {"PingTimeout", -3.0},
            {"SlowPingLowThreshold", 0.0},
            {"PingInterval", 9.0},
        });
        prefs.reload();
        EXPECT_EQ(
            all(prefs),
            (Settings{
                .hostname = "example.org", .slowPingThresholdMs = 50, .pingTimeout = 2, .pingInterval = 9}));
    }
}

TEST_F(PreferencesTest, AHostIsTrimmedAtReloading) {
    Preferences prefs(defaults_);
    put({{"Hostname", text(" example.org\n")}});

    prefs.reload();

    EXPECT_EQ(prefs.hostname(), "example.org");
}

TEST_F(PreferencesTest, TheDisplaysHaveTheirNumbers) {
    EXPECT_THAT(
        Preferences::allDisplays, ElementsAre(Display::iconAndText, Display::iconOnly, Display::textOnly));
    EXPECT_EQ(static_cast<int>(Display::iconAndText), 0);
    EXPECT_EQ(static_cast<int>(Display::iconOnly), 1);
    EXPECT_EQ(static_cast<int>(Display::textOnly), 2);
}

// The scorer's configuration.

TEST_F(PreferencesTest, TheScoringConfigurationFollowsTheSettings) {
    constexpr ScoringConfig usual{.lowThreshold = 0.1, .highThreshold = 1, .timeout = 4, .averageOver = 30};
    constexpr ScoringConfig rare{.lowThreshold = 0.1, .highThreshold = 1, .timeout = 4, .averageOver = 50};
    for (const Scoring& scoring : {
             Scoring{{}, usual},
             Scoring{{{"PingInterval", 3.0}}, usual},
             Scoring{{{"PingInterval", 5.0}}, rare},
             Scoring{
                 {{"SlowPingLowThreshold", 250.0}, {"PingTimeout", 2.0}},
                 {.lowThreshold = 0.25, .highThreshold = 1.15, .timeout = 2, .averageOver = 50}},
         }) {
        put(scoring.stored);
        const ScoringConfig config = Preferences(defaults_).scoringConfig();
        EXPECT_DOUBLE_EQ(config.lowThreshold, scoring.config.lowThreshold);
        EXPECT_DOUBLE_EQ(config.highThreshold, scoring.config.highThreshold);
        EXPECT_DOUBLE_EQ(config.timeout, scoring.config.timeout);
        EXPECT_DOUBLE_EQ(config.averageOver, scoring.config.averageOver);
    }
}

} // namespace tarnwick::test
