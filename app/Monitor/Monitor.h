// The model at the heart of both programs: it pings, judges, counts, and publishes what there is to show.
#pragma once

#include "app/Monitor/StatsRecorder.h"
#include "app/Observation/Observation.h"
#include "app/Preferences/Preferences.h"
#include "core/ConnectionWatchdog.h"
#include "core/Lifeline.h"
#include "core/PendingPing.h"
#include "core/PingLedger.h"
#include "core/Pinger/Pinger.h"
#include "core/RunLoop.h"
#include "platform/ports/NotificationCenter.h"
#include "platform/ports/PathMonitor.h"
#include "platform/ports/SleepMonitor.h"

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

/// What the monitor needs from outside. All of it outlives the monitor.
struct MonitorEnvironment {
    RunLoop& loop;
    PingNetwork& network;
    PathMonitor& path;
    SleepMonitor& sleep;
    NotificationCenter& notifications;
    StatsStore store;
};

/// Observable: each published value wakes its observers only when it really changes. Main thread.
class Monitor {
public:
    using Status = ConnectionWatchdog::Status;

    /// Signal bars in every front end.
    static constexpr int barLevels = 5;

    /// One point of the latency chart.
    struct Sample {
        std::uint64_t id = 0;
        RunLoop::WallTime date{}; ///< when it was sent
        std::optional<double> rttMs = std::nullopt;
        bool lost = false;

        friend bool operator==(const Sample&, const Sample&) = default;
    };

    using Samples = std::deque<Sample>;

    enum class QualityTone { neutral, good, middle, bad };

    /// `prefs` outlives the monitor.
    Monitor(Preferences& prefs, const MonitorEnvironment& environment);

    Monitor(const Monitor&) = delete;
    Monitor& operator=(const Monitor&) = delete;

    /// Called once.
    void start();
    /// Stores the all-time figures, if this process is the one that writes them. Failures are ignored. What
    /// is not made to outlive a power cut never waits for the disk.
    void saveStats(FileStore::Durability durability = FileStore::Durability::powerCut);

    // Once started, the monitor follows its preferences, whatever sets them.

    /// White space around the text is dropped; an empty or unchanged host is ignored.
    void setHostname(const std::string& text);
    void restoreDefaults();
    void resetSessionStats();
    /// Of the current host; stored at once.
    void resetAllTimeStats();

    [[nodiscard]] Preferences& prefs() const { return prefs_; }

    // Published values.

    [[nodiscard]] Status status() const { return status_.get(); }

    [[nodiscard]] std::optional<double> score() const { return score_.get(); }

    [[nodiscard]] std::optional<double> latestPingMs() const { return latestPingMs_.get(); }

    [[nodiscard]] double lossPercent() const { return lossPercent_.get(); }

    [[nodiscard]] bool lossIsKnown() const { return lossIsKnown_.get(); }

    [[nodiscard]] const std::optional<std::string>& resolvedAddress() const { return resolvedAddress_.get(); }

    [[nodiscard]] const std::optional<std::string>& lastError() const { return lastError_.get(); }

    [[nodiscard]] const std::optional<PingError>& startError() const { return startError_.get(); }

    [[nodiscard]] bool pathSatisfied() const { return pathSatisfied_.get(); }

    [[nodiscard]] const Samples& samples() const { return samples_.get(); }

    [[nodiscard]] const PingLedger& ledger() const { return ledger_.get(); }

    [[nodiscard]] StatsRecorder::State recording() const { return recording_.get(); }

    // Values for display, derived from the published ones.

    /// Lit bars of five; none without a score and while down.
    [[nodiscard]] int bars() const;
    /// Absent unless down.
    [[nodiscard]] std::optional<DownReason> downReason() const;
    /// The text of the status item.
    [[nodiscard]] std::string menuTitle(bool showsLoss) const;
    [[nodiscard]] std::string tooltip() const;
    [[nodiscard]] bool showsLoss() const;
    [[nodiscard]] std::string qualityTitle() const;
    [[nodiscard]] QualityTone qualityTone() const;
    [[nodiscard]] std::string downReasonText() const;
    /// For assistive technology.
    [[nodiscard]] std::string accessibilitySummary() const;

    /// The monotonic time that the latest evaluation used, or that of the creation before the first one.
    [[nodiscard]] double evaluatedAt() const { return evaluatedAt_; }

    /// Called at the end of every tick.
    std::function<void()> onTick;

private:
    /// Seconds that the network is given to come back after a sleep.
    static constexpr double restartAfterWake = 2.0;

    // The ping loop.
    void restartPinger();
    void stopPinging();
    void schedulePingTimer();
    void sendPing();
    void forgetOldSamples(Samples& samples, RunLoop::WallTime now) const;
    void handle(const Pinger::Event& event);
    void pingingStarted(const ResolvedAddress& address);
    void receivedReply(std::uint64_t id, double at);
    /// Looked for from the newest on; null when it has left the chart.
    [[nodiscard]] static Sample* sampleOf(Samples& samples, std::uint64_t id);

    // The judging.
    void tick();
    /// The watchdog, told whether alerts are wanted now: every step that may announce something begins here.
    [[nodiscard]] ConnectionWatchdog& updatedWatchdog();
    /// Publishes the watchdog's verdict after a step, then does what the step asked for.
    void carryOut(const ConnectionWatchdog::Actions& actions);
    void carryOut(ConnectionWatchdog::Action action);
    void evaluate(double now);
    void markLost(std::uint64_t id);
    /// Of pings that have left the window: no answer or loss is booked for them any more.
    void forgetUnsettledBookings();
    [[nodiscard]] bool isConnecting() const;

    // What happens around it.
    void observeSystemEvents();
    void saveStatsOf(const std::string& host, FileStore::Durability durability);
    void settingsChanged();
    void hostChanged();
    /// Keeps the gap since the last ping.
    void pingIntervalChanged();
    void refreshWatchdogConfig();
    void willSleep();
    void didWake();
    void pathUpdated(const NetworkPath& path);
    void pathChanged(const std::string& key);

    Preferences& prefs_;
    std::string host_;    ///< of the preferences, as the monitor last acted on it
    double pingInterval_; ///< the same
    RunLoop& loop_;
    PingNetwork& network_;
    PathMonitor& pathMonitor_;
    SleepMonitor& sleepMonitor_;
    NotificationCenter& notifications_;

    Observed<Status> status_{Status::starting};
    Observed<std::optional<double>> score_;
    Observed<std::optional<double>> latestPingMs_;
    Observed<double> lossPercent_{0};
    Observed<bool> lossIsKnown_{false};
    Observed<std::optional<std::string>> resolvedAddress_;
    Observed<std::optional<std::string>> lastError_;
    Observed<std::optional<PingError>> startError_;
    Observed<bool> pathSatisfied_{true};
    Observed<Samples> samples_;  ///< of the last 300 s, oldest first
    bool samplesInOrder_ = true; ///< of their dates
    Observed<PingLedger> ledger_;
    Observed<StatsRecorder::State> recording_{StatsRecorder::State::records};

    StatsRecorder recorder_;
    std::vector<PendingPing> pending_; ///< in the scoring window, oldest first
    std::unique_ptr<Pinger> pinger_;
    RunLoop::Handle pingTimer_; ///< only while a pinger has reported that it started
    RunLoop::Handle housekeepingTimer_;
    ConnectionWatchdog watchdog_;
    std::uint16_t identifier_;
    std::optional<double> lastPingSent_; ///< monotonic: setting the wall clock shall not hold up pinging
    std::uint64_t nextPingId_;
    int tickCount_ = 0; ///< since the last periodic save
    double evaluatedAt_;
    bool asleep_ = false;
    std::optional<std::string> lastPathKey_;
    RunLoop::Handle pathWork_; ///< the reaction to a path change, while it waits for the next change
    Lifeline lifeline_;
};

} // namespace tarnwick
