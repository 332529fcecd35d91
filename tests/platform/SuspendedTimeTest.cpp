// What the clocks tell of the machine's sleep.
#include "platform/linux/SuspendedTime.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <thread>

namespace tarnwick {

TEST(SuspendedTime, IsWhatTheTimeSinceTheStartHasMoreThanTheMonotonicTime) {
    double sinceStart = 0;
    std::ifstream("/proc/uptime") >> sinceStart;
    const std::chrono::duration<double> monotonic = std::chrono::steady_clock::now().time_since_epoch();

    // The file has hundredths, and is a little older.
    EXPECT_NEAR(SuspendedTime::now(), sinceStart - monotonic.count(), 0.5);
}

TEST(SuspendedTime, StandsStillWhileTheMachineIsAwake) {
    const double before = SuspendedTime::now();

    std::this_thread::sleep_for(std::chrono::milliseconds(50));

    EXPECT_NEAR(SuspendedTime::now(), before, 0.02);
}

} // namespace tarnwick
