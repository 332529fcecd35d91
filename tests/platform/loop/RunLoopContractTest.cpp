// The programs' run loop and the simulation's against the contract of all run loops.
#include "tests/platform/loop/RunLoopContract.h"

#include "platform/loop/EpollRunLoop.h"
#include "tests/simulation/VirtualRunLoop.h"
#include "tests/support/LoopTurn.h"
#include "tests/support/ThreadsEnd.h"

#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <pthread.h>
#include <set>
#include <string>

namespace tarnwick {

namespace {

constexpr double patience = 20;

const auto* const threadsEnd = testing::AddGlobalTestEnvironment(new test::ThreadsEnd);

/// An epoll loop that checks something after each task.
class CheckedLoop final : public RunLoop {
public:
    [[nodiscard]] EpollRunLoop& epoll() { return *epoll_; }

    /// Set while the loop does not run.
    void setCheck(Task check) { *check_ = std::move(check); }

    void close() { epoll_.reset(); }

    [[nodiscard]] double now() const override { return epoll_->now(); }

    [[nodiscard]] WallTime wallNow() const override { return epoll_->wallNow(); }

    void post(Task task) override { epoll_->post(checked(check_, std::move(task))); }

    [[nodiscard]] Handle after(double delay, Task task) override {
        return epoll_->after(delay, checked(check_, std::move(task)));
    }

    [[nodiscard]] Handle every(double firstFire, double interval, Task task) override {
        return epoll_->every(firstFire, interval, checked(check_, std::move(task)));
    }

    [[nodiscard]] Handle everyRoughly(
        double firstFire, double interval, double tolerance, Task task) override {
        return epoll_->everyRoughly(firstFire, interval, tolerance, checked(check_, std::move(task)));
    }

    [[nodiscard]] Handle watchReadable(int descriptor, Task task) override {
        return epoll_->watchReadable(descriptor, checked(check_, std::move(task)));
    }

    [[nodiscard]] Handle watchWritable(int descriptor, Task task) override {
        return epoll_->watchWritable(descriptor, checked(check_, std::move(task)));
    }

    [[nodiscard]] bool detach(std::function<Task()> work) override {
        return epoll_->detach([check = check_, work = std::move(work)] { return checked(check, work()); });
    }

private:
    static Task checked(const std::shared_ptr<Task>& check, Task task) {
        // Copied: the task may destroy its handle, and itself with it.
        return [check, task = std::move(task)] {
            // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): as said above
            const auto present = check;
            task();
            if (*present) {
                (*present)();
            }
        };
    }

    std::shared_ptr<Task> check_ = std::make_shared<Task>(); ///< detached work may outlive the loop
    std::unique_ptr<EpollRunLoop> epoll_ = std::make_unique<EpollRunLoop>();
};

/// As the terminal program runs the loop.
class AloneDriver final : public LoopDriver {
public:
    RunLoop& loop() override { return loop_; }

    bool runUntil(const std::function<bool()>& condition) override {
        if (condition()) {
            return true;
        }
        EpollRunLoop& epoll = loop_.epoll();
        loop_.setCheck([&] {
            if (condition()) {
                epoll.stop();
            }
        });
        const auto end = epoll.after(patience, [&epoll] { epoll.stop(); });
        epoll.run();
        loop_.setCheck(nullptr);
        return condition();
    }

    void close() override { loop_.close(); }

private:
    CheckedLoop loop_;
};

/// As the desktop program's toolkit hosts the loop.
class HostedDriver final : public LoopDriver {
public:
    RunLoop& loop() override { return *loop_; }

    bool runUntil(const std::function<bool()>& condition) override {
        const double end = loop_->now() + patience;
        while (!condition() && loop_->now() < end) {
            test::runOneTurn(*loop_, 0.1);
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
    testing::Values(
        loopKind<AloneDriver>("Epoll"), loopKind<HostedDriver>("HostedEpoll"),
        loopKind<VirtualDriver>("Virtual")),
    test::caseName);
INSTANTIATE_TEST_SUITE_P(
    Loop, RealRunLoopContract,
    testing::Values(loopKind<AloneDriver>("Epoll"), loopKind<HostedDriver>("HostedEpoll")), test::caseName);

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

TEST(EpollRunLoop, RunsAgainAfterAStop) {
    EpollRunLoop loop;
    loop.stop();
    loop.run();
    bool hasRun = false;
    loop.post([&] {
        hasRun = true;
        loop.stop();
    });

    loop.run();

    EXPECT_TRUE(hasRun);
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

    EXPECT_TRUE(test::runOneTurn(loop, patience));

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

} // namespace tarnwick
