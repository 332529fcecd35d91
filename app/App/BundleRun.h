// One run of the program from a bundle: what comes before its first and after its last event.
#pragma once

#include "platform/bundle/BundleTrial.h"

#include <filesystem>
#include <string>
#include <vector>

namespace tarnwick {

/// `arguments` are those of a start in place of this one.
class BundleRun {
public:
    /// Looks how far an update has come. Where the version that ran last has to give way to the one before,
    /// that is started, and this call does not return.
    BundleRun(std::filesystem::path bundle, const std::vector<std::string>& arguments);

    [[nodiscard]] const std::filesystem::path& folder() const { return folder_.bundle(); }

    /// Of this version; outlives the run.
    [[nodiscard]] BundleTrial& trial() { return trial_; }

    /// The program has ended as it should, and has saved what it had to.
    void endWell();

    /// The same, with an update that is ready: it takes the place of this version.
    void endWithUpdate();

    /// The same, and the new version is started. Returns only where it can't be: then this version is in its
    /// place again, to be started anew.
    void restartWithUpdate(const std::vector<std::string>& arguments);

private:
    /// Whether the new version is in place.
    [[nodiscard]] bool exchange();

    UpdateFolder folder_;
    BundleTrial trial_;
};

} // namespace tarnwick
