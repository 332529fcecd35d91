// The run loop inside the toolkit's event loop: the contract of all run loops, and event loops inside tasks.
#include "platform/qt/QtLoopHost.h"

#include "platform/linux/SignalWatch.h"
#include "platform/loop/EpollRunLoop.h"
#include "tests/platform/loop/RunLoopContract.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

#include <csignal>

namespace tarnwick {

namespace {

/// Handles events until the condition holds; the toolkit's own timer bounds the wait for the next event.
bool handleEventsUntil(const std::function<bool()>& condition) {
    QTimer impatience;
    impatience.start(100);
    const auto patience = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!condition() && std::chrono::steady_clock::now() < patience) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return condition();
}

/// As a dialog does: an event loop of its own inside a task.
bool runNestedUntil(const std::function<bool()>& condition) {
    QEventLoop nested;
    QTimer check;
    QObject::connect(&check, &QTimer::timeout, &nested, [&] {
        if (condition()) {
            nested.quit();
        }
    });
    check.start(1);
    QTimer::singleShot(20'000, &nested, &QEventLoop::quit);
    nested.exec();
    return condition();
}

struct HostedLoop {
    EpollRunLoop loop;
    QtLoopHost host{loop};
};

class QtDriver final : public LoopDriver {
public:
    RunLoop& loop() override { return hosted_->loop; }

    bool runUntil(const std::function<bool()>& condition) override { return handleEventsUntil(condition); }

    void close() override { hosted_.reset(); }

private:
    std::optional<HostedLoop> hosted_{std::in_place};
};

class QtLoopHostTest : public testing::Test {
protected:
    EpollRunLoop loop_;
    QtLoopHost host_{loop_};
};

} // namespace

INSTANTIATE_TEST_SUITE_P(Loop, RunLoopContract, testing::Values(loopKind<QtDriver>("Qt")), test::caseName);
INSTANTIATE_TEST_SUITE_P(
    Loop, RealRunLoopContract, testing::Values(loopKind<QtDriver>("Qt")), test::caseName);

TEST_F(QtLoopHostTest, TimersGoOnWhileATaskRunsAnEventLoopOfItsOwn) {
    int fires = 0;
    int firesInside = 0;
    const auto timer = loop_.every(loop_.now(), 0.005, [&] { ++fires; });
    loop_.post([&] {
        const int before = fires;
        EXPECT_TRUE(runNestedUntil([&] { return fires >= before + 3; }));
        firesInside = fires - before;
    });

    ASSERT_TRUE(handleEventsUntil([&] { return firesInside > 0; }));

    EXPECT_GE(firesInside, 3);
}

TEST_F(QtLoopHostTest, ATimerDueTogetherWithOneThatOpensADialogRunsInside) {
    const double time = loop_.now() + 0.01;
    bool hasOtherRun = false;
    std::optional<bool> hasOtherRunInside;
    const auto opening =
        loop_.every(time, 100, [&] { hasOtherRunInside = runNestedUntil([&] { return hasOtherRun; }); });
    const auto other = loop_.every(time, 100, [&] { hasOtherRun = true; });

    ASSERT_TRUE(handleEventsUntil([&] { return hasOtherRunInside.has_value(); }));

    EXPECT_EQ(hasOtherRunInside, true);
}

TEST_F(QtLoopHostTest, ATimerStartedByTheTaskThatOpensADialogRunsInside) {
    std::optional<bool> hasRunInside;
    const auto opening = loop_.after(0, [&] {
        bool hasRun = false;
        const auto timer = loop_.after(0.005, [&] { hasRun = true; });
        hasRunInside = runNestedUntil([&] { return hasRun; });
    });

    ASSERT_TRUE(handleEventsUntil([&] { return hasRunInside.has_value(); }));

    EXPECT_EQ(hasRunInside, true);
}

TEST_F(QtLoopHostTest, ATimerStartedWhileATimersDialogIsOpenRunsInside) {
    std::optional<bool> hasRunInside;
    RunLoop::Handle timer;
    const auto opening = loop_.after(0, [&] {
        bool hasRun = false;
        loop_.post([&] { timer = loop_.after(0.005, [&] { hasRun = true; }); });
        hasRunInside = runNestedUntil([&] { return hasRun; });
    });

    ASSERT_TRUE(handleEventsUntil([&] { return hasRunInside.has_value(); }));

    EXPECT_EQ(hasRunInside, true);
}

TEST_F(QtLoopHostTest, ARepeatedTaskIsNotRunInsideItselfAndGoesOnAfterwards) {
    int depth = 0;
    int deepest = 0;
    int runs = 0;
    int companionRuns = 0;
    const auto companion = loop_.every(loop_.now(), 0.005, [&] { ++companionRuns; });
    const auto timer = loop_.every(loop_.now(), 0.005, [&] {
        deepest = std::max(deepest, ++depth);
        if (++runs == 1) {
            EXPECT_TRUE(runNestedUntil([&, before = companionRuns] { return companionRuns >= before + 3; }));
        }
        --depth;
    });

    ASSERT_TRUE(handleEventsUntil([&] { return runs >= 3; }));

    EXPECT_EQ(deepest, 1);
}

TEST_F(QtLoopHostTest, AWatchIsNotRunInsideItselfAndGoesOnAfterwards) {
    const WatchedPipe pipe;
    int depth = 0;
    int deepest = 0;
    std::string taken;
    int ticks = 0;
    const auto timer = loop_.every(loop_.now(), 0.005, [&] { ++ticks; });
    const auto watching = loop_.watchReadable(pipe.readingEnd(), [&] {
        deepest = std::max(deepest, ++depth);
        EXPECT_TRUE(runNestedUntil([&, before = ticks] { return ticks >= before + 2; }));
        taken += pipe.take().value_or('?');
        --depth;
    });
    pipe.put("ab");

    ASSERT_TRUE(handleEventsUntil([&] { return taken.size() >= 2; }));

    EXPECT_EQ(deepest, 1);
    EXPECT_EQ(taken, "ab");
}

TEST_F(QtLoopHostTest, OtherWatchesGoOnWhileATaskRunsAnEventLoopOfItsOwn) {
    const WatchedPipe pipe;
    std::string taken;
    bool hasReturned = false;
    const auto watching = loop_.watchReadable(pipe.readingEnd(), [&] { taken += pipe.take().value_or('?'); });
    loop_.post([&] {
        pipe.put("x");
        EXPECT_TRUE(runNestedUntil([&] { return !taken.empty(); }));
        hasReturned = true;
    });

    ASSERT_TRUE(handleEventsUntil([&] { return hasReturned; }));

    EXPECT_EQ(taken, "x");
}

TEST_F(QtLoopHostTest, OnceItsLastTimerHasRunTheLoopIsIdle) {
    bool hasRun = false;
    const auto timer = loop_.after(0, [&] { hasRun = true; });
    ASSERT_TRUE(handleEventsUntil([&] { return hasRun; }));

    EXPECT_FALSE(QAbstractEventDispatcher::instance()->processEvents(QEventLoop::AllEvents));
}

TEST_F(QtLoopHostTest, TerminationSignalsAreEventsLikeAnyOther) {
    std::vector<int> reported;
    const SignalWatch watch(loop_, {SIGTERM, SIGINT}, [&](int signal) { reported.push_back(signal); });

    ::kill(::getpid(), SIGTERM);
    ASSERT_TRUE(handleEventsUntil([&] { return reported.size() >= 1; }));
    ::kill(::getpid(), SIGINT);
    ASSERT_TRUE(handleEventsUntil([&] { return reported.size() >= 2; }));

    EXPECT_THAT(reported, testing::ElementsAre(SIGTERM, SIGINT));
}

} // namespace tarnwick
