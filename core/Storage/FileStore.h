// Reads and replaces small files as a whole.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace tarnwick::FileStore {

/// The text of a regular file of up to 16 MiB; none and `error` when it can't be read.
[[nodiscard]] std::optional<std::string> read(const std::filesystem::path& path, std::error_code& error);

/// What the new text survives. `crash` never waits for the disk; `powerCut` may wait for seconds.
enum class Durability { crash, powerCut };

/// Replaces the file atomically: after a crash or on a full disk it holds either the old text or the new one.
/// Creates the folder, keeps the permissions, replaces the target of a link.
[[nodiscard]] std::error_code replace(
    const std::filesystem::path& path, std::string_view text, Durability durability = Durability::powerCut);

/// Gives the file a second name ("NAME.unreadable", "NAME.unreadable-2", ...), so that replacing it loses
/// nothing. A file that has such a name already gets no other. Follows links. A missing file is no error.
[[nodiscard]] std::error_code keepAside(const std::filesystem::path& path);

} // namespace tarnwick::FileStore
