#include "app/Update/UserAgent.h"

#include "core/Update/ReleaseVersion.h"

namespace tarnwick {

std::string userAgent(const UserAgentParts& parts) {
    const auto system = kernelVersion(parts.systemVersion);
    return "Tarnwick/" + parts.applicationVersion.value_or("0") + " " + parts.framework + "/"
           + parts.frameworkVersion.value_or("2") + " " + parts.system + "/"
           + (system ? system->text() : std::string("0.0"));
}

} // namespace tarnwick
