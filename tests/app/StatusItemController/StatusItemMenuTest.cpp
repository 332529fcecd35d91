// The status item's menu: what stands in it, and what its items do.
#include "tests/app/StatusItemController/WatchedStatusItem.h"

#include "core/Storage/WriterLock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

namespace tarnwick {

namespace {

using Id = MenuItem::Id;
using testing::ElementsAre;

class StatusItemMenuTest : public testing::Test, protected WatchedStatusItem {};

} // namespace

TEST_F(StatusItemMenuTest, TheMenuHasItsItemsInOrder) {
    show(true);

    std::vector<std::string> titles;
    for (const MenuItem& entry : menu->items()) {
        titles.push_back(entry.id == Id::separator ? "-" : entry.title);
    }

    EXPECT_THAT(
        titles, ElementsAre(
                    "", "Change Host…", "-", "Reset Session Stats", "Reset All Time Stats…",
                    "Pause for an Hour", "Resume", "-", "Outages…", "Check for Updates…", "Settings…",
                    "About Tarnwick", "-", "Quit Tarnwick"));
}

TEST_F(StatusItemMenuTest, ItsIconsAreInOldAndNewThemesOfGnome) {
    // A panel asks the desktop's theme for them. GNOME's has these in its versions 43 and 48.
    const std::vector<std::string> common{
        "",
        "application-exit-symbolic",
        "document-open-recent-symbolic",
        "help-about-symbolic",
        "media-playback-pause-symbolic",
        "media-playback-start-symbolic",
        "network-wired-symbolic",
        "preferences-system-symbolic",
        "software-update-available-symbolic",
        "view-refresh-symbolic"};
    show(true);

    for (const MenuItem& entry : menu->items()) {
        EXPECT_THAT(common, testing::Contains(entry.iconName)) << entry.title;
    }
}

TEST_F(StatusItemMenuTest, CheckForUpdatesIsAbsentWhereTheProgramCannotBeReplaced) {
    show(false);

    EXPECT_EQ(menuItem(Id::checkForUpdates), nullptr);
}

TEST_F(StatusItemMenuTest, CheckForUpdatesIsEnabledOnlyWhenItIsPossible) {
    show(true);
    updates.canCheck.set(false);
    menu->willOpen();
    EXPECT_FALSE(menuItem(Id::checkForUpdates)->enabled);
    menu->choose(Id::checkForUpdates);
    EXPECT_EQ(updates.checksAskedFor, 0);
    menu->didClose();

    updates.canCheck.set(true);
    menu->willOpen();
    menu->choose(Id::checkForUpdates);

    EXPECT_EQ(updates.checksAskedFor, 1);
    EXPECT_EQ(windows.windowsExpected, 1);
}

TEST_F(StatusItemMenuTest, TheAlternateIsTheOneBelowResetSession) {
    show();
    const auto& items = menu->items();
    const auto alternate = std::ranges::find(items, true, &MenuItem::isAlternate);

    ASSERT_NE(alternate, items.end());
    EXPECT_EQ(alternate->id, Id::resetAllTime);
    EXPECT_EQ(std::prev(alternate)->id, Id::resetSession);
}

TEST_F(StatusItemMenuTest, SettingsAndQuitHaveShortcuts) {
    show();

    EXPECT_EQ(menuItem(Id::settings)->shortcut, ',');
    EXPECT_EQ(menuItem(Id::quit)->shortcut, 'q');
}

TEST_F(StatusItemMenuTest, EveryMnemonicIsALetterOfItsTitle) {
    show(true);

    for (const MenuItem& entry : menu->items()) {
        if (!entry.title.empty()) {
            EXPECT_NE(entry.title.find(entry.mnemonic), std::string::npos) << entry.title;
        }
    }
}

TEST_F(StatusItemMenuTest, AClickTogglesTheDropDownWhereItWas) {
    show();

    item.onActivate(ScreenPoint{700, 12});
    item.onActivate(std::nullopt);

    EXPECT_THAT(windows.dropDowns, ElementsAre(std::optional(ScreenPoint{700, 12}), std::nullopt));
}

TEST_F(StatusItemMenuTest, ItsItemsOpenTheWindowsOfTheirTitles) {
    show();
    menu->setHidden(Id::changeHost, false);

    menu->choose(Id::changeHost);
    EXPECT_EQ(windows.settingsShown, 1);
    menu->choose(Id::settings);
    EXPECT_EQ(windows.settingsShown, 2);
    menu->choose(Id::about);
    EXPECT_EQ(windows.aboutShown, 1);
    EXPECT_EQ(windows.outagesShown, 0);
    menu->choose(Id::outages);
    EXPECT_EQ(windows.outagesShown, 1);
    EXPECT_EQ(windows.quits, 0);
    menu->choose(Id::quit);
    EXPECT_EQ(windows.quits, 1);
    EXPECT_EQ(windows.aboutShown, 1);
}

// Change Host.

TEST_F(StatusItemMenuTest, ChangeHostIsHiddenBeforeTheFirstOpening) {
    show();

    EXPECT_TRUE(menuItem(Id::changeHost)->hidden);
}

TEST_F(StatusItemMenuTest, AMenuOpenedWhileDownShowsChangeHost) {
    showFor(5.5);
    menu->willOpen();
    EXPECT_TRUE(menuItem(Id::changeHost)->hidden);
    menu->didClose();
    ASSERT_TRUE(goDown());
    EXPECT_TRUE(menuItem(Id::changeHost)->hidden) << "a closed menu was followed";

    menu->willOpen();

    EXPECT_FALSE(menuItem(Id::changeHost)->hidden);
}

TEST_F(StatusItemMenuTest, ChangeHostComesAndGoesWhileTheMenuStaysOpen) {
    showFor(5.5);
    menu->willOpen();
    ASSERT_TRUE(goDown());
    EXPECT_FALSE(menuItem(Id::changeHost)->hidden);

    answerAfter(0.02);
    loop.advance(2);
    ASSERT_EQ(monitor.reading().status, Monitor::Status::up);

    EXPECT_TRUE(menuItem(Id::changeHost)->hidden);
}

// The pause.

TEST_F(StatusItemMenuTest, PauseIsResumeDuringAPause) {
    showFor(5.5);
    menu->willOpen();
    EXPECT_FALSE(menuItem(Id::pause)->hidden);
    EXPECT_TRUE(menuItem(Id::resume)->hidden);

    menu->choose(Id::pause);
    loop.runPending();

    EXPECT_EQ(monitor.reading().pausedUntil, loop.wallNow() + std::chrono::hours(1));
    EXPECT_TRUE(menuItem(Id::pause)->hidden);
    EXPECT_FALSE(menuItem(Id::resume)->hidden);

    menu->choose(Id::resume);
    loop.runPending();

    EXPECT_FALSE(monitor.reading().isPaused());
    EXPECT_FALSE(menuItem(Id::pause)->hidden);
    EXPECT_TRUE(menuItem(Id::resume)->hidden);
}

TEST_F(StatusItemMenuTest, AMenuOpenedDuringAPauseOffersToResume) {
    showFor(5.5);
    monitor.pause(60);

    menu->willOpen();
    EXPECT_FALSE(menuItem(Id::resume)->hidden);

    loop.advance(61);
    EXPECT_TRUE(menuItem(Id::resume)->hidden) << "the pause is over";
}

// Resets.

TEST_F(StatusItemMenuTest, ResetSessionClearsTheSessionAlone) {
    showFor(5.5);

    menu->choose(Id::resetSession);

    EXPECT_TRUE(monitor.reading().session.isEmpty());
    EXPECT_EQ(monitor.reading().site.sent, 6);
    EXPECT_TRUE(windows.questions.empty());
}

TEST_F(StatusItemMenuTest, ResetAllTimeAsksForTheHostFirst) {
    showFor(5.5);

    menu->choose(Id::resetAllTime);

    ASSERT_EQ(windows.questions.size(), 1U);
    EXPECT_EQ(windows.questions[0].title, "Reset All Time Stats");
    EXPECT_EQ(windows.questions[0].text, "Are you sure you want to reset the all time stats for 1.1.1.1?");
    EXPECT_EQ(windows.questions[0].confirm, "Reset");
    EXPECT_EQ(windows.questions[0].cancel, "Cancel");
    EXPECT_EQ(monitor.reading().site.sent, 6);
}

TEST_F(StatusItemMenuTest, ResetAllTimeNamesALongHostWithoutItsMiddle) {
    const std::string host = std::string(60, 'a') + "." + std::string(60, 'b');
    resolve(host, "192.0.2.7");
    prefs.setHostname(host);
    showFor(5.5);

    menu->choose(Id::resetAllTime);

    const std::string name = std::string(30, 'a') + "…" + std::string(29, 'b');
    EXPECT_EQ(
        windows.questions.back().text, "Are you sure you want to reset the all time stats for " + name + "?");
}

TEST_F(StatusItemMenuTest, ResetAllTimeSaysWhenTheResetCountsIfAnotherRecords) {
    WriterLock other(statistics);
    ASSERT_EQ(other.acquire(), WriterLock::Attempt::taken);
    showFor(5.5);

    menu->choose(Id::resetAllTime);

    EXPECT_EQ(
        windows.questions.back().text, "Are you sure you want to reset the all time stats for 1.1.1.1?");
    EXPECT_EQ(
        windows.questions.back().note,
        "Another Tarnwick records the statistics. They are reset when it has ended and this one records.");
}

TEST_F(StatusItemMenuTest, ResetAllTimeAddsNoNoteWhenThisOneRecords) {
    showFor(5.5);

    menu->choose(Id::resetAllTime);

    EXPECT_EQ(windows.questions.back().note, "");
}

TEST_F(StatusItemMenuTest, AConfirmedResetClearsAndStoresTheAllTimeFigures) {
    showFor(5.5);
    monitor.saveStats();
    menu->choose(Id::resetAllTime);

    windows.answer(true);

    EXPECT_TRUE(monitor.reading().site.isEmpty());
    EXPECT_EQ(monitor.reading().session.sent, 6);
    const auto stored = StatsStore(statistics).load();
    EXPECT_TRUE(!stored.contains("1.1.1.1") || stored.at("1.1.1.1").isEmpty());
}

TEST_F(StatusItemMenuTest, CancelLeavesTheStatisticsUntouched) {
    showFor(5.5);
    menu->choose(Id::resetAllTime);

    windows.answer(false);

    EXPECT_EQ(monitor.reading().site.sent, 6);
}

TEST_F(StatusItemMenuTest, AnAnswerThatComesAfterAHostChangeResetsNothing) {
    showFor(5.5);
    menu->choose(Id::resetAllTime);
    monitor.setHostname("192.0.2.8");
    loop.advance(5);

    windows.answer(true);

    EXPECT_GT(monitor.reading().site.sent, 0);
}

TEST_F(StatusItemMenuTest, AfterTheControllersEndAnswersAndClicksDoNothing) {
    showFor(5.5);
    menu->choose(Id::resetAllTime);
    controller.reset();

    windows.answer(true);

    EXPECT_EQ(monitor.reading().site.sent, 6);
    EXPECT_FALSE(item.onActivate);
    EXPECT_FALSE(menu->onRefresh);
    EXPECT_FALSE(menu->onWillOpen);
    EXPECT_FALSE(menu->onDidClose);
    EXPECT_FALSE(menu->onChoose);
}

} // namespace tarnwick
