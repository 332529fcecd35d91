// Pings from their sending to their outcome: the minutes that they make, and the silence between answers.
#pragma once

#include "core/History/MinuteBook.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace tarnwick {

/// Pings that nothing was answered to since the last answer.
struct Silence {
    HistoryTime since{};   ///< when the first of them was sent; the last answer if none was
    std::int64_t lost = 0; ///< of them
};

/// Ids rise with every ping.
class PingBook {
public:
    /// One that is not counted makes no minute.
    void sent(std::uint64_t id, bool isCounted, HistoryTime now);
    /// After the time-out it counts as lost.
    void replied(std::uint64_t id, double ms, bool isWithinTimeout, HistoryTime now);
    /// Returns when it was sent; nothing for one that has an outcome, or was forgotten.
    std::optional<HistoryTime> lost(std::uint64_t id);

    /// `seconds` of pinging have passed until `now`.
    void watched(HistoryTime now, double seconds) { minutes_.watched(now, seconds); }

    /// What has no outcome yet gets none, and a silence begins now.
    void interrupted(HistoryTime now);
    void clockSetBack(HistoryTime now);

    [[nodiscard]] Silence silence() const;

    /// Since they were last taken; parts of a minute are to be merged.
    [[nodiscard]] std::vector<Period> minutes() const { return minutes_.booked(); }

    [[nodiscard]] std::vector<Period> takeMinutes() { return minutes_.take(); }

private:
    /// How many pings wait for their outcome at most: with the longest time-out, one a second.
    static constexpr std::size_t mostUnsettled = 4096;

    struct Ping {
        HistoryTime date{};
        bool isCounted = false;
    };

    /// Pings that were lost since the last answer.
    struct Losses {
        std::uint64_t first = 0;
        HistoryTime since{}; ///< when that one was sent
        std::int64_t count = 0;
    };

    std::optional<Ping> settle(std::uint64_t id);

    MinuteBook minutes_;
    std::map<std::uint64_t, Ping> unsettled_;
    std::uint64_t lastAnswered_ = 0;
    std::optional<Losses> losses_;
    HistoryTime lastSign_{}; ///< when the last answer came, or what is watched began
};

} // namespace tarnwick
