// Small files that are read and replaced as a whole.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace tarnwick::FileStore {

/// The whole text of a regular file of up to 16 MiB, or the error that kept it from being read.
[[nodiscard]] std::optional<std::string> read(const std::filesystem::path& path, std::error_code& error);

/// What the new text outlives. Flushing to the disk can take seconds while the disk is busy.
enum class Durability { crash, powerCut };

/// Replaces the file at once: a reader, a crash or a full disk finds either the old text or the new one.
/// Creates the folder, keeps the old file's permissions, follows a link to the file that it names.
[[nodiscard]] std::error_code replace(
    const std::filesystem::path& path, std::string_view text, Durability durability = Durability::powerCut);

/// Gives the file (that a link names) a second name beside its own ("NAME.unreadable", "NAME.unreadable-2",
/// ...), so that replacing it loses nothing. Nothing to keep is no error.
[[nodiscard]] std::error_code keepAside(const std::filesystem::path& path);

} // namespace tarnwick::FileStore
