#include "core/History/Availability.h"

#include "core/History/Spans.h"

#include <algorithm>

namespace tarnwick {

namespace {

/// All that is known.
constexpr Span always{.from = HistoryTime::min(), .to = HistoryTime::max()};

/// Seconds of `spans`, in order and without overlaps, that lie in `limits`.
double secondsIn(const std::vector<Span>& spans, const Span& limits) {
    std::chrono::seconds sum{};
    auto span = std::ranges::upper_bound(spans, limits.from, {}, &Span::to);
    for (; span != spans.end() && span->from < limits.to; ++span) {
        sum += common(*span, limits).length();
    }
    return std::chrono::duration<double>(sum).count();
}

} // namespace

std::optional<double> Availability::percent() const {
    return watched > 0 ? std::optional(100 - down / watched * 100) : std::nullopt;
}

Availability availabilityIn(const History& history, const Span& span) {
    return AvailabilityFinder(history).in(span);
}

AvailabilityFinder::AvailabilityFinder(const History& history)
    : history_(history),
      down_(episodeSpansIn(history, always, Episode::Kind::outage)),
      paused_(gapsIn(history, always, Gap::Kind::paused)),
      asleep_(without(gapsIn(history, always, Gap::Kind::asleep), paused_)) {
}

Availability AvailabilityFinder::in(const Span& span) const {
    const double length = std::chrono::duration<double>(span.length()).count();
    Availability availability;
    // Setting the clock may have brought more pings into a minute than fit there.
    availability.watched = std::min(watchedSecondsIn(history_, span), length);
    availability.down = std::min(secondsIn(down_, span), availability.watched);
    availability.paused = secondsIn(paused_, span);
    availability.asleep = secondsIn(asleep_, span);
    availability.notWatched =
        std::max(length - availability.watched - availability.asleep - availability.paused, 0.0);
    return availability;
}

} // namespace tarnwick
