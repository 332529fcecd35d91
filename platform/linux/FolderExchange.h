// Exchanges a program's folder for that of another version, in one step.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <variant>

namespace tarnwick {

/// Why a folder can't be exchanged for another one.
enum class ExchangeObstacle {
    missing,         ///< there is no such folder
    mountPoint,      ///< a file system begins there
    readOnly,        ///< the file system is mounted read-only
    otherOwner,      ///< the folder belongs to another user
    notAllowed,      ///< this user may not write to the folder or to the one around it
    otherFileSystem, ///< the two folders lie on different file systems
    unsupported,     ///< the file system can't exchange two names
};

/// What is in the way, or another reason of the system's.
using ExchangeFailure = std::variant<ExchangeObstacle, std::error_code>;

/// Gives each of two folders the other's name. At every moment both names lead to one of them, also after a
/// power cut. After a failure nothing has changed. Waits for the disk; any thread.
[[nodiscard]] std::optional<ExchangeFailure> exchangeFolders(
    const std::filesystem::path& one, const std::filesystem::path& other);

/// What would keep this user from exchanging the folder, absolute and without links, for one beside it. Tries
/// it with two empty folders there, which are gone afterwards: some file systems tell only in this way.
[[nodiscard]] std::optional<ExchangeFailure> obstacleToExchange(const std::filesystem::path& folder);

/// For users.
[[nodiscard]] std::string sentence(const ExchangeFailure& failure);

} // namespace tarnwick
