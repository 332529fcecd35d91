// The settings form where the program can be replaced by newer versions.
#include "tests/app/SettingsView/SettingsFormTest.h"
#include "tests/simulation/FakeSoftwareUpdates.h"

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
    simulation::FakeSoftwareUpdates updates;
};

class UpdateSectionTest : protected Updates, public test::SettingsFormTest {
protected:
    UpdateSectionTest() : SettingsFormTest(&updates) {}

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

TEST_F(UpdateSectionTest, ItShowsWhatIsSetWhenItAppears) {
    updates.checks.set(true);
    updates.downloads.set(true);
    present();
    EXPECT_TRUE(checks().isChecked());
    EXPECT_TRUE(installs().isChecked());

    window.close();
    updates.downloads.set(false);
    present();
    EXPECT_TRUE(checks().isChecked());
    EXPECT_FALSE(installs().isChecked());
}

TEST_F(UpdateSectionTest, ItsSwitchesWorkAtOnce) {
    present();
    checks().click();
    EXPECT_TRUE(updates.checks.get());
    EXPECT_FALSE(updates.downloads.get());

    installs().click();
    EXPECT_TRUE(updates.downloads.get());

    checks().click();
    EXPECT_FALSE(updates.checks.get());
}

TEST_F(UpdateSectionTest, AClickOnASwitchsLabelTurnsIt) {
    present();
    QTest::mouseClick(&label("Install Updates Automatically"), Qt::LeftButton);

    EXPECT_TRUE(updates.downloads.get());
}

TEST_F(UpdateSectionTest, WithoutACheckTheLastOneWasNever) {
    present();

    EXPECT_THAT(labels(), HasSubstr("Last Checked\nNever\n"));
}

TEST_F(UpdateSectionTest, TheLastCheckIsGivenWithDateAndTime) {
    const QDateTime when(QDate(2026, 11, 21), QTime(18, 5, 59));
    updates.lastCheck.set(RunLoop::WallTime(std::chrono::milliseconds(when.toMSecsSinceEpoch())));
    present();

    EXPECT_THAT(labels(), HasSubstr("Last Checked\n21 Nov 2026, 18:05\n"));
}

TEST_F(UpdateSectionTest, CheckNowChecksAtOnce) {
    present();
    checkNow().click();

    EXPECT_EQ(updates.checksAskedFor, 1);
}

TEST_F(UpdateSectionTest, ItIsLiveWhileACheckRuns) {
    present();
    updates.canCheck.set(false);
    settle();
    EXPECT_FALSE(checkNow().isEnabled());

    const QDateTime when(QDate(2026, 11, 21), QTime(18, 5, 59));
    updates.lastCheck.set(RunLoop::WallTime(std::chrono::milliseconds(when.toMSecsSinceEpoch())));
    updates.canCheck.set(true);
    updates.checks.set(true);
    settle();
    EXPECT_TRUE(checkNow().isEnabled());
    EXPECT_TRUE(checks().isChecked());
    EXPECT_THAT(labels(), HasSubstr("Last Checked\n21 Nov 2026, 18:05\n"));
}

TEST_F(UpdateSectionTest, ItSaysWhatWentWrongTheLastTime) {
    present();
    updates.problem.set("The update server does not answer.");
    settle();

    EXPECT_THAT(labels(), HasSubstr("The update server does not answer. " + std::string(footer)));

    updates.problem.set("");
    settle();
    EXPECT_THAT(labels(), Not(HasSubstr("does not answer")));
}

TEST_F(UpdateSectionTest, RestoringDefaultsLeavesUpdatesAlone) {
    updates.checks.set(true);
    present();
    restore().click();
    settle();

    EXPECT_TRUE(updates.checks.get());
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
    EXPECT_TRUE(updates.checks.get());

    checkNow().setFocus();
    press(Qt::Key_Space);
    EXPECT_EQ(updates.checksAskedFor, 1);
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
