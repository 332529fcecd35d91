// The update settings in the settings window.
#pragma once

#include "app/Update/SoftwareUpdates.h"

#include <optional>
#include <string>

namespace tarnwick {

/// Observable, also while a check runs. Main thread.
class UpdateSettings {
public:
    /// The updates outlive this object.
    explicit UpdateSettings(SoftwareUpdates& updates) : updates_(updates) {}

    [[nodiscard]] bool checksAutomatically() const { return updates_.automaticallyChecksForUpdates(); }

    [[nodiscard]] bool installsAutomatically() const { return updates_.automaticallyDownloadsUpdates(); }

    /// Nothing before the first check.
    [[nodiscard]] std::optional<RunLoop::WallTime> lastChecked() const {
        return updates_.lastUpdateCheckDate();
    }

    [[nodiscard]] bool canCheck() const { return updates_.canCheckForUpdates(); }

    void setChecksAutomatically(bool checks) { updates_.setAutomaticallyChecksForUpdates(checks); }

    void setInstallsAutomatically(bool installs) { updates_.setAutomaticallyDownloadsUpdates(installs); }

    void checkNow() { updates_.checkForUpdates(); }

    /// Which server a check asks, and what happens with an update; before it, what went wrong the last time.
    [[nodiscard]] std::string explanation() const;

private:
    SoftwareUpdates& updates_;
};

} // namespace tarnwick
