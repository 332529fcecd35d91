// A stretch of time by the wall clock.
#pragma once

#include <algorithm>
#include <chrono>

namespace tarnwick {

/// The history counts whole seconds of UTC.
using HistoryTime = std::chrono::sys_seconds;

/// From `from` up to, without, `to`.
struct Span {
    HistoryTime from{};
    HistoryTime to{};

    [[nodiscard]] bool isEmpty() const { return to <= from; }

    /// 0 for an empty one.
    [[nodiscard]] std::chrono::seconds length() const {
        return isEmpty() ? std::chrono::seconds{} : to - from;
    }

    [[nodiscard]] bool overlaps(const Span& other) const {
        return std::max(from, other.from) < std::min(to, other.to);
    }

    friend bool operator==(const Span&, const Span&) = default;
};

/// What both have; empty where that is nothing.
[[nodiscard]] inline Span common(const Span& one, const Span& other) {
    return {.from = std::max(one.from, other.from), .to = std::min(one.to, other.to)};
}

/// The last multiple of `step` (since 1970) up to this time.
[[nodiscard]] inline HistoryTime floorTo(HistoryTime time, std::chrono::seconds step) {
    const auto rest = time.time_since_epoch() % step;
    return time - (rest < std::chrono::seconds{} ? rest + step : rest);
}

} // namespace tarnwick
