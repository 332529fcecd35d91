// Pickers and switches of the settings form.
#include "tests/app/SettingsView/SettingsFormTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tarnwick {

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

class SettingsSwitchesTest : public test::SettingsFormTest {
protected:
    [[nodiscard]] static std::vector<std::string> titles(const QComboBox& picker) {
        std::vector<std::string> texts;
        for (int index = 0; index < picker.count(); ++index) {
            texts.push_back(picker.itemText(index).toStdString());
        }
        return texts;
    }

    static void pick(QComboBox& picker, int index) {
        picker.setFocus();
        QTest::keyClick(&picker, Qt::Key_Home);
        for (int step = 0; step < index; ++step) {
            QTest::keyClick(&picker, Qt::Key_Down);
        }
    }
};

} // namespace

TEST_F(SettingsSwitchesTest, ThePickersOfferEveryCase) {
    EXPECT_THAT(titles(display()), ElementsAre("Icon and Text", "Icon Only", "Text Only"));
    EXPECT_THAT(titles(lossText()), ElementsAre("Off", "When There's Loss", "Always"));
}

TEST_F(SettingsSwitchesTest, WhatIsPickedHoldsAtOnce) {
    present();
    pick(display(), 2);
    EXPECT_EQ(prefs.display(), Preferences::Display::textOnly);

    pick(lossText(), 2);
    EXPECT_EQ(prefs.lossTextMode(), MenuBarTitle::LossMode::always);
}

TEST_F(SettingsSwitchesTest, ThePickersFollowTheSettings) {
    present();
    prefs.setDisplay(Preferences::Display::iconOnly);
    prefs.setLossTextMode(MenuBarTitle::LossMode::off);
    settle();

    EXPECT_EQ(display().currentText(), "Icon Only");
    EXPECT_EQ(lossText().currentText(), "Off");
}

TEST_F(SettingsSwitchesTest, WhatThePanelHasNoRoomForIsSaidBesideThePickers) {
    present();
    EXPECT_THAT(labels(), Not(HasSubstr("Your panel")));

    model.setRoomForText(false);
    settle();
    EXPECT_THAT(labels(), HasSubstr("Your panel shows the figure only."));
    EXPECT_THAT(labels(), HasSubstr("Your panel has no room for it."));
    EXPECT_EQ(lossText().accessibleDescription(), "Your panel has no room for it.");

    prefs.setDisplay(Preferences::Display::iconOnly);
    prefs.setLossTextMode(MenuBarTitle::LossMode::off);
    settle();
    EXPECT_THAT(labels(), Not(HasSubstr("Your panel")));
}

TEST_F(SettingsSwitchesTest, NotesBesideTheirControlsMoveNothing) {
    useUsualFont();
    notifications.answer = NotificationCenter::Ability::no;
    loginItem.failure = "The folder is read-only";
    present();
    const auto places = [this] {
        std::vector<QRect> all;
        for (const QWidget* each : std::initializer_list<QWidget*>{
                 &host(), &display(), &lossText(), &alerts(), &test(), &launchAtLogin(), &restore()}) {
            all.push_back(place(*each));
        }
        return all;
    };
    const auto before = places();

    model.setRoomForText(false);
    test().click();
    launchAtLogin().click();
    settle();

    ASSERT_THAT(
        labels(),
        AllOf(
            HasSubstr("Your panel shows the figure only."), HasSubstr("Your panel has no room for it."),
            HasSubstr("Nothing here shows notifications."), HasSubstr("The folder is read-only")));
    EXPECT_EQ(places(), before);
}

TEST_F(SettingsSwitchesTest, WithTheIconOnlyThePacketLossTextIsSaidToBeHidden) {
    present();
    prefs.setDisplay(Preferences::Display::iconOnly);
    settle();
    EXPECT_THAT(labels(), HasSubstr("Only shown with the latency."));

    prefs.setLossTextMode(MenuBarTitle::LossMode::off);
    settle();
    EXPECT_THAT(labels(), Not(HasSubstr("Only shown with the latency.")));
}

TEST_F(SettingsSwitchesTest, TurningAlertsOnAsksForWhatTheyNeedAndTurningThemOffDoesNot) {
    present();
    alerts().click();
    EXPECT_TRUE(prefs.showNotifications());
    EXPECT_EQ(notifications.requests(), 1);

    alerts().click();
    EXPECT_FALSE(prefs.showNotifications());
    EXPECT_EQ(notifications.requests(), 1);
}

TEST_F(SettingsSwitchesTest, ANoteTellsThatNothingShowsNotifications) {
    notifications.answer = NotificationCenter::Ability::no;
    present();
    EXPECT_THAT(labels(), Not(HasSubstr("Nothing here shows notifications.")));

    alerts().click();
    settle();
    EXPECT_THAT(labels(), HasSubstr("Nothing here shows notifications."));
    EXPECT_EQ(alerts().accessibleDescription(), "Nothing here shows notifications.");

    notifications.answer = NotificationCenter::Ability::yes;
    test().click();
    settle();
    EXPECT_THAT(labels(), Not(HasSubstr("Nothing here shows notifications.")));
}

TEST_F(SettingsSwitchesTest, AlertsThatAreOnAreAskedAboutWhenTheWindowOpens) {
    notifications.answer = NotificationCenter::Ability::no;
    prefs.setShowNotifications(true);
    present();

    EXPECT_THAT(labels(), HasSubstr("Nothing here shows notifications."));
}

TEST_F(SettingsSwitchesTest, TheTestButtonPostsANotificationAlsoWhileAlertsAreOff) {
    present();
    test().click();

    ASSERT_EQ(notifications.shown().size(), 1U);
    EXPECT_EQ(notifications.shown()[0].title, "Tarnwick — Test");
    EXPECT_FALSE(prefs.showNotifications());
}

TEST_F(SettingsSwitchesTest, AlertsTurnedOnElsewhereAskNothing) {
    present();
    prefs.setShowNotifications(true);
    settle();

    EXPECT_TRUE(alerts().isChecked());
    EXPECT_EQ(notifications.requests(), 0);
}

TEST_F(SettingsSwitchesTest, AClickOnASwitchsLabelTurnsIt) {
    present();
    QTest::mouseClick(&label("Connection Up/Down Alerts"), Qt::LeftButton);

    EXPECT_TRUE(prefs.showNotifications());
}

TEST_F(SettingsSwitchesTest, ASwitchStandsBesideItsLabel) {
    useUsualFont();
    present();
    for (const char* const name : {"Connection Up/Down Alerts", "Launch at Login"}) {
        const QRect box = place(control<QCheckBox>(name));
        EXPECT_LE(box.right(), place(label(name)).left()) << name;
        EXPECT_LE(place(label(name)).left() - box.right(), 12) << name;
    }
}

TEST_F(SettingsSwitchesTest, ALetterTogetherWithAltLeadsToItsRow) {
    present();
    press(Qt::Key_L, Qt::AltModifier);
    EXPECT_EQ(focused(), "Packet Loss Text");
    press(Qt::Key_P, Qt::AltModifier);
    EXPECT_EQ(focused(), "Ping Every");
    press(Qt::Key_C, Qt::AltModifier);
    EXPECT_TRUE(prefs.showNotifications());
    press(Qt::Key_H, Qt::AltModifier);
    EXPECT_EQ(focused(), "Host to Ping");
}

TEST_F(SettingsSwitchesTest, WhileAltIsHeldTheLettersAreUnderlined) {
    present();
    const QImage before = label("Display").grab().toImage();
    QTest::keyPress(QApplication::focusWidget(), Qt::Key_Alt);
    const QImage held = label("Display").grab().toImage();
    QTest::keyRelease(QApplication::focusWidget(), Qt::Key_Alt);

    EXPECT_NE(held, before);
    EXPECT_EQ(label("Display").grab().toImage(), before);
}

TEST_F(SettingsSwitchesTest, SoAreThoseOfTheButtons) {
    present();
    restore().click(); // so that the other one is there
    settle();
    for (QPushButton* button : {&test(), &restore(), &control<QPushButton>("Undo")}) {
        const QImage before = button->grab().toImage();
        QTest::keyPress(QApplication::focusWidget(), Qt::Key_Alt);
        const QImage held = button->grab().toImage();
        QTest::keyRelease(QApplication::focusWidget(), Qt::Key_Alt);

        EXPECT_NE(held, before) << name(*button);
        EXPECT_EQ(button->grab().toImage(), before) << name(*button);
    }
}

TEST_F(SettingsSwitchesTest, ALetterTogetherWithAltClicksItsButton) {
    prefs.setPingInterval(30);
    present();
    // A click that is seen takes a moment.
    press(Qt::Key_T, Qt::AltModifier);
    EXPECT_TRUE(QTest::qWaitFor([this] { return notifications.shown().size() == 1; }));
    press(Qt::Key_R, Qt::AltModifier);
    EXPECT_TRUE(QTest::qWaitFor([this] { return prefs.pingInterval() == 1; }));
    press(Qt::Key_U, Qt::AltModifier);
    EXPECT_TRUE(QTest::qWaitFor([this] { return prefs.pingInterval() == 30; }));
}

TEST_F(SettingsSwitchesTest, LaunchAtLoginRegistersTheProgram) {
    present();
    launchAtLogin().click();

    EXPECT_EQ(loginItem.now, LoginItem::Status::enabled);
    EXPECT_TRUE(launchAtLogin().isChecked());
}

TEST_F(SettingsSwitchesTest, AFailedLaunchAtLoginTurnsBackAndSaysWhyInRed) {
    loginItem.failure = "The folder is read-only";
    present();
    const int before = window.height();
    launchAtLogin().click();
    settle();

    EXPECT_FALSE(launchAtLogin().isChecked());
    EXPECT_THAT(labels(), HasSubstr("Launch at Login\nThe folder is read-only\n"));
    const QLabel& message = label("The folder is read-only");
    const QColor color = message.palette().color(QPalette::WindowText);
    EXPECT_GT(color.red(), 2 * color.green());
    EXPECT_LT(message.font().pointSizeF(), label("Launch at Login").font().pointSizeF());
    EXPECT_EQ(window.height(), before);
}

TEST_F(SettingsSwitchesTest, WhenApprovalIsNeededItSaysSoAndShowsWhere) {
    loginItem.afterEnrolling = LoginItem::Status::requiresApproval;
    int shown = 0;
    model.launchAtLogin().showApproval = [&] { ++shown; };
    present();
    launchAtLogin().click();
    settle();

    EXPECT_TRUE(launchAtLogin().isChecked());
    EXPECT_THAT(labels(), HasSubstr("Approve Tarnwick in your desktop's startup settings.\n"));
    EXPECT_EQ(shown, 1);
}

TEST_F(SettingsSwitchesTest, WhatTheDesktopHasSwitchedOffIsSaidWithoutOpeningAnything) {
    int shown = 0;
    model.launchAtLogin().showApproval = [&] { ++shown; };
    loginItem.now = LoginItem::Status::requiresApproval;
    present();

    EXPECT_TRUE(launchAtLogin().isChecked());
    EXPECT_THAT(labels(), HasSubstr("Approve Tarnwick in your desktop's startup settings.\n"));
    EXPECT_EQ(shown, 0);
}

TEST_F(SettingsSwitchesTest, BesideThatAButtonLeadsToTheDesktopsSettings) {
    int shown = 0;
    model.launchAtLogin().showApproval = [&] { ++shown; };
    loginItem.now = LoginItem::Status::requiresApproval;
    present();
    launchAtLogin().setFocus();
    press(Qt::Key_Tab);
    ASSERT_EQ(focused(), "Startup Settings…");
    press(Qt::Key_Space);

    EXPECT_EQ(shown, 1);
    EXPECT_EQ(loginItem.now, LoginItem::Status::requiresApproval);
}

TEST_F(SettingsSwitchesTest, WhereNothingIsToBeApprovedThereIsNoSuchButton) {
    model.launchAtLogin().showApproval = [] {};
    present();

    EXPECT_FALSE(control<QPushButton>("Startup Settings…").isVisible());
}

TEST_F(SettingsSwitchesTest, WhereTheDesktopHasNoSuchSettingsThereIsNoSuchButton) {
    loginItem.now = LoginItem::Status::requiresApproval;
    present();

    EXPECT_FALSE(control<QPushButton>("Startup Settings…").isVisible());
}

TEST_F(SettingsSwitchesTest, AnApprovalGivenElsewhereIsNoticedOnTheWayBack) {
    loginItem.now = LoginItem::Status::requiresApproval;
    present();
    loginItem.now = LoginItem::Status::enabled;
    lookElsewhere();

    EXPECT_TRUE(launchAtLogin().isChecked());
    EXPECT_THAT(labels(), Not(HasSubstr("Approve Tarnwick")));
}

TEST_F(SettingsSwitchesTest, AnApprovalWithdrawnElsewhereIsNoticedOnTheWayBack) {
    loginItem.now = LoginItem::Status::enabled;
    present();
    loginItem.now = LoginItem::Status::requiresApproval;
    lookElsewhere();

    EXPECT_THAT(labels(), HasSubstr("Approve Tarnwick in your desktop's startup settings.\n"));
}

TEST_F(SettingsSwitchesTest, AFailureIsStillSaidOnTheWayBack) {
    loginItem.failure = "The folder is read-only";
    present();
    launchAtLogin().click();
    lookElsewhere();

    EXPECT_THAT(labels(), HasSubstr("Launch at Login\nThe folder is read-only\n"));
}

TEST_F(SettingsSwitchesTest, AClickOnAPickersLabelGivesItTheKeyboard) {
    present();
    QTest::mouseClick(&label("Packet Loss Text"), Qt::LeftButton);

    EXPECT_EQ(focused(), "Packet Loss Text");
}

TEST_F(SettingsSwitchesTest, OnlyTheLeftButtonOnALabelCounts) {
    present();
    QTest::mouseClick(&label("Connection Up/Down Alerts"), Qt::RightButton);
    QTest::mouseClick(&label("Packet Loss Text"), Qt::RightButton);

    EXPECT_FALSE(prefs.showNotifications());
    EXPECT_EQ(focused(), "Host to Ping");
}

} // namespace tarnwick
