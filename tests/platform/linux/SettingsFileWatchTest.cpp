// Settings that are changed by hand while the program runs: file, watch and preferences together.
#include "app/Preferences/Preferences.h"
#include "platform/asio/AsioRunLoop.h"
#include "platform/linux/FileWatch.h"
#include "platform/xdg/SettingsFile.h"
#include "tests/support/Files.h"
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

    [[nodiscard]] bool isReloaded() {
        const int before = reloads_;
        const double patience = loop_.now() + 20;
        while (reloads_ == before && loop_.now() < patience) {
            loop_.runOne(0.1);
        }
        return reloads_ > before;
    }

    AsioRunLoop loop_;
    test::TemporaryFolder folder_;
    std::filesystem::path path_ = folder_.path() / "Tarnwick" / "settings.json";
    SettingsFile settings_{path_};
    Preferences prefs_{settings_};
    FileWatch watch_{loop_, path_, [this] {
                         settings_.reload();
                         prefs_.reload();
                         ++reloads_;
                     }};
    TrackingHandle reader_;
    int reloads_ = 0;
    int hostChanges_ = 0;
};

} // namespace

TEST_F(SettingsFileWatchTest, AHandEditIsTakenOver) {
    test::writeFile(path_, R"({"Hostname": "by.hand", "PingInterval": 600})");

    ASSERT_TRUE(isReloaded());

    EXPECT_EQ(prefs_.hostname(), "by.hand");
    EXPECT_EQ(prefs_.pingInterval(), 60);
    EXPECT_EQ(hostChanges_, 1);
}

TEST_F(SettingsFileWatchTest, AChangeByAnotherProgramIsTakenOver) {
    SettingsFile(path_).set("Hostname", std::string("other.program"));

    ASSERT_TRUE(isReloaded());

    EXPECT_EQ(prefs_.hostname(), "other.program");
    EXPECT_EQ(prefs_.pingInterval(), 2);
}

TEST_F(SettingsFileWatchTest, AnOwnChangeTellsNobodyASecondTime) {
    prefs_.setHostname("own.example");
    ASSERT_EQ(hostChanges_, 1);
    int later = 0;
    const TrackingHandle reader = withTracking(
        [this] {
            static_cast<void>(prefs_.hostname());
            static_cast<void>(prefs_.pingInterval());
            static_cast<void>(prefs_.display());
        },
        [&later] { ++later; });

    ASSERT_TRUE(isReloaded());

    EXPECT_EQ(later, 0);
    EXPECT_EQ(prefs_.hostname(), "own.example");
}

TEST_F(SettingsFileWatchTest, AHandEditIsNotLostToAnOwnChangeRightAfterIt) {
    test::writeFile(path_, R"({"Hostname": "by.hand"})");
    prefs_.setShowNotifications(true);

    ASSERT_TRUE(isReloaded());

    EXPECT_EQ(prefs_.hostname(), "by.hand");
    EXPECT_TRUE(prefs_.showNotifications());
}

TEST_F(SettingsFileWatchTest, AFileInTheMakingChangesNothingUntilItIsWhole) {
    std::ofstream editor(path_);
    editor << R"({"Hostname": "by)" << std::flush;
    ASSERT_TRUE(isReloaded());
    EXPECT_EQ(prefs_.hostname(), "first.example");

    editor << R"(.hand"})" << std::flush;
    ASSERT_TRUE(isReloaded());

    EXPECT_EQ(prefs_.hostname(), "by.hand");
    EXPECT_EQ(hostChanges_, 1);
}

TEST_F(SettingsFileWatchTest, WhatHoldsForThisRunStaysAbove) {
    settings_.setVolatile("Hostname", std::string("for.this.run"));
    prefs_.reload();

    test::writeFile(path_, R"({"Hostname": "by.hand", "PingInterval": 5})");
    ASSERT_TRUE(isReloaded());

    EXPECT_EQ(prefs_.hostname(), "for.this.run");
    EXPECT_EQ(prefs_.pingInterval(), 5);
}

TEST_F(SettingsFileWatchTest, WithoutTheFileTheDefaultsHold) {
    std::filesystem::remove_all(path_.parent_path());
    ASSERT_TRUE(isReloaded());
    EXPECT_EQ(prefs_.hostname(), "1.1.1.1");

    test::writeFile(path_, R"({"Hostname": "again.example"})");
    ASSERT_TRUE(isReloaded());

    EXPECT_EQ(prefs_.hostname(), "again.example");
}

} // namespace tarnwick
