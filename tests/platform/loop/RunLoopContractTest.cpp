// The programs' run loop and the simulation's against the contract of all run loops.
#include "tests/platform/loop/RunLoopContract.h"

#include "platform/loop/EpollRunLoop.h"
#include "tests/simulation/VirtualRunLoop.h"

#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <pthread.h>
#include <set>
#include <string>

namespace tarnwick {

namespace {

class EpollDriver final : public LoopDriver {
public:
    RunLoop& loop() override { return *loop_; }

    bool runUntil(const std::function<bool()>& condition) override {
        const double patience = loop_->now() + 20;
        while (!condition() && loop_->now() < patience) {
            loop_->runOne(0.1);
        }
        return condition();
    }

    void close() override { loop_.reset(); }

private:
    std::unique_ptr<EpollRunLoop> loop_ = std::make_unique<EpollRunLoop>();
};

class VirtualDriver final : public LoopDriver {
public:
    RunLoop& loop() override { return loop_; }

    /// Moves on in small steps, and tells the loop what a real one would have learned from the system.
    bool runUntil(const std::function<bool()>& condition) override {
        for (int step = 0; step < 10'000 && !condition(); ++step) {
            reportReady();
            loop_.advance(0.001);
        }
        return condition();
    }

    void isWatched(int descriptor) override { watched_.push_back(descriptor); }

    /// No time passes while a task runs.
    void spend(double /*seconds*/) override {}

private:
    void reportReady() {
        for (const int descriptor : watched_) {
            if (isReady(descriptor, POLLIN)) {
                loop_.makeReadable(descriptor);
            }
            if (isReady(descriptor, POLLOUT)) {
                loop_.makeWritable(descriptor);
            }
        }
    }

    static bool isReady(int descriptor, short event) {
        pollfd question{.fd = descriptor, .events = event, .revents = 0};
        return ::poll(&question, 1, 0) == 1;
    }

    simulation::VirtualRunLoop loop_;
    std::vector<int> watched_;
};

} // namespace

INSTANTIATE_TEST_SUITE_P(
    Loop, RunLoopContract,
    testing::Values(loopKind<EpollDriver>("Epoll"), loopKind<VirtualDriver>("Virtual")), test::caseName);
INSTANTIATE_TEST_SUITE_P(
    Loop, RealRunLoopContract, testing::Values(loopKind<EpollDriver>("Epoll")), test::caseName);

TEST(EpollRunLoop, RunsUntilATaskStopsIt) {
    EpollRunLoop loop;
    int runs = 0;
    const auto timer = loop.every(loop.now(), 0.001, [&] {
        if (++runs == 3) {
            loop.stop();
            loop.post([] { ADD_FAILURE() << "posted after the stop"; });
        }
    });

    loop.run();

    EXPECT_EQ(runs, 3);
}

TEST(EpollRunLoop, DoesNotBeginToRunOnceItIsStopped) {
    EpollRunLoop loop;
    loop.post([] { ADD_FAILURE() << "stopped before"; });
    loop.stop();

    loop.run();
}

TEST(EpollRunLoop, RunsTheTasksAndTimersOfItsTasks) {
    EpollRunLoop loop;
    RunLoop::Handle timer;
    loop.post([&] { loop.post([&] { timer = loop.after(0.001, [&] { loop.stop(); }); }); });

    loop.run();

    EXPECT_NE(timer, nullptr);
}

TEST(EpollRunLoop, ATimeBeforeTheClocksZeroIsPast) {
    EpollRunLoop loop;
    bool hasRun = false;
    const auto timer = loop.every(-5, 1e9, [&] { hasRun = true; });

    EXPECT_TRUE(loop.runOne(20));

    EXPECT_TRUE(hasRun);
}

TEST(EpollRunLoop, ProgramsThatItStartsInheritNoneOfItsDescriptors) {
    const auto inheritable = [] {
        std::set<std::string> descriptors;
        for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
            const std::string descriptor = entry.path().filename();
            if ((::fcntl(std::stoi(descriptor), F_GETFD) & FD_CLOEXEC) == 0) {
                descriptors.insert(descriptor);
            }
        }
        return descriptors;
    };
    const auto before = inheritable();

    const EpollRunLoop loop;

    EXPECT_EQ(inheritable(), before);
}

TEST(EpollRunLoop, TellsWhenNoThreadCanBeStarted) {
    pthread_attr_t usual{};
    pthread_attr_t tooLarge{};
    ASSERT_EQ(::pthread_getattr_default_np(&usual), 0);
    ASSERT_EQ(::pthread_getattr_default_np(&tooLarge), 0);
    ASSERT_EQ(::pthread_attr_setstacksize(&tooLarge, std::size_t{1} << 60), 0);
    ASSERT_EQ(::pthread_setattr_default_np(&tooLarge), 0);
    EpollRunLoop loop;

    const bool isStarted = loop.detach([] { return RunLoop::Task([] {}); });

    EXPECT_FALSE(isStarted);
    EXPECT_EQ(::pthread_setattr_default_np(&usual), 0);
}

TEST(EpollRunLoop, TellsWhenNothingCameInTime) {
    EpollRunLoop loop;

    EXPECT_FALSE(loop.runOne(0.01));
}

} // namespace tarnwick
