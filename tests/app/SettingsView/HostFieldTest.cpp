// The address below the field for the host.
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
