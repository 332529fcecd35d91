// What assistive technology learns of the settings form, and does with it.
#include "tests/app/SettingsView/SettingsFormTest.h"

#include <QClipboard>

#include <gtest/gtest.h>

#include <initializer_list>

namespace tarnwick {

namespace {

class SettingsAccessibilityTest : public test::SettingsFormTest {};

} // namespace

TEST_F(SettingsAccessibilityTest, EveryControlTellsItsRoleAndWhatItIsFor) {
    present();

    EXPECT_EQ(accessible(host()).role(), QAccessible::EditableText);
    EXPECT_EQ(accessible(interval()).role(), QAccessible::SpinBox);
    EXPECT_EQ(accessible(threshold()).role(), QAccessible::Slider);
    EXPECT_EQ(accessible(display()).role(), QAccessible::ComboBox);
    EXPECT_EQ(accessible(alerts()).role(), QAccessible::CheckBox);
    EXPECT_EQ(accessible(restore()).role(), QAccessible::Button);
    EXPECT_TRUE(accessible(host()).text(QAccessible::Description).startsWith("Tarnwick constantly pings"));
    EXPECT_TRUE(accessible(interval()).text(QAccessible::Description).startsWith("1 to 60 seconds."));
    EXPECT_TRUE(accessible(threshold()).text(QAccessible::Description).startsWith("Pings faster"));
}

TEST_F(SettingsAccessibilityTest, EveryControlIsNamedByItsLabel) {
    present();
    // A picker is called by its value, so the label must name it.
    for (QWidget* each : std::initializer_list<QWidget*>{
             &host(), &interval(), &threshold(), &display(), &lossText(), &alerts(), &launchAtLogin()}) {
        const auto labels = accessible(*each).relations(QAccessible::Label);
        ASSERT_EQ(labels.size(), 1) << name(*each);
        EXPECT_EQ(labels.front().first->text(QAccessible::Name).toStdString(), name(*each));
    }
    EXPECT_EQ(accessible(host()).text(QAccessible::Name), "Host to Ping");
    EXPECT_EQ(accessible(alerts()).text(QAccessible::Name), "Connection Up/Down Alerts");
    EXPECT_EQ(accessible(restore()).text(QAccessible::Name), "Restore Default Settings");
}

TEST_F(SettingsAccessibilityTest, TheAddressIsReadOutAsItIs) {
    resolve("one.example", "192.0.2.1");
    monitor.setHostname("one.example");
    watchFor(1);
    present();
    QLabel& address = label("192.0.2.1");

    EXPECT_EQ(accessible(address).text(QAccessible::Name), "192.0.2.1");
    EXPECT_EQ(
        accessible(address).relations(QAccessible::Label).front().first->text(QAccessible::Name), "Address");
}

TEST_F(SettingsAccessibilityTest, TheAddressIsCopiedWithoutAPointer) {
    resolve("one.example", "192.0.2.1");
    monitor.setHostname("one.example");
    watchFor(1);
    present();
    press(Qt::Key_Tab);
    press(Qt::Key_Tab);
    EXPECT_EQ(label("192.0.2.1").selectedText(), "192.0.2.1");
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), "192.0.2.1");

    press(Qt::Key_Tab);
    EXPECT_EQ(focused(), "Ping Every");
    EXPECT_FALSE(label("192.0.2.1").hasSelectedText());
}

TEST_F(SettingsAccessibilityTest, AFailedLaunchAtLoginIsToldWithTheSwitch) {
    loginItem.failure = "The folder is read-only";
    present();
    launchAtLogin().click();

    EXPECT_EQ(accessible(launchAtLogin()).text(QAccessible::Description), "The folder is read-only");
}

TEST_F(SettingsAccessibilityTest, TheSlidersValueIsTheThresholdInMilliseconds) {
    present();
    QAccessibleValueInterface* const value = accessible(threshold()).valueInterface();
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(value->currentValue().toDouble(), 100);
    EXPECT_EQ(value->minimumValue().toDouble(), 50);
    EXPECT_EQ(value->maximumValue().toDouble(), 2000);

    value->setCurrentValue(700);
    EXPECT_EQ(prefs.slowPingThresholdMs(), 700);
    EXPECT_EQ(value->currentValue().toDouble(), 700);
}

TEST_F(SettingsAccessibilityTest, ItsActionsTurnTheSwitches) {
    present();
    for (QWidget* each : {&alerts(), &launchAtLogin()}) {
        QAccessibleActionInterface* const actions = accessible(*each).actionInterface();
        ASSERT_NE(actions, nullptr);
        actions->doAction(actions->actionNames().front());
    }

    EXPECT_TRUE(prefs.showNotifications());
    EXPECT_EQ(loginItem.now, LoginItem::Status::enabled);
}

TEST_F(SettingsAccessibilityTest, TheIntervalsValueCanBeSetWithoutTyping) {
    present();
    QAccessibleValueInterface* const value = accessible(interval()).valueInterface();
    ASSERT_NE(value, nullptr);
    value->setCurrentValue(12);

    EXPECT_EQ(prefs.pingInterval(), 12);
}

} // namespace tarnwick
