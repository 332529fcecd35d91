// Whether a downloaded archive is the one that the maker has signed.
#pragma once

#include "core/Update/Feed.h"
#include "core/Update/Minisign.h"

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>

namespace tarnwick {

enum class ArchiveFault {
    unreadable,   ///< the file can't be read
    wrongSize,    ///< not the size that the feed tells
    wrongDigest,  ///< not the digest that the feed tells
    wrongRelease, ///< the maker has signed it as another file, or as that of another version
};

using ArchiveRefusal = std::variant<ArchiveFault, Minisign::Fault>;

/// None when the archive may be unpacked. `signature` is the text of its signature file. The trusted comment
/// has fields with tabs between; among them are "file:NAME", as in the archive's address, and
/// "version:VERSION", so that an old archive can't stand in for a new one. Reads the file in pieces; any
/// thread.
[[nodiscard]] std::optional<ArchiveRefusal> checkArchive(
    const std::filesystem::path& file, const ReleaseArchive& archive, const ReleaseVersion& version,
    std::string_view signature, std::span<const Minisign::PublicKey> keys);

/// For users.
[[nodiscard]] std::string sentence(const ArchiveRefusal& refusal);

} // namespace tarnwick
