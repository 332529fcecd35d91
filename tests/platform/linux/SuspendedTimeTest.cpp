// What the clocks tell of the machine's sleep.
#include "platform/linux/SuspendedTime.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>

namespace tarnwick {

TEST(SuspendedTime, IsWhatTheTimeSinceTheStartHasMoreThanTheMonotonicTime) {
    double sinceStart = 0;
    std::ifstream("/proc/uptime") >> sinceStart;
    const std::chrono::duration<double> monotonic = std::chrono::steady_clock::now().time_since_epoch();

    // The file has hundredths, and is a little older.
    EXPECT_NEAR(SuspendedTime::sinceBoot(), sinceStart - monotonic.count(), 0.5);
}

TEST(SuspendedTime, StandsStillWhileTheMachineIsAwake) {
    const double before = SuspendedTime::sinceBoot();

    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(50);
    while (std::chrono::steady_clock::now() < end) {
        ASSERT_NEAR(SuspendedTime::sinceBoot(), before, 0.02);
    }
}

} // namespace tarnwick
