// One run of the program from a bundle: what comes before its first and after its last event.
#pragma once

#include "platform/bundle/BundleTrial.h"
#include "platform/bundle/PreparedUpdate.h"

#include <filesystem>
#include <string>
#include <vector>

namespace tarnwick {

/// `arguments` are those of a start in place of this one.
class BundleRun {
public:
    /// Looks how far an update has come. Where another version has to run instead of this one, the one before
    /// or one that is ready, that is started, and this call does not return.
    BundleRun(std::filesystem::path bundle, const std::vector<std::string>& arguments);

    [[nodiscard]] const std::filesystem::path& folder() const { return folder_.bundle(); }

    /// Of this version; outlives the run.
    [[nodiscard]] BundleTrial& trial() { return trial_; }

    /// What is to take this version's place; outlives the run.
    [[nodiscard]] PreparedUpdate& update() { return update_; }

    /// Nothing is left beside the bundle: neither what is ready, nor the version before, also within the
    /// trial.
    void forgetUpdates(RunLoop& loop);

    /// The program has ended as it should, and has saved what it had to. What is ready takes its place.
    void end();

    /// The same, and what is ready is started. Returns only where nothing is: then this version is in its
    /// place, to be started anew.
    void endForRestart(const std::vector<std::string>& arguments);

private:
    /// Whether a new version is in place.
    [[nodiscard]] bool exchange();
    void startNewVersion(const std::vector<std::string>& arguments);
    [[noreturn]] void goBackFrom(
        const ReleaseVersion& failed, const std::vector<std::string>& arguments) const;

    UpdateFolder folder_;
    BundleTrial trial_;
    PreparedUpdate update_;
};

} // namespace tarnwick
