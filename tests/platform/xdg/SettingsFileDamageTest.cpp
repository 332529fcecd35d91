// A settings file with values of another type than their key's, or one that can't be understood at all.
#include "tests/platform/xdg/SettingsFileTest.h"

#include "tests/support/CaseName.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <utility>

namespace tarnwick {

namespace {

namespace fs = std::filesystem;
using testing::Optional;

struct Damaged {
    std::string name;
    std::string text;

    friend std::ostream& operator<<(std::ostream& out, const Damaged& damaged) { return out << damaged.name; }
};

class DamagedSettingsFile : public SettingsFileTest, public testing::WithParamInterface<Damaged> {};

} // namespace

TEST_F(SettingsFileTest, AValueOfAnotherTypeReadsAsItsDefaultWithoutLosingTheOthers) {
    using Setting = std::pair<const char*, const char*>;
    for (const auto& [key, wrong] :
         {Setting{"PingTimeout", "true"}, Setting{"PingTimeout", R"("2")"}, Setting{"PingTimeout", "null"},
          Setting{"PingTimeout", "[2]"}, Setting{"ShowIcon", "0"}, Setting{"ShowIcon", R"("false")"},
          Setting{"ShowIcon", "{}"}, Setting{"Hostname", "9.9"}, Setting{"Hostname", "false"},
          Setting{"Hostname", "null"}}) {
        SCOPED_TRACE(std::string(key) + ": " + wrong);
        Json stored{{"Other", "kept"}, {key, Json::parse(wrong)}};
        store(stored.dump());
        SettingsFile settings(loop_, path_);
        settings.registerDefaults(
            {{"Hostname", std::string("default.example")}, {"PingTimeout", 4.0}, {"ShowIcon", true}});

        EXPECT_THAT(settings.text("Hostname"), Optional(std::string("default.example")));
        EXPECT_THAT(settings.number("PingTimeout"), Optional(4.0));
        EXPECT_THAT(settings.boolean("ShowIcon"), Optional(true));
        EXPECT_THAT(settings.text("Other"), Optional(std::string("kept")));

        settings.set("Fresh", 1.0);
        stored["Fresh"] = 1.0;
        EXPECT_EQ(onDisk(), stored);
    }
}

// Files that can't be understood.

TEST_P(DamagedSettingsFile, CountsAsEmptyAndIsLeftAloneWhileNothingIsStored) {
    store(GetParam().text);
    SettingsFile settings(loop_, path_);
    settings.registerDefaults({{"PingTimeout", 4.0}});

    EXPECT_THAT(settings.number("PingTimeout"), Optional(4.0));
    EXPECT_EQ(settings.text("Hostname"), std::nullopt);
    EXPECT_EQ(test::contentOf(path_), GetParam().text);
    EXPECT_THAT(textsBeside(), testing::IsEmpty());
}

TEST_F(SettingsFileTest, OfADamagedFileWhatCanBeReadCountsAtTheStart) {
    store("{\"PingTimeout\": 2\n// the router\n\"Hostname\": \"one.example\",}");
    SettingsFile settings(loop_, path_);

    EXPECT_THAT(settings.number("PingTimeout"), Optional(2.0));
    EXPECT_THAT(settings.text("Hostname"), Optional(std::string("one.example")));
}

TEST_P(DamagedSettingsFile, IsKeptUnderAnotherNameBeforeItIsOverwritten) {
    store(GetParam().text);
    SettingsFile settings(loop_, path_);

    settings.set("PingTimeout", 2.0);
    settings.flush();
    settings.set("PingInterval", 3.0);

    EXPECT_EQ(onDisk(), Json::parse(R"({"PingTimeout": 2.0, "PingInterval": 3.0})"));
    EXPECT_THAT(textsBeside(), testing::ElementsAre(GetParam().text));
}

INSTANTIATE_TEST_SUITE_P(
    AllKinds, DamagedSettingsFile,
    testing::Values(
        Damaged{"Truncated", R"({"PingTim)"}, Damaged{"NoJson", "PingTimeout = 2\n"},
        Damaged{"AListInsteadOfAnObject", R"(["PingTimeout", 2])"}, Damaged{"OnlyANumber", "2"},
        Damaged{"NullBytes", std::string(64, '\0')}, Damaged{"BrokenUtf8", "{\"Hostname\": \"\xC3\x28\"}"},
        Damaged{"ANumberBeyondAllRange", R"({"PingTimeout": 1e999})"},
        Damaged{"ManyOpenBrackets", std::string(20'000, '[')}),
    test::caseName);

TEST_F(SettingsFileTest, EachDamagedFileIsKeptUnderANameOfItsOwn) {
    store("first damage");
    SettingsFile(loop_, path_).set("PingTimeout", 2.0);
    store("second damage");
    SettingsFile(loop_, path_).set("PingTimeout", 3.0);

    EXPECT_THAT(textsBeside(), testing::UnorderedElementsAre("first damage", "second damage"));
    EXPECT_EQ(onDisk()["PingTimeout"], 3.0);
}

TEST_F(SettingsFileTest, ADamagedFileIsKeptOnceWhileTheDiskIsFull) {
    store("damage");
    SettingsFile settings(loop_, path_);
    {
        const FullDisk fullDisk;
        settings.set("PingTimeout", 2.0);
        settings.flush();
        settings.set("PingInterval", 3.0);
        settings.flush();
        EXPECT_THAT(textsBeside(), testing::ElementsAre("damage"));
    }

    settings.flush();

    EXPECT_THAT(textsBeside(), testing::ElementsAre("damage"));
    EXPECT_EQ(onDisk(), Json::parse(R"({"PingTimeout": 2.0, "PingInterval": 3.0})"));
}

TEST_F(SettingsFileTest, AFileDamagedWhileInUseIsKeptAsideAndLosesNoSetting) {
    store(R"({"PingTimeout": 2, "Window": "left"})");
    SettingsFile settings(loop_, path_);
    store(R"({"PingTimeout": 2, "Window": )");

    settings.set("PingInterval", 3.0);

    EXPECT_EQ(onDisk(), Json::parse(R"({"PingTimeout": 2, "Window": "left", "PingInterval": 3.0})"));
    EXPECT_THAT(textsBeside(), testing::ElementsAre(R"({"PingTimeout": 2, "Window": )"));
}

TEST_F(SettingsFileTest, ALinkToNothingIsToldAndWritingMakesItsTarget) {
    const fs::path target = path_.parent_path() / "target.json";
    fs::create_directories(path_.parent_path());
    fs::create_symlink(target, path_);
    SettingsFile settings(loop_, path_);
    EXPECT_EQ(settings.mistake(), "it is a link to a file that is not there");

    settings.set("PingTimeout", 2.0);
    settings.flush();

    EXPECT_EQ(settings.mistake(), "");
    EXPECT_TRUE(fs::is_symlink(path_));
    EXPECT_EQ(Json::parse(test::contentOf(target)), Json::parse(R"({"PingTimeout": 2.0})"));
}

TEST_F(SettingsFileTest, AKeyThatIsThereTwiceIsKnownUntilTheFileIsWritten) {
    store("{\"PingTimeout\": 2,\n\"PingTimeout\": 3, \"ShowIcon\": true}");
    SettingsFile settings(loop_, path_);
    const auto repeated = [&settings] {
        std::vector<std::string> keys;
        for (const StoredSetting& stored : settings.stored()) {
            if (stored.isRepeated) {
                keys.push_back(stored.key + " in line " + std::to_string(stored.line));
            }
        }
        return keys;
    };
    EXPECT_THAT(repeated(), testing::ElementsAre("PingTimeout in line 2"));

    settings.set("ShowIcon", false);
    settings.flush();

    EXPECT_THAT(repeated(), testing::IsEmpty());
}

TEST_F(SettingsFileTest, AFolderInItsPlaceIsNoReasonToStop) {
    fs::create_directories(path_);
    SettingsFile settings(loop_, path_);

    settings.set("PingTimeout", 2.0);
    settings.flush();

    EXPECT_THAT(settings.number("PingTimeout"), Optional(2.0));
}

TEST_F(SettingsFileTest, AnUnknownValueOfGreatDepthIsNotLost) {
    const std::string deep = std::string(100'000, '[') + std::string(100'000, ']');
    const std::string old = R"({"Deep":)" + deep + "}";
    store(old);
    SettingsFile settings(loop_, path_);

    settings.set("PingTimeout", 2.0);
    settings.flush();

    std::string text = test::contentOf(path_);
    std::erase_if(text, [](char letter) { return letter == ' ' || letter == '\n'; });
    const bool isInTheFile = text.find(deep) != std::string::npos;
    const bool isBesideIt = textsBeside().contains(old);
    EXPECT_TRUE(isInTheFile || isBesideIt);
    EXPECT_THAT(SettingsFile(loop_, path_).number("PingTimeout"), Optional(2.0));
}

} // namespace tarnwick
