// The field for the host, with the address below it.
#include "tests/app/SettingsView/SettingsFormTest.h"

#include <QContextMenuEvent>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {

namespace {

using testing::HasSubstr;
using testing::Not;

class HostFieldTest : public test::SettingsFormTest {};

} // namespace

TEST_F(HostFieldTest, TheHostsFieldBeginsWithTheHost) {
    present();

    EXPECT_EQ(host().text(), "1.1.1.1");
}

TEST_F(HostFieldTest, TypingAHostPingsNothingNew) {
    present();
    typeInto(host(), "one.example");

    EXPECT_EQ(prefs.hostname(), "1.1.1.1");
}

TEST_F(HostFieldTest, EnterCommitsTheHostAndShowsItWithoutWhiteSpace) {
    resolve("one.example", "192.0.2.1");
    present();
    submit(host(), "  one.example ");

    EXPECT_EQ(prefs.hostname(), "one.example");
    EXPECT_EQ(host().text(), "one.example");
}

TEST_F(HostFieldTest, LeavingTheFieldCommitsTheHost) {
    resolve("one.example", "192.0.2.1");
    present();
    typeInto(host(), "one.example");
    press(Qt::Key_Tab);

    EXPECT_EQ(prefs.hostname(), "one.example");
}

TEST_F(HostFieldTest, WhatIsPutThereWithoutTheKeyboardCountsAtOnce) {
    resolve("one.example", "192.0.2.1");
    present();
    interval().setFocus();
    replaceText(host(), "one.example");

    EXPECT_EQ(prefs.hostname(), "one.example");
}

TEST_F(HostFieldTest, AnEmptiedFieldGoesBackToTheHost) {
    present();
    submit(host(), " ");

    EXPECT_EQ(prefs.hostname(), "1.1.1.1");
    EXPECT_EQ(host().text(), "1.1.1.1");
}

TEST_F(HostFieldTest, AHostChangedElsewhereIsShown) {
    resolve("one.example", "192.0.2.1");
    present();
    monitor.setHostname("one.example");
    settle();

    EXPECT_EQ(host().text(), "one.example");
}

TEST_F(HostFieldTest, AHostChangedElsewhereLeavesADraftAlone) {
    resolve("one.example", "192.0.2.1");
    present();
    typeInto(host(), "two.exam");
    monitor.setHostname("one.example");
    settle();

    EXPECT_EQ(host().text(), "two.exam");
}

TEST_F(HostFieldTest, LeavingTheFieldTakesNoChangeBackThatWasMadeElsewhere) {
    resolve("one.example", "192.0.2.1");
    present();
    host().setFocus();
    monitor.setHostname("one.example");
    interval().setFocus(); // before the change is shown
    settle();

    EXPECT_EQ(prefs.hostname(), "one.example");
}

// What makes a draft count, and what does not.

TEST_F(HostFieldTest, ATypedHostCountsAlsoWhenItIsTheOneThatWasShownBefore) {
    resolve("one.example", "192.0.2.1");
    present();
    typeInto(host(), "two.exam");
    monitor.setHostname("one.example");
    settle();
    submit(host(), "1.1.1.1");

    EXPECT_EQ(prefs.hostname(), "1.1.1.1");
    EXPECT_EQ(host().text(), "1.1.1.1");
}

TEST_F(HostFieldTest, AfterADraftThatCameToNothingChangesMadeElsewhereAreShownAgain) {
    resolve("one.example", "192.0.2.1");
    present();
    typeInto(host(), " ");
    prefs.setSlowPingThresholdMs(250);
    settle();
    press(Qt::Key_Return);
    prefs.setHostname("one.example");
    settle();

    EXPECT_EQ(host().text(), "one.example");
}

TEST_F(HostFieldTest, AnotherWindowLeavesADraftAlone) {
    resolve("two.exam", "192.0.2.2");
    present();
    typeInto(host(), "two.exam");
    lookElsewhere();
    EXPECT_EQ(prefs.hostname(), "1.1.1.1");
    EXPECT_EQ(host().text(), "two.exam");

    press(Qt::Key_Return);
    EXPECT_EQ(prefs.hostname(), "two.exam");
}

TEST_F(HostFieldTest, ItsContextMenuLeavesADraftAlone) {
    present();
    typeInto(host(), "two.exam");
    QContextMenuEvent event(QContextMenuEvent::Mouse, {5, 5}, host().mapToGlobal(QPoint(5, 5)));
    QApplication::sendEvent(&host(), &event);
    settle();
    QWidget* const menuOfField = QApplication::activePopupWidget();
    ASSERT_NE(menuOfField, nullptr);
    menuOfField->close();
    settle();

    EXPECT_EQ(prefs.hostname(), "1.1.1.1");
    EXPECT_EQ(host().text(), "two.exam");
}

TEST_F(HostFieldTest, AWindowThatIsClosedFromElsewhereCommitsADraftToo) {
    resolve("one.example", "192.0.2.1");
    present();
    typeInto(host(), "one.example");
    QWidget other;
    other.show();
    other.activateWindow();
    settle();
    ASSERT_EQ(prefs.hostname(), "1.1.1.1");
    window.close();

    EXPECT_EQ(prefs.hostname(), "one.example");
}

TEST_F(HostFieldTest, ATextSetByAssistiveTechnologyCountsWhenTheFieldIsLeft) {
    resolve("one.example", "192.0.2.1");
    present();
    host().setFocus();
    replaceText(host(), "one.example");
    EXPECT_EQ(prefs.hostname(), "1.1.1.1");

    press(Qt::Key_Tab);
    EXPECT_EQ(prefs.hostname(), "one.example");
}

TEST_F(HostFieldTest, ATextSetByAssistiveTechnologyCountsWhenEnterIsPressed) {
    resolve("one.example", "192.0.2.1");
    present();
    host().setFocus();
    replaceText(host(), " one.example");
    press(Qt::Key_Return);

    EXPECT_EQ(prefs.hostname(), "one.example");
    EXPECT_EQ(host().text(), "one.example");
}

TEST_F(HostFieldTest, AClickOnItsLabelGivesItTheKeyboard) {
    present();
    interval().setFocus();
    QTest::mouseClick(&label("Host to Ping"), Qt::LeftButton);

    EXPECT_EQ(focused(), "Host to Ping");
}

TEST_F(HostFieldTest, AClickOnTheAddresssLabelLeavesTheKeyboardWhereItIs) {
    resolve("one.example", "192.0.2.1");
    monitor.setHostname("one.example");
    watchFor(1);
    present();
    interval().setFocus();
    QTest::mouseClick(&label("Address"), Qt::LeftButton);

    EXPECT_EQ(focused(), "Ping Every");
}

// The address.

TEST_F(HostFieldTest, AnAddressHasNoAddressRowOnceResolved) {
    present();
    EXPECT_THAT(labels(), HasSubstr("Address\nResolving…\n"));

    watchFor(1);
    settle();
    EXPECT_THAT(labels(), Not(HasSubstr("Address\n")));
}

TEST_F(HostFieldTest, AHostsNameHasItsAddressBelow) {
    resolve("one.example", "192.0.2.1");
    monitor.setHostname("one.example");
    watchFor(1);
    present();

    EXPECT_THAT(labels(), HasSubstr("Address\n192.0.2.1\n"));
}

TEST_F(HostFieldTest, AHostThatIsNotFoundSaysSoInTheAddressRow) {
    network.setHost("nowhere.example", PingError::resolution("No such host"));
    monitor.setHostname("nowhere.example");
    monitor.start();
    present();
    ASSERT_TRUE(waitUntilDown());
    settle();

    EXPECT_THAT(labels(), HasSubstr("Address\nCan’t find host “nowhere.example”\n"));
}

} // namespace tarnwick
