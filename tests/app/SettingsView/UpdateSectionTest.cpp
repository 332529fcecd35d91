// The settings form where the program can be replaced by newer versions.
#include "tests/app/SettingsView/SettingsFormTest.h"
#include "tests/simulation/FakeUpdateFramework.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

namespace tarnwick {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

struct Updates {
    simulation::FakeUpdateFramework framework;
};

class UpdateSectionTest : protected Updates, public test::SettingsFormTest {
protected:
    UpdateSectionTest() : SettingsFormTest(&framework) {}

    [[nodiscard]] QCheckBox& checks() { return control<QCheckBox>("Check for Updates Automatically"); }

    [[nodiscard]] QCheckBox& installs() { return control<QCheckBox>("Install Updates Automatically"); }

    [[nodiscard]] QPushButton& checkNow() { return control<QPushButton>("Check Now"); }
};

using WithoutUpdatesTest = test::SettingsFormTest;

constexpr auto footer =
    "Once a day, Tarnwick asks updates.example whether a newer version exists. You are asked "
    "before an update is installed, unless you turn on automatic installs.";

} // namespace

TEST_F(WithoutUpdatesTest, NothingIsSaidOfUpdates) {
    present();

    EXPECT_THAT(labels(), Not(HasSubstr("Update")));
    EXPECT_THAT(labels(), Not(HasSubstr("Last Checked")));
}

TEST_F(UpdateSectionTest, ItsLabelsAndFooterSayWhatEachSettingIs) {
    present();

    EXPECT_THAT(
        labels(), HasSubstr(std::string(
                      "Check for Updates Automatically\nInstall Updates Automatically\nLast Checked\n")));
    EXPECT_THAT(labels(), HasSubstr(std::string(footer) + "\n"));
}

TEST_F(UpdateSectionTest, ItStandsBetweenTheSwitchesAndRestore) {
    present();

    EXPECT_GT(place(checks()).top(), place(launchAtLogin()).bottom());
    EXPECT_LT(place(label("Once a day")).bottom(), place(restore()).top());
}

TEST_F(UpdateSectionTest, ItShowsWhatTheFrameworkHoldsWhenItAppears) {
    framework.checks = true;
    framework.downloads = true;
    present();
    EXPECT_TRUE(checks().isChecked());
    EXPECT_TRUE(installs().isChecked());

    window.close();
    framework.downloads = false;
    present();
    EXPECT_TRUE(checks().isChecked());
    EXPECT_FALSE(installs().isChecked());
}

TEST_F(UpdateSectionTest, ItsSwitchesTellTheFrameworkAtOnce) {
    present();
    checks().click();
    EXPECT_TRUE(framework.checks);
    EXPECT_FALSE(framework.downloads);

    installs().click();
    EXPECT_TRUE(framework.downloads);

    checks().click();
    EXPECT_FALSE(framework.checks);
}

TEST_F(UpdateSectionTest, AClickOnASwitchsLabelTurnsIt) {
    present();
    QTest::mouseClick(&label("Install Updates Automatically"), Qt::LeftButton);

    EXPECT_TRUE(framework.downloads);
}

TEST_F(UpdateSectionTest, WithoutACheckTheLastOneWasNever) {
    present();

    EXPECT_THAT(labels(), HasSubstr("Last Checked\nNever\n"));
}

TEST_F(UpdateSectionTest, TheLastCheckIsGivenWithDateAndTime) {
    const QDateTime when(QDate(2026, 11, 21), QTime(18, 5, 59));
    framework.lastCheck = RunLoop::WallTime(std::chrono::milliseconds(when.toMSecsSinceEpoch()));
    present();

    EXPECT_THAT(labels(), HasSubstr("Last Checked\n21 Nov 2026, 18:05\n"));
}

TEST_F(UpdateSectionTest, CheckNowChecksAtOnce) {
    present();
    checkNow().click();

    EXPECT_EQ(framework.checksAskedFor, 1);
}

TEST_F(UpdateSectionTest, RestoringDefaultsLeavesUpdatesAlone) {
    framework.checks = true;
    present();
    restore().click();
    settle();

    EXPECT_TRUE(framework.checks);
    EXPECT_TRUE(checks().isChecked());
}

TEST_F(UpdateSectionTest, TheKeyboardGoesThroughItFromTopToBottom) {
    present();
    launchAtLogin().setFocus();
    std::vector<std::string> order;
    for (int presses = 0; presses < 6; ++presses) {
        press(Qt::Key_Tab);
        order.push_back(focused());
    }

    EXPECT_THAT(
        order, ElementsAre(
                   "Check for Updates Automatically", "Install Updates Automatically", "Check Now",
                   "Advanced", "Restore Default Settings", "Host to Ping"));
}

TEST_F(UpdateSectionTest, TheKeyboardAloneDoes) {
    present();
    checks().setFocus();
    press(Qt::Key_Space);
    EXPECT_TRUE(framework.checks);

    checkNow().setFocus();
    press(Qt::Key_Space);
    EXPECT_EQ(framework.checksAskedFor, 1);
}

TEST_F(UpdateSectionTest, AssistiveTechnologyLearnsWhatItsControlsAreAndMean) {
    present();

    EXPECT_EQ(accessible(checks()).role(), QAccessible::CheckBox);
    EXPECT_EQ(accessible(checks()).text(QAccessible::Name), "Check for Updates Automatically");
    EXPECT_EQ(accessible(installs()).text(QAccessible::Name), "Install Updates Automatically");
    EXPECT_EQ(accessible(checks()).text(QAccessible::Description), footer);
    EXPECT_EQ(accessible(checkNow()).role(), QAccessible::Button);
    EXPECT_EQ(accessible(checkNow()).text(QAccessible::Name), "Check Now");
    EXPECT_EQ(accessible(label("Never")).text(QAccessible::Name), "Never");
    EXPECT_EQ(
        accessible(label("Never")).relations(QAccessible::Label).front().first->text(QAccessible::Name),
        "Last Checked");
}

} // namespace tarnwick
