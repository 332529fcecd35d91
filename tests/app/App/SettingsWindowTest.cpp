// The window "Tarnwick Settings": one, in the middle, and usable without a pointer.
#include "app/App/SettingsWindow.h"

#include "tests/app/SettingsView/SettingsForm.h"

#include <QAccessible>
#include <QClipboard>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

namespace tarnwick {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// Known only once the window is shown.
constexpr int frame = 4;

class SettingsWindowTest : public testing::Test, protected test::SettingsForm {
protected:
    /// Presses Tab until a control has the keyboard.
    void tabTo(const std::string& name) {
        for (int presses = 0; presses < 20; ++presses) {
            if (focused() == name) {
                return;
            }
            press(Qt::Key_Tab);
        }
        FAIL() << "Tab does not lead to " << name;
    }

    [[nodiscard]] static const QScreen* screenNamed(const QString& name) {
        const QList<QScreen*> screens = QGuiApplication::screens();
        const auto found = std::ranges::find(screens, name, &QScreen::name);
        return found == screens.end() ? nullptr : *found;
    }

    [[nodiscard]] QPoint distanceFromTheMiddle() const {
        return window.geometry().center() - window.screen()->availableGeometry().center();
    }
};

} // namespace

TEST_F(SettingsWindowTest, ItIsNamedAfterWhatItIs) {
    present();

    EXPECT_EQ(window.windowTitle(), "Tarnwick Settings");
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&window)->role(), QAccessible::Window);
}

TEST_F(SettingsWindowTest, ClosingItFlushesWhatWasSetInIt) {
    present();
    prefs.setSlowPingThresholdMs(250);
    ASSERT_FALSE(defaults.isFlushed());

    window.close();

    EXPECT_TRUE(defaults.isFlushed());
}

TEST_F(SettingsWindowTest, ClosingItFlushesWhatWasTypedInIt) {
    present();
    type("one.example");

    press(Qt::Key_W, Qt::ControlModifier);

    EXPECT_EQ(prefs.hostname(), "one.example");
    EXPECT_TRUE(defaults.isFlushed());
}

TEST_F(SettingsWindowTest, EscapeClosesItAndDropsWhatIsTyped) {
    present();
    type("one.example");

    press(Qt::Key_Escape);

    EXPECT_FALSE(window.isVisible());
    EXPECT_EQ(prefs.hostname(), "1.1.1.1");
}

TEST_F(SettingsWindowTest, HiddenByTheDesktopItDoesNotWaitForTheDisk) {
    present();
    prefs.setSlowPingThresholdMs(250);

    QHideEvent hiding;
    QSpontaneKeyEvent::setSpontaneous(&hiding);
    qApp->notify(&window.view(), &hiding);

    EXPECT_FALSE(defaults.isFlushed());
}

TEST_F(SettingsWindowTest, ItCanBeClosedButNeitherResizedNorMinimized) {
    present();

    EXPECT_EQ(window.minimumSize(), window.maximumSize());
    EXPECT_TRUE(window.windowFlags() & Qt::WindowCloseButtonHint);
    EXPECT_FALSE(window.windowFlags() & Qt::WindowMinimizeButtonHint);
    EXPECT_FALSE(window.windowFlags() & Qt::WindowMaximizeButtonHint);
}

TEST_F(SettingsWindowTest, ItOpensInTheMiddleOfTheScreen) {
    present();

    EXPECT_LE(std::abs(distanceFromTheMiddle().x()), frame);
    EXPECT_LE(std::abs(distanceFromTheMiddle().y()), frame);
}

TEST_F(SettingsWindowTest, OpenedAgainItStaysWhereItWasLeft) {
    present();
    window.move(11, 22);
    window.close();
    EXPECT_FALSE(window.isVisible());
    present();

    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(window.pos(), QPoint(11, 22));
}

TEST_F(SettingsWindowTest, ClosingItDoesNotDeleteIt) {
    EXPECT_FALSE(window.testAttribute(Qt::WA_DeleteOnClose));
}

TEST_F(SettingsWindowTest, AllOfTheFormIsSeenWhereTheScreenIsLargeEnough) {
    present();

    EXPECT_EQ(window.size(), window.view().sizeHint());
    const auto* const area = window.findChild<QScrollArea*>();
    EXPECT_FALSE(area->horizontalScrollBar()->isVisible());
    EXPECT_FALSE(area->verticalScrollBar()->isVisible());
}

TEST_F(SettingsWindowTest, ItGrowsAndShrinksWithItsForm) {
    present();
    const int without = window.height();
    monitor.setNotice({.kind = Notice::Kind::settingsMistake, .text = "Something is wrong."});
    settle();
    EXPECT_GT(window.height(), without);
    EXPECT_EQ(window.size(), window.view().sizeHint());

    monitor.clearNotice(Notice::Kind::settingsMistake);
    settle();
    EXPECT_EQ(window.height(), without);
}

TEST_F(SettingsWindowTest, OnALowScreenTheFormScrollsAndTheKeyboardBringsTheRestUp) {
    QFont font = window.font();
    font.setPixelSize(30);
    window.setFont(font);
    present();
    const auto* const area = window.findChild<QScrollArea*>();
    ASSERT_LE(window.height(), window.screen()->availableGeometry().height());
    ASSERT_GT(area->verticalScrollBar()->maximum(), 0);

    tabTo("Restore Default Settings");

    const QRect place(restore().mapTo(area->viewport(), QPoint()), restore().size());
    EXPECT_TRUE(area->viewport()->rect().contains(place));
}

TEST_F(SettingsWindowTest, OnALowScreenWhatIsOpenedComesIntoView) {
    QFont font = window.font();
    font.setPixelSize(20);
    window.setFont(font);
    present();
    const auto* const area = window.findChild<QScrollArea*>();
    control<QPushButton>("Advanced").click();
    settle();
    ASSERT_GT(area->verticalScrollBar()->maximum(), 0);

    const auto& last = control<QComboBox>("Color in the Panel");
    const QRect place(last.mapTo(area->viewport(), QPoint()), last.size());
    EXPECT_TRUE(area->viewport()->rect().contains(place));
}

TEST_F(SettingsWindowTest, WhatGrowsBeyondTheScreensEndMovesUp) {
    present();
    const int end = window.screen()->availableGeometry().bottom();
    window.move(11, end + 1 - window.frameGeometry().height());
    settle();
    control<QPushButton>("Advanced").click();
    settle();

    EXPECT_EQ(window.frameGeometry().bottom(), end);
    EXPECT_EQ(window.pos().x(), 11);
}

TEST_F(SettingsWindowTest, OnANarrowScreenTheFormScrollsSidewaysToo) {
    QFont font = window.font();
    font.setPixelSize(60);
    window.setFont(font);
    present();
    const auto* const area = window.findChild<QScrollArea*>();
    ASSERT_LE(window.width(), window.screen()->availableGeometry().width());
    ASSERT_LE(window.height(), window.screen()->availableGeometry().height());
    ASSERT_GT(area->horizontalScrollBar()->maximum(), 0);

    tabTo("Launch at Login");

    const QRect place(launchAtLogin().mapTo(area->viewport(), QPoint()), launchAtLogin().size());
    EXPECT_TRUE(area->viewport()->rect().contains(place));
}

TEST_F(SettingsWindowTest, OnALowerScreenItIsNoHigherThanThatAndGrowsAgainOnItsWayBack) {
    const QScreen* const lowScreen = screenNamed("low");
    ASSERT_NE(lowScreen, nullptr);
    present();

    window.move(lowScreen->geometry().topLeft());
    settle();
    EXPECT_LT(window.height(), lowScreen->availableGeometry().height());
    window.move(0, 0);
    settle();

    EXPECT_EQ(window.size(), window.view().sizeHint());
}

TEST_F(SettingsWindowTest, ItBeginsWithTheHostsField) {
    present();

    EXPECT_EQ(focused(), "Host to Ping");
}

TEST_F(SettingsWindowTest, TabLeadsThroughAllControlsFromTopToBottomAndAround) {
    present();
    std::vector<std::string> order;
    for (int presses = 0; presses < 13; ++presses) {
        order.push_back(focused());
        press(Qt::Key_Tab);
    }

    EXPECT_THAT(
        order, ElementsAre(
                   "Host to Ping", "Choose Host", "Resolving…", "Ping Every", "Slow Ping Threshold",
                   "Display", "Packet Loss Text", "Connection Up/Down Alerts", "Test", "Launch at Login",
                   "Advanced", "Restore Default Settings", "Host to Ping"));
}

TEST_F(SettingsWindowTest, BacktabLeadsTheOtherWay) {
    present();
    press(Qt::Key_Backtab, Qt::ShiftModifier);

    EXPECT_EQ(focused(), "Restore Default Settings");
}

TEST_F(SettingsWindowTest, EverythingCanBeSetWithTheKeyboardAlone) {
    resolve("one.example", "192.0.2.1");
    watchFor(1);
    present();

    tabTo("Host to Ping");
    type("one.example");
    tabTo("Ping Every");
    EXPECT_EQ(prefs.hostname(), "one.example");
    loop.advance(1);
    settle();
    EXPECT_THAT(labels(), HasSubstr("192.0.2.1"));

    for (const auto& [typed, seconds] : {std::pair{"0", 1}, std::pair{"600", 60}, std::pair{"abc", 60}}) {
        type(typed);
        press(Qt::Key_Return);
        EXPECT_EQ(prefs.pingInterval(), seconds) << typed;
        EXPECT_EQ(interval().text().toInt(), seconds) << typed;
    }

    tabTo("Slow Ping Threshold");
    press(Qt::Key_Home);
    EXPECT_EQ(prefs.slowPingThresholdMs(), 50);
    press(Qt::Key_End);
    EXPECT_EQ(prefs.slowPingThresholdMs(), 2000);

    tabTo("Display");
    press(Qt::Key_Down);
    EXPECT_EQ(prefs.display(), Preferences::Display::iconOnly);
    tabTo("Packet Loss Text");
    press(Qt::Key_Up);
    EXPECT_EQ(prefs.lossTextMode(), MenuBarTitle::LossMode::off);

    tabTo("Connection Up/Down Alerts");
    press(Qt::Key_Space);
    EXPECT_TRUE(prefs.showNotifications());
    tabTo("Launch at Login");
    press(Qt::Key_Space);
    EXPECT_EQ(loginItem.now, LoginItem::Status::enabled);

    tabTo("Restore Default Settings");
    press(Qt::Key_Space);
    EXPECT_EQ(prefs.hostname(), "1.1.1.1");
    EXPECT_EQ(prefs.pingInterval(), 1);
    EXPECT_EQ(prefs.slowPingThresholdMs(), 100);
    EXPECT_EQ(prefs.display(), Preferences::Display::iconAndText);
    EXPECT_EQ(prefs.lossTextMode(), MenuBarTitle::LossMode::whenLossy);
    EXPECT_FALSE(prefs.showNotifications());
    EXPECT_EQ(host().text(), "1.1.1.1");
}

TEST_F(SettingsWindowTest, EnterInTheHostsFieldPressesNoButton) {
    prefs.setPingInterval(5);
    present();
    press(Qt::Key_Return);

    EXPECT_EQ(prefs.pingInterval(), 5);
    EXPECT_TRUE(window.isVisible());
}

// Shortcuts.

TEST_F(SettingsWindowTest, ControlWClosesIt) {
    present();
    press(Qt::Key_W, Qt::ControlModifier);

    EXPECT_FALSE(window.isVisible());
    EXPECT_THAT(menu.chosen, IsEmpty());
}

TEST_F(SettingsWindowTest, ClosingItCommitsWhatWasTyped) {
    resolve("one.example", "192.0.2.1");
    present();
    type("one.example");
    press(Qt::Key_W, Qt::ControlModifier);

    EXPECT_EQ(prefs.hostname(), "one.example");
}

TEST_F(SettingsWindowTest, TheEndOfTheProgramCommitsNothing) {
    auto second = std::make_unique<SettingsWindow>(model, loop, menu.menu);
    second->present();
    settle();
    type("one.example");
    second.reset();

    EXPECT_EQ(prefs.hostname(), "1.1.1.1");
}

TEST_F(SettingsWindowTest, ControlQChoosesQuitInTheProgramsMenu) {
    present();
    press(Qt::Key_Q, Qt::ControlModifier);

    EXPECT_THAT(menu.chosen, ElementsAre(MenuItem::Id::quit));
}

TEST_F(SettingsWindowTest, ControlCommaChoosesSettingsInTheProgramsMenu) {
    present();
    press(Qt::Key_Comma, Qt::ControlModifier);

    EXPECT_THAT(menu.chosen, ElementsAre(MenuItem::Id::settings));
}

TEST_F(SettingsWindowTest, ShortcutsWorkFromEveryControl) {
    present();
    for (int control = 0; control < 8; ++control) {
        press(Qt::Key_Q, Qt::ControlModifier);
        press(Qt::Key_Tab);
    }

    EXPECT_EQ(menu.chosen.size(), 8);
}

TEST_F(SettingsWindowTest, EditKeysWorkInTheHostsField) {
    present();
    press(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(host().selectedText(), "1.1.1.1");
    press(Qt::Key_X, Qt::ControlModifier);
    EXPECT_EQ(host().text(), "");
    press(Qt::Key_V, Qt::ControlModifier);
    press(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(host().text(), "1.1.1.11.1.1.1");
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(host().text(), "1.1.1.1");
    press(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(host().text(), "1.1.1.11.1.1.1");
}

TEST_F(SettingsWindowTest, EditKeysWorkInTheIntervalsField) {
    present();
    interval().setFocus();
    press(Qt::Key_A, Qt::ControlModifier);
    press(Qt::Key_C, Qt::ControlModifier);

    EXPECT_EQ(QApplication::clipboard()->text(), "1");
}

} // namespace tarnwick
