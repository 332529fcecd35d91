// Settings that are changed by hand while the program runs: file, watch and preferences together.
#include "app/Preferences/Preferences.h"
#include "platform/linux/FileWatch.h"
#include "platform/loop/EpollRunLoop.h"
#include "platform/xdg/SettingsFile.h"
#include "tests/support/Files.h"
#include "tests/support/LoopTurn.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace tarnwick {

namespace {

class SettingsFileWatchTest : public testing::Test {
protected:
    SettingsFileWatchTest() {
        test::writeFile(path_, R"({"Hostname": "first.example", "PingInterval": 2})");
        settings_.reload();
        prefs_.reload();
        reader_ = withTracking([this] { static_cast<void>(prefs_.hostname()); }, [this] { ++hostChanges_; });
    }

    /// Runs until the watch tells of a change.
    [[nodiscard]] bool isTold() {
        const int before = told_;
        const double patience = loop_.now() + 20;
        while (told_ == before && loop_.now() < patience) {
            test::runOneTurn(loop_, 0.1);
        }
        return told_ > before;
    }

    EpollRunLoop loop_;
    test::TemporaryFolder folder_;
    std::filesystem::path path_ = folder_.path() / "Tarnwick" / "settings.json";
    SettingsFile settings_{loop_, path_};
    Preferences prefs_{settings_};
    FileWatch watch_{loop_, path_, [this] {
                         ++told_;
                         if (settings_.reload()) {
                             ++reloads_;
                             prefs_.reload();
                         }
                     }};
    TrackingHandle reader_;
    int told_ = 0;    ///< of changes of the file
    int reloads_ = 0; ///< because of them
    int hostChanges_ = 0;
};

} // namespace

TEST_F(SettingsFileWatchTest, AHandEditIsTakenOver) {
    test::writeFile(path_, R"({"Hostname": "by.hand", "PingInterval": 600})");

    ASSERT_TRUE(isTold());

    EXPECT_EQ(prefs_.hostname(), "by.hand");
    EXPECT_EQ(prefs_.pingInterval(), 60);
    EXPECT_EQ(hostChanges_, 1);
}

TEST_F(SettingsFileWatchTest, AChangeByAnotherProgramIsTakenOver) {
    SettingsFile(loop_, path_).set("Hostname", std::string("other.program"));

    ASSERT_TRUE(isTold());

    EXPECT_EQ(prefs_.hostname(), "other.program");
    EXPECT_EQ(prefs_.pingInterval(), 2);
}

TEST_F(SettingsFileWatchTest, AnOwnChangeCausesNoReload) {
    prefs_.setHostname("own.example");
    prefs_.setDisplay(Preferences::Display::iconOnly);

    ASSERT_TRUE(isTold());

    EXPECT_EQ(reloads_, 0);
    EXPECT_EQ(prefs_.hostname(), "own.example");
}

TEST_F(SettingsFileWatchTest, AHandEditAfterAnOwnChangeIsTakenOver) {
    prefs_.setHostname("own.example");
    prefs_.flush();
    test::writeFile(path_, R"({"Hostname": "by.hand"})");

    ASSERT_TRUE(isTold());

    EXPECT_EQ(reloads_, 1);
    EXPECT_EQ(prefs_.hostname(), "by.hand");
}

TEST_F(SettingsFileWatchTest, AHandEditIsNotLostToAnOwnChangeRightAfterIt) {
    test::writeFile(path_, R"({"Hostname": "by.hand"})");
    prefs_.setShowNotifications(true);

    ASSERT_TRUE(isTold());

    EXPECT_EQ(prefs_.hostname(), "by.hand");
    EXPECT_TRUE(prefs_.showNotifications());
    prefs_.flush();
    const SettingsFile later(loop_, path_);
    EXPECT_EQ(later.text("Hostname"), "by.hand");
    EXPECT_EQ(later.boolean("ShowNotifications"), true);
}

TEST_F(SettingsFileWatchTest, AFileInTheMakingChangesNothingUntilItIsWhole) {
    std::ofstream editor(path_);
    editor << R"({"Hostname": "by)" << std::flush;
    ASSERT_TRUE(isTold());
    EXPECT_EQ(reloads_, 0);
    EXPECT_EQ(prefs_.hostname(), "first.example");

    editor << R"(.hand"})" << std::flush;
    ASSERT_TRUE(isTold());

    EXPECT_EQ(prefs_.hostname(), "by.hand");
    EXPECT_EQ(hostChanges_, 1);
}

TEST_F(SettingsFileWatchTest, WhatHoldsForThisRunStaysAbove) {
    SettingsFile settings(loop_, path_, {{"Hostname", std::string("for.this.run")}});
    Preferences prefs(settings);
    test::writeFile(path_, R"({"Hostname": "by.hand", "PingInterval": 5})");
    ASSERT_TRUE(isTold());

    EXPECT_TRUE(settings.reload());
    prefs.reload();

    EXPECT_EQ(prefs.hostname(), "for.this.run");
    EXPECT_EQ(prefs.pingInterval(), 5);
}

TEST_F(SettingsFileWatchTest, WithoutTheFileTheDefaultsHold) {
    std::filesystem::remove_all(path_.parent_path());
    ASSERT_TRUE(isTold());
    EXPECT_EQ(prefs_.hostname(), "1.1.1.1");

    test::writeFile(path_, R"({"Hostname": "again.example"})");
    ASSERT_TRUE(isTold());

    EXPECT_EQ(prefs_.hostname(), "again.example");
}

} // namespace tarnwick
