// Keeps a verdict from jumping to and fro.
#pragma once

#include "core/Diagnosis/Verdict.h"

#include <optional>

namespace tarnwick {

class SteadyVerdict {
public:
    /// Seconds for which a blame stays before another one takes its place.
    static constexpr double shortestStay = 10;

    /// Told what the evidence says at `now` (monotonic seconds), returns what is to be shown: the same blame
    /// with its latest sentence, another one only after the stay. `unclear` gives way at once. Nothing is
    /// shown as soon as nothing is wrong.
    [[nodiscard]] const std::optional<Verdict>& update(double now, const std::optional<Verdict>& verdict);

    [[nodiscard]] const std::optional<Verdict>& shown() const { return shown_; }

private:
    std::optional<Verdict> shown_;
    double since_ = 0; ///< of the blame that is shown
};

} // namespace tarnwick
