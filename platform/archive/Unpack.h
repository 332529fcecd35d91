// Unpacks the archive of a release.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <variant>

namespace tarnwick {

/// What is wrong with an archive.
enum class UnpackFault {
    damaged,        ///< no tar archive packed with zstd, cut short, with a name twice or a folder missing
    wrongFolder,    ///< something in it does not lie in its one folder
    unsafePath,     ///< a path is absolute, has "..", or is too long
    unsafeLink,     ///< a link leads out of the folder, or is a hard link
    unsafeType,     ///< a device, pipe or socket
    tooLarge,       ///< more bytes than allowed
    tooManyEntries, ///< more files, links and folders than allowed
};

/// What is wrong with the archive, or the system's reason, as a full disk.
using UnpackFailure = std::variant<UnpackFault, std::error_code>;

struct UnpackLimits {
    std::uint64_t bytes = std::uint64_t{512} << 20; ///< of all files
    std::size_t entries = 10'000;
    std::size_t pathLength = 512; ///< bytes, of a link's target too
};

/// Unpacks a ".tar.zst" file into `folder`, which it makes, for this user alone; nothing may have that name.
/// All of the archive lies in the one folder `top`, and each folder stands before what is in it, as tar
/// writes it. Of a file's permissions only the right to execute it is kept; owners, times and attributes are
/// dropped. All is on the disk when this returns; after a failure `folder` is gone. Any thread.
[[nodiscard]] std::optional<UnpackFailure> unpack(
    const std::filesystem::path& file, const std::filesystem::path& folder, const std::string& top,
    const UnpackLimits& limits = {});

/// For users.
[[nodiscard]] std::string sentence(const UnpackFailure& failure);

} // namespace tarnwick
