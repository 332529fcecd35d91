// How settings are set, stored, observed and restored.
#include "tests/app/Preferences/PreferencesTest.h"

#include "tests/support/CaseName.h"

#include <functional>
#include <gmock/gmock.h>
#include <utility>
#include <vector>

namespace tarnwick::test {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Change = simulation::MemoryDefaults::Change;
using Display = Preferences::Display;
using Form = StatusItem::Form;
using Value = UserDefaults::Value;
using MenuBarTitle::LossMode;

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

struct Assignment {
    std::string name;
    std::function<void(const Preferences&)> read;
    std::function<void(Preferences&)> assign;
    std::vector<Change> stores;

    friend void PrintTo(const Assignment& assignment, std::ostream* out) { *out << assignment.name; }
};

/// To a value other than the default.
template<typename Get, typename Set, typename Given>
Assignment assignment(
    const std::string& name, Get get, Set set, const Given& value, std::vector<Change> stores) {
    return {
        name, [get](const Preferences& prefs) { static_cast<void>((prefs.*get)()); },
        [set, value](Preferences& prefs) { (prefs.*set)(value); }, std::move(stores)};
}

class SettingTest : public PreferencesTest, public testing::WithParamInterface<Assignment> {
protected:
    /// How often the setting's reader is told of what `act` does, and how often the owner is.
    std::pair<int, int> timesTold(const std::function<void()>& act) {
        const Reader reader([this] { GetParam().read(prefs_); });
        int told = 0;
        prefs_.onChange = [&] {
            ++told;
            EXPECT_THAT(defaults_.changes(), IsEmpty()) << "stored before the change is acted on";
        };
        act();
        return {reader.changes(), told};
    }

    Preferences prefs_{defaults_};
};

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
             {"PanelInk", text("dark")},
             {"UnknownKey", 7.0}});
    }
};

} // namespace

TEST_P(SettingTest, ANewValueIsStoredAtOnceAndTellsItsReadersOnce) {
    EXPECT_EQ(timesTold([this] { GetParam().assign(prefs_); }), std::pair(1, 1));

    EXPECT_EQ(defaults_.changes(), GetParam().stores);
    EXPECT_EQ(all(Preferences(defaults_)), all(prefs_));
}

TEST_P(SettingTest, AnEqualValueIsStoredAgainAndTellsNoReader) {
    GetParam().assign(prefs_);
    defaults_.forgetChanges();

    EXPECT_EQ(timesTold([this] { GetParam().assign(prefs_); }), std::pair(0, 0));

    EXPECT_EQ(defaults_.changes(), GetParam().stores);
}

TEST_P(SettingTest, ReloadingTellsOfWhatDiffersInTheStoreOnce) {
    for (const Change& change : GetParam().stores) {
        defaults_.put(change.key, *change.value);
    }

    EXPECT_EQ(timesTold([this] { prefs_.reload(); }), std::pair(1, 1));
    EXPECT_EQ(timesTold([this] { prefs_.reload(); }), std::pair(0, 0));
}

INSTANTIATE_TEST_SUITE_P(
    Preferences, SettingTest,
    testing::Values(
        assignment(
            "Hostname", &Preferences::hostname, &Preferences::setHostname, "example.org",
            {{"Hostname", text("example.org")}}),
        assignment(
            "SlowPingThreshold", &Preferences::slowPingThresholdMs, &Preferences::setSlowPingThresholdMs, 250,
            {{"SlowPingLowThreshold", 250.0}}),
        assignment(
            "PingTimeout", &Preferences::pingTimeout, &Preferences::setPingTimeout, 2.5,
            {{"PingTimeout", 2.5}}),
        assignment(
            "PingInterval", &Preferences::pingInterval, &Preferences::setPingInterval, 5,
            {{"PingInterval", 5.0}}),
        assignment(
            "IconOnly", &Preferences::display, &Preferences::setDisplay, Display::iconOnly,
            {{"ShowIcon", true}, {"ShowText", false}}),
        assignment(
            "TextOnly", &Preferences::display, &Preferences::setDisplay, Display::textOnly,
            {{"ShowIcon", false}, {"ShowText", true}}),
        assignment(
            "LossAlways", &Preferences::lossTextMode, &Preferences::setLossTextMode, LossMode::always,
            {{"PacketLossTextMode", text("always")}}),
        assignment(
            "LossOff", &Preferences::lossTextMode, &Preferences::setLossTextMode, LossMode::off,
            {{"PacketLossTextMode", text("off")}}),
        assignment(
            "ShowNotifications", &Preferences::showNotifications, &Preferences::setShowNotifications, true,
            {{"ShowNotifications", true}}),
        assignment(
            "KeepsHistory", &Preferences::keepsHistory, &Preferences::setKeepsHistory, false,
            {{"KeepHistory", false}}),
        assignment(
            "ChecksForUpdates", &Preferences::automaticallyChecksForUpdates,
            &Preferences::setAutomaticallyChecksForUpdates, false, {{"CheckForUpdates", false}}),
        assignment(
            "DownloadsUpdates", &Preferences::automaticallyDownloadsUpdates,
            &Preferences::setAutomaticallyDownloadsUpdates, true, {{"InstallUpdates", true}}),
        assignment(
            "LastUpdateCheck", &Preferences::lastUpdateCheckDate, &Preferences::setLastUpdateCheckDate,
            secondsSince1970(1'800'000'000), {{"LastUpdateCheckDate", 1.8e9}}),
        assignment(
            "SkippedUpdate", &Preferences::skippedUpdate, &Preferences::setSkippedUpdate, "1.2",
            {{"SkippedUpdate", text("1.2")}})),
    caseName);

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
        seen, ElementsAre(Settings{.hostname = "example.org", .pingTimeout = 9, .panelForm = Form::wide}));
}

// Restoring the defaults.

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
    ASSERT_EQ(changes.size(), 12u + 11u);
    const auto ofOthers = changes.begin() + 8;
    const auto written = changes.begin() + 12;
    EXPECT_THAT(
        std::vector(changes.begin(), ofOthers),
        testing::UnorderedElementsAre(
            removed("Hostname"), removed("PingTimeout"), removed("PingInterval"),
            removed("SlowPingLowThreshold"), removed("ShowIcon"), removed("ShowText"),
            removed("ShowNotifications"), removed("KeepHistory")));
    EXPECT_THAT(
        std::vector(ofOthers, written), ElementsAre(
                                            removed("PacketLossTextMode"), removed("ShowPacketLossText"),
                                            removed("PanelFace"), removed("PanelInk")));
    EXPECT_THAT(
        std::vector(written, changes.end()),
        ElementsAre(
            Change{"Hostname", text("1.1.1.1")}, Change{"SlowPingLowThreshold", 100.0},
            Change{"PingTimeout", 4.0}, Change{"PingInterval", 1.0}, Change{"ShowIcon", true},
            Change{"ShowText", true}, Change{"PacketLossTextMode", text("whenLossy")},
            Change{"ShowNotifications", false}, Change{"KeepHistory", true},
            Change{"PanelFace", text("auto")}, Change{"PanelInk", text("auto")}));
}

TEST_F(RestoringDefaults, LeavesUpdatesAlone) {
    put(
        {{"CheckForUpdates", false},
         {"InstallUpdates", true},
         {"LastUpdateCheckDate", 1.8e9},
         {"SkippedUpdate", text("1.2")}});
    Preferences prefs(defaults_);

    prefs.restoreDefaults();

    EXPECT_FALSE(prefs.automaticallyChecksForUpdates());
    EXPECT_TRUE(prefs.automaticallyDownloadsUpdates());
    EXPECT_EQ(prefs.lastUpdateCheckDate(), secondsSince1970(1'800'000'000));
    EXPECT_EQ(prefs.skippedUpdate(), "1.2");
    EXPECT_EQ(defaults_.stored("SkippedUpdate"), Value(text("1.2")));
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

} // namespace tarnwick::test
