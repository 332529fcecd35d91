// What is called before the toolkit ends the process.
#include "platform/qt/DisplayLoss.h"

#include <QCoreApplication>
#include <QThread>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>
#include <optional>

namespace tarnwick {

namespace {

constexpr const char* lastWarning = "The Wayland connection broke. Did the Wayland compositor die?";

class DisplayLossTest : public testing::Test {
protected:
    int calls_ = 0;
    std::optional<DisplayLoss> loss_{std::in_place, [this] { ++calls_; }};
};

} // namespace

TEST_F(DisplayLossTest, TheToolkitsLastWarningIsAnsweredBeforeItReturns) {
    qWarning("%s", lastWarning);

    EXPECT_EQ(calls_, 1);
}

TEST_F(DisplayLossTest, AThreadOfTheToolkitWaitsForTheMainThread) {
    std::atomic<int> callsAtTheEnd = -1;
    const std::unique_ptr<QThread> thread(QThread::create([&] {
        qWarning("%s", lastWarning);
        callsAtTheEnd = calls_;
    }));
    thread->start();

    while (!thread->isFinished()) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }

    EXPECT_EQ(callsAtTheEnd, 1);
}

TEST_F(DisplayLossTest, OtherWarningsAreNone) {
    qWarning("The mouse wheel fell off");

    EXPECT_EQ(calls_, 0);
}

TEST_F(DisplayLossTest, OnceItHasGoneNothingIsCalled) {
    loss_.reset();

    qWarning("%s", lastWarning);

    EXPECT_EQ(calls_, 0);
}

TEST(DisplayLossDeathTest, AnExitInsideALibraryIsAnswered) {
    EXPECT_EXIT(
        {
            const DisplayLoss loss([] { std::fputs("saved", stderr); });
            std::exit(3);
        },
        testing::ExitedWithCode(3), "saved");
}

TEST(DisplayLossDeathTest, AnExitAfterItsEndIsNotAnswered) {
    EXPECT_EXIT(
        {
            {
                const DisplayLoss loss([] { std::fputs("saved", stderr); });
            }
            std::exit(3);
        },
        testing::ExitedWithCode(3), "^$");
}

} // namespace tarnwick
