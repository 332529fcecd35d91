// One running program per user session: a second start asks the first one to show itself.
#pragma once

#include "core/Lifeline.h"
#include "core/RunLoop.h"
#include "platform/bus/BusConnection.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tarnwick {

/// Main thread.
class InstanceGuard {
public:
    enum class Result {
        first,
        anotherRuns,     ///< and has been asked to show itself
        anotherIsSilent, ///< runs, but has not answered when asked
        noBus,           ///< no bus, or one that gives no names: several programs may run
    };

    static constexpr const char* name = "org.tarnwick.Tarnwick";
    static constexpr double patience = 2; ///< seconds, for the bus and then for the other program

    /// The token by which the desktop lets this start open a window in front of others; empty without one.
    /// It serves one window, so it is removed from the environment that started programs inherit.
    /// To be called before there are threads.
    [[nodiscard]] static std::string takeActivationToken();

    /// `decided` is called once, soon. `bus` is the session's and outlives it. `activationToken` is passed on
    /// to the program that shows itself instead of this one.
    InstanceGuard(
        RunLoop& loop, BusConnection& bus, std::string activationToken, std::function<void(Result)> decided);
    InstanceGuard(const InstanceGuard&) = delete;
    InstanceGuard& operator=(const InstanceGuard&) = delete;
    ~InstanceGuard();

    /// Another start has asked this one to show itself. The token, which may be empty, lets it open a window
    /// in front of others.
    std::function<void(const std::string& activationToken)> onActivate;

private:
    class Exported;

    void busChanged();
    void nameDecided(std::optional<bool> isOurs);
    void activateOther();
    void otherAnswered(bool hasShown);
    void decide(Result result);

    RunLoop& loop_;
    BusConnection& bus_;
    std::string activationToken_;
    std::function<void(Result)> decided_; ///< empty after its call
    std::unique_ptr<Exported> exported_;  ///< only while connected
    RunLoop::Handle busTimer_;
    bool hasAskedOther_ = false;
    Lifeline lifeline_;
    Subscription stateSubscription_;
};

} // namespace tarnwick
