#include "core/Diagnosis/Verdict.h"

#include <algorithm>
#include <array>

namespace tarnwick {

std::string_view nameOf(Blame blame) {
    switch (blame) {
    case Blame::thisComputer:
        return "thisComputer";
    case Blame::wifi:
        return "wifi";
    case Blame::localNetwork:
        return "localNetwork";
    case Blame::provider:
        return "provider";
    case Blame::beyondProvider:
        return "beyondProvider";
    case Blame::host:
        return "host";
    case Blame::nameServer:
        return "nameServer";
    case Blame::signIn:
        return "signIn";
    case Blame::ownLoad:
        return "ownLoad";
    case Blame::unclear:
        break;
    }
    return "unclear";
}

std::string_view nameOf(Likelihood likelihood) {
    switch (likelihood) {
    case Likelihood::certain:
        return "certain";
    case Likelihood::likely:
        return "likely";
    case Likelihood::possible:
        break;
    }
    return "possible";
}

Blame blameNamed(std::string_view name) {
    constexpr std::array named{Blame::thisComputer, Blame::wifi,           Blame::localNetwork,
                               Blame::provider,     Blame::beyondProvider, Blame::host,
                               Blame::nameServer,   Blame::signIn,         Blame::ownLoad};
    const auto* const found = std::ranges::find(named, name, [](Blame blame) { return nameOf(blame); });
    return found != named.end() ? *found : Blame::unclear;
}

Likelihood likelihoodNamed(std::string_view name) {
    for (const Likelihood likelihood : {Likelihood::certain, Likelihood::likely}) {
        if (name == nameOf(likelihood)) {
            return likelihood;
        }
    }
    return Likelihood::possible;
}

} // namespace tarnwick
