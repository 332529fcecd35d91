#include "app/Observation/Observation.h"

#include <algorithm>

namespace tarnwick {

namespace {

/// The tracked function that is running on this thread.
// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): reads have no other way to find it.
thread_local TrackingHandle current;

class CurrentTracking {
public:
    explicit CurrentTracking(TrackingHandle tracking) : outer_(std::exchange(current, std::move(tracking))) {}

    CurrentTracking(const CurrentTracking&) = delete;
    CurrentTracking& operator=(const CurrentTracking&) = delete;

    ~CurrentTracking() { current = std::move(outer_); }

private:
    TrackingHandle outer_;
};

bool refersTo(const std::weak_ptr<Tracking>& weak, const TrackingHandle& tracking) {
    return !weak.owner_before(tracking) && !tracking.owner_before(weak);
}

} // namespace

void Tracking::changed() {
    if (const auto callback = std::exchange(onChange_, nullptr)) {
        callback();
    }
}

TrackingHandle withTracking(const std::function<void()>& apply, std::function<void()> onChange) {
    auto tracking = std::make_shared<Tracking>(std::move(onChange));
    const CurrentTracking scope(tracking);
    apply();
    return tracking;
}

void withoutTracking(const std::function<void()>& apply) {
    const CurrentTracking scope(nullptr);
    apply();
}

void Observers::access() {
    if (!current) {
        return;
    }
    // A property that never changes is read again and again: drop the functions that no longer wait.
    std::erase_if(waiting_, [](const auto& weak) { return weak.expired(); });
    if (std::ranges::none_of(waiting_, [](const auto& weak) { return refersTo(weak, current); })) {
        waiting_.push_back(current);
    }
}

void Observers::changed() {
    for (const auto& weak : std::exchange(waiting_, {})) {
        if (const auto tracking = weak.lock()) {
            tracking->changed();
        }
    }
}

bool Observers::hasReaders() const {
    return std::ranges::any_of(waiting_, [](const auto& weak) { return !weak.expired(); });
}

RenderLoop::RenderLoop(RunLoop& loop, std::function<void()> render)
    : loop_(loop), render_(std::move(render)) {
    run();
}

void RenderLoop::run() {
    tracking_ = withTracking(render_, [this] { loop_.post(lifeline_.guarded([this] { run(); })); });
}

} // namespace tarnwick
