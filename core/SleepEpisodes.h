// Decides when the machine has fallen asleep and when it is awake again: each once for each sleep.
#pragma once

#include <optional>
#include <vector>

namespace tarnwick {

/// A state machine without clocks. Two sources tell of one sleep: an announcer in advance, and afterwards the
/// time that the machine was suspended. All times in seconds.
class SleepEpisodes {
public:
    enum class Event { fellAsleep, woke };
    /// In the order in which they happened.
    using Events = std::vector<Event>;

    /// The clocks at one moment.
    struct Clocks {
        double now = 0;       ///< monotonic
        double suspended = 0; ///< how long the machine has slept since it started
    };

    /// A suspension between two calls is a sleep when it is longer than this.
    static constexpr double shortestSleep = 1;
    /// An announcement may arrive this long after the sleep that it belongs to.
    static constexpr double announcementDelay = 0.5;
    /// The end of a sleep is announced within this time, or never.
    static constexpr double wakeDelay = 5;
    /// Still awake this long after an announced sleep: the sleep was canceled.
    static constexpr double longestPreparation = 60;

    explicit SleepEpisodes(const Clocks& start) : lastSuspended_(start.suspended) {}

    /// Whether sleeps are announced. Losing the announcer ends a sleep, as its end would never be announced.
    [[nodiscard]] Events setHasAnnouncer(bool hasAnnouncer);
    [[nodiscard]] Events sleepAnnounced(const Clocks& clocks);
    [[nodiscard]] Events wakeAnnounced(const Clocks& clocks);
    /// Call it about once a second.
    [[nodiscard]] Events check(const Clocks& clocks);

    [[nodiscard]] bool isAsleep() const { return awakeBy_.has_value(); }

private:
    /// Returns whether the machine was suspended since the last call.
    bool noteSuspension(const Clocks& clocks);
    Events fallAsleep(double awakeBy);
    Events wake();
    Events reportPastSleep();

    double lastSuspended_;
    bool hasAnnouncer_ = false;
    std::optional<double> awakeBy_; ///< while asleep: counts as awake from then on, announced or not
    std::optional<double> sleptAt_; ///< when a sleep was noticed that is not reported yet
};

} // namespace tarnwick
