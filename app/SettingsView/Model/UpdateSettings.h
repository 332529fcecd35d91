// The update settings in the settings window.
#pragma once

#include "app/Observation/Observation.h"
#include "platform/ports/UpdateFramework.h"

#include <optional>
#include <string>

namespace tarnwick {

/// A copy of the framework's settings, which are not observable themselves: as last read, or set here.
/// Observable. Main thread.
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

    /// Which server a check asks, and what happens with an update.
    [[nodiscard]] std::string explanation() const;

private:
    UpdateFramework& framework_;
    Observed<bool> checksAutomatically_;
    Observed<bool> installsAutomatically_;
    Observed<std::optional<RunLoop::WallTime>> lastChecked_;
};

} // namespace tarnwick
