#include "core/Diagnosis/VerdictPatience.h"

namespace tarnwick {

namespace {

/// Seconds of trouble before what is only possible is said. Where some answers are lost, chance needs longer
/// to even out; until then it is not clear.
constexpr double patienceWhenDown = 4;
constexpr double patienceWhenDegraded = 15;
constexpr double patienceForUnclear = 5;
/// Seconds of trouble, not of being down, in which nothing is said that load could explain as well.
constexpr double timeToMeasureLoad = 4;

} // namespace

std::optional<Verdict> sayable(
    const Verdict& verdict, Trouble trouble, double seconds, const std::optional<Verdict>& shown) {
    const bool isDown = trouble == Trouble::down;
    if (!isDown && seconds < timeToMeasureLoad) {
        return verdict.likelihood == Likelihood::certain ? std::optional(verdict) : std::nullopt;
    }
    const bool isNamed = shown && shown->blame != Blame::unclear;
    // The load is measured: more time would tell no more of it.
    const bool isReady = verdict.likelihood != Likelihood::possible || verdict.blame == Blame::ownLoad;
    if (isNamed || isReady || seconds >= (isDown ? patienceWhenDown : patienceWhenDegraded)) {
        return verdict;
    }
    return isDown || seconds < patienceForUnclear ? std::nullopt
                                                  : std::optional(Verdict{.evidence = notClearYet});
}

} // namespace tarnwick
