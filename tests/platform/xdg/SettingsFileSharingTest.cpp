// A settings file that people and other programs change as well.
#include "tests/platform/xdg/SettingsFileTest.h"

#include <gmock/gmock.h>

namespace tarnwick {

namespace {

namespace fs = std::filesystem;
using testing::Optional;
using Table = UserDefaults::Table;

} // namespace

TEST_F(SettingsFileTest, AHandEditIsKeptAndTakenOverWhenASettingIsStored) {
    store(R"({"PingTimeout": 2})");
    SettingsFile settings(loop_, path_);
    store(R"({"PingTimeout": 2, "Hostname": "by.hand"})");

    settings.set("PingInterval", 3.0);

    EXPECT_EQ(onDisk(), Json::parse(R"({"PingTimeout": 2, "Hostname": "by.hand", "PingInterval": 3.0})"));
    EXPECT_THAT(settings.text("Hostname"), Optional(std::string("by.hand")));
}

TEST_F(SettingsFileTest, TwoProgramsDoNotUndoEachOthersSettings) {
    SettingsFile one(loop_, path_);
    SettingsFile other(loop_, path_);

    one.set("PingTimeout", 2.0);
    other.set("PingInterval", 3.0);
    one.remove("Hostname");
    one.set("ShowIcon", false);

    EXPECT_EQ(onDisk(), Json::parse(R"({"PingTimeout": 2.0, "PingInterval": 3.0, "ShowIcon": false})"));
}

TEST_F(SettingsFileTest, AFileThatHasVanishedIsWrittenAgain) {
    SettingsFile settings(loop_, path_);
    settings.set("PingTimeout", 2.0);
    settings.flush();
    fs::remove_all(path_.parent_path());

    settings.set("PingInterval", 3.0);

    EXPECT_EQ(onDisk()["PingInterval"], 3.0);
}

TEST_F(SettingsFileTest, AWriteWhileTheFileIsAwayLosesNoOtherSetting) {
    store(R"({"Hostname": "kept.example"})");
    SettingsFile settings(loop_, path_);
    fs::remove(path_);

    settings.set("PingInterval", 3.0);

    EXPECT_EQ(onDisk(), Json({{"Hostname", "kept.example"}, {"PingInterval", 3.0}}));
}

TEST_F(SettingsFileTest, ReloadingTakesOverWhatOthersHaveChanged) {
    store(R"({"Hostname": "before.example", "PingTimeout": 2, "PingInterval": 3})");
    SettingsFile settings(loop_, path_);
    settings.registerDefaults({{"PingTimeout", 4.0}});
    store(R"({ "Hostname" : "by.hand" })");
    EXPECT_THAT(settings.text("Hostname"), Optional(std::string("before.example")));

    EXPECT_TRUE(settings.reload());

    EXPECT_EQ(valuesIn(settings), (Table{{"Hostname", std::string("by.hand")}, {"PingTimeout", 4.0}}));
    EXPECT_EQ(test::contentOf(path_), R"({ "Hostname" : "by.hand" })");
    EXPECT_FALSE(settings.reload());
}

TEST_F(SettingsFileTest, AFileThatIsGoneCountsAsEmptyOnceReloaded) {
    store(R"({"PingTimeout": 2})");
    SettingsFile settings(loop_, path_);
    fs::remove_all(path_.parent_path());

    EXPECT_TRUE(settings.reload());

    EXPECT_EQ(settings.number("PingTimeout"), std::nullopt);
}

TEST_F(SettingsFileTest, ReloadingFindsNothingNewInWhatWasStoredHere) {
    SettingsFile settings(loop_, path_);
    EXPECT_FALSE(settings.reload());
    settings.set("PingTimeout", 2.0);
    settings.flush();
    EXPECT_FALSE(settings.reload());
    settings.remove("PingTimeout");
    settings.flush();
    EXPECT_FALSE(settings.reload());
}

TEST_F(SettingsFileTest, AHandEditIsNewAlsoAfterAnOwnChangeHasTakenItUp) {
    SettingsFile settings(loop_, path_);
    store(R"({"Hostname": "by.hand"})");
    settings.set("PingTimeout", 2.0);
    settings.flush();

    EXPECT_TRUE(settings.reload());
    EXPECT_FALSE(settings.reload());
}

TEST_F(SettingsFileTest, ValuesForThisRunAndUnsavedOnesStayAboveWhatIsReloaded) {
    SettingsFile settings(loop_, path_, {{"Hostname", std::string("for.this.run")}});
    {
        const FullDisk disk;
        settings.set("PingTimeout", 9.0);
        settings.flush();
    }
    store(R"({"Hostname": "by.hand", "PingTimeout": 2, "PingInterval": 3})");

    settings.reload();

    EXPECT_EQ(
        valuesIn(settings),
        (Table{{"Hostname", std::string("for.this.run")}, {"PingTimeout", 9.0}, {"PingInterval", 3.0}}));
}

TEST_F(SettingsFileTest, ReloadingAFileThatIsOnlyHalfWrittenChangesNothing) {
    store(R"({"PingTimeout": 2})");
    SettingsFile settings(loop_, path_);
    for (const std::string text : {"", "{", R"({"PingTimeout": 3, "Host)", "[3]"}) {
        store(text);
        EXPECT_FALSE(settings.reload());
        EXPECT_THAT(settings.number("PingTimeout"), Optional(2.0)) << text;
        EXPECT_EQ(test::contentOf(path_), text);
    }
    EXPECT_THAT(textsBeside(), testing::IsEmpty());
}

TEST_F(SettingsFileTest, AHandEditBeforeTheWriteIsTakenOverAndKept) {
    store(R"({"PingTimeout": 2})");
    SettingsFile settings(loop_, path_);
    settings.set("PingInterval", 3.0);
    store(R"({"PingTimeout": 5, "Hostname": "by.hand"})");

    EXPECT_TRUE(settings.reload());

    EXPECT_EQ(
        valuesIn(settings),
        (Table{{"Hostname", std::string("by.hand")}, {"PingTimeout", 5.0}, {"PingInterval", 3.0}}));
    EXPECT_EQ(onDisk(), Json::parse(R"({"PingTimeout": 5, "Hostname": "by.hand", "PingInterval": 3.0})"));
    EXPECT_FALSE(settings.reload());
}

} // namespace tarnwick
