// One falling asleep and one waking for each sleep, whoever tells of it: the system beforehand, or the clocks
// afterwards.
#pragma once

#include "platform/ports/SleepMonitor.h"

#include <optional>

namespace tarnwick {

/// Reads no clock itself. Main thread.
class SleepEpisodes {
public:
    /// The clocks at one moment.
    struct Reading {
        double now = 0;       ///< monotonic seconds
        double suspended = 0; ///< seconds that the machine has slept since its start
    };

    /// A longer suspension between two readings is a sleep.
    static constexpr double shortestSleep = 1;
    /// After a sleep that the clocks show, an announcer's word that is still on its way has so long to come.
    static constexpr double announcementDelay = 0.5;
    /// So long after a sleep the announcer has told of its end, or never will.
    static constexpr double wakeDelay = 5;
    /// A machine that runs on for so long although it was to sleep does not sleep.
    static constexpr double longestFarewell = 60;

    SleepEpisodes(SleepMonitor::Handlers handlers, const Reading& start);

    /// Whether anybody announces sleeps. Without an announcer nobody would tell of the waking, so a machine
    /// that was to sleep counts as awake.
    void setHasAnnouncer(bool hasAnnouncer);
    void sleepAnnounced(const Reading& reading);
    void wakeAnnounced(const Reading& reading);
    /// To be called about every second.
    void check(const Reading& reading);

    [[nodiscard]] bool isAsleep() const { return awakeBy_.has_value(); }

private:
    /// Whether it has slept since the last time.
    [[nodiscard]] bool hasSlept(const Reading& reading);
    void fallAsleep(double awakeBy);
    void wake();
    void tellPastSleep();

    SleepMonitor::Handlers handlers_;
    double lastSuspended_;
    bool hasAnnouncer_ = false;
    std::optional<double> awakeBy_;   ///< only while asleep: when it is awake even if nobody says so
    std::optional<double> sleptAt_{}; ///< when an unannounced sleep was noticed that has not been told yet
};

} // namespace tarnwick
