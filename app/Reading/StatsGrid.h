// The statistics grid as texts: one row a figure, for the session and for all time.
#pragma once

#include "app/Reading/Format.h"
#include "core/StatCounter.h"

#include <array>
#include <string>

namespace tarnwick::StatsGrid {

struct Row {
    std::string label;
    std::string session;
    std::string allTime;

    /// For assistive technology.
    [[nodiscard]] std::string summary() const;
};

inline constexpr const char* sessionTitle = "Session";
inline constexpr const char* allTimeTitle = "All Time";
inline constexpr std::size_t rowCount = 6;

// Places of single rows.
inline constexpr std::size_t sentRow = 0;
inline constexpr std::size_t lostRow = 1;
inline constexpr std::size_t averageRow = 3;

[[nodiscard]] std::array<Row, rowCount> rows(
    const StatCounter& session, const StatCounter& allTime, const Format::Grouping& grouping);

} // namespace tarnwick::StatsGrid
