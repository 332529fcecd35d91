// How much of a time the connection was up.
#pragma once

#include "core/History/History.h"

#include <optional>
#include <vector>

namespace tarnwick {

/// In seconds. A time without pings is neither up nor down: the share is one of the watched time.
struct Availability {
    double watched = 0;
    double down = 0; ///< of the watched time
    double asleep = 0;
    double paused = 0;
    double notWatched = 0; ///< the rest: the program was not running, or pinged another host

    /// From 0 to 100; nothing where nothing was watched.
    [[nodiscard]] std::optional<double> percent() const;

    friend bool operator==(const Availability&, const Availability&) = default;
};

/// Of the time in `span`, which must not reach beyond what the history covers.
[[nodiscard]] Availability availabilityIn(const History& history, const Span& span);

/// The same for many spans: looks through the history once.
class AvailabilityFinder {
public:
    /// It outlives this object, and does not change.
    explicit AvailabilityFinder(const History& history);

    [[nodiscard]] Availability in(const Span& span) const;

private:
    const History& history_;
    // Each in order, without overlaps.
    std::vector<Span> down_; ///< gaps excluded
    std::vector<Span> paused_;
    std::vector<Span> asleep_; ///< pauses excluded
};

} // namespace tarnwick
