// Whose fault it is, as a report says it to people.
#pragma once

#include "core/Diagnosis/Verdict.h"

#include <string_view>

namespace tarnwick {

/// "Wi-Fi", "Beyond the provider".
[[nodiscard]] std::string_view blameText(Blame blame);

} // namespace tarnwick
