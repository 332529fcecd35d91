// The time base of all measuring.
#include "core/MonotonicClock.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>

namespace tarnwick {
namespace {

double systemMonotonic() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

TEST(MonotonicClock, ReadsTheSystemsMonotonicClockInSeconds) {
    const double before = systemMonotonic();
    const double now = MonotonicClock::now();
    const double after = systemMonotonic();

    EXPECT_LE(before, now);
    EXPECT_LE(now, after);
}

TEST(MonotonicClock, NeverGoesBack) {
    double last = MonotonicClock::now();
    for (int reading = 0; reading < 10'000; ++reading) {
        const double now = MonotonicClock::now();
        ASSERT_GE(now, last);
        last = now;
    }
}

TEST(MonotonicClock, TellsMomentsOfOneMillisecondApart) {
    const double start = MonotonicClock::now();
    double next = start;
    while (next == start) {
        next = MonotonicClock::now();
    }
    // A coarser clock would jump by its own step; the thread being put aside for a while is allowed for.
    double smallestStep = next - start;
    for (int reading = 0; reading < 1000; ++reading) {
        const double last = next;
        while (next == last) {
            next = MonotonicClock::now();
        }
        smallestStep = std::min(smallestStep, next - last);
    }
    EXPECT_LE(smallestStep, 0.001);
}

} // namespace
} // namespace tarnwick
