// What there is to show of the connection, as one value. Every front end is a view of it.
#pragma once

#include "app/Reading/LatencyChart.h"
#include "app/Reading/Measurements.h"
#include "core/DownReason.h"

#include <optional>
#include <string>

namespace tarnwick {

/// Signal bars in every front end.
inline constexpr int barLevels = 5;

enum class QualityTone { neutral, good, middle, bad };

struct Reading {
    // The verdict.
    ConnectionWatchdog::Status status = ConnectionWatchdog::Status::starting;
    /// Until when nothing is pinged because the user wants it so; then nothing is known of the connection.
    std::optional<RunLoop::WallTime> pausedUntil = std::nullopt;
    std::optional<double> score = std::nullopt;
    int bars = 0; ///< lit, of `barLevels`; none without a score and while down
    QualityTone qualityTone = QualityTone::neutral;
    std::string qualityTitle{};
    std::optional<DownReason> downReason = std::nullopt; ///< absent unless down
    std::string downReasonText{}; ///< while not down, that of no replies: look at `downReason` first

    /// Whose fault it is; nothing while all is well.
    std::optional<Verdict> verdict = std::nullopt;
    std::vector<HopEvidence> path{}; ///< by which that was found

    // The host.
    std::string host{};
    std::optional<std::string> resolvedAddress = std::nullopt;
    std::string hostLine{}; ///< host and address; why the connection is down, while it is
    std::optional<PingError> startError = std::nullopt;
    bool pathSatisfied = true;

    // Latency and loss.
    std::optional<double> latestPingMs = std::nullopt;
    std::string latencyText{}; ///< "23 ms", "Down", or a dash while nothing is known
    double lossPercent = 0;
    bool lossIsKnown = false;
    bool showsLoss = false;
    std::optional<std::string> lossText = std::nullopt; ///< "3% loss"; absent while none is to be shown
    MenuBarTitle::LossMode lossTextMode = MenuBarTitle::LossMode::off; ///< for the status item's title

    // Texts made of several of these.
    std::string tooltip{};              ///< latest latency and recent loss, on two lines; also while down
    std::string accessibilitySummary{}; ///< for assistive technology

    // What was counted, and the last five minutes.
    StatCounter session{};
    StatCounter site{}; ///< of this host, for all time
    LatencyChart::Chart chart{};
    std::size_t samples = 0; ///< pings in the last five minutes
    Recording recording = Recording::records;

    // What the user should know or do, the most important first.
    Notices notices{};

    friend bool operator==(const Reading&, const Reading&) = default;

    [[nodiscard]] bool isDown() const { return status == ConnectionWatchdog::Status::down; }

    [[nodiscard]] bool isPaused() const { return pausedUntil.has_value(); }

    [[nodiscard]] bool isLossy() const { return lossPercent > 0; }

    /// The loss, unless it is unknown.
    [[nodiscard]] std::optional<double> knownLoss() const {
        return lossIsKnown ? std::optional(lossPercent) : std::nullopt;
    }

    /// The text of `startError`.
    [[nodiscard]] std::optional<std::string> lastError() const {
        return startError ? std::optional(startError->message()) : std::nullopt;
    }

    /// For the item in the panel: while down the reason with the error behind it, in a pause when that ends,
    /// else `tooltip`; then whose fault it is.
    [[nodiscard]] std::string itemToolTip() const;

    /// The text of the status item: "42ms", "42ms (3%)", "…", "Failed", "Paused".
    [[nodiscard]] std::string menuTitle(bool withLoss) const;
    /// The latency alone, for places too narrow for the title: "42", "1.2s", "…"; in a pause the sign of one;
    /// empty while down.
    [[nodiscard]] std::string figure() const;
};

/// `wallTime` is the end of the chart. Times of day are those of the system's time zone.
[[nodiscard]] Reading makeReading(
    const Measurements& measured, const ReadingSettings& settings, RunLoop::WallTime wallTime);

} // namespace tarnwick
