// Sleep and wake as the login manager announces them, or as the clocks show afterwards. The login manager
// delays a sleep until we are ready.
#pragma once

#include "core/FileDescriptor.h"
#include "core/Lifeline.h"
#include "core/RunLoop.h"
#include "core/SleepEpisodes.h"
#include "platform/bus/BusConnection.h"
#include "platform/ports/SleepMonitor.h"

#include <functional>
#include <optional>
#include <string>

namespace tarnwick {

/// Without a login manager, or without a bus, only the clocks show a sleep. Main thread.
class LogindSleepMonitor final : public SleepMonitor {
public:
    /// Seconds that the machine has been suspended; only differences carry meaning.
    using SuspendedClock = std::function<double()>;

    /// Seconds between two looks at the clocks, and how much later a look may be, to share the wake-up of
    /// another timer.
    static constexpr double checkInterval = 1;
    static constexpr double checkTolerance = 2;
    /// Seconds that a login manager has to answer the request for delays, and seconds after a refusal until
    /// it is asked again.
    static constexpr double usualPatience = 30;

    /// `systemBus` is the system's and outlives it.
    LogindSleepMonitor(
        RunLoop& loop, BusConnection& systemBus, SuspendedClock suspendedTime,
        double patience = usualPatience);

    void start(Handlers handlers) override;

private:
    [[nodiscard]] SleepEpisodes::Clocks clocks() const;
    void tell(const SleepEpisodes::Events& events) const;
    void setManager(const std::string& uniqueName);
    void managerAnnounced(bool isStart);
    void check(SleepEpisodes& episodes);
    void takeInhibitor();
    void inhibitorArrived(FileDescriptor inhibitor);
    void dropInhibitor();

    RunLoop& loop_;
    BusConnection& bus_;
    SuspendedClock suspendedTime_;
    double patience_;
    Handlers handlers_;
    std::optional<SleepEpisodes> episodes_; ///< from the start on
    std::string manager_;                   ///< its unique name; empty while there is none
    FileDescriptor inhibitor_;         ///< while it is open the login manager delays sleeps for some seconds
    int inhibitorRequest_ = 0;         ///< answers to earlier requests are ignored
    std::optional<double> askAgainAt_; ///< after a refusal
    RunLoop::Handle checkTimer_;
    Lifeline lifeline_;
    Subscription managerWatch_;
    Subscription sleepMatch_;
};

} // namespace tarnwick
