// What the programs' run loop offers to an event loop that hosts it.
#include "platform/loop/EpollRunLoop.h"
#include "tests/platform/loop/RunLoopContract.h"

#include <poll.h>

namespace tarnwick {

namespace {

class HostedRunLoopTest : public testing::Test {
protected:
    [[nodiscard]] bool hasSomethingToRun() const { return waitsFor(0); }

    /// As a host does, also inside a task: runs what is ready until nothing is.
    void runAllReady() {
        for (int turn = 0; turn < 100 && hasSomethingToRun(); ++turn) {
            loop_.runReady();
        }
    }

    [[nodiscard]] bool waitsFor(int milliseconds) const {
        pollfd question{.fd = loop_.descriptor(), .events = POLLIN, .revents = 0};
        return ::poll(&question, 1, milliseconds) == 1;
    }

    EpollRunLoop loop_;
};

} // namespace

TEST_F(HostedRunLoopTest, RunsNothingAndWaitsForNothingWithoutAnEvent) {
    const auto later = loop_.after(100, [] { ADD_FAILURE() << "a hundred seconds too early"; });
    EXPECT_FALSE(hasSomethingToRun());

    loop_.runReady();

    EXPECT_FALSE(hasSomethingToRun());
}

TEST_F(HostedRunLoopTest, AnInputsTaskThatHasNotReturnedKeepsNoInnerEventLoopBusy) {
    const WatchedPipe pipe;
    int runs = 0;
    const auto watching = loop_.watchReadable(pipe.readingEnd(), [&] {
        if (++runs == 1) {
            runAllReady();
            EXPECT_FALSE(hasSomethingToRun());
        }
        EXPECT_TRUE(pipe.take());
    });
    pipe.put("ab");

    runAllReady();

    EXPECT_EQ(runs, 2);
}

TEST_F(HostedRunLoopTest, NeitherDoesOneWhoseOtherEndHasClosed) {
    std::array<int, 2> ends{-1, -1};
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
    const FileDescriptor near(ends[0]);
    FileDescriptor far(ends[1]);
    far.reset();
    int runs = 0;
    RunLoop::Handle writing;
    RunLoop::Handle reading = loop_.watchReadable(near.get(), [&] {
        ++runs;
        writing = loop_.watchWritable(near.get(), [&] {
            ++runs;
            runAllReady();
            EXPECT_FALSE(hasSomethingToRun());
            writing.reset();
        });
        runAllReady();
        EXPECT_FALSE(hasSomethingToRun());
        reading.reset();
    });

    runAllReady();

    EXPECT_EQ(runs, 2);
    EXPECT_FALSE(hasSomethingToRun());
}

TEST_F(HostedRunLoopTest, AWatchThatPausedMayEndInItsOwnTask) {
    const WatchedPipe pipe;
    int runs = 0;
    RunLoop::Handle watching = loop_.watchReadable(pipe.readingEnd(), [&] {
        ++runs;
        runAllReady();
        watching.reset();
    });
    pipe.put("unread");

    runAllReady();

    EXPECT_EQ(runs, 1);
    EXPECT_FALSE(hasSomethingToRun());
}

TEST_F(HostedRunLoopTest, AWatchMayBeReplacedWhileItsTaskHasNotReturned) {
    const WatchedPipe pipe;
    std::string taken;
    RunLoop::Handle watching = loop_.watchReadable(pipe.readingEnd(), [&] {
        runAllReady();
        watching = nullptr;
        watching = loop_.watchReadable(pipe.readingEnd(), [&] { taken += pipe.take().value_or('?'); });
        runAllReady();
        EXPECT_EQ(taken, "ab");
    });
    pipe.put("ab");

    runAllReady();

    EXPECT_EQ(taken, "ab");
}

TEST_F(HostedRunLoopTest, PostedTasksThatWaitRunInAnInnerEventLoop) {
    std::vector<std::string> ran;
    loop_.post([&] {
        runAllReady();
        ran.emplace_back("first has returned");
    });
    loop_.post([&] { ran.emplace_back("second"); });

    runAllReady();

    EXPECT_THAT(ran, testing::ElementsAre("second", "first has returned"));
    EXPECT_FALSE(hasSomethingToRun());
}

TEST_F(HostedRunLoopTest, EachPostedTaskIsToldToTheHost) {
    int runs = 0;
    for (int post = 0; post < 3; ++post) {
        loop_.post([&] { ++runs; });
        EXPECT_TRUE(hasSomethingToRun());

        runAllReady();
    }

    EXPECT_EQ(runs, 3);
}

TEST_F(HostedRunLoopTest, WhileTheLoopRunsItselfATaskNeedsNoWakeUp) {
    const WatchedPipe pipe;
    RunLoop::Handle timer;
    bool isWoken = true;
    const auto watching = loop_.watchReadable(pipe.readingEnd(), [&] {
        EXPECT_TRUE(pipe.take());
        loop_.post([] {});
        timer = loop_.after(0, [] {});
        isWoken = hasSomethingToRun();
        loop_.stop();
    });
    pipe.put("a");

    loop_.run();

    EXPECT_FALSE(isWoken);
}

TEST_F(HostedRunLoopTest, ATaskLeftBehindByAStoppedRunIsToldToTheHost) {
    bool hasRun = false;
    loop_.post([&] {
        loop_.post([&] { hasRun = true; });
        loop_.stop();
    });
    loop_.run();
    EXPECT_FALSE(hasRun);

    EXPECT_TRUE(hasSomethingToRun());
    runAllReady();

    EXPECT_TRUE(hasRun);
}

TEST_F(HostedRunLoopTest, ATimerLeftBehindByAStoppedRunIsToldToTheHost) {
    bool hasRun = false;
    RunLoop::Handle timer;
    loop_.post([&] {
        timer = loop_.after(0.001, [&] { hasRun = true; });
        loop_.stop();
    });
    loop_.run();

    ASSERT_TRUE(waitsFor(20'000));
    runAllReady();

    EXPECT_TRUE(hasRun);
}

} // namespace tarnwick
