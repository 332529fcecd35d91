#include "core/Diagnosis/SteadyVerdict.h"

namespace tarnwick {

const std::optional<Verdict>& SteadyVerdict::update(double now, const std::optional<Verdict>& verdict) {
    const bool isSame = shown_ && verdict && shown_->blame == verdict->blame;
    const bool mayChange =
        !shown_ || !verdict || shown_->blame == Blame::unclear || now - since_ >= shortestStay;
    if (isSame) {
        shown_ = verdict;
    } else if (mayChange) {
        shown_ = verdict;
        since_ = now;
    }
    return shown_;
}

} // namespace tarnwick
