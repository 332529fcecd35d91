// Where the desktop lets its user choose what starts with the session.
#include "app/App/StartupSettings.h"

#include "tests/platform/qt/StartedBeside.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <initializer_list>
#include <optional>
#include <string>

namespace tarnwick {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class StartupSettingsTest : public testing::Test {
protected:
    ~StartupSettingsTest() override {
        qputenv("PATH", path_);
        qunsetenv("XDG_CURRENT_DESKTOP");
    }

    /// A desktop, and programs that write down how they were started: nothing else is installed.
    void arrange(const char* desktops, std::initializer_list<std::string> installed) {
        for (const std::string& name : installed) {
            const std::filesystem::path program = folder_.path() / name;
            test::writeFile(
                program, "#!/bin/sh\nprintf '%s' \"" + name + " $*\" >> '" + record_.string() + "'\n");
            std::filesystem::permissions(program, std::filesystem::perms::owner_all);
        }
        qputenv("PATH", QByteArray::fromStdString(folder_.path().string()));
        qputenv("XDG_CURRENT_DESKTOP", desktops);
    }

    /// Whether they were shown; nothing without an answer in time.
    [[nodiscard]] static std::optional<bool> open() { return test::answerOf(StartupSettings::open); }

    test::TemporaryFolder folder_;
    std::filesystem::path record_ = folder_.path() / "record";
    QByteArray path_ = qgetenv("PATH");
};

} // namespace

TEST_F(StartupSettingsTest, EachKnownDesktopHasItsOwn) {
    EXPECT_THAT(
        StartupSettings::commands({"KDE"}), ElementsAre(ElementsAre("systemsettings", "kcm_autostart")));
    EXPECT_THAT(StartupSettings::commands({"XFCE"}), ElementsAre(ElementsAre("xfce4-session-settings")));
    EXPECT_THAT(StartupSettings::commands({"LXQt"}), ElementsAre(ElementsAre("lxqt-config-session")));
}

TEST_F(StartupSettingsTest, GnomeAndItsRelativesMayHaveOneOfTwo) {
    for (const char* desktop : {"GNOME", "GNOME-Flashback", "Unity"}) {
        EXPECT_THAT(
            StartupSettings::commands({desktop}),
            ElementsAre(ElementsAre("gnome-session-properties"), ElementsAre("gnome-tweaks")))
            << desktop;
    }
}

TEST_F(StartupSettingsTest, TheFirstKnownNameOfADesktopComesFirst) {
    EXPECT_THAT(
        StartupSettings::commands({"Vendor", "XFCE", "MATE"}),
        ElementsAre(ElementsAre("xfce4-session-settings"), ElementsAre("mate-session-properties")));
}

TEST_F(StartupSettingsTest, AnUnknownDesktopHasNone) {
    EXPECT_THAT(StartupSettings::commands({}), IsEmpty());
    EXPECT_THAT(StartupSettings::commands({"Vendor"}), IsEmpty());
    EXPECT_THAT(StartupSettings::commands({"KDEish"}), IsEmpty());
}

TEST_F(StartupSettingsTest, ThatOfTheDesktopIsStarted) {
    arrange("KDE", {"systemsettings"});

    EXPECT_EQ(open(), true);

    EXPECT_EQ(test::contentOf(record_), "systemsettings kcm_autostart");
}

TEST_F(StartupSettingsTest, TheFirstThatIsInstalledIsStartedAlone) {
    arrange("GNOME", {"gnome-session-properties", "gnome-tweaks"});

    EXPECT_EQ(open(), true);

    EXPECT_EQ(test::contentOf(record_), "gnome-session-properties ");
}

TEST_F(StartupSettingsTest, WhatIsNotInstalledIsPassedOver) {
    arrange("ubuntu:GNOME", {"gnome-tweaks"});

    EXPECT_EQ(open(), true);

    EXPECT_EQ(test::contentOf(record_), "gnome-tweaks ");
}

TEST_F(StartupSettingsTest, ItExistsWhereOneIsInstalled) {
    arrange("GNOME", {"gnome-tweaks"});
    EXPECT_TRUE(StartupSettings::exists());

    qputenv("XDG_CURRENT_DESKTOP", "KDE");
    EXPECT_FALSE(StartupSettings::exists());
}

TEST_F(StartupSettingsTest, WithoutAnyNothingIsStartedOrReported) {
    arrange("GNOME", {"systemsettings"});
    bool isTold = false;

    StartupSettings::open([&isTold](bool /*isOpened*/) { isTold = true; });
    // By the end of this program the first call would have been answered.
    qputenv("XDG_CURRENT_DESKTOP", "KDE");
    EXPECT_EQ(open(), true);

    EXPECT_FALSE(isTold);
    EXPECT_EQ(test::contentOf(record_), "systemsettings kcm_autostart");
}

} // namespace tarnwick
