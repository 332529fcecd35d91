#include "app/Report/BlameText.h"

namespace tarnwick {

std::string_view blameText(Blame blame) {
    switch (blame) {
    case Blame::thisComputer:
        return "This computer";
    case Blame::wifi:
        return "Wi-Fi";
    case Blame::localNetwork:
        return "Local network";
    case Blame::provider:
        return "Provider";
    case Blame::beyondProvider:
        return "Beyond the provider";
    case Blame::host:
        return "The host";
    case Blame::nameServer:
        return "Name server";
    case Blame::signIn:
        return "Sign-in page";
    case Blame::ownLoad:
        return "The line's own load";
    case Blame::unclear:
        break;
    }
    return "Not clear";
}

} // namespace tarnwick
