// What is known of a host's past: figures by period, outages and degradations, gaps.
#pragma once

#include "core/Diagnosis/Verdict.h"
#include "core/History/PeriodFigures.h"
#include "core/History/Span.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tarnwick {

/// How long a period is. Young ones are minutes; see `RollUp.h`.
enum class PeriodLength { minute, quarterHour, hour };

inline constexpr std::array allPeriodLengths{
    PeriodLength::minute, PeriodLength::quarterHour, PeriodLength::hour};

[[nodiscard]] constexpr std::chrono::seconds secondsIn(PeriodLength length) {
    switch (length) {
    case PeriodLength::minute:
        return std::chrono::minutes(1);
    case PeriodLength::quarterHour:
        return std::chrono::minutes(15);
    case PeriodLength::hour:
        break;
    }
    return std::chrono::hours(1);
}

struct Period {
    HistoryTime start{}; ///< a multiple of its length since 1970
    PeriodLength length = PeriodLength::minute;
    PeriodFigures figures{};

    [[nodiscard]] Span span() const { return {.from = start, .to = start + secondsIn(length)}; }

    friend bool operator==(const Period&, const Period&) = default;
};

/// A time in which the connection was bad.
struct Episode {
    enum class Kind { outage, degradation };

    Kind kind = Kind::outage;
    HistoryTime start{};
    std::optional<HistoryTime> end{}; ///< nothing while it lasts
    std::optional<Verdict> verdict{}; ///< the last one that was reached
    std::string address{};            ///< that was pinged; empty when none was known
    std::string interface{};          ///< of the way out; empty when there was none
    std::int64_t pingsLost = 0;

    friend bool operator==(const Episode&, const Episode&) = default;
};

/// A time in which nothing was pinged. It counts neither as up nor as down.
struct Gap {
    enum class Kind { asleep, notRunning, paused };

    Kind kind = Kind::notRunning;
    Span span{};

    friend bool operator==(const Gap&, const Gap&) = default;
};

/// Of one host. Periods, episodes and gaps are in the order of their starts.
struct History {
    std::vector<Period> periods{};
    std::vector<Episode> episodes{};
    std::vector<Gap> gaps{}; ///< of every host
    HistoryTime until{};     ///< how far the history goes; an episode that lasts goes as far
};

/// An episode that lasts ends where the history does.
[[nodiscard]] Span spanOf(const Episode& episode, HistoryTime until);
/// How long the connection is known to have been bad: gaps do not count.
[[nodiscard]] std::chrono::seconds knownLength(const Episode& episode, const History& history);

/// The periods that overlap `span`; none of an empty one.
[[nodiscard]] std::span<const Period> periodsIn(const History& history, const Span& span);

/// The gaps of a kind, or of every kind, within `span`; each moment once.
[[nodiscard]] std::vector<Span> gapsIn(const History& history, const Span& span);
[[nodiscard]] std::vector<Span> gapsIn(const History& history, const Span& span, Gap::Kind kind);
/// When episodes of the kind lasted within `span`; gaps excluded, each moment once.
[[nodiscard]] std::vector<Span> episodeSpansIn(const History& history, const Span& span, Episode::Kind kind);

/// The figures of the periods that start in `span`, merged: each ping counts in one of adjacent spans.
[[nodiscard]] PeriodFigures figuresIn(const History& history, const Span& span);
/// How long the host was watched within `span`: of a period at its edge, the share that lies in it.
[[nodiscard]] double watchedSecondsIn(const History& history, const Span& span);

} // namespace tarnwick
