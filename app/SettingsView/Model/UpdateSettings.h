// How the program is kept up to date, as the settings window shows and changes it.
#pragma once

#include "app/Observation/Observation.h"
#include "platform/ports/UpdateFramework.h"

#include <optional>
#include <string>

namespace tarnwick {

/// A mirror of the framework's settings, which tells nobody of its changes: as they were when they were last
/// read, or set here. Observable. Main thread.
class UpdateSettings {
public:
    /// The framework outlives this object. Nothing is read yet.
    explicit UpdateSettings(UpdateFramework& framework) : framework_(framework) {}

    /// Reads everything afresh.
    void refresh();

    [[nodiscard]] bool checksAutomatically() const { return checksAutomatically_.get(); }

    [[nodiscard]] bool installsAutomatically() const { return installsAutomatically_.get(); }

    /// Nothing before the first check.
    [[nodiscard]] const std::optional<RunLoop::WallTime>& lastChecked() const { return lastChecked_.get(); }

    void setChecksAutomatically(bool checks);
    void setInstallsAutomatically(bool installs);

    void checkNow() { framework_.checkForUpdates(); }

    /// What a check tells to whom, and what comes of it.
    [[nodiscard]] std::string explanation() const;

private:
    UpdateFramework& framework_;
    Observed<bool> checksAutomatically_;
    Observed<bool> installsAutomatically_;
    Observed<std::optional<RunLoop::WallTime>> lastChecked_;
};

} // namespace tarnwick
