// What the status item shows, when it is touched, and what its menu does.
#include "tests/app/StatusItemController/WatchedStatusItem.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>

namespace tarnwick {

namespace {

using Display = Preferences::Display;
using Icon = StatusFace::Icon;
using Id = MenuItem::Id;
using MenuBarTitle::LossMode;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

class StatusItemControllerTest : public testing::Test, protected WatchedStatusItem {
protected:
    /// Seconds until `isTrue`, looking every tenth of a second; -1 when it takes more than two minutes.
    double secondsUntil(const std::function<bool()>& isTrue) {
        const double start = loop.now();
        while (!isTrue() && loop.now() - start < 120) {
            loop.advance(0.1);
        }
        return isTrue() ? loop.now() - start : -1;
    }

    [[nodiscard]] bool showsLoss() const { return title().find('%') != std::string::npos; }
};

} // namespace

// The face.

TEST_F(StatusItemControllerTest, ShowsIconAndTextOfAWorkingConnection) {
    answerAfter(0.042);
    showFor(5.5);

    EXPECT_EQ(face().icon, Icon::bars);
    EXPECT_EQ(face().activeBars, 5);
    EXPECT_EQ(title(), "42ms");
    EXPECT_EQ(face().figure, "42");
}

TEST_F(StatusItemControllerTest, BeforeTheFirstReplyTheBarsAreEmptyAndTheTextWaits) {
    fallSilent();
    showFor(0.5);

    EXPECT_EQ(face().icon, Icon::bars);
    EXPECT_EQ(face().activeBars, 0);
    EXPECT_EQ(title(), "…");
    EXPECT_EQ(face().figure, "…");
}

TEST_F(StatusItemControllerTest, ADownShowsTheTriangleAndNoFigure) {
    showFor(5.5);
    fallSilent();
    ASSERT_TRUE(waitUntilDown());
    loop.runPending();

    EXPECT_EQ(face().icon, Icon::failed);
    EXPECT_EQ(face().activeBars, 0);
    EXPECT_EQ(title(), "Failed");
    EXPECT_EQ(face().figure, "");
}

TEST_F(StatusItemControllerTest, TheIconAloneHasNoTitleAndNoSlot) {
    prefs.setDisplay(Display::iconOnly);
    showFor(5.5);

    EXPECT_EQ(face(), (StatusFace{.icon = Icon::bars, .activeBars = 5}));
}

TEST_F(StatusItemControllerTest, TheTextAloneHasNoIcon) {
    prefs.setDisplay(Display::textOnly);
    answerAfter(1.24);
    showFor(5.5);

    EXPECT_EQ(face().icon, Icon::none);
    EXPECT_EQ(title(), "1.2s");
    EXPECT_EQ(face().figure, "1.2s");
}

TEST_F(StatusItemControllerTest, TheTextAloneSaysFailedWhileDown) {
    prefs.setDisplay(Display::textOnly);
    showFor(5.5);
    fallSilent();
    ASSERT_TRUE(waitUntilDown());
    loop.runPending();

    EXPECT_EQ(face().icon, Icon::none);
    EXPECT_EQ(title(), "Failed");
}

TEST_F(StatusItemControllerTest, FollowsTheDisplaySettingWhileRunning) {
    showFor(5.5);
    prefs.setDisplay(Display::iconOnly);
    loop.runPending();
    EXPECT_EQ(face().title, std::nullopt);

    prefs.setDisplay(Display::iconAndText);
    loop.runPending();
    EXPECT_EQ(title(), "20ms");
}

TEST_F(StatusItemControllerTest, HandsOverThePanelFaceOfTheSettings) {
    show();

    EXPECT_THAT(item.forms, ElementsAre(StatusItem::Form::automatic));
}

TEST_F(StatusItemControllerTest, HandsOverANewPanelFaceOnce) {
    showFor(5.5);
    defaults.put(PreferenceKey::panelFace, std::string("wide"));

    prefs.reload();
    loop.advance(5);

    EXPECT_THAT(item.forms, ElementsAre(StatusItem::Form::automatic, StatusItem::Form::wide));
}

// Change filters.

TEST_F(StatusItemControllerTest, WithTheIconAloneAnUnchangedBarCountSetsTheImageOnce) {
    prefs.setDisplay(Display::iconOnly);
    showFor(5.5);
    const std::size_t faces = item.faces.size();

    for (int second = 0; second < 60; ++second) {
        answerAfter(second % 2 == 0 ? 0.031 : 0.034);
        loop.advance(1);
    }

    EXPECT_EQ(item.faces.size(), faces);
    EXPECT_EQ(face().activeBars, 5);
}

TEST_F(StatusItemControllerTest, PingsWithUnchangedBarsAndTextDoNotTouchTheItem) {
    showFor(5.5);
    const std::size_t touches = item.touches();

    // The latency changes with every ping, the text that is made of it does not.
    for (int second = 0; second < 60; ++second) {
        answerAfter(second % 2 == 0 ? 0.0201 : 0.0204);
        loop.advance(1);
    }

    EXPECT_GT(network.sent().size(), 60U);
    EXPECT_EQ(item.touches(), touches);
}

TEST_F(StatusItemControllerTest, ABurstOfChangesCostsOneRedraw) {
    showFor(5.5);
    const std::size_t faces = item.faces.size();

    prefs.setDisplay(Display::iconOnly);
    prefs.setDisplay(Display::textOnly);
    prefs.setLossTextMode(LossMode::always);
    loop.runPending();

    EXPECT_EQ(item.faces.size(), faces + 1);
}

TEST_F(StatusItemControllerTest, AChangeIsDrawnFromTheQueueNotInTheMiddleOfIt) {
    showFor(5.5);
    const std::size_t faces = item.faces.size();

    prefs.setDisplay(Display::iconOnly);

    EXPECT_EQ(item.faces.size(), faces);
}

TEST_F(StatusItemControllerTest, TheWidestTextsAreMeasuredOncePerDigitCount) {
    prefs.setLossTextMode(LossMode::off);
    showFor(5.5);
    const int measured = item.measured;
    const std::size_t faces = item.faces.size();

    for (int ping = 0; ping < 10; ++ping) {
        answerAfter(0.030 + ping * 0.001);
        loop.advance(1);
    }

    // Each redraw measures the new title alone.
    ASSERT_EQ(item.faces.size(), faces + 10);
    EXPECT_EQ(item.measured, measured + 10);
    EXPECT_GT(measured, 4);
}

// The reserved width.

TEST_F(StatusItemControllerTest, ReservesRoomForTheWidestTitle) {
    answerAfter(0.004);
    showFor(5.5);

    EXPECT_EQ(title(), "4ms");
    EXPECT_EQ(face().widestTitle, "Failed");
    EXPECT_EQ(face().textSlot, 60);
}

TEST_F(StatusItemControllerTest, ReservesRoomForOneDigitOfLoss) {
    prefs.setLossTextMode(LossMode::always);
    answerAfter(0.004);
    showFor(12.5);

    EXPECT_EQ(title(), "4ms (0%)");
    EXPECT_EQ(face().widestTitle, "88ms (8%)");
    EXPECT_EQ(face().textSlot, 90);
}

TEST_F(StatusItemControllerTest, ReservesRoomForTwoDigitsOfLossWhenThereAreTwo) {
    prefs.setLossTextMode(LossMode::always);
    lose(2, 10);
    showFor(62.5);

    EXPECT_EQ(face().widestTitle, "88ms (88%)");
    EXPECT_EQ(face().textSlot, 100);
}

// The gates.

TEST_F(StatusItemControllerTest, TheLossTextStaysTenSecondsAfterLossHasEnded) {
    showFor(40.5);
    lose(4, 32);
    ASSERT_GE(secondsUntil([this] { return showsLoss(); }), 0);
    answerAfter(0.02);
    ASSERT_GE(secondsUntil([this] { return monitor.reading().lossPercent == 0; }), 0);

    const double held = secondsUntil([this] { return !showsLoss(); });

    // The last reading with loss is a second older than the first one without.
    EXPECT_NEAR(held, 9, 0.05);
}

TEST_F(StatusItemControllerTest, TheWidthOfTwoDigitsStaysThirtySecondsLonger) {
    prefs.setLossTextMode(LossMode::always);
    showFor(40.5);
    lose(4, 32);
    ASSERT_GE(secondsUntil([this] { return monitor.reading().lossPercent >= 12; }), 0);
    answerAfter(0.02);
    EXPECT_EQ(face().widestTitle, "88ms (88%)");
    ASSERT_GE(
        secondsUntil([this] { return MenuBarTitle::displayedLoss(monitor.reading().lossPercent) < 10; }), 0);

    const double held = secondsUntil([this] { return face().widestTitle == "88ms (8%)"; });

    EXPECT_NEAR(held, 29, 0.05);
}

TEST_F(StatusItemControllerTest, AHeldGateClosesAlthoughNothingElseChanges) {
    showFor(40.5);
    lose(1, 64);
    ASSERT_GE(secondsUntil([this] { return showsLoss(); }), 0);
    ASSERT_GE(secondsUntil([this] { return monitor.reading().lossPercent == 0; }), 0);
    const std::size_t faces = item.faces.size();
    sleep.goToSleep(); // nothing is measured from here on

    // The item is looked at every five seconds.
    EXPECT_NEAR(secondsUntil([this] { return !showsLoss(); }), 10, 0.2);

    EXPECT_EQ(item.faces.size(), faces + 1);
}

TEST_F(StatusItemControllerTest, AlmostEverythingLostIsShownWithTwoDigits) {
    prefs.setLossTextMode(LossMode::always);
    showFor(5.5);
    // Once in a while an answer, so that the connection is not declared down.
    lose(6, 7);
    loop.advance(60);

    EXPECT_THAT(title(), testing::MatchesRegex("20ms \\([78][0-9]%\\)"));
    EXPECT_EQ(face().widestTitle, "88ms (88%)");
}

TEST_F(StatusItemControllerTest, ALossOfMoreThanNinetyNinePercentCountsAsNinetyNine) {
    EXPECT_EQ(MenuBarTitle::title(20, 99.6), "20ms (99%)");
    EXPECT_EQ(LossGates().update(99.6, LossMode::always, 0), 2);
}

// The open menu.

TEST_F(StatusItemControllerTest, WhileTheMenuIsOpenTheTitleKeepsItsWidth) {
    showFor(40.5);
    menu->willOpen();
    const double slot = face().textSlot;
    lose(4, 32);
    ASSERT_GE(secondsUntil([this] { return monitor.reading().lossPercent > 5; }), 0);
    loop.advance(1);

    EXPECT_FALSE(showsLoss());
    EXPECT_EQ(face().textSlot, slot);
}

TEST_F(StatusItemControllerTest, WhenTheMenuClosesTheTitleIsEvaluatedAtOnce) {
    showFor(40.5);
    menu->willOpen();
    lose(4, 32);
    ASSERT_GE(secondsUntil([this] { return monitor.reading().lossPercent > 5; }), 0);

    menu->didClose();

    EXPECT_TRUE(showsLoss());
}

TEST_F(StatusItemControllerTest, TheLatencyFollowsWhileTheMenuIsOpen) {
    showFor(5.5);
    menu->willOpen();
    answerAfter(0.077);
    loop.advance(2);

    EXPECT_EQ(title(), "77ms");
}

TEST_F(StatusItemControllerTest, ChangeHostIsShownOnlyWhileDown) {
    showFor(5.5);
    menu->willOpen();
    EXPECT_TRUE(menuItem(Id::changeHost)->hidden);
    menu->didClose();
    fallSilent();
    ASSERT_TRUE(waitUntilDown());

    menu->willOpen();

    EXPECT_FALSE(menuItem(Id::changeHost)->hidden);
}

TEST_F(StatusItemControllerTest, ChangeHostComesAndGoesWhileTheMenuStaysOpen) {
    showFor(5.5);
    menu->willOpen();
    fallSilent();
    ASSERT_TRUE(waitUntilDown());
    loop.runPending();
    EXPECT_FALSE(menuItem(Id::changeHost)->hidden);

    answerAfter(0.02);
    ASSERT_GE(secondsUntil([this] { return monitor.reading().status == Monitor::Status::up; }), 0);
    loop.runPending();

    EXPECT_TRUE(menuItem(Id::changeHost)->hidden);
}

TEST_F(StatusItemControllerTest, AClosedMenuIsNotFollowed) {
    showFor(5.5);
    menu->willOpen();
    menu->didClose();
    fallSilent();
    ASSERT_TRUE(waitUntilDown());
    loop.runPending();

    EXPECT_TRUE(menuItem(Id::changeHost)->hidden);
}

// Texts beside the face.

TEST_F(StatusItemControllerTest, TheToolTipHasLatencyAndLoss) {
    answerAfter(0.042);
    showFor(12.5);

    EXPECT_EQ(item.toolTips.back(), "Latest Ping Time: 42ms\nRecent Packet Loss: 0%");
}

TEST_F(StatusItemControllerTest, TheToolTipOfADownHasItsReason) {
    showFor(5.5);
    fallSilent();
    ASSERT_TRUE(waitUntilDown());
    loop.runPending();

    EXPECT_EQ(item.toolTips.back(), "No replies for 8 s");
}

TEST_F(StatusItemControllerTest, TheToolTipOfADownHasTheLastErrorOnASecondLine) {
    network.setSocketError(AF_INET, "Permission denied");
    showFor(30.5);

    ASSERT_EQ(monitor.reading().status, Monitor::Status::down);
    EXPECT_EQ(item.toolTips.back(), "Can’t open a ping socket\n" + *monitor.reading().lastError());
}

TEST_F(StatusItemControllerTest, TellsAssistiveTechnologyTheSummary) {
    answerAfter(0.042);
    showFor(12.5);

    EXPECT_EQ(item.accessibilityValues.back(), "Excellent, 42 milliseconds, 0 percent packet loss");
}

// The menu.

TEST_F(StatusItemControllerTest, TheMenuHasItsItemsInOrder) {
    show(true);

    std::vector<std::string> titles;
    for (const MenuItem& entry : menu->items()) {
        titles.push_back(entry.id == Id::separator ? "-" : entry.title);
    }

    EXPECT_THAT(
        titles, ElementsAre(
                    "", "Change Host…", "-", "Reset Session Stats", "Reset All Time Stats…", "-",
                    "Check for Updates…", "Settings…", "About Tarnwick", "-", "Quit Tarnwick"));
}

TEST_F(StatusItemControllerTest, CheckForUpdatesIsAbsentWhereTheProgramCannotBeReplaced) {
    show(false);

    EXPECT_EQ(menuItem(Id::checkForUpdates), nullptr);
}

TEST_F(StatusItemControllerTest, CheckForUpdatesIsEnabledOnlyWhenItIsPossible) {
    show(true);
    updates.canCheck = false;
    menu->willOpen();
    EXPECT_FALSE(menuItem(Id::checkForUpdates)->enabled);
    menu->choose(Id::checkForUpdates);
    EXPECT_EQ(updates.checksAskedFor, 0);
    menu->didClose();

    updates.canCheck = true;
    menu->willOpen();
    menu->choose(Id::checkForUpdates);

    EXPECT_EQ(updates.checksAskedFor, 1);
}

TEST_F(StatusItemControllerTest, TheAlternateIsTheOneBelowResetSession) {
    show();
    const auto& items = menu->items();
    const auto alternate = std::ranges::find(items, true, &MenuItem::isAlternate);

    ASSERT_NE(alternate, items.end());
    EXPECT_EQ(alternate->id, Id::resetAllTime);
    EXPECT_EQ(std::prev(alternate)->id, Id::resetSession);
}

TEST_F(StatusItemControllerTest, SettingsAndQuitHaveShortcuts) {
    show();

    EXPECT_EQ(menuItem(Id::settings)->shortcut, ',');
    EXPECT_EQ(menuItem(Id::quit)->shortcut, 'q');
}

TEST_F(StatusItemControllerTest, EveryMnemonicIsALetterOfItsTitle) {
    show(true);

    for (const MenuItem& entry : menu->items()) {
        if (!entry.title.empty()) {
            EXPECT_NE(entry.title.find(entry.mnemonic), std::string::npos) << entry.title;
        }
    }
}

TEST_F(StatusItemControllerTest, AClickTogglesTheDropDownWhereItWas) {
    show();

    item.onActivate(ScreenPoint{700, 12});
    item.onActivate(std::nullopt);

    EXPECT_THAT(windows.dropDowns, ElementsAre(std::optional(ScreenPoint{700, 12}), std::nullopt));
}

TEST_F(StatusItemControllerTest, ChangeHostAndSettingsOpenTheSameWindow) {
    show();
    menu->setHidden(Id::changeHost, false);

    menu->choose(Id::changeHost);
    menu->choose(Id::settings);

    EXPECT_EQ(windows.settingsShown, 2);
}

TEST_F(StatusItemControllerTest, AboutAndQuitDoWhatTheySay) {
    show();

    menu->choose(Id::about);
    menu->choose(Id::quit);

    EXPECT_EQ(windows.aboutShown, 1);
    EXPECT_EQ(windows.quits, 1);
}

TEST_F(StatusItemControllerTest, AHiddenItemCannotBeChosen) {
    show();

    menu->choose(Id::changeHost);

    EXPECT_EQ(windows.settingsShown, 0);
}

// Resets.

TEST_F(StatusItemControllerTest, ResetSessionClearsTheSessionAlone) {
    showFor(5.5);

    menu->choose(Id::resetSession);

    EXPECT_TRUE(monitor.reading().session.isEmpty());
    EXPECT_EQ(monitor.reading().site.sent, 6);
    EXPECT_TRUE(windows.questions.empty());
}

TEST_F(StatusItemControllerTest, ResetAllTimeAsksForTheHostFirst) {
    showFor(5.5);

    menu->choose(Id::resetAllTime);

    ASSERT_EQ(windows.questions.size(), 1U);
    EXPECT_EQ(windows.questions[0].title, "Reset All Time Stats");
    EXPECT_EQ(windows.questions[0].text, "Are you sure you want to reset the all time stats for 1.1.1.1?");
    EXPECT_EQ(windows.questions[0].confirm, "Reset");
    EXPECT_EQ(windows.questions[0].cancel, "Cancel");
    EXPECT_EQ(monitor.reading().site.sent, 6);
}

TEST_F(StatusItemControllerTest, AConfirmedResetClearsAndStoresTheAllTimeFigures) {
    showFor(5.5);
    monitor.saveStats();
    menu->choose(Id::resetAllTime);

    windows.answer(true);

    EXPECT_TRUE(monitor.reading().site.isEmpty());
    EXPECT_EQ(monitor.reading().session.sent, 6);
    const auto stored = StatsStore(statistics).load();
    EXPECT_TRUE(!stored.contains("1.1.1.1") || stored.at("1.1.1.1").isEmpty());
}

TEST_F(StatusItemControllerTest, CancelLeavesTheStatisticsUntouched) {
    showFor(5.5);
    menu->choose(Id::resetAllTime);

    windows.answer(false);

    EXPECT_EQ(monitor.reading().site.sent, 6);
}

TEST_F(StatusItemControllerTest, AnAnswerThatComesAfterAHostChangeResetsNothing) {
    showFor(5.5);
    menu->choose(Id::resetAllTime);
    monitor.setHostname("192.0.2.8");
    loop.advance(5);

    windows.answer(true);

    EXPECT_GT(monitor.reading().site.sent, 0);
}

TEST_F(StatusItemControllerTest, AnAnswerThatComesAfterItsEndIsIgnored) {
    showFor(5.5);
    menu->choose(Id::resetAllTime);
    controller.reset();

    windows.answer(true);

    EXPECT_EQ(monitor.reading().site.sent, 6);
}

TEST_F(StatusItemControllerTest, AClickAfterItsEndIsIgnored) {
    show();
    controller.reset();

    EXPECT_FALSE(item.onActivate);
}

} // namespace tarnwick
