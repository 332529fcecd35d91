// What the outages window shows of a history, as values and texts.
#pragma once

#include "core/History/Days.h"
#include "core/History/History.h"
#include "core/History/LocalTime.h"

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

/// In the calendar.
struct OutagesDay {
    DaySummary summary{};
    std::string date{}; ///< "Monday, 2026-11-23"
    std::string text{}; ///< the date and how the connection was then, for tool tips and to be read aloud
};

/// An outage, or a time in which the connection was poor.
struct OutagesRow {
    Episode::Kind kind = Episode::Kind::outage;
    Span span{};
    std::size_t day = 0;    ///< on which it began, or the first one
    std::string when{};     ///< "2026-11-23 14:05:09"
    std::string length{};   ///< "3 min 7 s"; "3 min 7 s so far"
    std::string blame{};    ///< "Provider (likely)"
    std::string evidence{}; ///< a sentence; empty when nothing is known

    /// All of it in one line, to be copied and to be read aloud.
    [[nodiscard]] std::string text() const;

    friend bool operator==(const OutagesRow&, const OutagesRow&) = default;
};

struct OutagesPage {
    static constexpr int dayCount = 90;
    static constexpr std::size_t today = dayCount - 1; ///< the last one

    std::vector<OutagesDay> days{}; ///< as many, up to today
    std::vector<OutagesRow> rows{}; ///< of these days, the newest first

    /// The row to show for a day: of its outages the newest, else of its other rows. Nothing for a good day.
    [[nodiscard]] std::optional<std::size_t> rowOf(std::size_t day) const;
};

/// From the first moment of the calendar until now.
[[nodiscard]] Span outagesSpan(HistoryTime now, const UtcOffset& offset);

[[nodiscard]] OutagesPage makeOutagesPage(const History& history, HistoryTime now, const UtcOffset& offset);

/// A figure of a day.
struct OutagesFigure {
    std::string name{};
    std::string value{};

    friend bool operator==(const OutagesFigure&, const OutagesFigure&) = default;
};

/// Three groups of as many: of times, of what was not watched or went wrong, of latencies.
inline constexpr std::size_t dayFigureGroup = 4;
inline constexpr std::size_t dayFigureCount = 3 * dayFigureGroup;

[[nodiscard]] std::vector<OutagesFigure> dayFigures(
    const History& history, const DaySummary& day, const UtcOffset& offset);

/// How the history is kept.
struct HistoryKeeping {
    std::string host{};
    bool isOn = true;
    std::string problem{}; ///< a sentence; empty while there is none
};

/// Since when something is known in `span`, and why no more is.
[[nodiscard]] std::string historyStatus(
    const History& history, const Span& span, const HistoryKeeping& keeping, const UtcOffset& offset);

} // namespace tarnwick
