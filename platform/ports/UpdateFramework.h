// What replaces the program by its newer versions, with windows of its own.
#pragma once

#include "core/RunLoop.h"

#include <optional>
#include <string>

namespace tarnwick {

/// It keeps its settings by itself, and they may change behind the program's back. Main thread.
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

    /// Nothing before the first check.
    [[nodiscard]] virtual std::optional<RunLoop::WallTime> lastUpdateCheckDate() const = 0;

    /// Not while a check is under way.
    [[nodiscard]] virtual bool canCheckForUpdates() const = 0;
    /// Checks at once, and tells the user what comes out, also when that is nothing.
    virtual void checkForUpdates() = 0;

    /// The name of the domain that is asked for newer versions.
    [[nodiscard]] virtual std::string serverDomain() const = 0;
};

} // namespace tarnwick
