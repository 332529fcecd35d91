// The settings file: what is read from it, what is written to it, and when.
#include "tests/platform/xdg/SettingsFileTest.h"

#include "tests/support/CaseName.h"
#include "tests/support/SystemCalls.h"
#include "tests/support/Variable.h"

#include <fstream>
#include <functional>
#include <gmock/gmock.h>
#include <iterator>
#include <optional>
#include <rapidcheck.h>
#include <utility>

namespace tarnwick {

namespace {

namespace fs = std::filesystem;
using testing::Optional;

UserDefaults::Value text(const std::string& value) {
    return value;
}

/// What a change makes of the file and of the values that are read.
struct Change {
    std::string name;
    std::optional<std::string> before; ///< the file
    std::function<void(SettingsFile&)> act;
    std::optional<std::string> after; ///< as a JSON object; none: no file
    UserDefaults::Table read;
    UserDefaults::Table forThisRun{};

    friend std::ostream& operator<<(std::ostream& out, const Change& change) { return out << change.name; }
};

class ChangedSettings : public SettingsFileTest, public testing::WithParamInterface<Change> {};

} // namespace

TEST_P(ChangedSettings, LieInTheFileAndAreRead) {
    if (GetParam().before) {
        store(*GetParam().before);
    }
    SettingsFile settings(loop_, path_, GetParam().forThisRun);
    settings.registerDefaults({{"PingTimeout", 4.0}});

    GetParam().act(settings);
    loop_.advance(SettingsFile::writeDelay);

    ASSERT_EQ(fs::exists(path_), GetParam().after.has_value());
    if (GetParam().after) {
        EXPECT_EQ(onDisk(), Json::parse(*GetParam().after));
    }
    EXPECT_EQ(valuesIn(settings), GetParam().read);
}

INSTANTIATE_TEST_SUITE_P(
    SettingsFile, ChangedSettings,
    testing::Values(
        Change{"NoFile", {}, [](auto&) {}, {}, {{"PingTimeout", 4.0}}},
        Change{
            "EachTypeRead",
            R"({"Hostname": "h.example", "PingTimeout": 2.5, "PingInterval": 3, "ShowIcon": false})",
            [](auto&) {},
            R"({"Hostname": "h.example", "PingTimeout": 2.5, "PingInterval": 3, "ShowIcon": false})",
            {{"Hostname", text("h.example")},
             {"PingTimeout", 2.5},
             {"PingInterval", 3.0},
             {"ShowIcon", false}}},
        Change{
            "EachTypeStored",
            {},
            [](auto& settings) {
                settings.set("Hostname", text("h.example"));
                settings.set("PingTimeout", 2.5);
                settings.set("ShowIcon", true);
            },
            R"({"Hostname": "h.example", "PingTimeout": 2.5, "ShowIcon": true})",
            {{"Hostname", text("h.example")}, {"PingTimeout", 2.5}, {"ShowIcon", true}}},
        Change{
            "StoringKeepsUnknownKeys",
            R"({"Window": {"x": 3, "tags": ["a", null]}, "PingTimeout": 2, "Later": 1.5})",
            [](auto& settings) { settings.set("PingTimeout", 5.0); },
            R"({"Window": {"x": 3, "tags": ["a", null]}, "PingTimeout": 5.0, "Later": 1.5})",
            {{"PingTimeout", 5.0}}},
        Change{
            "ARemovedSettingReadsAsItsDefault",
            R"({"PingTimeout": 2, "PingInterval": 3})",
            [](auto& settings) { settings.remove("PingTimeout"); },
            R"({"PingInterval": 3})",
            {{"PingTimeout", 4.0}, {"PingInterval", 3.0}}},
        Change{
            "RemovingWhatIsNotStored",
            {},
            [](auto& settings) { settings.remove("PingTimeout"); },
            {},
            {{"PingTimeout", 4.0}}},
        Change{
            "AValueForThisRunLiesAboveTheStoredOneAndIsNotWritten",
            R"({"Hostname": "stored.example"})",
            [](auto& settings) {
                settings.set("PingInterval", 3.0);
                settings.flush();
                settings.remove("PingInterval");
            },
            R"({"Hostname": "stored.example"})",
            {{"Hostname", text("for.this.run")}, {"PingTimeout", 9.0}},
            {{"Hostname", text("for.this.run")}, {"PingTimeout", 9.0}}},
        Change{
            "AValueForThisRunEndsWhenItsKeyIsStored",
            {},
            [](auto& settings) { settings.set("PingTimeout", 2.0); },
            R"({"PingTimeout": 2.0})",
            {{"PingTimeout", 2.0}},
            {{"PingTimeout", 9.0}}},
        Change{
            "AValueForThisRunEndsWhenTheStoredValueIsStoredAgain",
            R"({"PingTimeout": 2.0})",
            [](auto& settings) { settings.set("PingTimeout", 2.0); },
            R"({"PingTimeout": 2.0})",
            {{"PingTimeout", 2.0}},
            {{"PingTimeout", 9.0}}},
        Change{
            "AValueForThisRunEndsWhenItsKeyIsRemoved",
            R"({"PingTimeout": 2.0})",
            [](auto& settings) { settings.remove("PingTimeout"); },
            "{}",
            {{"PingTimeout", 4.0}},
            {{"PingTimeout", 9.0}}},
        Change{
            "AFullDiskLeavesTheOldFileWhileTheValuesHold",
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
            "AFullDiskIsMadeUpForByTheNextChange",
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
    test::caseName);

TEST_F(SettingsFileTest, ALaterRunReadsAnyFiniteNumberAndAnyTextAsStored) {
    EXPECT_TRUE(rc::check("stored values come back", [this](double number, const std::string& bytes) {
        const auto text = Json(bytes).dump(-1, ' ', true, Json::error_handler_t::replace);
        const auto valid = Json::parse(text).get<std::string>();
        RC_PRE(std::isfinite(number));
        {
            SettingsFile settings(loop_, path_);
            settings.set("Number", number);
            settings.set("Text", valid);
        }
        const SettingsFile settings(loop_, path_);
        RC_ASSERT(settings.number("Number") == std::optional(number));
        RC_ASSERT(settings.text("Text") == std::optional(valid));
    }));
}

TEST_F(SettingsFileTest, ReadingAndRegisteringWriteNothing) {
    SettingsFile settings(loop_, path_, {{"PingInterval", 2.0}});
    settings.registerDefaults({{"PingTimeout", 4.0}});
    EXPECT_THAT(settings.number("PingTimeout"), Optional(4.0));

    EXPECT_FALSE(fs::exists(path_.parent_path()));
}

TEST_F(SettingsFileTest, AReaderFindsTheOldFileOrTheNewOneAsAWhole) {
    const std::string old = R"({"PingTimeout": 2.0})";
    store(old);
    std::ifstream reader(path_);

    SettingsFile(loop_, path_).set("PingTimeout", 3.0);

    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(reader), {}), old);
    EXPECT_EQ(onDisk()["PingTimeout"], 3.0);
    EXPECT_THAT(textsBeside(), testing::IsEmpty());
}

TEST_F(SettingsFileTest, ATextThatIsNotUtf8DoesNotKeepTheOthersFromBeingStored) {
    SettingsFile settings(loop_, path_);
    settings.set("Hostname", std::string("caf\xE9.example"));
    settings.flush();

    settings.set("PingTimeout", 3.0);

    EXPECT_EQ(onDisk()["PingTimeout"], 3.0);
}

TEST_F(SettingsFileTest, WhatIsStoredIsToldAsItIsWrittenUntilItChanges) {
    store("{\"Hostname\": 1e1,\n\"Colour\": null}");
    SettingsFile settings(loop_, path_);

    const auto keys = [&settings] {
        std::vector<std::string> texts;
        for (const StoredSetting& stored : settings.stored()) {
            texts.push_back(std::to_string(stored.line) + ' ' + stored.key + ' ' + stored.written);
        }
        return texts;
    };
    EXPECT_THAT(keys(), testing::ElementsAre("2 Colour null", "1 Hostname 10.0"));

    settings.set("Hostname", std::string("one.example"));

    EXPECT_THAT(keys(), testing::ElementsAre("2 Colour null"));
}

// When it is written.

TEST_F(SettingsFileTest, ChangesOfAShortTimeAreReadAtOnceAndWrittenTogether) {
    const std::string old = R"({"PingTimeout": 2.0})";
    store(old);
    SettingsFile settings(loop_, path_);

    settings.remove("PingTimeout");
    loop_.advance(SettingsFile::writeDelay / 2);
    settings.set("PingInterval", 3.0);
    EXPECT_EQ(valuesIn(settings), (UserDefaults::Table{{"PingInterval", 3.0}}));
    EXPECT_EQ(test::contentOf(path_), old);
    loop_.advance(SettingsFile::writeDelay);

    EXPECT_EQ(Json::parse(test::contentOf(path_)), Json({{"PingInterval", 3.0}}));
}

TEST_F(SettingsFileTest, ARowOfChangesIsWrittenOnceItRests) {
    SettingsFile settings(loop_, path_);
    int writes = 0;
    settings.onWritten = [&] { ++writes; };

    for (double value = 0; value < 195; ++value) {
        settings.set("SlowPingLowThreshold", value);
        loop_.advance(SettingsFile::writeDelay / 4);
    }
    EXPECT_EQ(writes, 0);

    EXPECT_EQ(onDisk()["SlowPingLowThreshold"], 194.0);
    EXPECT_EQ(writes, 1);
}

TEST_F(SettingsFileTest, OnlyAFlushWaitsForTheDisk) {
    const auto hasFlushed = testing::Contains(testing::StartsWith("flush settings.json"));
    SettingsFile settings(loop_, path_);
    test::diskCalls.clear();
    settings.set("PingTimeout", 2.0);
    loop_.advance(SettingsFile::writeDelay);
    ASSERT_TRUE(fs::exists(path_));
    EXPECT_THAT(test::diskCalls, testing::Not(hasFlushed));

    settings.flush();
    EXPECT_THAT(test::diskCalls, hasFlushed);
    test::diskCalls.clear();
    settings.flush();
    EXPECT_THAT(test::diskCalls, testing::IsEmpty());
    settings.set("PingTimeout", 3.0);
    settings.flush();
    EXPECT_THAT(test::diskCalls, hasFlushed);
}

TEST_F(SettingsFileTest, AWriteThatFailsIsRepeatedUntilItSucceeds) {
    SettingsFile settings(loop_, path_);
    settings.set("PingTimeout", 2.0);
    {
        const FullDisk full;
        loop_.advance(SettingsFile::writeDelay + SettingsFile::retryDelay);
    }

    loop_.advance(SettingsFile::retryDelay - SettingsFile::writeDelay);
    EXPECT_FALSE(fs::exists(path_));
    loop_.advance(SettingsFile::writeDelay);

    EXPECT_EQ(Json::parse(test::contentOf(path_)), Json({{"PingTimeout", 2.0}}));
    EXPECT_EQ(loop_.timerCount(), 0);
}

TEST_F(SettingsFileTest, AFlushThatFailsIsRepeatedAsAFlush) {
    SettingsFile settings(loop_, path_);
    settings.set("PingTimeout", 2.0);
    {
        const FullDisk full;
        settings.flush();
    }
    test::diskCalls.clear();

    loop_.advance(SettingsFile::retryDelay);

    EXPECT_THAT(test::diskCalls, testing::Contains("flush settings.json.new"));
}

TEST_F(SettingsFileTest, AFlushWritesAtOnceAndLeavesNothingToDo) {
    SettingsFile settings(loop_, path_);
    settings.set("PingTimeout", 2.0);

    settings.flush();

    EXPECT_EQ(Json::parse(test::contentOf(path_)), Json({{"PingTimeout", 2.0}}));
    EXPECT_EQ(loop_.timerCount(), 0);
}

TEST_F(SettingsFileTest, WithoutAChangeAFlushWritesNothing) {
    SettingsFile settings(loop_, path_);

    settings.flush();

    EXPECT_FALSE(fs::exists(path_));
}

TEST_F(SettingsFileTest, WhatIsNotWrittenYetIsWrittenAtTheEnd) {
    {
        SettingsFile settings(loop_, path_);
        settings.set("PingTimeout", 2.0);
        ASSERT_FALSE(fs::exists(path_));
    }

    EXPECT_EQ(Json::parse(test::contentOf(path_)), Json({{"PingTimeout", 2.0}}));
}

TEST_F(SettingsFileTest, EachWriteButTheOneAtTheEndIsTold) {
    int told = 0;
    {
        SettingsFile settings(loop_, path_);
        settings.onWritten = [&] { ++told; };
        settings.flush();
        EXPECT_EQ(told, 0);
        settings.set("PingTimeout", 2.0);
        settings.flush();
        EXPECT_EQ(told, 1);
        settings.set("PingTimeout", 2.0);
        settings.flush();
        EXPECT_EQ(told, 1) << "the file held this already";
        settings.set("PingTimeout", 3.0);
    }
    EXPECT_EQ(told, 1);
    EXPECT_EQ(Json::parse(test::contentOf(path_)), Json({{"PingTimeout", 3.0}}));
}

// Its place.

TEST(SettingsFilePath, FollowsTheFoldersOfTheUser) {
    const test::Variable home("HOME", "/home/someone");
    const std::string usual = "/home/someone/.config";
    for (const auto& [config, folder] : std::initializer_list<std::pair<const char*, std::string>>{
             {"/somewhere/config", "/somewhere/config"},
             {nullptr, usual},
             {"", usual},
             {"relative/config", usual}}) {
        const test::Variable variable("XDG_CONFIG_HOME", config);
        EXPECT_EQ(SettingsFile::defaultPath(), folder + "/Tarnwick/settings.json");
    }
}

} // namespace tarnwick
