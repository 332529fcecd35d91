// What is known of the panels, and how they are told apart.
#include "platform/panel/PanelHosts.h"

#include <gtest/gtest.h>

#include <string>

namespace tarnwick {

namespace {

using Form = StatusItem::Form;
using InkChoice = StatusItem::InkChoice;

Ink shownOn(const PanelHost& host, const Backgrounds& backgrounds) {
    return inkFor(InkChoice::automatic, host, backgrounds);
}

} // namespace

TEST(PanelHostsTest, EachKnownPanelHasItsForm) {
    EXPECT_EQ(panelHost("gnome-shell").form, Form::label);
    EXPECT_EQ(panelHost("waybar").form, Form::wide);
    for (const char* square : {"xfce4-panel", "wrapper-2.0", "lxqt-panel", "plasmashell", "kded5"}) {
        EXPECT_EQ(panelHost(square).form, Form::square) << square;
        EXPECT_EQ(panelHost(square).process, square);
    }
}

TEST(PanelHostsTest, AnUnknownPanelIsSquareAndPromisesNothing) {
    for (const char* unknown : {"", "some-panel"}) {
        const PanelHost& host = panelHost(unknown);

        EXPECT_EQ(host.form, Form::square);
        EXPECT_FALSE(host.recolorsSymbolicIcons);
        EXPECT_FALSE(host.fixedInk.has_value());
    }
}

TEST(PanelHostsTest, OnlyOnePanelIsKnownToGivePositionsInsideTheItem) {
    EXPECT_FALSE(panelHost("waybar").givesGlobalPositions);
    EXPECT_TRUE(panelHost("plasmashell").givesGlobalPositions);
    EXPECT_TRUE(panelHost("some-panel").givesGlobalPositions);
}

TEST(PanelHostsTest, PanelsOfOneToolkitGuessWhetherAToolTipIsMarkup) {
    for (const char* guessing : {"plasmashell", "kded5", "lxqt-panel"}) {
        EXPECT_EQ(panelHost(guessing).toolTipMarkup, ToolTipMarkup::guessed) << guessing;
    }
    for (const char* reading : {"xfce4-panel", "waybar", "some-panel"}) {
        EXPECT_EQ(panelHost(reading).toolTipMarkup, ToolTipMarkup::always) << reading;
    }
}

TEST(PanelHostsTest, AnAnnouncedPanelComesBeforeTheWatcher) {
    EXPECT_EQ(panelHost({"plasmashell"}, "kded5").process, "plasmashell");
    EXPECT_EQ(panelHost({"waybar"}, "lxqt-panel").process, "waybar");
}

TEST(PanelHostsTest, OfSeveralAnnouncedPanelsTheFirstKnownOneCounts) {
    EXPECT_EQ(panelHost({"", "some-panel", "xfce4-panel", "waybar"}, "").process, "xfce4-panel");
}

TEST(PanelHostsTest, WithoutAnAnnouncedPanelTheWatcherIsThePanel) {
    EXPECT_EQ(panelHost({}, "gnome-shell").process, "gnome-shell");
    EXPECT_EQ(panelHost({"some-panel"}, "gnome-shell").process, "gnome-shell");
}

TEST(PanelHostsTest, TheInkThatTheUserChoosesComesBeforeAllElse) {
    const PanelHost host{.fixedInk = Ink::light, .hasOwnDarkMode = true};

    EXPECT_EQ(inkFor(InkChoice::dark, host, {.panelIsDark = true}), Ink::dark);
    EXPECT_EQ(inkFor(InkChoice::light, {}, {.desktopIsDark = false}), Ink::light);
}

TEST(PanelHostsTest, AFixedInkComesBeforeAllElse) {
    const PanelHost host{.fixedInk = Ink::light, .hasOwnDarkMode = true};

    EXPECT_EQ(
        shownOn(host, {.panelIsDark = false, .desktopIsDark = false, .fallback = Ink::dark}), Ink::light);
}

TEST(PanelHostsTest, ThePanelsOwnSettingComesBeforeTheDesktops) {
    const PanelHost host{.hasOwnDarkMode = true};

    EXPECT_EQ(shownOn(host, {.panelIsDark = true, .desktopIsDark = false}), Ink::light);
    EXPECT_EQ(shownOn(host, {.panelIsDark = false, .desktopIsDark = true}), Ink::dark);
}

TEST(PanelHostsTest, ThePanelsOwnThemeComesBeforeTheDesktops) {
    EXPECT_EQ(shownOn({}, {.themeIsDark = true, .desktopIsDark = false}), Ink::light);
    EXPECT_EQ(shownOn({.usualInk = Ink::light}, {.themeIsDark = false, .desktopIsDark = true}), Ink::dark);
}

TEST(PanelHostsTest, TheSettingOfAnotherPanelDoesNotCount) {
    EXPECT_EQ(shownOn({}, {.panelIsDark = true, .desktopIsDark = false}), Ink::darkOnPlate);
}

TEST(PanelHostsTest, AGuessedGroundNeedsAPlate) {
    EXPECT_EQ(shownOn({.usualInk = Ink::light}, {.desktopIsDark = false}), Ink::lightOnPlate);
    EXPECT_EQ(shownOn({}, {.desktopIsDark = true, .fallback = Ink::dark}), Ink::lightOnPlate);
    EXPECT_EQ(shownOn({}, {.desktopIsDark = false, .fallback = Ink::light}), Ink::darkOnPlate);
    EXPECT_EQ(shownOn({}, {.fallback = Ink::light}), Ink::lightOnPlate);
    EXPECT_EQ(shownOn({.hasOwnDarkMode = true}, {.fallback = Ink::dark}), Ink::darkOnPlate);
}

TEST(PanelHostsTest, AProcessGoesByTheNameThatIsInTheTable) {
    EXPECT_EQ(panelProcess({"waybar", "waybar-wrapped"}), "waybar");
    EXPECT_EQ(panelProcess({".waybar-wrapped", "waybar"}), "waybar");
}

TEST(PanelHostsTest, AProcessThatIsInNoTableGoesByItsFirstName) {
    EXPECT_EQ(panelProcess({"python3", "python3.11"}), "python3");
    EXPECT_EQ(panelProcess({}), "");
}

} // namespace tarnwick
