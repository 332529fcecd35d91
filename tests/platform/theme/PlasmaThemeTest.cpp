// The ground of Plasma's panel, and of its programs.
#include "platform/theme/PanelThemes.h"

#include "tests/platform/theme/ThemeFixture.h"

#include <gmock/gmock.h>

namespace tarnwick {

namespace {

const std::string darkColors = "[Colors:View]\nForegroundNormal=0,0,0\n[Colors:Window]\n"
                               "BackgroundNormal=42,46,50\nForegroundNormal=252,252,252\n";
const std::string lightColors = "[Colors:Window]\nForegroundNormal=35,38,41\n";

class PlasmaThemeTest : public testing::Test {
protected:
    [[nodiscard]] std::optional<bool> isPanelDark() const {
        return plasmaPanelTheme(fixture_.folders).isDark;
    }

    [[nodiscard]] std::optional<bool> areProgramsDark() const {
        return plasmaProgramColors(fixture_.folders).isDark;
    }

    test::ThemeFixture fixture_;
};

} // namespace

TEST_F(PlasmaThemeTest, TheProgramsColorsTellOfThemAndOfThePanel) {
    fixture_.writeUserSettings("kdeglobals", darkColors);
    EXPECT_EQ(areProgramsDark(), true);
    EXPECT_EQ(isPanelDark(), true);

    fixture_.writeUserSettings("kdeglobals", lightColors);
    EXPECT_EQ(areProgramsDark(), false);
    EXPECT_EQ(isPanelDark(), false);
}

TEST_F(PlasmaThemeTest, WithoutColorsBothAreLight) {
    EXPECT_EQ(areProgramsDark(), false);
    EXPECT_EQ(isPanelDark(), false);
}

TEST_F(PlasmaThemeTest, ThePanelsThemeMayBeDarkWhileTheProgramsAreLight) {
    fixture_.writeUserSettings("kdeglobals", lightColors);
    fixture_.writeSystemSettings("plasmarc", "[Theme]\nname=breeze-dark\n");
    fixture_.writeTheme("plasma/desktoptheme/breeze-dark/colors", darkColors);

    EXPECT_EQ(areProgramsDark(), false);
    EXPECT_EQ(isPanelDark(), true);
}

TEST_F(PlasmaThemeTest, AThemeWithoutColorsOfItsOwnFollowsThePrograms) {
    fixture_.writeUserSettings("kdeglobals", darkColors);
    fixture_.writeSystemSettings("plasmarc", "[Theme]\nname=plain\n");
    fixture_.writeTheme("plasma/desktoptheme/plain/metadata.json", "{}");

    EXPECT_EQ(isPanelDark(), true);
}

TEST_F(PlasmaThemeTest, TheSchemeOfTheProgramsMayBeGivenByItsName) {
    fixture_.writeUserSettings("kdeglobals", "[General]\nColorScheme=BreezeDark\n");
    fixture_.writeTheme("color-schemes/BreezeDark.colors", darkColors);

    EXPECT_EQ(areProgramsDark(), true);
    EXPECT_EQ(isPanelDark(), true);
}

TEST_F(PlasmaThemeTest, AllFilesThatMayChangeItAreNamed) {
    fixture_.writeSystemSettings("plasmarc", "[Theme]\nname=plain\n");

    EXPECT_THAT(
        plasmaPanelTheme(fixture_.folders).files,
        testing::ElementsAre(
            fixture_.folders.config[0] / "plasmarc", fixture_.folders.config[1] / "plasmarc",
            fixture_.folders.config[0] / "kdeglobals"));
}

} // namespace tarnwick
