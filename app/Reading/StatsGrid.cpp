#include "app/Reading/StatsGrid.h"

#include "core/Text.h"

#include <functional>

namespace tarnwick::StatsGrid {

namespace {

std::string loss(const StatCounter& counter) {
    if (counter.sent < 1 || counter.lost == 0) {
        return "0%";
    }
    const double percent = static_cast<double>(counter.lost) / static_cast<double>(counter.sent) * 100;
    return Text::fixed(percent, 1) + "%";
}

std::string time(const StatCounter& counter, double ms) {
    if (counter.replied < 1) {
        return "–";
    }
    // On the same machine a round trip takes some hundredths of a millisecond, not none.
    constexpr double wouldRoundToZero = 0.05;
    const int digits = ms < wouldRoundToZero ? 2 : 1;
    return Text::fixed(ms, ms >= 100 ? 0 : digits) + " ms";
}

} // namespace

std::string Row::summary() const {
    return label + ": session " + session + ", all time " + allTime;
}

std::array<Row, rowCount> rows(
    const StatCounter& session, const StatCounter& allTime, const Format::Grouping& grouping) {
    const auto row = [&](const char* label, const std::function<std::string(const StatCounter&)>& text) {
        return Row{label, text(session), text(allTime)};
    };
    return {
        row("Pings sent", [&](const StatCounter& c) { return Format::integer(c.sent, grouping); }),
        row("Replies lost", [&](const StatCounter& c) { return Format::integer(c.lost, grouping); }),
        row("Packet loss", loss),
        row("Average", [](const StatCounter& c) { return time(c, c.averageMs); }),
        row("Fastest", [](const StatCounter& c) { return time(c, c.fastestMs); }),
        row("Slowest", [](const StatCounter& c) { return time(c, c.slowestMs); }),
    };
}

} // namespace tarnwick::StatsGrid
