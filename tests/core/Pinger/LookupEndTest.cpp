// A lookup that never ends, at the end of the program. Alone in its test program: ThreadSanitizer follows no
// copy that is made while other threads run.
#include "core/Pinger/SystemPingNetwork.h"
#include "platform/loop/EpollRunLoop.h"
#include "tests/core/ChildProcess.h"
#include "tests/support/LoopTurn.h"

#include <atomic>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

namespace {

bool isChild = false;

} // namespace

// In a copy of this program made by fork, the leak checker misses the threads of the original.
// NOLINTNEXTLINE(bugprone-reserved-identifier): the leak checker looks for this name
extern "C" int __lsan_is_turned_off() {
    return isChild ? 1 : 0;
}

namespace tarnwick {

TEST(SystemLookup, DoesNotHoldUpTheEndOfTheProgram) {
    test::ChildProcess program([](const test::ChildProcess::Report& report) -> int {
        isChild = true;
        EpollRunLoop loop;
        std::atomic<bool> isLookingUp = false;
        SystemPingNetwork network(loop, [&](const std::string& host) {
            report();
            isLookingUp = true;
            isLookingUp.notify_one();
            for (;;) {
                ::pause();
            }
            return PingError::resolution("no answer for " + host);
        });
        network.resolve("a", [](const Resolution&) {});
        static_cast<void>(test::runOneTurn(loop, 0));
        isLookingUp.wait(false);
        std::exit(0);
    });
    EXPECT_EQ(program.exitStatus(), 0);
}

} // namespace tarnwick
