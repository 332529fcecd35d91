// From evidence to a verdict. docs/diagnosis.md tells the reason of each rule.
#pragma once

#include "core/Diagnosis/Evidence.h"
#include "core/Diagnosis/Verdict.h"

#include <optional>

namespace tarnwick {

/// Nothing while all is well. Pure.
[[nodiscard]] std::optional<Verdict> diagnose(const Evidence& evidence);

} // namespace tarnwick
