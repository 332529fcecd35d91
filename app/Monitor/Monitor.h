// The model at the heart of both programs: it pings, judges, counts, and publishes what there is to show.
#pragma once

#include "app/Diagnostician/Diagnostician.h"
#include "app/Monitor/StatsRecorder.h"
#include "app/Observation/Observation.h"
#include "app/Preferences/Preferences.h"
#include "app/Reading/Reading.h"
#include "app/Recorder/Recorder.h"
#include "core/ConnectionWatchdog.h"
#include "core/Lifeline.h"
#include "core/PendingPing.h"
#include "core/PingLedger.h"
#include "core/Pinger/Pinger.h"
#include "core/RunLoop.h"
#include "platform/ports/NotificationCenter.h"
#include "platform/ports/PathMonitor.h"
#include "platform/ports/SleepMonitor.h"

#include <functional>
#include <limits>
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
    /// The shell command that lets this user ping; nothing when this user may.
    std::function<std::optional<std::string>()> missingPingPermission = nullptr;
    /// For finding out whose fault a bad connection is; nothing: that is not asked.
    std::optional<DiagnosisSources> diagnosis = std::nullopt;
    /// For the history; null: none is kept.
    Journal* journal = nullptr;
};

/// Pings, judges, counts, and publishes the outcome as one `Reading`. Main thread.
class Monitor {
public:
    using Status = ConnectionWatchdog::Status;

    /// `prefs` outlives the monitor.
    Monitor(Preferences& prefs, const MonitorEnvironment& environment);

    Monitor(const Monitor&) = delete;
    Monitor& operator=(const Monitor&) = delete;

    /// Called once.
    void start();
    /// Stores the all-time figures, if this process is the one that writes them, and the history. Waits for
    /// the disk. Failures are ignored.
    void saveStats();

    // Once started, the monitor follows its preferences, whatever sets them.

    /// Takes the host that `hostIn` finds in the text. No host, or the present one, is ignored.
    void setHostname(const std::string& text);
    void restoreDefaults();
    void resetSessionStats();
    /// Of the current host. Stored at once, or while another process records, when this one takes over.
    void resetAllTimeStats();

    /// Forgets all of the history, of every host. False when something of it may be left.
    bool clearHistory();

    /// Sends no pings, nothing for a verdict and no alerts, for these seconds or until `resume`. Time that
    /// the machine sleeps counts. A second pause takes the place of the first; a new host does not end it. A
    /// length that `PauseLength` does not admit is ignored.
    void pause(int seconds);
    /// Pings at once, unless there is no pause.
    void resume();
    /// Pauses for the usual time, or resumes.
    void togglePause();

    /// What kept pinging from starting may have gone: starts again within two seconds.
    void tryAgain();
    /// Asked for the permission to ping, an administrator or the desktop has not given it.
    void allowingFailed();

    /// Tells the user something beside the figures, in every front end. Takes the place of the last one of
    /// this kind. For what the monitor can't know: mistakes in the settings, no panel.
    void setNotice(const Notice& notice);
    void clearNotice(Notice::Kind kind);
    /// The notice about the settings file; none for no mistakes.
    void setSettingsMistakes(const std::vector<std::string>& mistakes);

    [[nodiscard]] Preferences& prefs() const { return prefs_; }

    /// What there is to show. Made afresh at the end of each event (a reply, a tick, a command, a change of a
    /// setting); observers are told only of real changes.
    [[nodiscard]] const Reading& reading() const { return reading_.get(); }

    [[nodiscard]] const Observed<Reading>& observedReading() const { return reading_; }

    /// What readings are made of. For tests; not observable.
    [[nodiscard]] const Measurements& measured() const { return measured_; }

    /// What is known of the host's past in `span`, up to this moment. Reads the disk, and writes nothing.
    [[nodiscard]] History history(const Span& span) const;
    /// Why it may be empty, as a sentence.
    [[nodiscard]] std::string whyNoHistory() const;

    /// Called at the end of every tick, with the reading published. `now` is the monotonic time of the
    /// judgment.
    std::function<void(double now)> onTick;

private:
    static constexpr double tickInterval = 1.0; ///< seconds
    /// Seconds that the network is given to come back after a sleep.
    static constexpr double restartAfterWake = 2.0;
    /// Seconds between a start of pinging and one for a new host: a host that changes all the time must not
    /// flood the network with lookups and pings.
    static constexpr double shortestRun = 1.0;
    static constexpr double never = std::numeric_limits<double>::infinity();

    // The ping loop.
    void restartPinger();
    void stopPinging();
    void schedulePingTimer();
    void sendPing();
    /// Adds one to the chart's, and drops those that have left it.
    void addSample(const Sample& sample);
    void handle(const Pinger::Event& happened);
    void pingsGoTo(const ResolvedAddress& address);
    void pingingStarted(const ResolvedAddress& address);
    void pingingFailed(const PingError& error);
    void receivedReply(std::uint64_t id, double at);
    /// Null when it has left the chart.
    [[nodiscard]] Sample* sampleOf(std::uint64_t id);

    // The judging.
    void tick();
    void judge(double now);
    /// After a time in which the program did not run; it did at `lastTick`.
    void startSilenceAnew(double lastTick, double now);
    /// Takes over the watchdog's verdict after a step, then does what the step asked for.
    void carryOut(const ConnectionWatchdog::Actions& actions);
    void carryOut(ConnectionWatchdog::Action action);
    void evaluate(double now);
    void markLost(std::uint64_t id);
    /// Whose fault it is.
    void diagnose(double now);
    [[nodiscard]] Trouble trouble() const;
    /// Drops the bookings of pings that have left the window: their outcome is never counted.
    void forgetUnsettledBookings();
    void makeDiagnostician();

    /// Publishes the reading when the outermost one is destroyed. They nest: a send that switches to another
    /// address belongs to the event that sent.
    class PublishAtEnd {
    public:
        explicit PublishAtEnd(Monitor& monitor) : monitor_(monitor) { ++monitor_.openEvents_; }

        PublishAtEnd(const PublishAtEnd&) = delete;
        PublishAtEnd& operator=(const PublishAtEnd&) = delete;

        // Only a lack of memory could throw, and it ends the program anyway.
        ~PublishAtEnd() { // NOLINT(bugprone-exception-escape)
            if (--monitor_.openEvents_ == 0) {
                monitor_.publish();
            }
        }

    private:
        Monitor& monitor_;
    };

    /// What there is to show at this moment.
    [[nodiscard]] Reading presentReading() const;
    void publish();

    // Commands.
    void saveStatsOf(const std::string& host, FileStore::Durability durability);
    void settingsChanged();
    /// Whether connection alerts are wanted, and about which host.
    void followAlerts();
    /// Whether a history is wanted, and of which host.
    void followHistory();
    /// How the connection is, as the history keeps it.
    [[nodiscard]] ConnectionState connectionState() const;
    void hostChanged();
    /// How good the connection is; the chart stays.
    void forgetQuality();
    /// Seconds until pinging may start anew, for another reason than the network's.
    [[nodiscard]] double restartDelay() const;
    /// Keeps the gap since the last ping.
    void pingIntervalChanged();
    void refreshWatchdogConfig();

    // System events.
    void observeSystemEvents();
    void willSleep();
    void didWake();
    void pathUpdated(const NetworkPath& path);
    void pathChanged(const std::string& key);

    // The pause.
    [[nodiscard]] bool isPaused() const { return measured_.pausedUntil.has_value(); }

    [[nodiscard]] bool isPauseOver() const;
    void beginPause();
    /// Pinging does not start by that.
    void endPause();
    void tickInPause();

    Preferences& prefs_;
    // The settings that the monitor last acted on.
    std::string host_;
    double pingInterval_ = 0; ///< seconds
    double pingTimeout_ = 0;  ///< seconds
    RunLoop& loop_;
    PingNetwork& network_;
    PathMonitor& pathMonitor_;
    SleepMonitor& sleepMonitor_;
    NotificationCenter& notifications_;
    std::function<std::optional<std::string>()> missingPingPermission_;

    Measurements measured_;
    Observed<Reading> reading_;
    StatsRecorder recorder_;
    Recorder history_;
    std::string interface_;            ///< of the way out; empty when there is none
    std::vector<PendingPing> pending_; ///< in the scoring window, oldest first
    std::optional<DiagnosisSources> sources_;
    std::optional<Diagnostician> diagnostician_; ///< while there are sources and no pause
    std::optional<ResolvedAddress> pinged_;      ///< the address
    std::optional<Lookup> lookup_;               ///< the latest, unless it was given up
    RunLoop::WallTime networkSince_{};           ///< when the network changed last
    std::unique_ptr<Pinger> pinger_;
    std::optional<Pinger::Place> place_; ///< where the last pinger stood; nothing for a new host
    RunLoop::Handle pingTimer_;          ///< only while a pinger has reported that it started
    RunLoop::Handle housekeepingTimer_;
    ConnectionWatchdog watchdog_;
    std::uint16_t identifier_;
    std::optional<double> lastPingSent_; ///< monotonic: setting the wall clock must not hold up pinging
    std::uint64_t nextPingId_;
    int openEvents_ = 0;              ///< instances of `PublishAtEnd`
    int tickCount_ = 0;               ///< since the last periodic save
    double lastTick_ = 0;             ///< monotonic, also while asleep
    double lastStart_ = -shortestRun; ///< monotonic, of pinging
    bool asleep_ = false;
    double pauseEnd_ = 0; ///< monotonic, in case the wall clock is set back
    std::optional<std::string> lastPathKey_;
    RunLoop::Handle pathWork_; ///< the pending reaction to a path change
    Lifeline lifeline_;
};

} // namespace tarnwick
