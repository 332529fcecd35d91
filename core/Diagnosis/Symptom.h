// What a bad connection does.
#pragma once

#include "core/Diagnosis/Evidence.h"

#include <string>
#include <vector>

namespace tarnwick {

enum class Symptom { silent, loses, late };

/// Whether the latest pings are lost: the connection may not be called down yet.
[[nodiscard]] bool isSilentLately(const std::vector<HopSample>& pings);

[[nodiscard]] Symptom symptomOf(const Evidence& evidence);

/// What is said of someone who does so: "does not answer", "loses answers", "answers late".
[[nodiscard]] std::string doingOf(const Evidence& evidence);

} // namespace tarnwick
