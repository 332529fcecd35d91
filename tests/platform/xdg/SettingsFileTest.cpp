// The settings file: what is read from it, what is written to it, and what survives a damaged one.
#include "platform/xdg/SettingsFile.h"

#include "tests/simulation/VirtualRunLoop.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Variable.h"

#include <csignal>
#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <rapidcheck.h>
#include <set>
#include <sys/resource.h>

namespace tarnwick {

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;
using testing::Optional;

class SettingsFileTest : public testing::Test {
protected:
    [[nodiscard]] const fs::path& path() const { return path_; }

    /// Changed settings are written after some of its time.
    [[nodiscard]] simulation::VirtualRunLoop& loop() { return loop_; }

    /// What the file holds once all changes are written.
    [[nodiscard]] Json onDisk() {
        loop_.advance(SettingsFile::writeDelay);
        return Json::parse(test::contentOf(path_), nullptr, false);
    }

    void store(const std::string& text) const { test::writeFile(path_, text); }

    /// The texts of all files beside the settings file.
    [[nodiscard]] std::multiset<std::string> textsBeside() const {
        std::multiset<std::string> texts;
        for (const auto& entry : fs::directory_iterator(path_.parent_path())) {
            if (entry.path() != path_) {
                texts.insert(test::contentOf(entry.path()));
            }
        }
        return texts;
    }

private:
    simulation::VirtualRunLoop loop_;
    test::TemporaryFolder folder_;
    fs::path path_ = folder_.path() / "Tarnwick" / "settings.json";
};

UserDefaults::Value text(const std::string& value) {
    return value;
}

/// What is read under the keys of these tests, in whichever type there is.
UserDefaults::Table valuesIn(const SettingsFile& settings) {
    UserDefaults::Table values;
    for (const std::string key : {"Hostname", "PingTimeout", "PingInterval", "ShowIcon"}) {
        if (const auto value = settings.text(key)) {
            values[key] = *value;
        }
        if (const auto value = settings.number(key)) {
            values[key] = *value;
        }
        if (const auto value = settings.boolean(key)) {
            values[key] = *value;
        }
    }
    return values;
}

/// Lets this process write no byte to a file, as on a full disk, until it goes.
class FullDisk {
public:
    FullDisk() : before_(std::signal(SIGXFSZ, SIG_IGN)) {
        ::getrlimit(RLIMIT_FSIZE, &limit_);
        rlimit nothing = limit_;
        nothing.rlim_cur = 0;
        ::setrlimit(RLIMIT_FSIZE, &nothing);
    }

    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

    ~FullDisk() {
        ::setrlimit(RLIMIT_FSIZE, &limit_);
        std::signal(SIGXFSZ, before_);
    }

private:
    rlimit limit_{};
    void (*before_)(int);
};

} // namespace

// What a change makes of the file and of the values that are read.

struct Change {
    std::string name;
    std::optional<std::string> before; ///< the file
    std::function<void(SettingsFile&)> act;
    std::optional<std::string> after; ///< as a JSON object; none: no file
    UserDefaults::Table read;

    friend std::ostream& operator<<(std::ostream& out, const Change& change) { return out << change.name; }
};

class ChangedSettings : public SettingsFileTest, public testing::WithParamInterface<Change> {};

TEST_P(ChangedSettings, LieInTheFileAndAreRead) {
    if (GetParam().before) {
        store(*GetParam().before);
    }
    SettingsFile settings(loop(), path());
    settings.registerDefaults({{"PingTimeout", 4.0}});

    GetParam().act(settings);
    loop().advance(SettingsFile::writeDelay);

    ASSERT_EQ(fs::exists(path()), GetParam().after.has_value());
    if (GetParam().after) {
        EXPECT_EQ(onDisk(), Json::parse(*GetParam().after));
    }
    EXPECT_EQ(valuesIn(settings), GetParam().read);
}

INSTANTIATE_TEST_SUITE_P(
    Reading, ChangedSettings,
    testing::Values(
        Change{"NoFile", {}, [](auto&) {}, {}, {{"PingTimeout", 4.0}}},
        Change{
            "EachType",
            R"({"Hostname": "h.example", "PingTimeout": 2.5, "PingInterval": 3, "ShowIcon": false})",
            [](auto&) {},
            R"({"Hostname": "h.example", "PingTimeout": 2.5, "PingInterval": 3, "ShowIcon": false})",
            {{"Hostname", text("h.example")},
             {"PingTimeout", 2.5},
             {"PingInterval", 3.0},
             {"ShowIcon", false}}}),
    [](const auto& test) { return test.param.name; });
INSTANTIATE_TEST_SUITE_P(
    Storing, ChangedSettings,
    testing::Values(
        Change{
            "EachType",
            {},
            [](auto& settings) {
                settings.set("Hostname", text("h.example"));
                settings.set("PingTimeout", 2.5);
                settings.set("ShowIcon", true);
            },
            R"({"Hostname": "h.example", "PingTimeout": 2.5, "ShowIcon": true})",
            {{"Hostname", text("h.example")}, {"PingTimeout", 2.5}, {"ShowIcon", true}}},
        Change{
            "KeepsUnknownKeys",
            R"({"Window": {"x": 3, "tags": ["a", null]}, "PingTimeout": 2, "Later": 1.5})",
            [](auto& settings) { settings.set("PingTimeout", 5.0); },
            R"({"Window": {"x": 3, "tags": ["a", null]}, "PingTimeout": 5.0, "Later": 1.5})",
            {{"PingTimeout", 5.0}}},
        Change{
            "RemovedReadsAsItsDefault",
            R"({"PingTimeout": 2, "PingInterval": 3})",
            [](auto& settings) { settings.remove("PingTimeout"); },
            R"({"PingInterval": 3})",
            {{"PingTimeout", 4.0}, {"PingInterval", 3.0}}},
        Change{
            "RemovingWhatIsNotStored",
            {},
            [](auto& settings) { settings.remove("PingTimeout"); },
            {},
            {{"PingTimeout", 4.0}}}),
    [](const auto& test) { return test.param.name; });
INSTANTIATE_TEST_SUITE_P(
    VolatileValue, ChangedSettings,
    testing::Values(
        Change{
            "LiesAboveTheStoredOneAndIsNotWritten",
            R"({"Hostname": "stored.example"})",
            [](auto& settings) {
                settings.setVolatile("Hostname", text("for.this.run"));
                settings.setVolatile("PingTimeout", 9.0);
                settings.set("PingInterval", 3.0);
                settings.flush();
                settings.remove("PingInterval");
            },
            R"({"Hostname": "stored.example"})",
            {{"Hostname", text("for.this.run")}, {"PingTimeout", 9.0}}},
        Change{
            "EndsWhenItsKeyIsStored",
            {},
            [](auto& settings) {
                settings.setVolatile("PingTimeout", 9.0);
                settings.set("PingTimeout", 2.0);
            },
            R"({"PingTimeout": 2.0})",
            {{"PingTimeout", 2.0}}},
        Change{
            "EndsWhenTheStoredValueIsStoredAgain",
            R"({"PingTimeout": 2.0})",
            [](auto& settings) {
                settings.setVolatile("PingTimeout", 9.0);
                settings.set("PingTimeout", 2.0);
            },
            R"({"PingTimeout": 2.0})",
            {{"PingTimeout", 2.0}}},
        Change{
            "EndsWhenItsKeyIsRemoved",
            R"({"PingTimeout": 2.0})",
            [](auto& settings) {
                settings.setVolatile("PingTimeout", 9.0);
                settings.remove("PingTimeout");
            },
            "{}",
            {{"PingTimeout", 4.0}}}),
    [](const auto& test) { return test.param.name; });
INSTANTIATE_TEST_SUITE_P(
    FullDisk, ChangedSettings,
    testing::Values(
        Change{
            "LeavesTheOldFileWhileTheValuesHold",
            R"({"PingTimeout": 2.0})",
            [](auto& settings) {
                const FullDisk full;
                settings.set("PingTimeout", 3.0);
                settings.flush();
                settings.set("PingInterval", 5.0);
                settings.flush();
            },
            R"({"PingTimeout": 2.0})",
            {{"PingTimeout", 3.0}, {"PingInterval", 5.0}}},
        Change{
            "IsMadeUpForByTheNextChange",
            {},
            [](auto& settings) {
                {
                    const FullDisk full;
                    settings.set("PingTimeout", 3.0);
                    settings.flush();
                }
                settings.set("PingInterval", 5.0);
            },
            R"({"PingTimeout": 3.0, "PingInterval": 5.0})",
            {{"PingTimeout", 3.0}, {"PingInterval", 5.0}}}),
    [](const auto& test) { return test.param.name; });

TEST_F(SettingsFileTest, ALaterRunReadsWhatAnEarlierOneStored) {
    SettingsFile(loop(), path()).set("Hostname", std::string("häuschen.example"));
    SettingsFile(loop(), path()).set("PingTimeout", 0.1);

    const SettingsFile settings(loop(), path());

    EXPECT_THAT(settings.text("Hostname"), Optional(std::string("häuschen.example")));
    EXPECT_THAT(settings.number("PingTimeout"), Optional(0.1));
}

TEST_F(SettingsFileTest, AnyFiniteNumberAndAnyTextAreReadBackAsStored) {
    EXPECT_TRUE(rc::check("stored values come back", [this](double number, const std::string& bytes) {
        const auto text = Json(bytes).dump(-1, ' ', true, Json::error_handler_t::replace);
        const auto valid = Json::parse(text).get<std::string>();
        RC_PRE(std::isfinite(number));
        {
            SettingsFile settings(loop(), path());
            settings.set("Number", number);
            settings.set("Text", valid);
        }
        const SettingsFile settings(loop(), path());
        RC_ASSERT(settings.number("Number") == std::optional(number));
        RC_ASSERT(settings.text("Text") == std::optional(valid));
    }));
}

TEST_F(SettingsFileTest, ReadingAndRegisteringWriteNothing) {
    SettingsFile settings(loop(), path());
    settings.registerDefaults({{"PingTimeout", 4.0}});
    settings.setVolatile("PingInterval", 2.0);
    EXPECT_THAT(settings.number("PingTimeout"), Optional(4.0));

    EXPECT_FALSE(fs::exists(path().parent_path()));
}

TEST_F(SettingsFileTest, AHandEditIsKeptAndTakenOverWhenASettingIsStored) {
    store(R"({"PingTimeout": 2})");
    SettingsFile settings(loop(), path());
    store(R"({"PingTimeout": 2, "Hostname": "by.hand"})");

    settings.set("PingInterval", 3.0);

    EXPECT_EQ(onDisk(), Json::parse(R"({"PingTimeout": 2, "Hostname": "by.hand", "PingInterval": 3.0})"));
    EXPECT_THAT(settings.text("Hostname"), Optional(std::string("by.hand")));
}

TEST_F(SettingsFileTest, TwoProgramsDoNotUndoEachOthersSettings) {
    SettingsFile one(loop(), path());
    SettingsFile other(loop(), path());

    one.set("PingTimeout", 2.0);
    other.set("PingInterval", 3.0);
    one.remove("Hostname");
    one.set("ShowIcon", false);

    EXPECT_EQ(onDisk(), Json::parse(R"({"PingTimeout": 2.0, "PingInterval": 3.0, "ShowIcon": false})"));
}

TEST_F(SettingsFileTest, AFileThatHasVanishedIsWrittenAgain) {
    SettingsFile settings(loop(), path());
    settings.set("PingTimeout", 2.0);
    settings.flush();
    fs::remove_all(path().parent_path());

    settings.set("PingInterval", 3.0);

    EXPECT_EQ(onDisk()["PingInterval"], 3.0);
}

// Taking over what was changed in the file.

TEST_F(SettingsFileTest, ReloadingTakesOverWhatOthersHaveChanged) {
    store(R"({"Hostname": "before.example", "PingTimeout": 2, "PingInterval": 3})");
    SettingsFile settings(loop(), path());
    settings.registerDefaults({{"PingTimeout", 4.0}});
    store(R"({ "Hostname" : "by.hand" })");
    EXPECT_THAT(settings.text("Hostname"), Optional(std::string("before.example")));

    EXPECT_TRUE(settings.reload());

    EXPECT_EQ(valuesIn(settings), (UserDefaults::Table{{"Hostname", text("by.hand")}, {"PingTimeout", 4.0}}));
    EXPECT_EQ(test::contentOf(path()), R"({ "Hostname" : "by.hand" })");
    EXPECT_FALSE(settings.reload());
}

TEST_F(SettingsFileTest, AFileThatIsGoneCountsAsEmptyOnceReloaded) {
    store(R"({"PingTimeout": 2})");
    SettingsFile settings(loop(), path());
    fs::remove_all(path().parent_path());

    EXPECT_TRUE(settings.reload());

    EXPECT_EQ(settings.number("PingTimeout"), std::nullopt);
}

TEST_F(SettingsFileTest, ReloadingFindsNothingNewInWhatWasStoredHere) {
    SettingsFile settings(loop(), path());
    EXPECT_FALSE(settings.reload());
    settings.set("PingTimeout", 2.0);
    settings.flush();
    EXPECT_FALSE(settings.reload());
    settings.remove("PingTimeout");
    settings.flush();
    EXPECT_FALSE(settings.reload());
}

TEST_F(SettingsFileTest, AHandEditIsNewAlsoAfterAnOwnChangeHasTakenItUp) {
    SettingsFile settings(loop(), path());
    store(R"({"Hostname": "by.hand"})");
    settings.set("PingTimeout", 2.0);
    settings.flush();

    EXPECT_TRUE(settings.reload());
    EXPECT_FALSE(settings.reload());
}

TEST_F(SettingsFileTest, VolatileAndUnsavedValuesStayAboveWhatIsReloaded) {
    SettingsFile settings(loop(), path());
    settings.setVolatile("Hostname", text("for.this.run"));
    {
        const FullDisk disk;
        settings.set("PingTimeout", 9.0);
        settings.flush();
    }
    store(R"({"Hostname": "by.hand", "PingTimeout": 2, "PingInterval": 3})");

    settings.reload();

    EXPECT_EQ(
        valuesIn(settings),
        (UserDefaults::Table{
            {"Hostname", text("for.this.run")}, {"PingTimeout", 9.0}, {"PingInterval", 3.0}}));
}

TEST_F(SettingsFileTest, ReloadingAFileThatIsOnlyHalfWrittenChangesNothing) {
    store(R"({"PingTimeout": 2})");
    SettingsFile settings(loop(), path());
    for (const std::string text : {"", "{", R"({"PingTimeout": 3, "Host)", "[3]"}) {
        store(text);
        EXPECT_FALSE(settings.reload());
        EXPECT_THAT(settings.number("PingTimeout"), Optional(2.0)) << text;
        EXPECT_EQ(test::contentOf(path()), text);
    }
    EXPECT_THAT(textsBeside(), testing::IsEmpty());
}

// A value of another type than its key's.

struct Mistyped {
    std::string name;
    std::string key;
    std::string json;

    friend std::ostream& operator<<(std::ostream& out, const Mistyped& wrong) { return out << wrong.name; }
};

class MistypedSetting : public SettingsFileTest, public testing::WithParamInterface<Mistyped> {};

TEST_P(MistypedSetting, ReadsAsItsDefaultWithoutLosingTheOthers) {
    const Mistyped& wrong = GetParam();
    store(R"({"Other": "kept", ")" + wrong.key + R"(": )" + wrong.json + "}");
    const Json before = onDisk();
    SettingsFile settings(loop(), path());
    settings.registerDefaults(
        {{"Hostname", std::string("default.example")}, {"PingTimeout", 4.0}, {"ShowIcon", true}});

    EXPECT_THAT(settings.text("Hostname"), Optional(std::string("default.example")));
    EXPECT_THAT(settings.number("PingTimeout"), Optional(4.0));
    EXPECT_THAT(settings.boolean("ShowIcon"), Optional(true));
    EXPECT_THAT(settings.text("Other"), Optional(std::string("kept")));

    settings.set("Fresh", 1.0);
    Json after = before;
    after["Fresh"] = 1.0;
    EXPECT_EQ(onDisk(), after);
}

INSTANTIATE_TEST_SUITE_P(
    AllTypes, MistypedSetting,
    testing::Values(
        Mistyped{"ABooleanIsNoNumber", "PingTimeout", "true"},
        Mistyped{"ATextIsNoNumber", "PingTimeout", "\"2\""},
        Mistyped{"NullIsNoNumber", "PingTimeout", "null"}, Mistyped{"AListIsNoNumber", "PingTimeout", "[2]"},
        Mistyped{"ANumberIsNoBoolean", "ShowIcon", "0"},
        Mistyped{"ATextIsNoBoolean", "ShowIcon", "\"false\""},
        Mistyped{"AnObjectIsNoBoolean", "ShowIcon", "{}"}, Mistyped{"ANumberIsNoText", "Hostname", "9.9"},
        Mistyped{"ABooleanIsNoText", "Hostname", "false"}, Mistyped{"NullIsNoText", "Hostname", "null"}),
    [](const auto& test) { return test.param.name; });

// Files that can't be understood.

struct Damaged {
    std::string name;
    std::string text;

    friend std::ostream& operator<<(std::ostream& out, const Damaged& damaged) { return out << damaged.name; }
};

class DamagedSettingsFile : public SettingsFileTest, public testing::WithParamInterface<Damaged> {};

TEST_P(DamagedSettingsFile, CountsAsEmptyAndIsLeftAloneWhileNothingIsStored) {
    store(GetParam().text);
    SettingsFile settings(loop(), path());
    settings.registerDefaults({{"PingTimeout", 4.0}});

    EXPECT_THAT(settings.number("PingTimeout"), Optional(4.0));
    EXPECT_EQ(settings.text("Hostname"), std::nullopt);
    EXPECT_EQ(test::contentOf(path()), GetParam().text);
    EXPECT_THAT(textsBeside(), testing::IsEmpty());
}

TEST_P(DamagedSettingsFile, IsKeptUnderAnotherNameBeforeItIsOverwritten) {
    store(GetParam().text);
    SettingsFile settings(loop(), path());

    settings.set("PingTimeout", 2.0);
    settings.flush();
    settings.set("PingInterval", 3.0);

    EXPECT_EQ(onDisk(), Json::parse(R"({"PingTimeout": 2.0, "PingInterval": 3.0})"));
    EXPECT_THAT(textsBeside(), testing::ElementsAre(GetParam().text));
}

INSTANTIATE_TEST_SUITE_P(
    AllKinds, DamagedSettingsFile,
    testing::Values(
        Damaged{"Truncated", R"({"PingTimeout": 2, "Host)"}, Damaged{"NoJson", "PingTimeout = 2\n"},
        Damaged{"AListInsteadOfAnObject", R"(["PingTimeout", 2])"}, Damaged{"OnlyANumber", "2"},
        Damaged{"NullBytes", std::string(64, '\0')}, Damaged{"BrokenUtf8", "{\"Hostname\": \"\xC3\x28\"}"},
        Damaged{"ANumberBeyondAllRange", R"({"PingTimeout": 1e999})"},
        Damaged{"ManyOpenBrackets", std::string(20'000, '[')}),
    [](const auto& test) { return test.param.name; });

TEST_F(SettingsFileTest, EachDamagedFileIsKeptUnderANameOfItsOwn) {
    store("first damage");
    SettingsFile(loop(), path()).set("PingTimeout", 2.0);
    store("second damage");
    SettingsFile(loop(), path()).set("PingTimeout", 3.0);

    EXPECT_THAT(textsBeside(), testing::UnorderedElementsAre("first damage", "second damage"));
    EXPECT_EQ(onDisk()["PingTimeout"], 3.0);
}

TEST_F(SettingsFileTest, AFileDamagedWhileItIsInUseIsKeptAsideAndTheKnownSettingsAreNotLost) {
    store(R"({"PingTimeout": 2, "Window": "left"})");
    SettingsFile settings(loop(), path());
    store(R"({"PingTimeout": 2, "Window": )");

    settings.set("PingInterval", 3.0);

    EXPECT_EQ(onDisk(), Json::parse(R"({"PingTimeout": 2, "Window": "left", "PingInterval": 3.0})"));
    EXPECT_THAT(textsBeside(), testing::ElementsAre(R"({"PingTimeout": 2, "Window": )"));
}

TEST_F(SettingsFileTest, AFolderInItsPlaceIsNoReasonToStop) {
    fs::create_directories(path());
    SettingsFile settings(loop(), path());

    settings.set("PingTimeout", 2.0);
    settings.flush();

    EXPECT_THAT(settings.number("PingTimeout"), Optional(2.0));
}

TEST_F(SettingsFileTest, AnUnknownValueOfGreatDepthIsNotLost) {
    const std::string deep = std::string(100'000, '[') + std::string(100'000, ']');
    const std::string old = R"({"Deep":)" + deep + "}";
    store(old);
    SettingsFile settings(loop(), path());

    settings.set("PingTimeout", 2.0);
    settings.flush();

    std::string text = test::contentOf(path());
    std::erase_if(text, [](char letter) { return letter == ' ' || letter == '\n'; });
    const bool isInTheFile = text.find(deep) != std::string::npos;
    const bool isBesideIt = textsBeside().contains(old);
    EXPECT_TRUE(isInTheFile || isBesideIt);
    EXPECT_THAT(SettingsFile(loop(), path()).number("PingTimeout"), Optional(2.0));
}

// Writing.

TEST_F(SettingsFileTest, AReaderFindsTheOldFileOrTheNewOneAsAWhole) {
    const std::string old = R"({"PingTimeout": 2.0})";
    store(old);
    std::ifstream reader(path());

    SettingsFile(loop(), path()).set("PingTimeout", 3.0);

    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(reader), {}), old);
    EXPECT_EQ(onDisk()["PingTimeout"], 3.0);
    EXPECT_THAT(textsBeside(), testing::IsEmpty());
}

TEST_F(SettingsFileTest, ATextThatIsNotUtf8DoesNotKeepTheOthersFromBeingStored) {
    SettingsFile settings(loop(), path());
    settings.set("Hostname", std::string("caf\xE9.example"));
    settings.flush();

    settings.set("PingTimeout", 3.0);

    EXPECT_EQ(onDisk()["PingTimeout"], 3.0);
}

// When it is written.

TEST_F(SettingsFileTest, ChangesOfAShortTimeAreReadAtOnceAndWrittenTogether) {
    const std::string old = R"({"PingTimeout": 2.0})";
    store(old);
    SettingsFile settings(loop(), path());

    settings.remove("PingTimeout");
    loop().advance(SettingsFile::writeDelay / 2);
    settings.set("PingInterval", 3.0);
    EXPECT_EQ(valuesIn(settings), (UserDefaults::Table{{"PingInterval", 3.0}}));
    EXPECT_EQ(test::contentOf(path()), old);
    loop().advance(SettingsFile::writeDelay / 2);

    EXPECT_EQ(Json::parse(test::contentOf(path())), Json({{"PingInterval", 3.0}}));
}

TEST_F(SettingsFileTest, AChangeIsNotPutOffByLaterOnes) {
    SettingsFile settings(loop(), path());

    for (double value = 0; value < 8; ++value) {
        settings.set("PingTimeout", value);
        loop().advance(SettingsFile::writeDelay / 4);
    }

    EXPECT_TRUE(fs::exists(path()));
}

TEST_F(SettingsFileTest, AFlushWritesAtOnceAndLeavesNothingToDo) {
    SettingsFile settings(loop(), path());
    settings.set("PingTimeout", 2.0);

    settings.flush();

    EXPECT_EQ(Json::parse(test::contentOf(path())), Json({{"PingTimeout", 2.0}}));
    EXPECT_EQ(loop().timerCount(), 0);
}

TEST_F(SettingsFileTest, WithoutAChangeAFlushWritesNothing) {
    SettingsFile settings(loop(), path());

    settings.flush();

    EXPECT_FALSE(fs::exists(path()));
}

TEST_F(SettingsFileTest, WhatIsNotWrittenYetIsWrittenAtTheEnd) {
    {
        SettingsFile settings(loop(), path());
        settings.set("PingTimeout", 2.0);
        ASSERT_FALSE(fs::exists(path()));
    }

    EXPECT_EQ(Json::parse(test::contentOf(path())), Json({{"PingTimeout", 2.0}}));
}

TEST_F(SettingsFileTest, AHandEditBeforeTheWriteIsTakenOverAndKept) {
    store(R"({"PingTimeout": 2})");
    SettingsFile settings(loop(), path());
    settings.set("PingInterval", 3.0);
    store(R"({"PingTimeout": 5, "Hostname": "by.hand"})");

    EXPECT_TRUE(settings.reload());

    EXPECT_EQ(
        valuesIn(settings),
        (UserDefaults::Table{{"Hostname", text("by.hand")}, {"PingTimeout", 5.0}, {"PingInterval", 3.0}}));
    EXPECT_EQ(onDisk(), Json::parse(R"({"PingTimeout": 5, "Hostname": "by.hand", "PingInterval": 3.0})"));
    EXPECT_FALSE(settings.reload());
}

// Its place.

TEST(SettingsFilePath, FollowsTheConfigurationFolderOfTheUser) {
    const test::Variable config("XDG_CONFIG_HOME", "/somewhere/config");

    EXPECT_EQ(SettingsFile::defaultPath(), "/somewhere/config/Tarnwick/settings.json");
}

TEST(SettingsFilePath, LiesBelowTheHomeFolderWithoutAConfigurationFolder) {
    const test::Variable config("XDG_CONFIG_HOME", nullptr);
    const test::Variable home("HOME", "/home/someone");

    EXPECT_EQ(SettingsFile::defaultPath(), "/home/someone/.config/Tarnwick/settings.json");
}

TEST(SettingsFilePath, IgnoresAConfigurationFolderThatIsEmptyOrNotAbsolute) {
    const test::Variable home("HOME", "/home/someone");
    for (const char* invalid : {"", "relative/config"}) {
        const test::Variable config("XDG_CONFIG_HOME", invalid);
        EXPECT_EQ(SettingsFile::defaultPath(), "/home/someone/.config/Tarnwick/settings.json") << invalid;
    }
}

} // namespace tarnwick
