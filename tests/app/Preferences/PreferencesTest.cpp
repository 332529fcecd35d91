// The user's settings: how they are read, written, observed and restored.
#include "app/Preferences/Preferences.h"

#include "tests/simulation/MemoryDefaults.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {

namespace {

using simulation::MemoryDefaults;
using testing::ElementsAre;
using testing::IsEmpty;
using Change = MemoryDefaults::Change;
using Display = Preferences::Display;
using Form = StatusItem::Form;
using Value = UserDefaults::Value;
using MenuBarTitle::LossMode;

Value text(const std::string& value) {
    return value;
}

/// The settings as their readers see them.
struct Settings {
    std::string hostname = "1.1.1.1";
    double slowPingThresholdMs = 100;
    double pingTimeout = 4;
    double pingInterval = 1;
    Display display = Display::iconAndText;
    LossMode lossTextMode = LossMode::whenLossy;
    bool showNotifications = false;
    Form panelFace = Form::automatic;

    friend bool operator==(const Settings&, const Settings&) = default;
};

Settings all(const Preferences& prefs) {
    return {prefs.hostname(), prefs.slowPingThresholdMs(), prefs.pingTimeout(),       prefs.pingInterval(),
            prefs.display(),  prefs.lossTextMode(),        prefs.showNotifications(), prefs.panelFace()};
}

/// Counts how often the reader of something is told of a change.
class Reader {
public:
    explicit Reader(const std::function<void()>& read)
        : tracking_(withTracking(read, [this] { ++changes_; })) {}

    [[nodiscard]] int changes() const { return changes_; }

private:
    int changes_ = 0;
    TrackingHandle tracking_;
};

class PreferencesTest : public testing::Test {
protected:
    void put(const UserDefaults::Table& stored) {
        for (const auto& [key, value] : stored) {
            defaults_.put(key, value);
        }
    }

    MemoryDefaults defaults_;
};

} // namespace

// Reading.

struct Reading {
    std::string name;
    UserDefaults::Table stored;
    Settings read;

    friend void PrintTo(const Reading& reading, std::ostream* out) { *out << reading.name; }
};

class StoredSettings : public PreferencesTest, public testing::WithParamInterface<Reading> {
protected:
    StoredSettings() { put(GetParam().stored); }
};

TEST_P(StoredSettings, AreReadAtCreationAndNothingIsWritten) {
    const Preferences prefs(defaults_);

    EXPECT_EQ(all(prefs), GetParam().read);
    EXPECT_THAT(defaults_.changes(), IsEmpty());
}

TEST_P(StoredSettings, AreReadInTheSameWayAtReloading) {
    MemoryDefaults other;
    Preferences prefs(other);
    for (const auto& [key, value] : GetParam().stored) {
        other.put(key, value);
    }
    EXPECT_EQ(all(prefs), Settings{});

    prefs.reload();

    EXPECT_EQ(all(prefs), GetParam().read);
    EXPECT_THAT(other.changes(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Preferences, StoredSettings,
    testing::Values(
        Reading{"None", {}, {}},
        Reading{
            "Each",
            {{"Hostname", text("example.org")},
             {"SlowPingLowThreshold", 250.0},
             {"PingTimeout", 2.5},
             {"PingInterval", 5.0},
             {"ShowIcon", true},
             {"ShowText", false},
             {"PacketLossTextMode", text("off")},
             {"ShowNotifications", true},
             {"PanelFace", text("wide")}},
            {"example.org", 250, 2.5, 5, Display::iconOnly, LossMode::off, true, Form::wide}},
        Reading{"HostOfAnotherType", {{"Hostname", 8.8}}, {}},
        Reading{"IntervalOfAnotherType", {{"PingInterval", text("5")}}, {}},
        Reading{
            "TimeoutAndThresholdAsTheyAre",
            {{"PingTimeout", -1.0}, {"SlowPingLowThreshold", 1e6}},
            {.slowPingThresholdMs = 1e6, .pingTimeout = -1}},
        Reading{"ShortInterval", {{"PingInterval", 0.2}}, {.pingInterval = 1}},
        Reading{"NegativeInterval", {{"PingInterval", -3.0}}, {.pingInterval = 1}},
        Reading{"LongInterval", {{"PingInterval", 600.0}}, {.pingInterval = 60}},
        Reading{"LongestInterval", {{"PingInterval", 60.0}}, {.pingInterval = 60}},
        Reading{"IntervalRoundedUp", {{"PingInterval", 2.5}}, {.pingInterval = 3}},
        Reading{"IntervalRoundedDown", {{"PingInterval", 2.4}}, {.pingInterval = 2}},
        Reading{"IconAndText", {{"ShowIcon", true}, {"ShowText", true}}, {.display = Display::iconAndText}},
        Reading{"TextOnly", {{"ShowIcon", false}, {"ShowText", true}}, {.display = Display::textOnly}},
        Reading{
            "NeitherIconNorText", {{"ShowIcon", false}, {"ShowText", false}}, {.display = Display::textOnly}},
        Reading{"NoTextAlone", {{"ShowText", false}}, {.display = Display::iconOnly}},
        Reading{"NoIconAlone", {{"ShowIcon", false}}, {.display = Display::textOnly}},
        Reading{"LossWhenLossy", {{"PacketLossTextMode", text("whenLossy")}}, {}},
        Reading{
            "LossAlwaysOverTheOlderForm",
            {{"PacketLossTextMode", text("always")}, {"ShowPacketLossText", false}},
            {.lossTextMode = LossMode::always}},
        Reading{
            "LossOffOverTheOlderForm",
            {{"PacketLossTextMode", text("off")}, {"ShowPacketLossText", true}},
            {.lossTextMode = LossMode::off}},
        Reading{"UnknownLoss", {{"PacketLossTextMode", text("sometimes")}}, {}},
        Reading{"LossInCapitals", {{"PacketLossTextMode", text("Always")}}, {}},
        Reading{"LossOfAnotherType", {{"PacketLossTextMode", 2.0}}, {}},
        Reading{
            "UnknownLossOverTheOlderForm",
            {{"PacketLossTextMode", text("")}, {"ShowPacketLossText", true}},
            {.lossTextMode = LossMode::always}},
        Reading{"OlderFormOn", {{"ShowPacketLossText", true}}, {.lossTextMode = LossMode::always}},
        Reading{"OlderFormOff", {{"ShowPacketLossText", false}}, {.lossTextMode = LossMode::off}},
        Reading{"OlderFormAsANumber", {{"ShowPacketLossText", 1.0}}, {}},
        Reading{"OlderFormAsAText", {{"ShowPacketLossText", text("true")}}, {}},
        Reading{"LabelFace", {{"PanelFace", text("label")}}, {.panelFace = Form::label}},
        Reading{"SquareFace", {{"PanelFace", text("square")}}, {.panelFace = Form::square}},
        Reading{"AutomaticFace", {{"PanelFace", text("auto")}}, {}},
        Reading{"UnknownFace", {{"PanelFace", text("Wide")}}, {}},
        Reading{"FaceOfAnotherType", {{"PanelFace", 1.0}}, {}}),
    [](const auto& test) { return test.param.name; });

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
                                }));
}

TEST_F(PreferencesTest, ABlankHostIsRefusedAtReloadingAsInTheSettingsWindow) {
    put({{"Hostname", text("example.org")}});
    Preferences prefs(defaults_);
    for (const char* blank : {"", " ", "\t\n"}) {
        put({{"Hostname", text(blank)}, {"PingTimeout", 9.0}});
        prefs.reload();
        EXPECT_EQ(prefs.hostname(), "example.org");
        EXPECT_EQ(prefs.pingTimeout(), 9);
    }
}

TEST_F(PreferencesTest, AHostIsTrimmedAtReloadingAndTakenAsStoredAtCreation) {
    put({{"Hostname", text(" example.org\n")}});
    Preferences prefs(defaults_);
    EXPECT_EQ(prefs.hostname(), " example.org\n");

    prefs.reload();

    EXPECT_EQ(prefs.hostname(), "example.org");
}

// Setting.

struct Assignment {
    std::string name;
    std::function<void(const Preferences&)> read;
    std::function<void(Preferences&)> assign; ///< a value other than the default
    std::vector<Change> stores;

    friend void PrintTo(const Assignment& assignment, std::ostream* out) { *out << assignment.name; }
};

class SettingTest : public PreferencesTest, public testing::WithParamInterface<Assignment> {};

TEST_P(SettingTest, ANewValueIsStoredAtOnceAndTellsItsReadersOnce) {
    Preferences prefs(defaults_);
    const Reader reader([&] { GetParam().read(prefs); });
    int told = 0;
    prefs.onChange = [&] {
        ++told;
        EXPECT_THAT(defaults_.changes(), IsEmpty()) << "stored before the change is acted on";
    };

    GetParam().assign(prefs);

    EXPECT_EQ(reader.changes(), 1);
    EXPECT_EQ(told, 1);
    EXPECT_EQ(defaults_.changes(), GetParam().stores);
    EXPECT_EQ(all(Preferences(defaults_)), all(prefs));
}

TEST_P(SettingTest, AnEqualValueIsStoredAgainAndTellsNoReader) {
    Preferences prefs(defaults_);
    GetParam().assign(prefs);
    defaults_.forgetChanges();
    const Reader reader([&] { GetParam().read(prefs); });
    int told = 0;
    prefs.onChange = [&] { ++told; };

    GetParam().assign(prefs);

    EXPECT_EQ(reader.changes(), 0);
    EXPECT_EQ(told, 0);
    EXPECT_EQ(defaults_.changes(), GetParam().stores);
}

TEST_P(SettingTest, ReloadingTellsOfWhatDiffersInTheStoreOnce) {
    Preferences prefs(defaults_);
    const Reader reader([&] { GetParam().read(prefs); });
    int told = 0;
    prefs.onChange = [&] { ++told; };
    for (const Change& change : GetParam().stores) {
        defaults_.put(change.key, *change.value);
    }

    prefs.reload();
    prefs.reload();

    EXPECT_EQ(reader.changes(), 1);
    EXPECT_EQ(told, 1);
}

INSTANTIATE_TEST_SUITE_P(
    Preferences, SettingTest,
    testing::Values(
        Assignment{
            "Hostname",
            [](const auto& prefs) { static_cast<void>(prefs.hostname()); },
            [](auto& prefs) { prefs.setHostname("example.org"); },
            {{"Hostname", text("example.org")}}},
        Assignment{
            "SlowPingThreshold",
            [](const auto& prefs) { static_cast<void>(prefs.slowPingThresholdMs()); },
            [](auto& prefs) { prefs.setSlowPingThresholdMs(250); },
            {{"SlowPingLowThreshold", 250.0}}},
        Assignment{
            "PingTimeout",
            [](const auto& prefs) { static_cast<void>(prefs.pingTimeout()); },
            [](auto& prefs) { prefs.setPingTimeout(2.5); },
            {{"PingTimeout", 2.5}}},
        Assignment{
            "PingInterval",
            [](const auto& prefs) { static_cast<void>(prefs.pingInterval()); },
            [](auto& prefs) { prefs.setPingInterval(5); },
            {{"PingInterval", 5.0}}},
        Assignment{
            "IconOnly",
            [](const auto& prefs) { static_cast<void>(prefs.display()); },
            [](auto& prefs) { prefs.setDisplay(Display::iconOnly); },
            {{"ShowIcon", true}, {"ShowText", false}}},
        Assignment{
            "TextOnly",
            [](const auto& prefs) { static_cast<void>(prefs.display()); },
            [](auto& prefs) { prefs.setDisplay(Display::textOnly); },
            {{"ShowIcon", false}, {"ShowText", true}}},
        Assignment{
            "LossAlways",
            [](const auto& prefs) { static_cast<void>(prefs.lossTextMode()); },
            [](auto& prefs) { prefs.setLossTextMode(LossMode::always); },
            {{"PacketLossTextMode", text("always")}}},
        Assignment{
            "LossOff",
            [](const auto& prefs) { static_cast<void>(prefs.lossTextMode()); },
            [](auto& prefs) { prefs.setLossTextMode(LossMode::off); },
            {{"PacketLossTextMode", text("off")}}},
        Assignment{
            "ShowNotifications",
            [](const auto& prefs) { static_cast<void>(prefs.showNotifications()); },
            [](auto& prefs) { prefs.setShowNotifications(true); },
            {{"ShowNotifications", true}}}),
    [](const auto& test) { return test.param.name; });

TEST_F(PreferencesTest, SettersTakeWhatTheyAreGiven) {
    Preferences prefs(defaults_);

    prefs.setPingInterval(0.2);
    prefs.setPingTimeout(-1);
    prefs.setHostname("");

    EXPECT_EQ(all(prefs), (Settings{.hostname = "", .pingTimeout = -1, .pingInterval = 0.2}));
    EXPECT_EQ(defaults_.stored("PingInterval"), Value(0.2));
}

TEST_F(PreferencesTest, MendsNeitherIconNorTextInTheStoreWithoutTellingReaders) {
    put({{"ShowIcon", false}, {"ShowText", false}});
    Preferences prefs(defaults_);
    const Reader reader([&] { static_cast<void>(prefs.display()); });

    prefs.setDisplay(Display::textOnly);

    EXPECT_THAT(defaults_.changes(), ElementsAre(Change{"ShowIcon", false}, Change{"ShowText", true}));
    EXPECT_EQ(reader.changes(), 0);
}

TEST_F(PreferencesTest, SettingsThatChangeTogetherInTheStoreAreActedOnTogether) {
    Preferences prefs(defaults_);
    put({{"Hostname", text("example.org")}, {"PingTimeout", 9.0}, {"PanelFace", text("wide")}});
    std::vector<Settings> seen;
    prefs.onChange = [&] { seen.push_back(all(prefs)); };

    prefs.reload();

    EXPECT_THAT(
        seen, ElementsAre(Settings{.hostname = "example.org", .pingTimeout = 9, .panelFace = Form::wide}));
}

TEST_F(PreferencesTest, TheDisplaysHaveTheirNumbers) {
    EXPECT_THAT(
        Preferences::allDisplays, ElementsAre(Display::iconAndText, Display::iconOnly, Display::textOnly));
    EXPECT_EQ(static_cast<int>(Display::iconAndText), 0);
    EXPECT_EQ(static_cast<int>(Display::iconOnly), 1);
    EXPECT_EQ(static_cast<int>(Display::textOnly), 2);
}

// The scorer's configuration.

struct Scoring {
    UserDefaults::Table stored;
    ScoringConfig config;
};

TEST_F(PreferencesTest, TheScoringConfigurationFollowsTheSettings) {
    for (const Scoring& scoring : {
             Scoring{{}, {.lowThreshold = 0.1, .highThreshold = 1, .timeout = 4, .averageOver = 30}},
             Scoring{
                 {{"PingInterval", 3.0}},
                 {.lowThreshold = 0.1, .highThreshold = 1, .timeout = 4, .averageOver = 30}},
             Scoring{
                 {{"PingInterval", 5.0}},
                 {.lowThreshold = 0.1, .highThreshold = 1, .timeout = 4, .averageOver = 50}},
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

// Restoring the defaults.

class RestoringDefaults : public PreferencesTest {
protected:
    RestoringDefaults() {
        put(
            {{"Hostname", text("example.org")},
             {"PingTimeout", 2.5},
             {"PingInterval", 5.0},
             {"SlowPingLowThreshold", 250.0},
             {"ShowIcon", false},
             {"ShowText", true},
             {"ShowNotifications", true},
             {"ShowPacketLossText", true},
             {"PanelFace", text("wide")},
             {"UnknownKey", 7.0}});
    }
};

TEST_F(RestoringDefaults, PutsEverySettingBackAndTellsOfItOnce) {
    Preferences prefs(defaults_);
    int told = 0;
    prefs.onChange = [&] { ++told; };

    prefs.restoreDefaults();

    EXPECT_EQ(all(prefs), Settings{});
    EXPECT_EQ(told, 1);
    EXPECT_EQ(defaults_.stored("ShowPacketLossText"), std::nullopt);
    EXPECT_EQ(defaults_.stored("UnknownKey"), Value(7.0));
}

TEST_F(RestoringDefaults, RemovesEveryKeyAndThenStoresEveryDefault) {
    Preferences prefs(defaults_);

    prefs.restoreDefaults();

    const auto removed = [](const std::string& key) { return Change{key, std::nullopt}; };
    const auto& changes = defaults_.changes();
    ASSERT_EQ(changes.size(), 10u + 9u);
    const auto ofOthers = changes.begin() + 7;
    const auto written = changes.begin() + 10;
    EXPECT_THAT(
        std::vector(changes.begin(), ofOthers),
        testing::UnorderedElementsAre(
            removed("Hostname"), removed("PingTimeout"), removed("PingInterval"),
            removed("SlowPingLowThreshold"), removed("ShowIcon"), removed("ShowText"),
            removed("ShowNotifications")));
    EXPECT_THAT(
        std::vector(ofOthers, written),
        ElementsAre(removed("PacketLossTextMode"), removed("ShowPacketLossText"), removed("PanelFace")));
    EXPECT_THAT(
        std::vector(written, changes.end()),
        ElementsAre(
            Change{"Hostname", text("1.1.1.1")}, Change{"SlowPingLowThreshold", 100.0},
            Change{"PingTimeout", 4.0}, Change{"PingInterval", 1.0}, Change{"ShowIcon", true},
            Change{"ShowText", true}, Change{"PacketLossTextMode", text("whenLossy")},
            Change{"ShowNotifications", false}, Change{"PanelFace", text("auto")}));
}

TEST_F(RestoringDefaults, TellsOnlyTheReadersOfSettingsThatReallyChange) {
    put({{"PingTimeout", 4.0}});
    Preferences prefs(defaults_);
    const Reader host([&] { static_cast<void>(prefs.hostname()); });
    const Reader timeout([&] { static_cast<void>(prefs.pingTimeout()); });

    prefs.restoreDefaults();

    EXPECT_EQ(host.changes(), 1);
    EXPECT_EQ(timeout.changes(), 0);
}

} // namespace tarnwick
