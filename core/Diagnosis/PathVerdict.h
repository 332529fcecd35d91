// The verdict from what the hops of the path have answered.
#pragma once

#include "core/Diagnosis/Evidence.h"
#include "core/Diagnosis/Verdict.h"

#include <optional>

namespace tarnwick {

/// Nothing where the path is not known up to the host. May be `unclear`.
[[nodiscard]] std::optional<Verdict> pathVerdict(const Evidence& evidence);

/// The router's silence, delay or loss, as a sentence about Wi-Fi where that explains it.
[[nodiscard]] Verdict localVerdict(const Evidence& evidence, Likelihood likelihood);

} // namespace tarnwick
