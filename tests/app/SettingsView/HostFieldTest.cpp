// The field for the host, and the address below it.
#include "tests/app/SettingsView/SettingsFormTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {

namespace {

using testing::HasSubstr;
using testing::Not;

class HostFieldTest : public test::SettingsFormTest {};

} // namespace

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

TEST_F(HostFieldTest, TheAddressRowStaysSoThatNoControlMoves) {
    present();
    EXPECT_THAT(labels(), HasSubstr("Address\nResolving…\n"));
    const QRect before = place(alerts());

    watchFor(1);
    settle();
    EXPECT_THAT(labels(), HasSubstr("Address\n1.1.1.1\n"));
    EXPECT_EQ(place(alerts()), before);

    resolve("one.example", "192.0.2.1");
    submit(host(), "one.example");
    EXPECT_THAT(labels(), HasSubstr("Address\nResolving…\n"));
    EXPECT_EQ(place(alerts()), before);

    loop.advance(1);
    settle();
    EXPECT_THAT(labels(), HasSubstr("Address\n192.0.2.1\n"));
    EXPECT_EQ(place(alerts()), before);
}

// A text that can be no host.

TEST_F(HostFieldTest, WhileATextCanBeNoHostTheAddressRowSaysWhy) {
    watchFor(1);
    present();
    const QRect before = place(alerts());

    typeInto(host(), "two words");
    EXPECT_THAT(labels(), HasSubstr("Address\nIt has a blank in it\n"));
    EXPECT_EQ(place(alerts()), before);
    EXPECT_EQ(host().accessibleDescription(), "It has a blank in it");

    type("two.words");
    EXPECT_THAT(labels(), HasSubstr("Address\n1.1.1.1\n"));
    EXPECT_EQ(prefs.hostname(), "1.1.1.1");
}

TEST_F(HostFieldTest, NoReasonNeedsASecondLine) {
    watchFor(1);
    present();
    const QRect before = place(alerts());

    for (const char* text :
         {"https://", "two words", "one*two", "one..two", "one:two", "[one", "1:2:three"}) {
        typeInto(host(), text);
        EXPECT_THAT(labels(), Not(HasSubstr("Address\n1.1.1.1\n"))) << text;
        EXPECT_EQ(place(alerts()), before) << text;
    }
}

TEST_F(HostFieldTest, EnterKeepsATextThatCanBeNoHostForMending) {
    watchFor(1);
    present();

    submit(host(), "two words");
    EXPECT_EQ(host().text(), "two words");
    EXPECT_THAT(labels(), HasSubstr("It has a blank in it"));
    EXPECT_EQ(prefs.hostname(), "1.1.1.1");

    interval().setFocus();
    settle();
    EXPECT_EQ(host().text(), "1.1.1.1");
    EXPECT_THAT(labels(), Not(HasSubstr("It has a blank in it")));
}

TEST_F(HostFieldTest, ATextThatCanBeNoHostIsGoneWhenTheWindowOpensAgain) {
    watchFor(1);
    present();
    submit(host(), "two words");

    window.close();
    present();

    EXPECT_EQ(host().text(), "1.1.1.1");
    EXPECT_THAT(labels(), Not(HasSubstr("It has a blank in it")));
}

TEST_F(HostFieldTest, AnEmptyFieldIsNoMistakeYet) {
    watchFor(1);
    present();

    typeInto(host(), " ");

    EXPECT_THAT(labels(), HasSubstr("Address\n1.1.1.1\n"));
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
