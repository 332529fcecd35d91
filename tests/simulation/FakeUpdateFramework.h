// An update framework that keeps what it is told and counts what it is asked for.
#pragma once

#include "platform/ports/UpdateFramework.h"

#include <optional>
#include <string>

namespace tarnwick::simulation {

class FakeUpdateFramework final : public UpdateFramework {
public:
    [[nodiscard]] bool automaticallyChecksForUpdates() const override { return checks; }

    void setAutomaticallyChecksForUpdates(bool wanted) override { checks = wanted; }

    [[nodiscard]] bool automaticallyDownloadsUpdates() const override { return downloads; }

    void setAutomaticallyDownloadsUpdates(bool wanted) override { downloads = wanted; }

    [[nodiscard]] std::optional<RunLoop::WallTime> lastUpdateCheckDate() const override { return lastCheck; }

    [[nodiscard]] bool canCheckForUpdates() const override { return canCheck; }

    void checkForUpdates() override { ++checksAskedFor; }

    [[nodiscard]] std::string serverDomain() const override { return "updates.example"; }

    bool checks = false;
    bool downloads = false;
    bool canCheck = true;
    std::optional<RunLoop::WallTime> lastCheck;
    int checksAskedFor = 0;
};

} // namespace tarnwick::simulation
