// Reads and replaces small files as a whole.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace tarnwick::FileStore {

/// The text of a regular file of up to 16 MiB; none and `error` when it can't be read.
[[nodiscard]] std::optional<std::string> read(const std::filesystem::path& path, std::error_code& error);

/// What the new text survives. `crash` does not wait for the disk; `powerCut` may wait for seconds.
enum class Durability { crash, powerCut };

/// Makes the folder and those above it, for this user alone. A new folder is flushed to the disk, so this
/// waits for the disk once.
[[nodiscard]] std::error_code makeFolders(const std::filesystem::path& folder);

/// Replaces the file atomically: after a crash or on a full disk it holds either the old text or the new one.
/// Makes the folder, keeps the permissions, replaces the target of a link. A pipe, device or folder in its
/// place stays, and is an error.
[[nodiscard]] std::error_code replace(
    const std::filesystem::path& path, std::string_view text, Durability durability = Durability::powerCut);

/// Makes a text that was replaced to outlive a crash survive a power cut too.
void flush(const std::filesystem::path& path);

/// Makes the names in a folder survive a power cut. Some file systems can't flush a folder; that is no error.
void flushFolder(const std::filesystem::path& folder);

/// The second name of the text that was last written to survive a power cut: "NAME.flushed".
[[nodiscard]] std::filesystem::path flushedName(const std::filesystem::path& path);

/// Replaces the file to survive a power cut, and gives the text that second name too. Later replacements keep
/// it there. A file system without hard links gives no second name; that is no error.
[[nodiscard]] std::error_code replaceAndKeep(const std::filesystem::path& path, std::string_view text);

/// Tells one version of a file from the next. Equal for two missing files.
struct Version {
    std::uint64_t device = 0;
    std::uint64_t number = 0;
    std::int64_t size = 0;
    std::int64_t changedNs = 0; ///< since the epoch

    friend bool operator==(const Version&, const Version&) = default;
};

[[nodiscard]] Version versionOf(const std::filesystem::path& path);

/// Gives the file a second name ("NAME.unreadable", "NAME.unreadable-2", ...), so that replacing it loses
/// nothing. A file that has such a name already gets no other. Follows links. A missing file is no error.
/// `keptAs` is given that name.
[[nodiscard]] std::error_code keepAside(
    const std::filesystem::path& path, std::filesystem::path* keptAs = nullptr);

} // namespace tarnwick::FileStore
