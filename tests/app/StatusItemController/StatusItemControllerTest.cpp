// What the status item shows, and when it is touched.
#include "tests/app/StatusItemController/WatchedStatusItem.h"

#include "tests/support/CaseName.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>

namespace tarnwick {

namespace {

using Display = Preferences::Display;
using Icon = StatusFace::Icon;
using MenuBarTitle::LossMode;
using testing::ElementsAre;

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

struct Shown {
    std::string name;
    Display display;
    double latency; ///< of all replies, in seconds
    bool isDown;    ///< after some replies
    StatusFace face;

    friend void PrintTo(const Shown& shown, std::ostream* out) { *out << shown.name; }
};

class FaceTest : public StatusItemControllerTest, public testing::WithParamInterface<Shown> {};

} // namespace

// The face.

TEST_P(FaceTest, ShowsTheConnectionInTheChosenDisplay) {
    const auto& [name, display, latency, isDown, expected] = GetParam();
    prefs.setDisplay(display);
    answerAfter(latency);
    showFor(5.5);
    ASSERT_TRUE(!isDown || goDown());

    EXPECT_EQ(face().isDown, isDown);
    EXPECT_EQ(face().icon, expected.icon);
    EXPECT_EQ(face().activeBars, expected.activeBars);
    EXPECT_EQ(face().title, expected.title);
    EXPECT_EQ(face().figure, expected.figure);
    EXPECT_EQ(face().widestTitle.empty(), !expected.title);
    EXPECT_EQ(face().textSlot == 0, !expected.title);
}

INSTANTIATE_TEST_SUITE_P(
    StatusItemControllerTest, FaceTest,
    testing::Values(
        Shown{
            "IconAndText",
            Display::iconAndText,
            0.042,
            false,
            {.activeBars = 5, .title = "42ms", .figure = "42"}},
        Shown{"Icon", Display::iconOnly, 0.042, false, {.activeBars = 5}},
        Shown{
            "Text", Display::textOnly, 1.24, false, {.icon = Icon::none, .title = "1.2s", .figure = "1.2s"}},
        Shown{
            "IconAndTextWhileDown",
            Display::iconAndText,
            0.042,
            true,
            {.icon = Icon::failed, .title = "Failed"}},
        Shown{"IconWhileDown", Display::iconOnly, 0.042, true, {.icon = Icon::failed}},
        Shown{"TextWhileDown", Display::textOnly, 0.042, true, {.icon = Icon::none, .title = "Failed"}}),
    test::caseName);

TEST_F(StatusItemControllerTest, BeforeTheFirstReplyTheBarsAreEmptyAndTheTextWaits) {
    fallSilent();
    showFor(0.5);

    EXPECT_EQ(face().icon, Icon::bars);
    EXPECT_EQ(face().activeBars, 0);
    EXPECT_EQ(title(), "…");
    EXPECT_EQ(face().figure, "…");
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

TEST_F(StatusItemControllerTest, HandsOverTheFormOfTheSettings) {
    show();

    EXPECT_THAT(item.forms, ElementsAre(StatusItem::Form::automatic));
}

TEST_F(StatusItemControllerTest, HandsOverANewFormOnce) {
    showFor(5.5);
    defaults.put(PreferenceKey::panelFace, std::string("wide"));

    prefs.reload();
    loop.advance(5);

    EXPECT_THAT(item.forms, ElementsAre(StatusItem::Form::automatic, StatusItem::Form::wide));
}

TEST_F(StatusItemControllerTest, HandsOverTheInkOfTheSettings) {
    showFor(5.5);

    prefs.setPanelInk(StatusItem::InkChoice::dark);
    loop.runPending();

    EXPECT_THAT(item.inks, ElementsAre(StatusItem::InkChoice::automatic, StatusItem::InkChoice::dark));
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
    const int touches = item.touches;

    // The latency changes with every ping, the text that is made of it does not.
    for (int second = 0; second < 60; ++second) {
        answerAfter(second % 2 == 0 ? 0.0201 : 0.0204);
        loop.advance(1);
    }

    EXPECT_GT(network.sent().size(), 60U);
    EXPECT_EQ(item.touches, touches);
}

TEST_F(StatusItemControllerTest, AReplyThatChangesFaceAndTextsTouchesTheItemOnce) {
    showFor(5.5);
    const int touches = item.touches;
    const std::size_t faces = item.faces.size();
    const std::size_t toolTips = item.toolTips.size();
    const std::size_t spoken = item.accessibilityValues.size();

    answerAfter(0.077);
    loop.advance(1);

    EXPECT_EQ(item.faces.size(), faces + 1);
    EXPECT_EQ(item.toolTips.size(), toolTips + 1);
    EXPECT_EQ(item.accessibilityValues.size(), spoken + 1);
    EXPECT_EQ(item.touches, touches + 1);
}

TEST_F(StatusItemControllerTest, ABurstOfChangesCostsOneRedraw) {
    showFor(5.5);
    const int touches = item.touches;

    prefs.setDisplay(Display::iconOnly);
    prefs.setDisplay(Display::textOnly);
    prefs.setLossTextMode(LossMode::always);
    loop.runPending();

    EXPECT_EQ(item.touches, touches + 1);
}

TEST_F(StatusItemControllerTest, AChangeIsDrawnFromTheQueueNotInTheMiddleOfIt) {
    showFor(5.5);
    const int touches = item.touches;

    prefs.setDisplay(Display::iconOnly);

    EXPECT_EQ(item.touches, touches);
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

// The open menu.

TEST_F(StatusItemControllerTest, TheTitleKeepsItsWidthUntilTheMenuCloses) {
    showFor(40.5);
    menu->willOpen();
    const double slot = face().textSlot;
    lose(4, 32);
    ASSERT_GE(secondsUntil([this] { return monitor.reading().lossPercent > 5; }), 0);
    loop.advance(1);
    EXPECT_FALSE(showsLoss());
    EXPECT_EQ(face().textSlot, slot);

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

// Texts beside the face.

TEST_F(StatusItemControllerTest, TheToolTipHasLatencyAndLoss) {
    answerAfter(0.042);
    showFor(12.5);

    EXPECT_EQ(item.toolTips.back(), "Latest Ping Time: 42ms\nRecent Packet Loss: 0%");
}

TEST_F(StatusItemControllerTest, TheToolTipOfADownHasItsReason) {
    showFor(5.5);
    ASSERT_TRUE(goDown());

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

} // namespace tarnwick
