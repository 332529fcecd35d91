// Replaces the program by newer versions, with windows of its own.
#pragma once

#include "core/RunLoop.h"

#include <optional>
#include <string>

namespace tarnwick {

/// It stores its own settings; they may change at any time. Main thread.
class UpdateFramework {
public:
    UpdateFramework() = default;
    UpdateFramework(const UpdateFramework&) = delete;
    UpdateFramework& operator=(const UpdateFramework&) = delete;
    virtual ~UpdateFramework() = default;

    [[nodiscard]] virtual bool automaticallyChecksForUpdates() const = 0;
    virtual void setAutomaticallyChecksForUpdates(bool checks) = 0;

    [[nodiscard]] virtual bool automaticallyDownloadsUpdates() const = 0;
    virtual void setAutomaticallyDownloadsUpdates(bool downloads) = 0;

    /// Empty before the first check.
    [[nodiscard]] virtual std::optional<RunLoop::WallTime> lastUpdateCheckDate() const = 0;

    /// False during a check.
    [[nodiscard]] virtual bool canCheckForUpdates() const = 0;
    /// Checks now and shows the user the result, also when there is no update.
    virtual void checkForUpdates() = 0;

    /// The domain that newer versions come from.
    [[nodiscard]] virtual std::string serverDomain() const = 0;
};

} // namespace tarnwick
