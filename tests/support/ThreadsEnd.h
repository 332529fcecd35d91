// The end of a test program whose tests detach threads.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <iterator>
#include <thread>

namespace tarnwick::test {

/// Waits at the end of the program until the detached threads have ended: the leak checker takes what an
/// ending thread still owns for a leak.
class ThreadsEnd : public testing::Environment {
public:
    void SetUp() override {
        // Before its first thread, a program may not have that of a sanitizer yet.
        std::thread([] {}).join();
        usual_ = count();
    }

    void TearDown() override {
        constexpr std::chrono::milliseconds pause(5);
        for (int attempt = 0; attempt < 4000 && count() > usual_; ++attempt) {
            std::this_thread::sleep_for(pause);
        }
        EXPECT_LE(count(), usual_);
    }

private:
    [[nodiscard]] static std::ptrdiff_t count() {
        return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
    }

    std::ptrdiff_t usual_ = 0;
};

} // namespace tarnwick::test
