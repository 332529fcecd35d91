// What every sleep monitor promises: the fake that the model's tests use, and the real one on a bus.
#include "platform/bus/LogindSleepMonitor.h"

#include "tests/platform/bus/BusTest.h"
#include "tests/platform/bus/FakeLogind.h"
#include "tests/simulation/FakeSleepMonitor.h"

#include <gmock/gmock.h>

#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// Sleep and wake as the test says it.
class FakeDriver : public testing::Test {
protected:
    SleepMonitor& monitor() { return monitor_; }

    void getReady() {}

    void goToSleep() { monitor_.goToSleep(); }

    void wake() { monitor_.wake(); }

    [[nodiscard]] bool settle() { return true; }

private:
    simulation::FakeSleepMonitor monitor_;
};

/// Sleep and wake as logind announces them.
class LogindDriver : public BusTest {
protected:
    SleepMonitor& monitor() { return monitor_; }

    void getReady() {
        logind_.emplace(addPeer());
        ASSERT_TRUE(runUntilConnected());
        // Until the bus daemon has the monitor's question for logind; until the monitor has the answer.
        ASSERT_TRUE(settle());
        ASSERT_TRUE(settle());
    }

    void goToSleep() { logind_->announce(true); }

    void wake() { logind_->announce(false); }

    /// Until all that was announced has been heard.
    [[nodiscard]] bool settle() { return runUntilHeardBy(logind_->peer()); }

private:
    std::optional<FakeLogind> logind_;
    LogindSleepMonitor monitor_{loop_, bus_, [] { return 0.0; }};
};

template<class Driver>
class SleepMonitorContract : public Driver {
protected:
    void start() {
        this->monitor().start({
            .willSleep = [this] { told_.emplace_back("sleep"); },
            .didWake = [this] { told_.emplace_back("wake"); },
        });
    }

    std::vector<std::string> told_;
};

using SleepDrivers = testing::Types<FakeDriver, LogindDriver>;
TYPED_TEST_SUITE(SleepMonitorContract, SleepDrivers);

} // namespace

TYPED_TEST(SleepMonitorContract, EachSleepAndEachWakingIsToldInItsOrder) {
    this->getReady();
    this->start();

    this->goToSleep();
    ASSERT_TRUE(this->settle());
    EXPECT_THAT(this->told_, ElementsAre("sleep"));
    this->wake();
    this->goToSleep();
    this->wake();

    ASSERT_TRUE(this->settle());
    EXPECT_THAT(this->told_, ElementsAre("sleep", "wake", "sleep", "wake"));
}

TYPED_TEST(SleepMonitorContract, ASleepThatComesTwiceIsToldOnce) {
    this->getReady();
    this->start();

    this->goToSleep();
    this->goToSleep();
    this->wake();
    this->wake();

    ASSERT_TRUE(this->settle());
    EXPECT_THAT(this->told_, ElementsAre("sleep", "wake"));
}

TYPED_TEST(SleepMonitorContract, AWakingWithoutASleepIsNotTold) {
    this->getReady();
    this->start();

    this->wake();

    ASSERT_TRUE(this->settle());
    EXPECT_THAT(this->told_, IsEmpty());
}

TYPED_TEST(SleepMonitorContract, ASleepThatBeganBeforeTheStartIsNotTold) {
    this->getReady();
    this->goToSleep();
    ASSERT_TRUE(this->settle());
    this->start();

    this->wake();

    ASSERT_TRUE(this->settle());
    EXPECT_THAT(this->told_, IsEmpty());
}

TYPED_TEST(SleepMonitorContract, NothingIsToldBeforeTheStart) {
    this->getReady();

    this->goToSleep();
    this->wake();
    ASSERT_TRUE(this->settle());
    this->start();

    ASSERT_TRUE(this->settle());
    EXPECT_THAT(this->told_, IsEmpty());
}

TYPED_TEST(SleepMonitorContract, OneOfTheHandlersMayBeLeftOut) {
    this->getReady();
    int wakings = 0;
    this->monitor().start({.willSleep = nullptr, .didWake = [&wakings] { ++wakings; }});

    this->goToSleep();
    this->wake();

    ASSERT_TRUE(this->settle());
    EXPECT_EQ(wakings, 1);
}

} // namespace tarnwick
