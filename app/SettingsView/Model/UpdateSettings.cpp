#include "app/SettingsView/Model/UpdateSettings.h"

namespace tarnwick {

void UpdateSettings::refresh() {
    checksAutomatically_.set(framework_.automaticallyChecksForUpdates());
    installsAutomatically_.set(framework_.automaticallyDownloadsUpdates());
    lastChecked_.set(framework_.lastUpdateCheckDate());
}

void UpdateSettings::setChecksAutomatically(bool checks) {
    checksAutomatically_.set(checks);
    framework_.setAutomaticallyChecksForUpdates(checks);
}

void UpdateSettings::setInstallsAutomatically(bool installs) {
    installsAutomatically_.set(installs);
    framework_.setAutomaticallyDownloadsUpdates(installs);
}

std::string UpdateSettings::explanation() const {
    return "Once a day, Tarnwick asks " + framework_.serverDomain()
           + " whether a newer version exists. You are asked before an update is installed, unless you turn "
             "on automatic installs.";
}

} // namespace tarnwick
