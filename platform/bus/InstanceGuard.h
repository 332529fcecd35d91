// One running program per user session: a second start asks the first one for something.
#pragma once

#include "core/Lifeline.h"
#include "core/RunLoop.h"
#include "platform/bus/BusConnection.h"
#include "platform/ports/ApplicationId.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tarnwick {

/// Main thread.
class InstanceGuard {
public:
    /// What a start asks of the program that is running already.
    enum class Request { nothing, show, settings, quit };

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
        std::string activationToken{}; ///< passed on with the request
    };

    /// `decided` is called once, soon. `bus` is the session's and outlives it.
    InstanceGuard(RunLoop& loop, BusConnection& bus, Start start, std::function<void(Result)> decided);
    InstanceGuard(const InstanceGuard&) = delete;
    InstanceGuard& operator=(const InstanceGuard&) = delete;
    ~InstanceGuard();

    /// Another start has asked this one for something. The token, which may be empty, lets it open a window
    /// in front of others.
    std::function<void(Request request, const std::string& activationToken)> onRequest;

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
