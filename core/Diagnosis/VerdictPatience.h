// How soon a verdict is said.
#pragma once

#include "core/Diagnosis/Evidence.h"
#include "core/Diagnosis/Verdict.h"

#include <optional>

namespace tarnwick {

/// Of a verdict, what is said `seconds` after the trouble has begun. While little is known, only what is
/// likely, or the load of the own line; while that is not measured, only what is certain. Who is `shown` to
/// be at fault stays named when that turns out to be only possible.
[[nodiscard]] std::optional<Verdict> sayable(
    const Verdict& verdict, Trouble trouble, double seconds, const std::optional<Verdict>& shown);

} // namespace tarnwick
