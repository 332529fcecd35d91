// What is said of a fault on the path.
#pragma once

#include "core/Diagnosis/Evidence.h"

#include <cstddef>
#include <string>
#include <vector>

namespace tarnwick {

// `place` is that of the link at fault: the hop of the path that it leads to. It is not the first.

[[nodiscard]] std::string providerSentence(const Evidence& evidence, std::size_t place);
[[nodiscard]] std::string beyondSentence(const Evidence& evidence, std::size_t place);
/// The place is the last one.
[[nodiscard]] std::string hostSentence(const Evidence& evidence);
/// The home's router does not let through what is sent to the host.
[[nodiscard]] std::string forbiddenAtHomeSentence(const Evidence& evidence);
/// `well`: how many hops are surely well.
[[nodiscard]] std::string unclearSentence(std::size_t well, const std::vector<HopEvidence>& hops);

} // namespace tarnwick
