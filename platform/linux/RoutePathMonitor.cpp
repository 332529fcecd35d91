#include "platform/linux/RoutePathMonitor.h"

#include <algorithm>
#include <utility>

namespace tarnwick {

namespace {

// The kernel rounds a route's remaining time down to hundredths of a second.
constexpr double expiryMargin = 0.03;

} // namespace

RoutePathMonitor::RoutePathMonitor(RunLoop& loop, PathSource presentPath)
    : loop_(loop), presentPath_(std::move(presentPath)) {
}

void RoutePathMonitor::start(Update update) {
    update_ = std::move(update);
    if (changes_.isOpen()) {
        lookUpAfter(0);
    }
}

void RoutePathMonitor::readChanges() {
    if (changes_.take()) {
        // The rest of the burst does not wake the program: the look-up reads it.
        watch_.reset();
        lookUpAfter(settleTime);
    }
}

void RoutePathMonitor::lookUpAfter(double seconds) {
    timer_ = loop_.after(seconds, [this] { lookUp(); });
}

void RoutePathMonitor::lookUp() {
    timer_.reset();
    static_cast<void>(changes_.take());
    if (!watch_) {
        watch_ = loop_.watchReadable(changes_.descriptor(), [this] { readChanges(); });
    }
    const std::optional<RoutedPath> present = presentPath_();
    if (const auto seconds = nextLookUp(present)) {
        lookUpAfter(*seconds);
    }
    if (present) {
        wasExpiring_ = present->expiresIn.has_value();
        report(present->path);
    }
}

std::optional<double> RoutePathMonitor::nextLookUp(const std::optional<RoutedPath>& present) const {
    if (!present) {
        return slowInterval;
    }
    if (present->expiresIn) {
        return std::min(slowInterval, *present->expiresIn + expiryMargin);
    }
    if (wasExpiring_ && present->path.satisfied) {
        return expiryMargin; // in its last hundredth of a second the route looks as if it had no end
    }
    return watch_ ? std::nullopt : std::optional(slowInterval);
}

void RoutePathMonitor::report(const NetworkPath& path) {
    if (reported_ != path) {
        reported_ = path;
        update_(path);
    }
}

} // namespace tarnwick
