// Newer versions of the program, as the status item and the settings window see them.
#pragma once

#include "core/RunLoop.h"

#include <optional>
#include <string>

namespace tarnwick {

/// What it tells is observable. Main thread.
class SoftwareUpdates {
public:
    SoftwareUpdates() = default;
    SoftwareUpdates(const SoftwareUpdates&) = delete;
    SoftwareUpdates& operator=(const SoftwareUpdates&) = delete;
    virtual ~SoftwareUpdates() = default;

    [[nodiscard]] virtual bool automaticallyChecksForUpdates() const = 0;
    virtual void setAutomaticallyChecksForUpdates(bool checks) = 0;

    [[nodiscard]] virtual bool automaticallyDownloadsUpdates() const = 0;
    virtual void setAutomaticallyDownloadsUpdates(bool downloads) = 0;

    /// When a feed was trusted the last time. Empty before the first one.
    [[nodiscard]] virtual std::optional<RunLoop::WallTime> lastUpdateCheckDate() const = 0;

    /// Why the last check or update failed, as a sentence for users. Empty when it did not.
    [[nodiscard]] virtual std::string lastProblem() const = 0;

    /// False while the user is shown a check or an update that is under way.
    [[nodiscard]] virtual bool canCheckForUpdates() const = 0;
    /// Checks now and shows the user the result, also when there is no update. What is under way already, or
    /// waits for the user, is shown instead.
    virtual void checkForUpdates() = 0;

    /// The domain or IP address that newer versions come from.
    [[nodiscard]] virtual std::string serverDomain() const = 0;
};

} // namespace tarnwick
