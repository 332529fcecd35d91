#include "core/History/MinuteBook.h"

#include <cmath>
#include <utility>

namespace tarnwick {

void MinuteBook::watched(HistoryTime now, double seconds) {
    minuteOf(now).watchedSeconds += seconds;
}

void MinuteBook::sent(HistoryTime at) {
    ++minuteOf(at).sent;
}

void MinuteBook::replied(HistoryTime at, double ms) {
    PeriodFigures& figures = minuteOf(at);
    figures.addAnswer(ms);
    if (const auto before = std::exchange(lastAnswerMs_, ms)) {
        figures.addDifference(std::abs(ms - *before));
    }
}

void MinuteBook::lost(HistoryTime at) {
    ++minuteOf(at).lost;
}

std::vector<Period> MinuteBook::booked() const {
    std::vector<Period> periods;
    periods.reserve(minutes_.size());
    for (const auto& [start, figures] : minutes_) {
        periods.push_back({.start = start, .length = PeriodLength::minute, .figures = figures});
    }
    return periods;
}

std::vector<Period> MinuteBook::take() {
    std::vector<Period> periods = booked();
    minutes_.clear();
    return periods;
}

PeriodFigures& MinuteBook::minuteOf(HistoryTime time) {
    return minutes_[floorTo(time, secondsIn(PeriodLength::minute))];
}

} // namespace tarnwick
