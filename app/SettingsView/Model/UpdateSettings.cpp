#include "app/SettingsView/Model/UpdateSettings.h"

namespace tarnwick {

std::string UpdateSettings::explanation() const {
    const std::string problem = updates_.lastProblem();
    return (problem.empty() ? "" : problem + " ") + "Once a day, Tarnwick asks " + updates_.serverDomain()
           + " whether a newer version exists. You are asked before an update is installed, unless you turn "
             "on automatic installs.";
}

} // namespace tarnwick
