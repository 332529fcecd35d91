#include "platform/linux/RoutePathMonitor.h"

#include <algorithm>
#include <utility>

namespace tarnwick {

namespace {

// The kernel tells the time that a route has left in hundredths of a second, rounded down.
constexpr double expiryMargin = 0.03;

} // namespace

RoutePathMonitor::RoutePathMonitor(RunLoop& loop, LookUp lookUp) : loop_(loop), lookUp_(std::move(lookUp)) {
}

void RoutePathMonitor::start(Update update) {
    update_ = std::move(update);
    if (changes_.isOpen()) {
        lookUpAfter(0);
    }
}

void RoutePathMonitor::changesWait() {
    if (changes_.take()) {
        // What the burst still brings need not wake the program: the look-up takes it all.
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
        watch_ = loop_.watchReadable(changes_.descriptor(), [this] { changesWait(); });
    }
    const std::optional<RoutedPath> present = lookUp_();
    const std::optional<double> expiresIn = present ? present->expiresIn : std::nullopt;
    if (expiresIn || !present || !watch_) {
        lookUpAfter(std::min(slowInterval, expiresIn.value_or(slowInterval) + expiryMargin));
    }
    if (present) {
        tell(present->path);
    }
}

void RoutePathMonitor::tell(const NetworkPath& path) {
    if (told_ && told_->satisfied == path.satisfied && told_->interfaces == path.interfaces) {
        return;
    }
    told_ = path;
    update_(path);
}

} // namespace tarnwick
