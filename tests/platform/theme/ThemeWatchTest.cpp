// Themes that change while they are followed, with the real system and a real loop.
#include "platform/theme/ThemeWatch.h"

#include "platform/loop/EpollRunLoop.h"
#include "platform/theme/PanelThemes.h"
#include "tests/platform/theme/ThemeFixture.h"
#include "tests/support/LoopTurn.h"

#include <gtest/gtest.h>

namespace tarnwick {

namespace {

class ThemeWatchTest : public testing::Test {
protected:
    ThemeWatchTest() {
        watch_.onChange = [this] { ++told_; };
    }

    [[nodiscard]] bool isTold(int times) {
        const double patience = loop_.now() + 20;
        while (told_ < times && loop_.now() < patience) {
            test::runOneTurn(loop_, 0.1);
        }
        return told_ == times;
    }

    void writeColors(const std::string& text) {
        fixture_.writeUserSettings("kdeglobals", "[Colors:Window]\nForegroundNormal=" + text + "\n");
    }

    test::ThemeFixture fixture_;
    EpollRunLoop loop_;
    ThemeWatch watch_{loop_, fixture_.folders};
    int told_ = 0;
};

} // namespace

TEST_F(ThemeWatchTest, WithoutAReaderNothingIsKnown) {
    EXPECT_EQ(watch_.isDark(), std::nullopt);

    watch_.follow(plasmaProgramColors);
    EXPECT_EQ(watch_.isDark(), false);

    watch_.follow(nullptr);
    EXPECT_EQ(watch_.isDark(), std::nullopt);
    EXPECT_EQ(told_, 0);
}

TEST_F(ThemeWatchTest, AChangedFileIsReadAgain) {
    watch_.follow(plasmaProgramColors);

    writeColors("255,255,255");
    EXPECT_TRUE(isTold(1));
    EXPECT_EQ(watch_.isDark(), true);

    writeColors("0,0,0");
    EXPECT_TRUE(isTold(2));
    EXPECT_EQ(watch_.isDark(), false);
}

TEST_F(ThemeWatchTest, AFileThatCountsOnlyNowIsFollowedToo) {
    const auto colors = fixture_.writeTheme(
        "plasma/desktoptheme/dark/colors", "[Colors:Window]\nForegroundNormal=255,255,255\n");
    watch_.follow(plasmaPanelTheme);
    fixture_.writeUserSettings("plasmarc", "[Theme]\nname=dark\n");
    ASSERT_TRUE(isTold(1));

    test::writeFile(colors, "[Colors:Window]\nForegroundNormal=0,0,0\n");

    EXPECT_TRUE(isTold(2));
    EXPECT_EQ(watch_.isDark(), false);
}

TEST_F(ThemeWatchTest, WhatAGlobalThemeWritesLaterIsFollowedToo) {
    fixture_.writeTheme("plasma/desktoptheme/dark/colors", "[Colors:Window]\nForegroundNormal=255,255,255\n");
    // As Plasma starts its sessions.
    fixture_.writeUserSettings("kdedefaults/kdeglobals", "");
    ThemeFolders folders = fixture_.folders;
    folders.config.insert(folders.config.begin() + 1, folders.config.front() / "kdedefaults");
    ThemeWatch watch(loop_, folders);
    watch.onChange = [this] { ++told_; };
    watch.follow(plasmaPanelTheme);
    ASSERT_EQ(watch.isDark(), false);

    fixture_.writeUserSettings("kdedefaults/plasmarc", "[Theme]\nname=dark\n");

    EXPECT_TRUE(isTold(1));
    EXPECT_EQ(watch.isDark(), true);
}

} // namespace tarnwick
