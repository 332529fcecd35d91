// The updater with its window, without a display, in virtual time.
#include "app/Updater/Updater.h"

#include "app/SettingsView/Model/UpdateSettings.h"
#include "app/Updater/ReleaseNotes.h"
#include "tests/app/Update/UpdateWorld.h"

#include <QAccessible>
#include <QApplication>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollBar>
#include <QTest>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tarnwick::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class UpdaterTest : public UpdateWorld {
protected:
    UpdaterTest()
        : updater(
              {.loop = loop,
               .preferences = preferences,
               .makeEngine = [this] { return makeEngine(); },
               .icon = [] { return QIcon(); },
               .furnish = [this](QWidget& /*window*/) { ++furnished; },
               .restart = [this] { ++restarts; }}) {
        updater.start();
    }

    [[nodiscard]] UpdateWindow* window() const { return updater.controller()->driver->window(); }

    void advance(double seconds) {
        loop.advance(seconds);
        QApplication::processEvents();
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    /// The window's only text browser.
    [[nodiscard]] ReleaseNotes& notes() const {
        return static_cast<ReleaseNotes&>(*window()->findChild<QTextBrowser*>());
    }

    /// What can be read in the window.
    [[nodiscard]] std::string texts() const {
        std::string all;
        for (const QLabel* label : window()->findChildren<QLabel*>()) {
            if (label->isVisible() && !label->text().isEmpty()) {
                all += label->text().toStdString() + "\n";
            }
        }
        return all;
    }

    [[nodiscard]] std::vector<std::string> buttons() const {
        std::vector<std::string> labels;
        for (const QPushButton* button : window()->findChildren<QPushButton*>()) {
            if (button->isVisible()) {
                labels.push_back(button->text().remove('&').toStdString());
            }
        }
        return labels;
    }

    void click(const char* label) {
        for (QPushButton* button : window()->findChildren<QPushButton*>()) {
            if (button->isVisible() && button->text().remove('&') == label) {
                button->click();
                advance(0);
                return;
            }
        }
        FAIL() << "no button " << label;
    }

    void checkForUpdates() {
        updater.checkForUpdates();
        advance(10);
    }

    int furnished = 0;
    int restarts = 0;
    Updater updater;
};

class NoUpdaterTest : public UpdateWorld {
protected:
    Updater updater{
        {.loop = loop,
         .preferences = preferences,
         .makeEngine = [] { return nullptr; },
         .icon = [] { return QIcon(); },
         .furnish = nullptr,
         .restart = nullptr}};
};

TEST_F(NoUpdaterTest, OutsideABundleThereIsNoController) {
    EXPECT_EQ(updater.controller(), nullptr);
    EXPECT_FALSE(updater.canCheckForUpdates());
    EXPECT_FALSE(updater.automaticallyChecksForUpdates());
    EXPECT_EQ(updater.lastUpdateCheckDate(), std::nullopt);
    EXPECT_EQ(updater.serverDomain(), "");
}

TEST_F(NoUpdaterTest, OutsideABundleItDoesNothing) {
    updater.checkForUpdates();
    updater.setAutomaticallyDownloadsUpdates(true);
    loop.advance(3 * day);

    EXPECT_THAT(server.requests(), IsEmpty());
    EXPECT_FALSE(preferences.automaticallyDownloadsUpdates());
}

TEST_F(UpdateWorld, BeforeItsStartTheUpdaterShowsNothing) {
    memory.setRolledBack(ReleaseVersion::parse("1.1").value(), ReleaseVersion::parse("1.0").value());
    Updater updater(
        {.loop = loop,
         .preferences = preferences,
         .makeEngine = [this] { return makeEngine(); },
         .icon = [] { return QIcon(); },
         .furnish = nullptr,
         .restart = nullptr});
    updater.checkForUpdates();
    loop.advance(3 * day);
    EXPECT_EQ(updater.controller()->driver, nullptr);
    EXPECT_THAT(server.requests(), IsEmpty());

    updater.start();

    EXPECT_TRUE(updater.controller()->driver->window()->isVisible());
}

TEST_F(UpdaterTest, ItShowsAtOnceThatItChecks) {
    updater.checkForUpdates();

    ASSERT_NE(window(), nullptr);
    EXPECT_TRUE(window()->isVisible());
    EXPECT_THAT(texts(), HasSubstr("Checking for updates…"));
    EXPECT_THAT(buttons(), ElementsAre("Cancel"));
    EXPECT_EQ(furnished, 1);
    EXPECT_FALSE(updater.canCheckForUpdates());
}

TEST_F(UpdaterTest, ItShowsWhatItHasFound) {
    checkForUpdates();

    EXPECT_THAT(texts(), HasSubstr("Version 1.1 can be installed now. You have version 1.0."));
    EXPECT_THAT(buttons(), ElementsAre("Skip This Version", "Remind Me Later", "Install"));
    EXPECT_EQ(notes().toPlainText(), "Better");
    EXPECT_EQ(furnished, 1) << "it is still the same window";
}

TEST_F(UpdaterTest, ItInstallsAndRestarts) {
    checkForUpdates();
    click("Install");
    advance(0.55);
    EXPECT_THAT(texts(), HasSubstr("Downloading Tarnwick 1.1\n3.0 kB of 5.0 kB"));
    EXPECT_EQ(window()->findChild<QProgressBar*>()->value(), 600);

    advance(10);
    EXPECT_THAT(texts(), HasSubstr("Tarnwick 1.1 is ready"));
    click("Restart Now");

    EXPECT_EQ(restarts, 1);
}

TEST_F(UpdaterTest, TheDownloadCanBeCanceled) {
    checkForUpdates();
    click("Install");
    advance(0.55);

    click("Cancel");

    EXPECT_EQ(window(), nullptr);
    EXPECT_EQ(place.discarded, 1);
}

TEST_F(UpdaterTest, ClosingTheWindowMeansLater) {
    checkForUpdates();

    window()->close();
    advance(0);

    EXPECT_EQ(window(), nullptr);
    EXPECT_EQ(preferences.skippedUpdate(), "");
    EXPECT_TRUE(updater.canCheckForUpdates());
}

TEST_F(UpdaterTest, EscapeMeansLater) {
    checkForUpdates();

    QTest::keyClick(window(), Qt::Key_Escape);
    advance(0);

    EXPECT_EQ(window(), nullptr);
}

TEST_F(UpdaterTest, TheReturnKeyInstalls) {
    checkForUpdates();

    QTest::keyClick(window(), Qt::Key_Return);
    advance(0);

    EXPECT_THAT(texts(), HasSubstr("Downloading"));
}

TEST_F(UpdaterTest, TheTabKeyReachesTheNotesAndEachButton) {
    checkForUpdates();
    std::vector<std::string> order;
    for (int presses = 0; presses < 4; ++presses) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        order.push_back(QAccessible::queryAccessibleInterface(QApplication::focusWidget())
                            ->text(QAccessible::Name)
                            .toStdString());
    }

    EXPECT_THAT(order, ElementsAre("What is new", "Skip This Version", "Remind Me Later", "Install"));
}

TEST_F(UpdaterTest, AssistiveTechnologyLearnsWhatItSays) {
    checkForUpdates();

    const QAccessibleInterface* const accessible = QAccessible::queryAccessibleInterface(window());
    EXPECT_EQ(accessible->text(QAccessible::Name), "Software Update");
    EXPECT_EQ(
        accessible->text(QAccessible::Description),
        "A new version of Tarnwick is available. Version 1.1 can be installed now. You have version 1.0.");
}

TEST_F(UpdaterTest, AScheduledCheckShowsWhatItFindsAndNothingElse) {
    publish("1.0");
    advance(2 * day);
    EXPECT_EQ(window(), nullptr);

    publish("1.1");
    advance(1.1 * day);
    ASSERT_NE(window(), nullptr);
    EXPECT_THAT(texts(), HasSubstr("Version 1.1"));
}

TEST_F(UpdaterTest, AScheduledCheckThatFailsShowsNothing) {
    server.files.clear();
    advance(2 * day);

    EXPECT_EQ(window(), nullptr);
    EXPECT_NE(updater.lastProblem(), "");
}

TEST_F(UpdaterTest, ItSaysThatThereIsNothingNewer) {
    publish("1.0");
    checkForUpdates();
    EXPECT_THAT(texts(), HasSubstr("Tarnwick is up to date\nVersion 1.0 is the newest one."));

    click("OK");

    EXPECT_EQ(window(), nullptr);
}

TEST_F(UpdaterTest, ItSaysWhatFailed) {
    server.files.clear();
    checkForUpdates();

    EXPECT_THAT(texts(), HasSubstr("The update server does not have the file (404)."));
}

TEST_F(UpdaterTest, ASecondCheckBringsTheSameWindow) {
    checkForUpdates();
    const auto* const before = window();

    checkForUpdates();

    EXPECT_EQ(window(), before);
    EXPECT_EQ(feedRequests(), 1u);
}

TEST_F(UpdaterTest, TheNotesLoadNothing) {
    publishNotes("![x](https://one.example/x.png) ![y](/etc/passwd) <img src='z'> [l](https://one.example)");
    checkForUpdates();

    EXPECT_EQ(notes().loadResource(2, QUrl("file:///etc/passwd")), QVariant());
    EXPECT_FALSE(notes().openLinks());
    EXPECT_EQ(feedRequests(), 1u);
    EXPECT_THAT(notes().toPlainText().toStdString(), HasSubstr("<img src='z'>")) << "no HTML";
}

TEST_F(UpdaterTest, LongNotesAreReadFromTheirBeginning) {
    std::string text;
    for (int line = 0; line < 100; ++line) {
        text += "- What is new, and what it is for, in more words than fit on one line of the window.\\n";
    }
    publishNotes(text);
    checkForUpdates();
    // As assistive technology does, and whoever selects with the keyboard.
    notes().ensureCursorVisible();
    QApplication::processEvents();

    EXPECT_GT(notes().verticalScrollBar()->maximum(), 0);
    EXPECT_EQ(notes().verticalScrollBar()->value(), 0);
}

TEST_F(UpdaterTest, TheAnswersToAnOfferAreThoseOfItsButtons) {
    checkForUpdates();
    click("Remind Me Later");
    EXPECT_EQ(window(), nullptr);
    EXPECT_EQ(preferences.skippedUpdate(), "");

    checkForUpdates();
    click("Skip This Version");
    EXPECT_EQ(window(), nullptr);
    EXPECT_EQ(preferences.skippedUpdate(), "1.1");
    EXPECT_EQ(place.begun, 0);
}

TEST_F(UpdaterTest, WhatIsReadyCanWait) {
    checkForUpdates();
    click("Install");
    advance(10);

    click("Later");

    EXPECT_EQ(window(), nullptr);
    EXPECT_EQ(restarts, 0);
    EXPECT_TRUE(std::holds_alternative<Updating::Ready>(updater.controller()->engine->state()));
    checkForUpdates();
    EXPECT_THAT(buttons(), ElementsAre("Later", "Restart Now"));
}

TEST_F(UpdaterTest, TheSettingsAreLiveWhileACheckRuns) {
    publish("1.0");
    UpdateSettings settings(updater);
    const auto before = settings.lastChecked();
    std::vector<std::string> shown;
    const RenderLoop rendering(loop, [&] {
        const std::string check = settings.canCheck() ? "can check" : "checks";
        shown.push_back(check + (settings.lastChecked() == before ? "" : ", checked anew"));
    });

    checkForUpdates();

    EXPECT_THAT(shown, ElementsAre("can check", "checks", "can check, checked anew"));
}

TEST_F(UpdaterTest, ItsSettingsAreThePreferences) {
    updater.setAutomaticallyChecksForUpdates(false);
    updater.setAutomaticallyDownloadsUpdates(true);

    EXPECT_FALSE(preferences.automaticallyChecksForUpdates());
    EXPECT_TRUE(updater.automaticallyDownloadsUpdates());
    EXPECT_EQ(updater.serverDomain(), "updates.example");
    EXPECT_EQ(updater.lastUpdateCheckDate(), preferences.lastUpdateCheckDate());
}

TEST_F(UpdaterTest, ItsPropertiesTellOfChanges) {
    int changes = 0;
    const auto tracking =
        withTracking([this] { static_cast<void>(updater.canCheckForUpdates()); }, [&changes] { ++changes; });

    updater.checkForUpdates();

    EXPECT_EQ(changes, 1);
}

} // namespace
} // namespace tarnwick::test
