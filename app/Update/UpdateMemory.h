// What the updater remembers of earlier feeds and versions, in a file beside the statistics.
#pragma once

#include "core/Update/ReleaseVersion.h"

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>

namespace tarnwick {

/// Each change is written at once. A file that can't be read counts as none, and one that can't be written
/// is not reported. Without it a feed older than the last one may be trusted, a version that did not run here
/// is found again, and the news is lost. Main thread.
class UpdateMemory {
public:
    explicit UpdateMemory(std::filesystem::path file);

    /// When the last feed that was trusted was signed, whether or not it had an update for this machine.
    [[nodiscard]] std::optional<std::chrono::sys_seconds> lastFeed() const { return lastFeed_; }

    void setLastFeed(std::chrono::sys_seconds signedAt);

    /// The version that was brought back from, since it did not run here.
    [[nodiscard]] std::optional<ReleaseVersion> rolledBack() const { return rolledBack_; }

    /// `running` is the version that is back. This is news.
    void setRolledBack(const ReleaseVersion& version, const ReleaseVersion& running);

    /// For the user, at the next start.
    void setNews(const std::string& text);
    /// Once. Empty where there are none.
    [[nodiscard]] std::string takeNews();

private:
    void load();
    void store() const;

    std::filesystem::path file_;
    std::optional<std::chrono::sys_seconds> lastFeed_;
    std::optional<ReleaseVersion> rolledBack_;
    std::string news_;
};

} // namespace tarnwick
