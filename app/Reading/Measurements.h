// What has been measured and judged so far: the input of `makeReading`.
#pragma once

#include "app/Reading/Notice.h"
#include "core/ConnectionWatchdog.h"
#include "core/Diagnosis/Evidence.h"
#include "core/Diagnosis/Verdict.h"
#include "core/MenuBarTitle.h"
#include "core/PingError.h"
#include "core/PingLedger.h"
#include "core/RunLoop.h"

#include <cstddef>
#include <deque>
#include <optional>
#include <string>

namespace tarnwick {

/// One ping of the latency chart.
struct Sample {
    std::uint64_t id = 0;
    RunLoop::WallTime date{}; ///< when it was sent
    std::optional<double> rttMs = std::nullopt;
    bool lost = false;

    friend bool operator==(const Sample&, const Sample&) = default;
};

using Samples = std::deque<Sample>;

/// Whether this process writes the all-time statistics.
enum class Recording {
    records,      ///< it does
    otherRecords, ///< another process does; nothing is written here
    cannotRecord, ///< nothing can be written in that folder
};

struct Measurements {
    ConnectionWatchdog::Status status = ConnectionWatchdog::Status::starting;
    std::optional<double> score = std::nullopt;
    std::optional<double> latestPingMs = std::nullopt;
    double lossPercent = 0;
    bool lossIsKnown = false;
    std::optional<std::string> resolvedAddress = std::nullopt;
    std::optional<PingError> startError = std::nullopt;
    /// What lets this user ping; nothing unless the lack of this permission caused `startError`.
    std::optional<std::string> pingPermissionCommand = std::nullopt;
    bool allowingFailed = false; ///< the user has asked for this permission, in vain
    bool pathSatisfied = true;
    std::optional<RunLoop::WallTime> pausedUntil = std::nullopt; ///< nothing while pinging
    std::optional<Verdict> verdict = std::nullopt;               ///< nothing while all is well
    std::vector<HopEvidence> path{};                             ///< by which it was found
    Samples samples{}; ///< of the last 300 s, in the order of sending
    PingLedger ledger{};
    Recording recording = Recording::records;
    std::string recordingProblem{}; ///< why the statistics could not be written last; empty when they were
    std::string unreadableStats{};  ///< path of a statistics file that was kept aside; empty when none was
    std::size_t surplusHosts = 0;   ///< whose statistics are not stored, as there are too many
    std::string historyProblem{};   ///< a sentence about the history; empty while all is well
    Notices notices{};              ///< that the rest of the program has set
};

/// The settings that decide what is shown.
struct ReadingSettings {
    std::string hostname{};
    double slowPingThresholdMs = 0;
    double pingTimeout = 0;  ///< seconds
    double pingInterval = 0; ///< seconds
    MenuBarTitle::LossMode lossTextMode = MenuBarTitle::LossMode::off;
};

} // namespace tarnwick
