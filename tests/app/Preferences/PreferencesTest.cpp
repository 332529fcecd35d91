// The user's settings: how they are read, written, observed and restored.
#include "app/Preferences/Preferences.h"

#include "tests/simulation/MemoryDefaults.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>

namespace tarnwick {

namespace {

using simulation::MemoryDefaults;
using Display = Preferences::Display;
using Value = UserDefaults::Value;
using MenuBarTitle::LossMode;

class PreferencesTest : public testing::Test {
protected:
    MemoryDefaults defaults_;
};

Value text(const std::string& value) {
    return value;
}

/// How often a reader of one setting is told of a change.
class Reader {
public:
    explicit Reader(std::function<void()> read) : tracking_(withTracking(read, [this] { ++changes_; })) {}

    [[nodiscard]] int changes() const { return changes_; }

private:
    int changes_ = 0;
    TrackingHandle tracking_;
};

} // namespace

TEST_F(PreferencesTest, EverySettingHasItsDefaultWhereNothingIsStored) {
    const Preferences prefs(defaults_);

    EXPECT_EQ(prefs.hostname(), "1.1.1.1");
    EXPECT_EQ(prefs.pingTimeout(), 4.0);
    EXPECT_EQ(prefs.pingInterval(), 1.0);
    EXPECT_EQ(prefs.slowPingThresholdMs(), 100.0);
    EXPECT_EQ(prefs.display(), Display::iconAndText);
    EXPECT_EQ(prefs.showNotifications(), false);
    EXPECT_EQ(prefs.lossTextMode(), LossMode::whenLossy);
}

TEST_F(PreferencesTest, SevenDefaultsAreRegisteredAndNoneForTheLossMode) {
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

TEST_F(PreferencesTest, CreationWritesNothing) {
    defaults_.put("PingInterval", 0.2);
    defaults_.put("ShowPacketLossText", true);

    const Preferences prefs(defaults_);

    EXPECT_THAT(defaults_.changes(), testing::IsEmpty());
    EXPECT_EQ(defaults_.stored("PingInterval"), Value(0.2));
}

TEST_F(PreferencesTest, StoredSettingsAreRead) {
    defaults_.put("Hostname", text("example.org"));
    defaults_.put("PingTimeout", 2.5);
    defaults_.put("PingInterval", 5.0);
    defaults_.put("SlowPingLowThreshold", 250.0);
    defaults_.put("ShowNotifications", true);

    const Preferences prefs(defaults_);

    EXPECT_EQ(prefs.hostname(), "example.org");
    EXPECT_EQ(prefs.pingTimeout(), 2.5);
    EXPECT_EQ(prefs.pingInterval(), 5.0);
    EXPECT_EQ(prefs.slowPingThresholdMs(), 250.0);
    EXPECT_EQ(prefs.showNotifications(), true);
}

TEST_F(PreferencesTest, AHostThatIsNoTextReadsAsTheDefaultHost) {
    defaults_.put("Hostname", 8.8);

    EXPECT_EQ(Preferences(defaults_).hostname(), "1.1.1.1");
}

TEST_F(PreferencesTest, SettingsAreReadOnceAtCreation) {
    const Preferences prefs(defaults_);

    defaults_.put("PingTimeout", 9.0);

    EXPECT_EQ(prefs.pingTimeout(), 4.0);
}

TEST_F(PreferencesTest, ATimeoutAndAThresholdAreTakenAsStored) {
    defaults_.put("PingTimeout", 0.001);
    defaults_.put("SlowPingLowThreshold", 1e6);

    const Preferences prefs(defaults_);

    EXPECT_EQ(prefs.pingTimeout(), 0.001);
    EXPECT_EQ(prefs.slowPingThresholdMs(), 1e6);
}

// The interval.

struct Interval {
    double stored;
    double read;
};

class StoredInterval : public PreferencesTest, public testing::WithParamInterface<Interval> {};

TEST_P(StoredInterval, IsBroughtIntoRangeWhenRead) {
    defaults_.put("PingInterval", GetParam().stored);

    EXPECT_EQ(Preferences(defaults_).pingInterval(), GetParam().read);
}

INSTANTIATE_TEST_SUITE_P(
    Preferences, StoredInterval,
    testing::Values(
        Interval{0.2, 1}, Interval{600, 60}, Interval{-3, 1}, Interval{1, 1}, Interval{60, 60},
        Interval{2.5, 3}, Interval{2.4, 2}));

// What the status item shows.

struct StoredDisplay {
    std::optional<bool> showIcon;
    std::optional<bool> showText;
    Display display;
};

class DisplayReading : public PreferencesTest, public testing::WithParamInterface<StoredDisplay> {};

TEST_P(DisplayReading, FollowsTheTwoStoredBooleans) {
    if (GetParam().showIcon) {
        defaults_.put("ShowIcon", *GetParam().showIcon);
    }
    if (GetParam().showText) {
        defaults_.put("ShowText", *GetParam().showText);
    }

    EXPECT_EQ(Preferences(defaults_).display(), GetParam().display);
}

INSTANTIATE_TEST_SUITE_P(
    Preferences, DisplayReading,
    testing::Values(
        StoredDisplay{true, true, Display::iconAndText}, StoredDisplay{true, false, Display::iconOnly},
        StoredDisplay{false, true, Display::textOnly}, StoredDisplay{false, false, Display::textOnly},
        StoredDisplay{std::nullopt, std::nullopt, Display::iconAndText},
        StoredDisplay{std::nullopt, false, Display::iconOnly},
        StoredDisplay{false, std::nullopt, Display::textOnly}));

struct WrittenDisplay {
    Display display;
    bool showIcon;
    bool showText;
};

class DisplayWriting : public PreferencesTest, public testing::WithParamInterface<WrittenDisplay> {};

TEST_P(DisplayWriting, StoresTwoBooleans) {
    defaults_.put("ShowIcon", false);
    defaults_.put("ShowText", false);
    Preferences prefs(defaults_);

    prefs.setDisplay(GetParam().display);

    EXPECT_EQ(prefs.display(), GetParam().display);
    EXPECT_THAT(
        defaults_.changes(), testing::ElementsAre(
                                 MemoryDefaults::Change{"ShowIcon", GetParam().showIcon},
                                 MemoryDefaults::Change{"ShowText", GetParam().showText}));
}

INSTANTIATE_TEST_SUITE_P(
    Preferences, DisplayWriting,
    testing::Values(
        WrittenDisplay{Display::iconAndText, true, true}, WrittenDisplay{Display::iconOnly, true, false},
        WrittenDisplay{Display::textOnly, false, true}));

TEST_F(PreferencesTest, NeitherIconNorTextReadsAsTextOnlyAndIsStoredSoWhenSet) {
    defaults_.put("ShowIcon", false);
    defaults_.put("ShowText", false);
    Preferences prefs(defaults_);
    ASSERT_EQ(prefs.display(), Display::textOnly);

    prefs.setDisplay(Display::textOnly);

    EXPECT_EQ(defaults_.stored("ShowIcon"), Value(false));
    EXPECT_EQ(defaults_.stored("ShowText"), Value(true));
}

TEST_F(PreferencesTest, TheDisplaysHaveTheirNumbers) {
    std::vector<int> numbers;
    for (const Display display : Preferences::allDisplays) {
        numbers.push_back(static_cast<int>(display));
    }

    EXPECT_THAT(numbers, testing::ElementsAre(0, 1, 2));
    EXPECT_EQ(static_cast<int>(Display::iconAndText), 0);
    EXPECT_EQ(static_cast<int>(Display::iconOnly), 1);
    EXPECT_EQ(static_cast<int>(Display::textOnly), 2);
}

// When the loss is shown.

struct StoredLossMode {
    std::optional<Value> mode;
    std::optional<Value> older;
    LossMode read;
};

class LossModeReading : public PreferencesTest, public testing::WithParamInterface<StoredLossMode> {};

TEST_P(LossModeReading, FollowsTheStoredTextElseTheOlderKey) {
    if (GetParam().mode) {
        defaults_.put("PacketLossTextMode", *GetParam().mode);
    }
    if (GetParam().older) {
        defaults_.put("ShowPacketLossText", *GetParam().older);
    }

    EXPECT_EQ(Preferences(defaults_).lossTextMode(), GetParam().read);
    EXPECT_THAT(defaults_.changes(), testing::IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    StoredText, LossModeReading,
    testing::Values(
        StoredLossMode{text("off"), std::nullopt, LossMode::off},
        StoredLossMode{text("whenLossy"), std::nullopt, LossMode::whenLossy},
        StoredLossMode{text("always"), std::nullopt, LossMode::always},
        StoredLossMode{text("off"), true, LossMode::off},
        StoredLossMode{text("always"), false, LossMode::always}));

INSTANTIATE_TEST_SUITE_P(
    AnyOtherText, LossModeReading,
    testing::Values(
        StoredLossMode{text("sometimes"), std::nullopt, LossMode::whenLossy},
        StoredLossMode{text("Always"), std::nullopt, LossMode::whenLossy},
        StoredLossMode{text(""), true, LossMode::always},
        StoredLossMode{text("sometimes"), true, LossMode::always},
        StoredLossMode{text("sometimes"), false, LossMode::off}, StoredLossMode{true, false, LossMode::off},
        StoredLossMode{2.0, std::nullopt, LossMode::whenLossy}));

INSTANTIATE_TEST_SUITE_P(
    OlderKey, LossModeReading,
    testing::Values(
        StoredLossMode{std::nullopt, true, LossMode::always},
        StoredLossMode{std::nullopt, false, LossMode::off},
        StoredLossMode{std::nullopt, std::nullopt, LossMode::whenLossy},
        StoredLossMode{std::nullopt, 1.0, LossMode::whenLossy},
        StoredLossMode{std::nullopt, 0.0, LossMode::whenLossy},
        StoredLossMode{std::nullopt, text("true"), LossMode::whenLossy}));

TEST_F(PreferencesTest, TheLossModeIsStoredAsItsTextAndTheOlderKeyIsNeverWritten) {
    Preferences prefs(defaults_);

    prefs.setLossTextMode(LossMode::off);
    prefs.setLossTextMode(LossMode::whenLossy);
    prefs.setLossTextMode(LossMode::always);

    EXPECT_THAT(
        defaults_.changes(), testing::ElementsAre(
                                 MemoryDefaults::Change{"PacketLossTextMode", text("off")},
                                 MemoryDefaults::Change{"PacketLossTextMode", text("whenLossy")},
                                 MemoryDefaults::Change{"PacketLossTextMode", text("always")}));
}

// Setting.

/// One setting with a way to read it, a way to set it to something new, and what that stores.
struct Setting {
    std::string name;
    std::function<void(const Preferences&)> read;
    std::function<void(Preferences&)> change;
    std::vector<MemoryDefaults::Change> stores;
};

class SettingTest : public PreferencesTest, public testing::WithParamInterface<Setting> {};

TEST_P(SettingTest, ANewValueIsStoredAtOnceUnderItsKey) {
    Preferences prefs(defaults_);

    GetParam().change(prefs);

    EXPECT_EQ(defaults_.changes(), GetParam().stores);
}

TEST_P(SettingTest, ANewValueTellsItsReadersOnce) {
    Preferences prefs(defaults_);
    const Reader reader([&] { GetParam().read(prefs); });

    GetParam().change(prefs);

    EXPECT_EQ(reader.changes(), 1);
}

TEST_P(SettingTest, AnEqualValueTellsNobodyButIsStoredAllTheSame) {
    Preferences prefs(defaults_);
    GetParam().change(prefs);
    defaults_.forgetChanges();
    const Reader reader([&] { GetParam().read(prefs); });

    GetParam().change(prefs);

    EXPECT_EQ(reader.changes(), 0);
    EXPECT_EQ(defaults_.changes(), GetParam().stores);
}

TEST_P(SettingTest, ANewValueIsReadByTheNextRun) {
    Preferences prefs(defaults_);
    GetParam().change(prefs);
    const Preferences next(defaults_);
    Preferences changedAgain(defaults_);
    const Reader reader([&] { GetParam().read(changedAgain); });

    GetParam().change(changedAgain);

    EXPECT_EQ(reader.changes(), 0) << "the next run did not start with the stored value";
}

TEST_P(SettingTest, ANewValueInTheStoreTellsItsReadersOnceReloaded) {
    Preferences prefs(defaults_);
    const Reader reader([&] { GetParam().read(prefs); });
    for (const auto& change : GetParam().stores) {
        defaults_.put(change.key, *change.value);
    }
    EXPECT_EQ(reader.changes(), 0);

    prefs.reload();

    EXPECT_EQ(reader.changes(), 1);
    EXPECT_THAT(defaults_.changes(), testing::IsEmpty());
}

TEST_P(SettingTest, ReloadingWhatWasSetHereTellsNobody) {
    Preferences prefs(defaults_);
    GetParam().change(prefs);
    const Reader reader([&] { GetParam().read(prefs); });

    prefs.reload();

    EXPECT_EQ(reader.changes(), 0);
}

INSTANTIATE_TEST_SUITE_P(
    AllSettings, SettingTest,
    testing::Values(
        Setting{
            "Hostname",
            [](const auto& prefs) { static_cast<void>(prefs.hostname()); },
            [](auto& prefs) { prefs.setHostname("example.org"); },
            {{"Hostname", text("example.org")}}},
        Setting{
            "SlowPingThreshold",
            [](const auto& prefs) { static_cast<void>(prefs.slowPingThresholdMs()); },
            [](auto& prefs) { prefs.setSlowPingThresholdMs(250); },
            {{"SlowPingLowThreshold", 250.0}}},
        Setting{
            "PingTimeout",
            [](const auto& prefs) { static_cast<void>(prefs.pingTimeout()); },
            [](auto& prefs) { prefs.setPingTimeout(2.5); },
            {{"PingTimeout", 2.5}}},
        Setting{
            "PingInterval",
            [](const auto& prefs) { static_cast<void>(prefs.pingInterval()); },
            [](auto& prefs) { prefs.setPingInterval(5); },
            {{"PingInterval", 5.0}}},
        Setting{
            "Display",
            [](const auto& prefs) { static_cast<void>(prefs.display()); },
            [](auto& prefs) { prefs.setDisplay(Display::iconOnly); },
            {{"ShowIcon", true}, {"ShowText", false}}},
        Setting{
            "LossTextMode",
            [](const auto& prefs) { static_cast<void>(prefs.lossTextMode()); },
            [](auto& prefs) { prefs.setLossTextMode(LossMode::always); },
            {{"PacketLossTextMode", text("always")}}},
        Setting{
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

    EXPECT_EQ(prefs.pingInterval(), 0.2);
    EXPECT_EQ(prefs.pingTimeout(), -1);
    EXPECT_EQ(prefs.hostname(), "");
    EXPECT_EQ(defaults_.stored("PingInterval"), Value(0.2));
}

// Reloading.

TEST_F(PreferencesTest, AnIntervalOutOfRangeIsCorrectedAtReloadingAsAtCreation) {
    Preferences prefs(defaults_);
    for (const auto& [stored, corrected] :
         {std::pair(600.0, 60.0), std::pair(0.2, 1.0), std::pair(-5.0, 1.0)}) {
        defaults_.put("PingInterval", stored);

        prefs.reload();

        EXPECT_EQ(prefs.pingInterval(), corrected);
        EXPECT_EQ(Preferences(defaults_).pingInterval(), corrected);
    }
    EXPECT_EQ(defaults_.stored("PingInterval"), Value(-5.0));
}

TEST_F(PreferencesTest, OtherNumbersAreTakenAsStoredAtReloadingAsAtCreation) {
    Preferences prefs(defaults_);
    defaults_.put("PingTimeout", -1.0);
    defaults_.put("SlowPingLowThreshold", 1e6);
    defaults_.put("Hostname", text(" "));

    prefs.reload();

    EXPECT_EQ(prefs.pingTimeout(), -1);
    EXPECT_EQ(prefs.slowPingThresholdMs(), 1e6);
    EXPECT_EQ(prefs.hostname(), " ");
}

TEST_F(PreferencesTest, ValuesOfAWrongTypeReadAsTheirDefaultsOnceReloaded) {
    defaults_.put("Hostname", text("example.org"));
    defaults_.put("PingInterval", 5.0);
    Preferences prefs(defaults_);
    defaults_.put("Hostname", 9.9);
    defaults_.put("PingInterval", text("5"));

    prefs.reload();

    EXPECT_EQ(prefs.hostname(), "1.1.1.1");
    EXPECT_EQ(prefs.pingInterval(), 1);
}

TEST_F(PreferencesTest, ANewPanelFaceTellsItsReadersOnceReloaded) {
    Preferences prefs(defaults_);
    const Reader reader([&] { static_cast<void>(prefs.panelFace()); });
    defaults_.put("PanelFace", text("wide"));

    prefs.reload();

    EXPECT_EQ(prefs.panelFace(), StatusItem::PanelFace::wide);
    EXPECT_EQ(reader.changes(), 1);
}

// The scorer's configuration.

TEST_F(PreferencesTest, ThePanelFaceIsAutomaticUntilOneIsStored) {
    EXPECT_EQ(Preferences(defaults_).panelFace(), StatusItem::PanelFace::automatic);
    for (const auto face :
         {StatusItem::PanelFace::automatic, StatusItem::PanelFace::label, StatusItem::PanelFace::wide,
          StatusItem::PanelFace::square}) {
        defaults_.put("PanelFace", std::string(rawValue(face)));
        EXPECT_EQ(Preferences(defaults_).panelFace(), face);
    }
}

TEST_F(PreferencesTest, AnUnknownPanelFaceReadsAsAutomatic) {
    for (const Value& stored : {text("Wide"), text(""), Value(1.0)}) {
        defaults_.put("PanelFace", stored);
        EXPECT_EQ(Preferences(defaults_).panelFace(), StatusItem::PanelFace::automatic);
    }
}

TEST_F(PreferencesTest, TheScoringConfigurationFollowsTheSettings) {
    const Preferences prefs(defaults_);

    const ScoringConfig config = prefs.scoringConfig();

    EXPECT_DOUBLE_EQ(config.lowThreshold, 0.1);
    EXPECT_DOUBLE_EQ(config.highThreshold, 1.0);
    EXPECT_DOUBLE_EQ(config.timeout, 4.0);
    EXPECT_DOUBLE_EQ(config.averageOver, 30.0);
}

TEST_F(PreferencesTest, TheScoringWindowHoldsTenPingsAtLongIntervals) {
    Preferences prefs(defaults_);
    for (const auto& [interval, window] :
         {std::pair(3.0, 30.0), std::pair(5.0, 50.0), std::pair(60.0, 600.0)}) {
        prefs.setPingInterval(interval);
        EXPECT_DOUBLE_EQ(prefs.scoringConfig().averageOver, window) << interval;
    }
}

TEST_F(PreferencesTest, TheHighThresholdLies900MillisecondsAboveTheLowOne) {
    Preferences prefs(defaults_);

    prefs.setSlowPingThresholdMs(250);
    prefs.setPingTimeout(2);

    EXPECT_DOUBLE_EQ(prefs.scoringConfig().lowThreshold, 0.25);
    EXPECT_DOUBLE_EQ(prefs.scoringConfig().highThreshold, 1.15);
    EXPECT_DOUBLE_EQ(prefs.scoringConfig().timeout, 2.0);
}

// Restoring the defaults.

class RestoringDefaults : public PreferencesTest {
protected:
    RestoringDefaults() {
        defaults_.put("Hostname", text("example.org"));
        defaults_.put("PingTimeout", 2.5);
        defaults_.put("PingInterval", 5.0);
        defaults_.put("SlowPingLowThreshold", 250.0);
        defaults_.put("ShowIcon", false);
        defaults_.put("ShowText", true);
        defaults_.put("ShowNotifications", true);
        defaults_.put("ShowPacketLossText", true);
        defaults_.put("UnknownKey", 7.0);
    }

    /// The keys that were removed, in order.
    [[nodiscard]] std::vector<std::string> removals() const {
        std::vector<std::string> keys;
        for (const auto& change : defaults_.changes()) {
            if (!change.value) {
                keys.push_back(change.key);
            }
        }
        return keys;
    }
};

TEST_F(RestoringDefaults, PutsEverySettingBack) {
    Preferences prefs(defaults_);

    prefs.restoreDefaults();

    EXPECT_EQ(prefs.hostname(), "1.1.1.1");
    EXPECT_EQ(prefs.pingTimeout(), 4.0);
    EXPECT_EQ(prefs.pingInterval(), 1.0);
    EXPECT_EQ(prefs.slowPingThresholdMs(), 100.0);
    EXPECT_EQ(prefs.display(), Display::iconAndText);
    EXPECT_EQ(prefs.showNotifications(), false);
    EXPECT_EQ(prefs.lossTextMode(), LossMode::whenLossy);
}

TEST_F(RestoringDefaults, StoresEveryDefaultExplicitlyAndDropsTheOlderKey) {
    Preferences prefs(defaults_);

    prefs.restoreDefaults();

    UserDefaults::Table expected = Preferences::registeredDefaults();
    expected["PacketLossTextMode"] = text("whenLossy");
    for (const auto& [key, value] : expected) {
        EXPECT_EQ(defaults_.stored(key), value) << key;
    }
    EXPECT_EQ(defaults_.stored("ShowPacketLossText"), std::nullopt);
}

TEST_F(RestoringDefaults, LeavesForeignKeysAlone) {
    Preferences prefs(defaults_);

    prefs.restoreDefaults();

    EXPECT_EQ(defaults_.stored("UnknownKey"), Value(7.0));
}

TEST_F(RestoringDefaults, RemovesTheRegisteredKeysFirstAndThenTheTwoOfTheLossMode) {
    Preferences prefs(defaults_);

    prefs.restoreDefaults();

    const std::vector<std::string> keys = removals();
    ASSERT_EQ(keys.size(), 9u);
    EXPECT_THAT(
        std::vector(keys.begin(), keys.begin() + 7),
        testing::UnorderedElementsAre(
            "Hostname", "PingTimeout", "PingInterval", "SlowPingLowThreshold", "ShowIcon", "ShowText",
            "ShowNotifications"));
    EXPECT_EQ(keys[7], "PacketLossTextMode");
    EXPECT_EQ(keys[8], "ShowPacketLossText");
}

TEST_F(RestoringDefaults, WritesAfterAllRemovalsInTheOrderOfTheSettings) {
    Preferences prefs(defaults_);

    prefs.restoreDefaults();

    const auto& changes = defaults_.changes();
    ASSERT_EQ(changes.size(), 9u + 8u);
    EXPECT_THAT(
        std::vector(changes.begin() + 9, changes.end()),
        testing::ElementsAre(
            MemoryDefaults::Change{"Hostname", text("1.1.1.1")},
            MemoryDefaults::Change{"SlowPingLowThreshold", 100.0}, MemoryDefaults::Change{"PingTimeout", 4.0},
            MemoryDefaults::Change{"PingInterval", 1.0}, MemoryDefaults::Change{"ShowIcon", true},
            MemoryDefaults::Change{"ShowText", true},
            MemoryDefaults::Change{"PacketLossTextMode", text("whenLossy")},
            MemoryDefaults::Change{"ShowNotifications", false}));
}

TEST_F(RestoringDefaults, TellsOnlyTheReadersOfSettingsThatReallyChange) {
    defaults_.put("PingTimeout", 4.0);
    Preferences prefs(defaults_);
    const Reader host([&] { static_cast<void>(prefs.hostname()); });
    const Reader timeout([&] { static_cast<void>(prefs.pingTimeout()); });

    prefs.restoreDefaults();

    EXPECT_EQ(host.changes(), 1);
    EXPECT_EQ(timeout.changes(), 0);
}

} // namespace tarnwick
