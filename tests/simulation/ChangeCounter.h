// Counts how often an observer of a value is woken, and how often without a change.
#pragma once

#include "app/Observation/Observation.h"

#include <functional>
#include <utility>

namespace tarnwick::simulation {

template<class T>
class ChangeCounter {
public:
    explicit ChangeCounter(std::function<T()> read) : read_(std::move(read)) { observe(); }

    ChangeCounter(const ChangeCounter&) = delete;
    ChangeCounter& operator=(const ChangeCounter&) = delete;

    [[nodiscard]] int wakeUps() const { return wakeUps_; }

    /// Wake-ups after which the value was the same as before.
    [[nodiscard]] int falseAlarms() const { return falseAlarms_; }

private:
    void observe() {
        tracking_ = withTracking([this] { last_ = read_(); }, [this] { woken(); });
    }

    void woken() {
        const T before = std::move(last_);
        ++wakeUps_;
        observe();
        if (last_ == before) {
            ++falseAlarms_;
        }
    }

    std::function<T()> read_;
    T last_{};
    int wakeUps_ = 0;
    int falseAlarms_ = 0;
    TrackingHandle tracking_;
};

} // namespace tarnwick::simulation
