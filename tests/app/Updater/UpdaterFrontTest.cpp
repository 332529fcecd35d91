// When the updater brings its window to the front, without a display, in virtual time.
#include "app/Updater/Updater.h"
#include "tests/app/Update/UpdateWorld.h"

#include <QApplication>
#include <QTest>
#include <QWidget>

#include <gtest/gtest.h>

#include <functional>

namespace tarnwick::test {
namespace {

class UpdaterFrontTest : public UpdateWorld {
protected:
    UpdaterFrontTest() { updater_.start(); }

    [[nodiscard]] UpdateWindow* window() const { return updater_.controller()->driver->window(); }

    void advance(double seconds) {
        loop.advance(seconds);
        QApplication::processEvents();
    }

    /// In steps much shorter than a moment.
    void advanceUntil(const std::function<bool()>& condition) {
        for (int steps = 0; steps < 200 && !condition(); ++steps) {
            advance(0.01);
        }
        ASSERT_TRUE(condition());
    }

    /// The user goes on to work with another program's window.
    void goElsewhere() {
        other_.show();
        other_.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&other_));
    }

    [[nodiscard]] bool isInFront() const {
        return window() != nullptr && QApplication::activeWindow() == window();
    }

    template<class State>
    [[nodiscard]] bool shows() const {
        return window() != nullptr && std::holds_alternative<State>(updater_.controller()->engine->state());
    }

    /// A window that says that the program is up to date, behind another one, long after it came.
    void leaveWindowBehind() {
        publish("1.0");
        updater_.checkForUpdates();
        advance(10);
        ASSERT_TRUE(shows<Updating::NothingNewer>());
        goElsewhere();
        advance(10);
        ASSERT_FALSE(isInFront());
    }

    QWidget other_;
    Updater updater_{
        {.loop = loop,
         .preferences = preferences,
         .makeEngine = [this] { return makeEngine(); },
         .icon = [] { return QIcon(); },
         .furnish = nullptr,
         .restart = nullptr}};
};

TEST_F(UpdaterFrontTest, AUsersCheckBringsTheWindowAtOnceAndAMomentLater) {
    updater_.checkForUpdates();
    advance(10);
    ASSERT_TRUE(shows<Updating::Found>());
    goElsewhere();

    updater_.checkForUpdates();
    QApplication::processEvents();
    EXPECT_TRUE(isInFront());

    goElsewhere();
    advance(0.19);
    EXPECT_FALSE(isInFront());
    advance(0.02);
    EXPECT_TRUE(isInFront());

    goElsewhere();
    advance(60);
    EXPECT_FALSE(isInFront()) << "no more than that";
}

TEST_F(UpdaterFrontTest, AnUpdateThatAScheduledCheckFindsComesToTheFrontAtOnceAndAMomentLater) {
    leaveWindowBehind();
    publish("1.1");
    loop.advance(day - 20);
    const double jitter = 0.5 * day / 24;
    loop.advance(jitter);
    ASSERT_FALSE(shows<Updating::Found>());

    for (int seconds = 0; seconds < 60 && !shows<Updating::Found>(); ++seconds) {
        for (int steps = 0; steps < 100 && !shows<Updating::Found>(); ++steps) {
            advance(0.01);
        }
    }
    ASSERT_TRUE(shows<Updating::Found>());
    EXPECT_TRUE(isInFront());

    goElsewhere();
    advance(0.18);
    EXPECT_FALSE(isInFront());
    advance(0.03);
    EXPECT_TRUE(isInFront());

    goElsewhere();
    advance(60);
    EXPECT_FALSE(isInFront()) << "no more than that";
}

TEST_F(UpdaterFrontTest, AnAlertComesToTheFrontOnce) {
    publish("1.0");
    server.answers = false;
    updater_.checkForUpdates();
    advance(10);
    goElsewhere();
    server.answers = true;

    advanceUntil([this] { return shows<Updating::NothingNewer>(); });
    EXPECT_TRUE(isInFront());

    goElsewhere();
    advance(60);
    EXPECT_FALSE(isInFront());
}

TEST_F(UpdaterFrontTest, TheWindowItselfShowsWhatAScheduledCheckFinds) {
    UserDriverDelegate& delegate = updater_;

    EXPECT_TRUE(delegate.supportsGentleScheduledUpdateReminders());
    EXPECT_TRUE(delegate.standardUserDriverShouldHandleShowingScheduledUpdate(FoundUpdate(), false));
    EXPECT_TRUE(delegate.standardUserDriverShouldHandleShowingScheduledUpdate(FoundUpdate(), true));
}

} // namespace
} // namespace tarnwick::test
