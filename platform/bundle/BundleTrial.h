// The first minute of a new version: what has to run before the old one is given up.
#pragma once

#include "core/RunLoop.h"
#include "core/Storage/WriterLock.h"
#include "platform/bundle/UpdateFolder.h"

#include <filesystem>
#include <optional>

namespace tarnwick {

/// Puts the old version back. The new version's number; nothing where that is not possible.
[[nodiscard]] std::optional<ReleaseVersion> bringBack(const UpdateFolder& folder);

/// One start of the program in a bundle. Owned by `main`; outlives what it starts.
class BundleTrial {
public:
    /// Seconds that a new version has to run.
    static constexpr double length = 60;

    /// Looks how far an update has come, and removes what is left of one that did not come far. What is ready
    /// to take this version's place stays.
    explicit BundleTrial(UpdateFolder folder);
    BundleTrial(const BundleTrial&) = delete;
    BundleTrial& operator=(const BundleTrial&) = delete;
    ~BundleTrial() = default;

    /// The version that ended in its trial, when this start has to be that of the old version instead: it is
    /// in the bundle's place again, and is to be started.
    [[nodiscard]] const std::optional<ReleaseVersion>& broughtBackFrom() const { return broughtBackFrom_; }

    /// Whether this version is on trial.
    [[nodiscard]] bool isOn() const { return lock_.has_value(); }

    /// It has run for long enough: the old version is removed, off the main thread.
    void pass(RunLoop& loop);
    /// It ends as it should. If it was on trial, the next start goes on with that.
    void endWell();

private:
    void lookAt(const UpdateRecord& record);

    UpdateFolder folder_;
    std::optional<WriterLock> lock_; ///< while this version is on trial
    std::optional<ReleaseVersion> broughtBackFrom_;
};

} // namespace tarnwick
