// How views learn that a model has changed: what a tracked function reads is registered, and the first real
// change of any of it runs a callback once.
#pragma once

#include "core/Lifeline.h"
#include "core/RunLoop.h"

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace tarnwick {

/// One run of a tracked function, waiting for the first change. Destroying it ends the wait.
class Tracking {
public:
    explicit Tracking(std::function<void()> onChange) : onChange_(std::move(onChange)) {}

    /// Runs the callback, the first time only.
    void changed();

private:
    std::function<void()> onChange_;
};

using TrackingHandle = std::shared_ptr<Tracking>;

/// Runs `apply` at once and then, when any property read in it really changes, `onChange`: once, in the
/// middle of that change, so it should only post. Nothing happens after the handle is gone. Main thread.
[[nodiscard]] TrackingHandle withTracking(const std::function<void()>& apply, std::function<void()> onChange);

/// Runs `apply` so that what it reads is not registered with the tracked function around it.
void withoutTracking(const std::function<void()>& apply);

/// The tracked functions that have read one property.
class Observers {
public:
    /// Registers the tracked function that is running, if any.
    void access();
    /// Tells those registered, and forgets them.
    void changed();

    [[nodiscard]] std::size_t count() const { return waiting_.size(); }

private:
    std::vector<std::weak_ptr<Tracking>> waiting_;
};

/// A property whose readers can be told of changes. An equal value is stored without telling anyone.
template<class T>
class Observed {
public:
    Observed() = default;

    explicit Observed(T value) : value_(std::move(value)) {}

    Observed(const Observed&) = delete;
    Observed& operator=(const Observed&) = delete;

    [[nodiscard]] const T& get() const {
        observers_.access();
        return value_;
    }

    void set(T value) {
        const bool isChange = !(value == value_);
        value_ = std::move(value);
        if (isChange) {
            observers_.changed();
        }
    }

    /// Changes the value in place; `change` tells whether it really changed anything.
    template<class Change>
    void mutate(Change change) {
        if (change(value_)) {
            observers_.changed();
        }
    }

private:
    T value_{};
    mutable Observers observers_; // registering a reader changes nothing that anyone can see
};

/// Runs a function now and again after each change of what it read, from the main queue: a burst of changes
/// costs one run. Ends with its owner.
class RenderLoop {
public:
    RenderLoop(RunLoop& loop, std::function<void()> render);

    RenderLoop(const RenderLoop&) = delete;
    RenderLoop& operator=(const RenderLoop&) = delete;

private:
    void run();

    RunLoop& loop_;
    std::function<void()> render_;
    TrackingHandle tracking_;
    Lifeline lifeline_;
};

} // namespace tarnwick
