// The toolkit's event loop held to the contract of all run loops, and what it promises besides.
#include "platform/qt/QtRunLoop.h"

#include "platform/linux/SignalWatch.h"
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

class QtDriver {
public:
    RunLoop& loop() { return *loop_; }

    bool runUntil(const std::function<bool()>& condition) { return handleEventsUntil(condition); }

    void isWatched(int /*descriptor*/) {}

    void spend(double seconds) {
        const double end = loop_->now() + seconds;
        while (loop_->now() < end) {
        }
    }

    void close() { loop_.reset(); }

private:
    std::unique_ptr<QtRunLoop> loop_ = std::make_unique<QtRunLoop>();
};

class QtRunLoopTest : public testing::Test {
protected:
    QtRunLoop loop_;
};

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Qt, RunLoopContract, QtDriver);
INSTANTIATE_TYPED_TEST_SUITE_P(Qt, RealRunLoopContract, QtDriver);

TEST_F(QtRunLoopTest, ATaskThatMayBeLateRunsInTheSameWakeUpAsAPunctualOne) {
    const double first = loop_.now() + 0.02;
    std::vector<std::string> ran;
    const auto punctual = loop_.every(first + 0.005, 10, [&] { ran.emplace_back("punctual"); });
    const auto patient = loop_.everyRoughly(first, 10, 0.5, [&] { ran.emplace_back("patient"); });

    ASSERT_TRUE(handleEventsUntil([&] { return !ran.empty(); }));

    EXPECT_THAT(ran, testing::ElementsAre("punctual", "patient"));
}

TEST_F(QtRunLoopTest, TimersGoOnWhileATaskRunsAnEventLoopOfItsOwn) {
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

TEST_F(QtRunLoopTest, ATimerDueAtTheSameTimeAsOneThatOpensADialogDoesNotWaitForItsEnd) {
    const double time = loop_.now() + 0.01;
    bool hasOtherRun = false;
    std::optional<bool> hasOtherRunInside;
    const auto opening =
        loop_.every(time, 100, [&] { hasOtherRunInside = runNestedUntil([&] { return hasOtherRun; }); });
    const auto other = loop_.every(time, 100, [&] { hasOtherRun = true; });

    ASSERT_TRUE(handleEventsUntil([&] { return hasOtherRunInside.has_value(); }));

    EXPECT_EQ(hasOtherRunInside, true);
}

TEST_F(QtRunLoopTest, ATimerStartedByTheTaskThatOpensADialogRunsInside) {
    std::optional<bool> hasRunInside;
    const auto opening = loop_.after(0, [&] {
        bool hasRun = false;
        const auto timer = loop_.after(0.005, [&] { hasRun = true; });
        hasRunInside = runNestedUntil([&] { return hasRun; });
    });

    ASSERT_TRUE(handleEventsUntil([&] { return hasRunInside.has_value(); }));

    EXPECT_EQ(hasRunInside, true);
}

TEST_F(QtRunLoopTest, ATimerStartedWhileATimersDialogIsOpenRunsInside) {
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

TEST_F(QtRunLoopTest, ARepeatedTaskIsNotRunInsideItselfAndGoesOnAfterwards) {
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

TEST_F(QtRunLoopTest, AWatchIsNotRunInsideItselfAndGoesOnAfterwards) {
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

TEST_F(QtRunLoopTest, OtherWatchesGoOnWhileATaskRunsAnEventLoopOfItsOwn) {
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

TEST_F(QtRunLoopTest, ATimerBeyondAllRunsDoesNotFireEarly) {
    bool hasFired = false;
    bool isOver = false;
    const auto never = loop_.after(1e300, [&] { hasFired = true; });
    const auto end = loop_.after(0.01, [&] { isOver = true; });

    ASSERT_TRUE(handleEventsUntil([&] { return isOver; }));

    EXPECT_FALSE(hasFired);
}

TEST_F(QtRunLoopTest, OnceItsLastTimerHasRunTheLoopIsIdle) {
    bool hasRun = false;
    const auto timer = loop_.after(0, [&] { hasRun = true; });
    ASSERT_TRUE(handleEventsUntil([&] { return hasRun; }));

    EXPECT_FALSE(QAbstractEventDispatcher::instance()->processEvents(QEventLoop::AllEvents));
}

TEST_F(QtRunLoopTest, ItsClocksAreThoseOfTheSystem) {
    const auto steady = [] {
        return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
    };
    const double before = steady();
    const auto wallBefore = std::chrono::system_clock::now();

    const double now = loop_.now();
    const RunLoop::WallTime wall = loop_.wallNow();

    EXPECT_GE(now, before - 1e-6);
    EXPECT_LE(now, steady() + 1e-6);
    EXPECT_GE(wall, wallBefore);
    EXPECT_LE(wall, std::chrono::system_clock::now());
}

TEST_F(QtRunLoopTest, GivesNoHandleForWhatIsNotOpen) {
    constexpr int notOpen = 1'000'000;

    EXPECT_EQ(loop_.watchReadable(notOpen, [] {}), nullptr);
}

TEST_F(QtRunLoopTest, TerminationSignalsAreEventsLikeAnyOther) {
    std::vector<int> reported;
    const SignalWatch watch(loop_, {SIGTERM, SIGINT}, [&](int signal) { reported.push_back(signal); });

    ::kill(::getpid(), SIGTERM);
    ASSERT_TRUE(handleEventsUntil([&] { return reported.size() >= 1; }));
    ::kill(::getpid(), SIGINT);
    ASSERT_TRUE(handleEventsUntil([&] { return reported.size() >= 2; }));

    EXPECT_THAT(reported, testing::ElementsAre(SIGTERM, SIGINT));
}

} // namespace tarnwick
