// Starts a new version with an eye on it.
#pragma once

#include "platform/bundle/UpdateFolder.h"

#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

/// Starts the program in the bundle's place instead of this process, which has ended its work, and leaves a
/// process of the running version behind. The call returns only there, when the trial is over. If the new
/// version ended in it without a word, the old one is in the bundle's place again, and this is the number of
/// the new one: the old one is to be started.
[[nodiscard]] std::optional<ReleaseVersion> startOnTrial(
    const UpdateFolder& folder, const std::vector<std::string>& arguments);

/// The desktop program of a bundle.
[[nodiscard]] std::filesystem::path programOf(const std::filesystem::path& bundle);

} // namespace tarnwick
