// Sets of moments, as spans that neither overlap nor touch.
#pragma once

#include "core/History/Span.h"

#include <vector>

namespace tarnwick {

/// The same moments, in order and each once.
[[nodiscard]] std::vector<Span> united(std::vector<Span> spans);
/// Those of `spans` that are in none of `others`. Both may be in any order and overlap.
[[nodiscard]] std::vector<Span> without(std::vector<Span> spans, std::vector<Span> others);
/// What lies in `limits`.
[[nodiscard]] std::vector<Span> within(const std::vector<Span>& spans, const Span& limits);
/// Of spans that do not overlap.
[[nodiscard]] std::chrono::seconds lengthOf(const std::vector<Span>& spans);

} // namespace tarnwick
