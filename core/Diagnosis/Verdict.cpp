#include "core/Diagnosis/Verdict.h"

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

} // namespace tarnwick
