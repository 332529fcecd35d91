// A question to the system that is asked again and again while something is wrong.
#pragma once

#include "core/Lifeline.h"

#include <functional>
#include <optional>
#include <utility>

namespace tarnwick {

/// Keeps the latest answer. One that comes after `forget`, or after the next question, changes nothing. Main
/// thread.
template<class Result>
class RepeatedQuestion {
public:
    using Answer = std::function<void(const Result&)>;

    /// `interval`: least seconds from one question to the next.
    explicit RepeatedQuestion(double interval) : interval_(interval) {}

    /// `ask` is handed the function to answer to, if it is time for a question. Returns whether it was.
    template<class Ask>
    bool askWhenDue(double now, Ask ask) {
        if (askedAt_ && now - *askedAt_ < interval_) {
            return false;
        }
        askedAt_ = now;
        ask(Answer(lifeline_.guarded([this, number = ++number_](const Result& result) {
            if (number == number_) {
                result_ = result;
            }
        })));
        return true;
    }

    /// The next question may be asked at once.
    void forget() {
        ++number_;
        askedAt_.reset();
        result_ = {};
    }

    /// Empty until there is one.
    [[nodiscard]] const Result& latest() const { return result_; }

private:
    double interval_;
    std::optional<double> askedAt_;
    unsigned number_ = 0; ///< of the latest question
    Result result_{};
    Lifeline lifeline_;
};

} // namespace tarnwick
