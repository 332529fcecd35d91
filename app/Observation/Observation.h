// How views learn that a model has changed: a tracked function registers what it reads, and the first real
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

/// Runs `apply` now. The first real change of a property that it read runs `onChange`, once, in the middle of
/// that change: so it should only post. Destroying the handle ends it. Main thread.
[[nodiscard]] TrackingHandle withTracking(const std::function<void()>& apply, std::function<void()> onChange);

/// Runs `apply` without registering what it reads with the tracked function around it.
void withoutTracking(const std::function<void()>& apply);

/// The tracked functions that have read one property.
class Observers {
public:
    /// Registers the tracked function that is running, if any.
    void access();
    /// Tells and forgets the registered functions.
    void changed();

    /// How many are registered, also those that have ended. For tests.
    [[nodiscard]] std::size_t count() const { return waiting_.size(); }

    /// Whether any registered function still waits.
    [[nodiscard]] bool hasReaders() const;

private:
    std::vector<std::weak_ptr<Tracking>> waiting_;
};

/// A property that tells its readers of changes. Setting an equal value tells no reader.
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

    /// Returns whether the value has really changed.
    bool set(T value) {
        const bool isChange = !(value == value_);
        value_ = std::move(value);
        if (isChange) {
            observers_.changed();
        }
        return isChange;
    }

    /// Changes the value in place. `change` returns whether the value really differs.
    template<class Change>
    void mutate(Change change) {
        if (change(value_)) {
            observers_.changed();
        }
    }

private:
    T value_{};
    mutable Observers observers_; // registering a reader does not change the value
};

/// A value made of observed ones. Its readers are told only when it differs, however often its sources
/// change. It follows its sources only while it has readers.
template<class T>
class Derived {
public:
    /// `make` reads the sources. It runs in the middle of their changes, so it must not change any.
    explicit Derived(std::function<T()> make) : make_(std::move(make)) {}

    Derived(const Derived&) = delete;
    Derived& operator=(const Derived&) = delete;

    [[nodiscard]] const T& get() const {
        observers_.access();
        if (!sources_) {
            follow();
        }
        return value_;
    }

private:
    void follow() const {
        sources_ = withTracking([this] { value_ = make_(); }, [this] { sourceChanged(); });
    }

    void sourceChanged() const {
        if (!observers_.hasReaders()) {
            sources_.reset();
            return;
        }
        const T before = value_;
        follow();
        if (!(value_ == before)) {
            observers_.changed();
        }
    }

    std::function<T()> make_;
    // Made when it is read.
    mutable T value_{};
    mutable TrackingHandle sources_;
    mutable Observers observers_;
};

/// Runs a function now, and again after each change of what it read. It runs from the main queue, so a burst
/// of changes costs one run. Ends with its owner.
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
