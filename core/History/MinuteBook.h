// Books pings by the minute in which they were sent.
#pragma once

#include "core/History/History.h"

#include <map>
#include <optional>
#include <vector>

namespace tarnwick {

/// Of one host. Setting the clock back books more into minutes that were there before.
class MinuteBook {
public:
    /// `seconds` (up to a few) of pinging have passed until `now`.
    void watched(HistoryTime now, double seconds);
    void sent(HistoryTime at);
    /// The outcome of a ping that was sent at `at`.
    void replied(HistoryTime at, double ms);
    void lost(HistoryTime at);

    /// Pinging was interrupted: the next answer does not follow on the last one.
    void interrupted() { lastAnswerMs_.reset(); }

    [[nodiscard]] bool isEmpty() const { return minutes_.empty(); }

    /// All that was booked since it was last taken, by minutes in order. Parts of a minute that are taken at
    /// different times are to be merged.
    [[nodiscard]] std::vector<Period> booked() const;
    /// The same, which is forgotten then.
    [[nodiscard]] std::vector<Period> take();

private:
    [[nodiscard]] PeriodFigures& minuteOf(HistoryTime time);

    std::map<HistoryTime, PeriodFigures> minutes_;
    std::optional<double> lastAnswerMs_;
};

} // namespace tarnwick
