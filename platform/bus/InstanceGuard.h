// One running program per user session: a second start asks the first one for something.
#pragma once

#include "core/Lifeline.h"
#include "core/RunLoop.h"
#include "platform/bus/BusConnection.h"
#include "platform/ports/ApplicationId.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tarnwick {

/// Main thread.
class InstanceGuard {
public:
    /// What a start asks of the program that is running already.
    enum class Request { nothing, show, settings, outages, pause, quit };

    enum class Result {
        first,
        anotherRuns,     ///< and has taken the request
        anotherIsSilent, ///< runs, but has not answered when asked
        noBus,           ///< no bus, or one that gives no names: several programs may run
    };

    static constexpr const char* name = applicationId;
    static constexpr double patience = 2; ///< seconds, for the bus and then for the other program

    /// What a launcher hands over to the program that it starts; empty where it hands over nothing.
    struct LaunchTokens {
        std::string activation; ///< lets one window open in front of others
        std::string startup;    ///< by which an X11 desktop knows this start
    };

    /// Removed from the environment: programs that are started from here must not inherit them. To be called
    /// before there are threads.
    [[nodiscard]] static LaunchTokens takeLaunchTokens();

    struct Start {
        Request request = Request::show;
        std::string activationToken{}; ///< passed on with the request; lets a window open in front of others
        std::int32_t pauseSeconds = 0; ///< of a request to pause; 0 resumes
    };

    /// `decided` is called once, soon. `bus` is the session's and outlives it.
    InstanceGuard(RunLoop& loop, BusConnection& bus, Start start, std::function<void(Result)> decided);
    InstanceGuard(const InstanceGuard&) = delete;
    InstanceGuard& operator=(const InstanceGuard&) = delete;
    ~InstanceGuard();

    /// Another start has asked this one for something. A length is as it came: any number.
    std::function<void(const Start& asked)> onRequest;

private:
    class Exported;

    void busChanged();
    void nameDecided(std::optional<bool> isOurs);
    void askOther();
    void otherAnswered(bool hasTaken);
    void decide(Result result);

    RunLoop& loop_;
    BusConnection& bus_;
    Start start_;
    std::function<void(Result)> decided_; ///< empty after its call
    std::unique_ptr<Exported> exported_;  ///< only while connected
    RunLoop::Handle busTimer_;
    bool hasAskedOther_ = false;
    Lifeline lifeline_;
    Subscription stateSubscription_;
};

} // namespace tarnwick
