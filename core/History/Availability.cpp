#include "core/History/Availability.h"

#include "core/History/Spans.h"

#include <algorithm>

namespace tarnwick {

namespace {

double inSeconds(const std::vector<Span>& spans) {
    return std::chrono::duration<double>(lengthOf(spans)).count();
}

} // namespace

std::optional<double> Availability::percent() const {
    return watched > 0 ? std::optional(100 - down / watched * 100) : std::nullopt;
}

Availability availabilityIn(const History& history, const Span& span) {
    const double length = std::chrono::duration<double>(span.length()).count();
    Availability availability;
    // Setting the clock may have brought more pings into a minute than fit there.
    availability.watched = std::min(watchedSecondsIn(history, span), length);
    availability.down =
        std::min(inSeconds(episodeSpansIn(history, span, Episode::Kind::outage)), availability.watched);
    const std::vector<Span> paused = gapsIn(history, span, Gap::Kind::paused);
    availability.paused = inSeconds(paused);
    availability.asleep = inSeconds(without(gapsIn(history, span, Gap::Kind::asleep), paused));
    availability.notWatched =
        std::max(length - availability.watched - availability.asleep - availability.paused, 0.0);
    return availability;
}

} // namespace tarnwick
