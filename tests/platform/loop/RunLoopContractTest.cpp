// The run loops of programs without a toolkit and of the simulation, held to the one contract.
#include "tests/platform/loop/RunLoopContract.h"

#include "platform/asio/AsioRunLoop.h"
#include "tests/simulation/VirtualRunLoop.h"

#include <poll.h>

namespace tarnwick {

namespace {

class AsioDriver {
public:
    RunLoop& loop() { return *loop_; }

    bool runUntil(const std::function<bool()>& condition) {
        const double patience = loop_->now() + 20;
        while (!condition() && loop_->now() < patience) {
            loop_->runOne(0.1);
        }
        return condition();
    }

    void isWatched(int /*descriptor*/) {}

    void spend(double seconds) {
        const double end = loop_->now() + seconds;
        while (loop_->now() < end) {
        }
    }

    void close() { loop_.reset(); }

private:
    std::unique_ptr<AsioRunLoop> loop_ = std::make_unique<AsioRunLoop>();
};

class VirtualDriver {
public:
    RunLoop& loop() { return loop_; }

    /// Moves on in small steps, and tells the loop what a real one would have learned from the system.
    bool runUntil(const std::function<bool()>& condition) {
        for (int step = 0; step < 10'000 && !condition(); ++step) {
            reportReady();
            loop_.advance(0.001);
        }
        return condition();
    }

    void isWatched(int descriptor) { watched_.push_back(descriptor); }

    /// No time passes while a task runs.
    void spend(double /*seconds*/) {}

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

INSTANTIATE_TYPED_TEST_SUITE_P(Asio, RunLoopContract, AsioDriver);
INSTANTIATE_TYPED_TEST_SUITE_P(Asio, RealRunLoopContract, AsioDriver);
INSTANTIATE_TYPED_TEST_SUITE_P(Virtual, RunLoopContract, VirtualDriver);

TEST(AsioRunLoop, RunsUntilATaskStopsIt) {
    AsioRunLoop loop;
    int runs = 0;
    const auto timer = loop.every(loop.now(), 0.001, [&] {
        if (++runs == 3) {
            loop.stop();
        }
    });

    loop.run();

    EXPECT_EQ(runs, 3);
}

TEST(AsioRunLoop, ATaskThatMayBeLateRunsInTheSameWakeUpAsAPunctualOne) {
    AsioRunLoop loop;
    const double first = loop.now() + 0.02;
    std::vector<std::string> ran;
    const auto punctual = loop.every(first + 0.005, 10, [&] { ran.emplace_back("punctual"); });
    const auto patient = loop.everyRoughly(first, 10, 0.5, [&] { ran.emplace_back("patient"); });

    while (ran.empty()) {
        ASSERT_TRUE(loop.runOne(20));
    }

    EXPECT_THAT(ran, testing::ElementsAre("punctual", "patient"));
}

TEST(AsioRunLoop, TellsWhenNoTaskCameInTime) {
    AsioRunLoop loop;

    EXPECT_FALSE(loop.runOne(0.01));
}

TEST(AsioRunLoop, ItsClocksAreThoseOfTheSystem) {
    const AsioRunLoop loop;
    const auto steady = [] {
        return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
    };
    const double before = steady();
    const auto wallBefore = std::chrono::system_clock::now();

    const double now = loop.now();
    const RunLoop::WallTime wall = loop.wallNow();

    EXPECT_GE(now, before - 1e-6);
    EXPECT_LE(now, steady() + 1e-6);
    EXPECT_GE(wall, wallBefore);
    EXPECT_LE(wall, std::chrono::system_clock::now());
}

TEST(AsioRunLoop, ATimerBeyondAllRunsDoesNotFireEarly) {
    AsioRunLoop loop;
    bool hasFired = false;
    const auto never = loop.after(1e300, [&] { hasFired = true; });

    EXPECT_FALSE(loop.runOne(0.01));
    EXPECT_FALSE(hasFired);
}

TEST(AsioRunLoop, GivesNoHandleForWhatTheSystemCannotWatch) {
    AsioRunLoop loop;
    constexpr int notOpen = 1'000'000;

    EXPECT_EQ(loop.watchReadable(notOpen, [] {}), nullptr);
}

} // namespace tarnwick
