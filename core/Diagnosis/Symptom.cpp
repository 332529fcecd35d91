#include "core/Diagnosis/Symptom.h"

#include "core/Diagnosis/HopSamples.h"

#include <algorithm>
#include <array>
#include <ranges>

namespace tarnwick {

bool isSilentLately(const std::vector<HopSample>& pings) {
    constexpr std::size_t inARow = 3;
    const auto latestFirst = pings | std::views::reverse | std::views::take(inARow);
    return pings.size() >= inARow
           && std::ranges::none_of(latestFirst, [](const HopSample& one) { return one.ms.has_value(); });
}

Symptom symptomOf(const Evidence& evidence) {
    if (evidence.trouble == Trouble::down || isSilentLately(evidence.pings)) {
        return Symptom::silent;
    }
    constexpr double smallLoss = 0.05;
    return lostShare(evidence.pings).value_or(0) >= smallLoss ? Symptom::loses : Symptom::late;
}

std::string doingOf(const Evidence& evidence) {
    // In the order of symptoms.
    constexpr std::array doings{"does not answer", "loses answers", "answers late"};
    return doings.at(static_cast<std::size_t>(symptomOf(evidence)));
}

} // namespace tarnwick
