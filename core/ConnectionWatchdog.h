// Decides when the connection is down or up, when the pinger is restarted, and what is announced.
#pragma once

#include <optional>
#include <vector>

namespace tarnwick {

/// A state machine without timers, clock, input or output: told what happens and when, it returns the actions
/// to carry out, in order. All times are monotonic seconds.
class ConnectionWatchdog {
public:
    struct Config {
        double replyTimeout;       ///< silence after pinging started that means down
        double maxSilence;         ///< silence that means down even when pinging never started
        double grace;              ///< after a reset or network change: a failed start is retried
        double retryDelay;         ///< before such a retry
        double minRestartInterval; ///< least time between two restarts
        double maxRestartInterval; ///< upper limit of the back-off
        double resolutionTimeout;  ///< longest time a restart may stay unresolved

        /// From the user's settings.
        [[nodiscard]] static Config original(double timeout, double pingInterval);

        friend bool operator==(const Config&, const Config&) = default;
    };

    enum class Status { starting, up, down };

    enum class Action {
        restartPinger, ///< stop it, start it, then report `pingingStarted` or `startFailed`
        startTimedOut, ///< stop the pinger; the watchdog already counts this start as failed
        announceDown,
        announceUp,
    };
    using Actions = std::vector<Action>;

    /// Begins an episode at `now`. Before the first `reset`, only a long silence asks for a restart.
    ConnectionWatchdog(const Config& config, double now);

    /// Begins a new episode, with a restart after `restartAfter`. A new host drops an owed `announceUp`.
    [[nodiscard]] Actions reset(double now, double restartAfter, bool newHost);
    void pingingStarted(double now);
    [[nodiscard]] Actions startFailed(double now);
    [[nodiscard]] Actions replyReceived(double now);
    [[nodiscard]] Actions networkChanged(double now);
    /// The program has not run for a while, and runs again at `now`: that it heard nothing says nothing of
    /// the connection. Silence, grace and the time of a lookup begin anew; the status stays.
    void heldUp(double now);
    [[nodiscard]] Actions tick(double now);

    void setConfig(const Config& config) { config_ = config; }

    /// Whether `announceDown` and `announceUp` are returned. Turning this on announces nothing past.
    void setAlertsEnabled(bool enabled) { alertsEnabled_ = enabled; }

    [[nodiscard]] Status status() const { return status_; }

    [[nodiscard]] bool isResolving() const { return isResolving_; }

private:
    void goDown(Actions& actions);
    void scheduleRestartNoLaterThan(double time);
    [[nodiscard]] bool isTooSilent(double now) const;
    void giveUpStalledStart(double now, Actions& actions);
    void restartIfDue(double now, bool isRecovery, Actions& actions);

    Config config_;
    bool alertsEnabled_ = false;
    Status status_ = Status::starting;
    bool isResolving_ = false; ///< since `restartPinger`, until the pinger has started or failed
    std::optional<double> lastReplyAt_;
    double episodeStart_;
    std::optional<double> pingingSince_; ///< the first start of pinging in this episode
    double graceUntil_;
    bool confirmed_ = false;     ///< this host has replied at least once
    bool downAnnounced_ = false; ///< `announceUp` is still to come
    std::optional<double> restartDue_;
    std::optional<double> lastRestart_; ///< latest `restartPinger`, start or failed start
    double restartBackoff_ = 0;         ///< while down: from one recovery restart to the next
};

} // namespace tarnwick
