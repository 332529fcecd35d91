// Signals as events of the run loop.
#include "platform/linux/SignalWatch.h"

#include "platform/loop/EpollRunLoop.h"
#include "tests/support/LoopTurn.h"

#include <array>
#include <csignal>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace tarnwick {

namespace {

/// Gives this thread the signals back that the watch has blocked for good.
class SignalWatchTest : public testing::Test {
protected:
    SignalWatchTest() { pthread_sigmask(SIG_SETMASK, nullptr, &before_); }

    ~SignalWatchTest() override { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

    [[nodiscard]] bool runUntilReported(std::size_t count) {
        const double patience = loop_.now() + 20;
        while (reported_.size() < count && loop_.now() < patience) {
            test::runOneTurn(loop_, 0.1);
        }
        return reported_.size() >= count;
    }

    /// Runs the loop until whatever was waiting before this call has been dealt with.
    void runUntilIdle() {
        while (test::runOneTurn(loop_, 0)) {
        }
    }

    EpollRunLoop loop_;
    std::vector<int> reported_;

private:
    sigset_t before_{};
};

} // namespace

TEST_F(SignalWatchTest, ASignalIsReportedFromTheLoopAndNotFromItsRaising) {
    const SignalWatch watch(loop_, {SIGUSR1, SIGUSR2}, [this](int signal) { reported_.push_back(signal); });

    std::raise(SIGUSR1);

    EXPECT_TRUE(reported_.empty());
    ASSERT_TRUE(runUntilReported(1));
    EXPECT_THAT(reported_, testing::ElementsAre(SIGUSR1));
}

TEST_F(SignalWatchTest, TerminationSignalsEndNothingByThemselves) {
    const SignalWatch watch(
        loop_, {SIGINT, SIGTERM, SIGHUP}, [this](int signal) { reported_.push_back(signal); });

    std::raise(SIGTERM);
    std::raise(SIGINT);
    std::raise(SIGHUP);

    ASSERT_TRUE(runUntilReported(3));
    EXPECT_THAT(reported_, testing::UnorderedElementsAre(SIGTERM, SIGINT, SIGHUP));
}

TEST_F(SignalWatchTest, TheSameSignalIsReportedAgainTheNextTime) {
    const SignalWatch watch(loop_, {SIGUSR1}, [this](int signal) { reported_.push_back(signal); });

    std::raise(SIGUSR1);
    ASSERT_TRUE(runUntilReported(1));
    std::raise(SIGUSR1);
    ASSERT_TRUE(runUntilReported(2));
    runUntilIdle();

    EXPECT_THAT(reported_, testing::ElementsAre(SIGUSR1, SIGUSR1));
}

TEST_F(SignalWatchTest, ASignalThatCameToTheProcessWhileAThreadRanIsReportedToo) {
    const SignalWatch watch(loop_, {SIGUSR1}, [this](int signal) { reported_.push_back(signal); });
    std::thread sender([] { ::kill(::getpid(), SIGUSR1); });

    EXPECT_TRUE(runUntilReported(1));

    sender.join();
    EXPECT_THAT(reported_, testing::ElementsAre(SIGUSR1));
}

TEST_F(SignalWatchTest, AnIgnoredHangupStaysIgnored) {
    const auto before = std::signal(SIGHUP, SIG_IGN);
    const SignalWatch watch(loop_, {SIGHUP, SIGUSR1}, [this](int signal) { reported_.push_back(signal); });

    std::raise(SIGHUP);
    std::raise(SIGUSR1);
    ASSERT_TRUE(runUntilReported(1));
    runUntilIdle();

    EXPECT_THAT(reported_, testing::ElementsAre(SIGUSR1));
    std::signal(SIGHUP, before);
}

TEST(SignalsBeforeTheWatchDeathTest, TheyEndTheProcessWithoutAnError) {
    EXPECT_EXIT(
        {
            SignalWatch::endProcessUntilWatched({SIGTERM});
            std::raise(SIGTERM);
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(SignalWatchTest, AnEarlierThreadPassesASignalOnToTheWatch) {
    const auto before = std::signal(SIGUSR1, SIG_DFL);
    SignalWatch::endProcessUntilWatched({SIGUSR1});
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    // A call in which ThreadSanitizer delivers signals; it holds them back while a thread waits for a future.
    std::thread early([end = FileDescriptor(ends[0])] {
        char byte = 0;
        static_cast<void>(::read(end.get(), &byte, 1));
    });
    FileDescriptor isOver(ends[1]);
    const SignalWatch watch(loop_, {SIGUSR1}, [this](int signal) { reported_.push_back(signal); });

    pthread_kill(early.native_handle(), SIGUSR1);

    EXPECT_TRUE(runUntilReported(1));
    isOver.reset();
    early.join();
    EXPECT_THAT(reported_, testing::ElementsAre(SIGUSR1));
    std::signal(SIGUSR1, before);
}

TEST_F(SignalWatchTest, NothingIsReportedAfterTheWatchHasGone) {
    {
        const SignalWatch watch(loop_, {SIGWINCH}, [this](int signal) { reported_.push_back(signal); });
    }

    std::raise(SIGWINCH); // ignored unless it is waited for
    runUntilIdle();

    EXPECT_TRUE(reported_.empty());
}

} // namespace tarnwick
