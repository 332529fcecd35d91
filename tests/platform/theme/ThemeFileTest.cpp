// Values of settings that stand in several files.
#include "platform/theme/ThemeFile.h"

#include "tests/platform/theme/ThemeFixture.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

namespace tarnwick {

namespace fs = std::filesystem;

TEST(ThemeFileTest, AValueIsThatOfItsOwnGroup) {
    const std::string text =
        "theme=none\n[Other]\ntheme=other\n[General]\n theme = mine \n[Third]\ntheme=third";

    EXPECT_EQ(groupValue(text, "General", "theme"), "mine");
    EXPECT_EQ(groupValue(text, "General", "icons"), std::nullopt);
    EXPECT_EQ(groupValue("", "General", "theme"), std::nullopt);
}

TEST(ThemeFileTest, FlagsAndQuotesAreNoPartOfNameAndValue) {
    EXPECT_EQ(groupValue("[Theme]\nname[$i]=breeze-dark\r\n", "Theme", "name"), "breeze-dark");
    EXPECT_EQ(groupValue("[General]\ntheme=\"my theme\"", "General", "theme"), "my theme");
}

TEST(ThemeFileTest, TheUsersOwnValueComesFirst) {
    test::ThemeFixture fixture;
    fixture.writeSystemSettings("rc", "[A]\nboth=system\nalone=system");
    fixture.writeUserSettings("rc", "[A]\nboth=user");
    const LayeredSettings settings(fixture.folders, "rc");

    EXPECT_EQ(settings.value("A", "both"), "user");
    EXPECT_EQ(settings.value("A", "alone"), "system");
    EXPECT_EQ(settings.value("A", "neither"), std::nullopt);
}

TEST(ThemeFileTest, OfAllFilesThoseThatExistCountAndTheUsersOwn) {
    test::ThemeFixture fixture;
    EXPECT_THAT(
        LayeredSettings(fixture.folders, "rc").files(),
        testing::ElementsAre(fixture.folders.config[0] / "rc"));

    fixture.writeSystemSettings("rc", "");
    EXPECT_THAT(
        LayeredSettings(fixture.folders, "rc").files(),
        testing::ElementsAre(fixture.folders.config[0] / "rc", fixture.folders.config[1] / "rc"));
}

TEST(ThemeFileTest, WhatIsNoFileIsEmpty) {
    const test::TemporaryFolder folder;
    const fs::path pipe = folder.path() / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);

    EXPECT_EQ(themeText(pipe), "");
    EXPECT_EQ(themeText(folder.path()), "");
    EXPECT_EQ(themeText(folder.path() / "none"), "");
}

} // namespace tarnwick
