// The ground of LXQt's panel, as its themes tell it.
#include "platform/theme/PanelThemes.h"

#include "tests/platform/theme/ThemeFixture.h"

#include <gmock/gmock.h>

namespace tarnwick {

namespace {

class LxqtThemeTest : public testing::Test {
protected:
    /// In the theme that the system's settings name.
    std::optional<bool> isDarkWith(const std::string& styleSheet) {
        fixture_.writeSystemSettings("lxqt/lxqt.conf", "[General]\ntheme=Shipped\n");
        fixture_.writeTheme("lxqt/themes/Shipped/lxqt-panel.qss", styleSheet);
        return reading().isDark;
    }

    [[nodiscard]] ThemeReading reading() const { return lxqtPanelTheme(fixture_.folders); }

    test::ThemeFixture fixture_;
};

} // namespace

TEST_F(LxqtThemeTest, ThePanelsBackgroundTells) {
    EXPECT_EQ(isDarkWith("LXQtPanel #BackgroundWidget {\n    background-color: #edeceb;\n}\n"), false);
    EXPECT_EQ(isDarkWith("LXQtPanel #BackgroundWidget { background: rgba(0, 0, 0, 50%) }"), true);
    EXPECT_EQ(
        isDarkWith("LXQtPanel #BackgroundWidget {\n color: white;\n background-color: "
                   "qlineargradient(x1:0, y1:0, x2:0, y2:1, stop:0 #515048, stop:1 #3C3B37);\n}"),
        true);
}

TEST_F(LxqtThemeTest, OtherRulesAndCommentsDoNotTell) {
    EXPECT_EQ(
        isDarkWith("/* LXQtPanel #BackgroundWidget { background: #fff; } */\n"
                   "QToolTip { background: #fff; }\n"
                   "LXQtPanel[position=\"Top\"] #BackgroundWidget { background: #fff; }\n"
                   "QMenu, LXQtPanel #BackgroundWidget { border: 1px; background: #222; }\n"
                   "#TaskBar QToolButton { background: #fff; }"),
        true);
    EXPECT_EQ(isDarkWith("QToolTip { background: #fff; }"), std::nullopt);
    EXPECT_EQ(isDarkWith("LXQtPanel #BackgroundWidget { background: url(panel.svg); }"), std::nullopt);
    EXPECT_EQ(isDarkWith("LXQtPanel #BackgroundWidget { background"), std::nullopt);
    EXPECT_EQ(isDarkWith("/* LXQtPanel"), std::nullopt);
}

TEST_F(LxqtThemeTest, ABackgroundOfThePaletteIsTheUsersColor) {
    const std::string styleSheet = "LXQtPanel #BackgroundWidget { background: palette(window); }";
    EXPECT_EQ(isDarkWith(styleSheet), std::nullopt);

    fixture_.writeUserSettings("lxqt/lxqt.conf", "[Palette]\nwindow_color=#232323\n");
    EXPECT_EQ(isDarkWith(styleSheet), true);
}

TEST_F(LxqtThemeTest, TheUsersThemeComesFirstAndItsFilesAreNamed) {
    isDarkWith("LXQtPanel #BackgroundWidget { background: #fff; }");
    fixture_.writeUserSettings("lxqt/lxqt.conf", "[General]\ntheme=Mine\n");
    const auto mine = fixture_.writeTheme(
        "lxqt/themes/Mine/lxqt-panel.qss", "LXQtPanel #BackgroundWidget { background: #000; }");

    EXPECT_EQ(reading().isDark, true);
    EXPECT_THAT(
        reading().files, testing::ElementsAre(
                             fixture_.folders.config[0] / "lxqt/lxqt.conf",
                             fixture_.folders.config[1] / "lxqt/lxqt.conf", mine));
}

TEST_F(LxqtThemeTest, WithoutAThemeNothingIsKnown) {
    EXPECT_EQ(reading().isDark, std::nullopt);

    fixture_.writeUserSettings("lxqt/lxqt.conf", "[General]\ntheme=Missing\n");
    EXPECT_EQ(reading().isDark, std::nullopt);
    EXPECT_THAT(reading().files, testing::ElementsAre(fixture_.folders.config[0] / "lxqt/lxqt.conf"));
}

} // namespace tarnwick
