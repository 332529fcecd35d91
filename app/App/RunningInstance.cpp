#include "app/App/RunningInstance.h"

#include "platform/bus/InstanceGuard.h"
#include "platform/bus/NameWatch.h"
#include "platform/loop/EpollRunLoop.h"

#include <cstdio>
#include <cstdlib>

namespace tarnwick {

namespace {

/// Seconds, for saving on a slow disk.
constexpr double patienceWithTheEnd = 20;

void say(const char* text) {
    std::fprintf(stderr, "tarnwick: %s\n", text);
}

void sayWhyItWasNotAsked(InstanceGuard::Result result) {
    if (result == InstanceGuard::Result::anotherIsSilent) {
        saySilentInstance();
    } else {
        say("it is not running");
    }
}

} // namespace

void saySilentInstance() {
    say("another instance is running, but it does not answer");
}

int pauseRunningInstance(int seconds) {
    EpollRunLoop loop;
    BusConnection bus(loop, BusConnection::sessionAddress());
    int status = EXIT_FAILURE;
    const auto decided = [&](InstanceGuard::Result result) {
        if (result == InstanceGuard::Result::anotherRuns) {
            status = EXIT_SUCCESS;
        } else {
            sayWhyItWasNotAsked(result);
        }
        loop.stop();
    };
    const InstanceGuard guard(
        loop, bus, {.request = InstanceGuard::Request::pause, .pauseSeconds = seconds}, decided);
    loop.run();
    return status;
}

int quitRunningInstance() {
    EpollRunLoop loop;
    BusConnection bus(loop, BusConnection::sessionAddress());
    int status = EXIT_FAILURE;
    Subscription end;
    RunLoop::Handle patience;
    const auto decided = [&](InstanceGuard::Result result) {
        if (result == InstanceGuard::Result::anotherRuns) {
            end = watchName(bus, InstanceGuard::name, [&](const std::string& owner, NameNews) {
                if (owner.empty()) {
                    status = EXIT_SUCCESS;
                    loop.stop();
                }
            });
            patience = loop.after(patienceWithTheEnd, [&loop] {
                say("the running instance does not end");
                loop.stop();
            });
            return;
        }
        sayWhyItWasNotAsked(result);
        loop.stop();
    };
    const InstanceGuard guard(loop, bus, {.request = InstanceGuard::Request::quit}, decided);
    loop.run();
    return status;
}

} // namespace tarnwick
