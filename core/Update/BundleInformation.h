// The information file of a bundle: which version it is, and where its updates come from.
#pragma once

#include "core/Update/DocumentReader.h"
#include "core/Update/Minisign.h"
#include "core/Update/ReleaseVersion.h"

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace tarnwick {

/// The file's name, in the bundle's folder.
inline constexpr const char* bundleInformationName = "Information.json";

/// The channel that all others include.
inline constexpr const char* stableChannel = "stable";

struct UpdateSource {
    std::string feedAddress; ///< https
    /// One at least. Several, so that one can be retired.
    std::vector<Minisign::PublicKey> publicKeys;
};

struct BundleInformation {
    ReleaseVersion version{};
    std::optional<UpdateSource> source{}; ///< absent in a build without updater
    std::chrono::seconds checkInterval{};
    std::string channel{};
};

inline constexpr std::size_t largestBundleInformation = std::size_t{64} << 10;
inline constexpr std::size_t mostPublicKeys = 8;
inline constexpr std::chrono::seconds shortestCheckInterval = std::chrono::hours(1);
inline constexpr std::chrono::seconds usualCheckInterval = std::chrono::days(1);
inline constexpr std::chrono::seconds longestCheckInterval = std::chrono::days(30);

/// All or nothing. A missing interval is the usual one, a missing channel the stable one.
[[nodiscard]] std::variant<BundleInformation, DocumentMistake> parseBundleInformation(
    const std::string& text);

} // namespace tarnwick
