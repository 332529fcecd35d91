#include "platform/linux/FolderExchange.h"

#include "core/FileDescriptor.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace tarnwick {

namespace {

namespace fs = std::filesystem;

/// Of the last system call.
ExchangeFailure exchangeFailure() {
    switch (errno) {
    case ENOENT:
    case ENOTDIR:
        return ExchangeObstacle::missing;
    case EBUSY:
        return ExchangeObstacle::mountPoint;
    case EROFS:
        return ExchangeObstacle::readOnly;
    case EACCES:
    case EPERM:
        return ExchangeObstacle::notAllowed;
    case EXDEV:
        return ExchangeObstacle::otherFileSystem;
    case EINVAL:
    case ENOSYS:
        return ExchangeObstacle::unsupported;
    default:
        return std::error_code(errno, std::generic_category());
    }
}

std::optional<ExchangeFailure> exchangeNames(const fs::path& one, const fs::path& other) {
    if (::renameat2(AT_FDCWD, one.c_str(), AT_FDCWD, other.c_str(), RENAME_EXCHANGE) != 0) {
        return exchangeFailure();
    }
    return std::nullopt;
}

/// Some file systems can't flush a folder. That is no failure: the names are exchanged.
void flushNamesIn(const fs::path& folder) {
    const FileDescriptor opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened.isOpen()) {
        static_cast<void>(::fsync(opened.get()));
    }
}

std::optional<ExchangeFailure> obstacleAt(const fs::path& folder) {
    struct statx info{};

    if (::statx(AT_FDCWD, folder.c_str(), AT_SYMLINK_NOFOLLOW, STATX_TYPE | STATX_UID, &info) != 0) {
        return exchangeFailure();
    }
    if (!S_ISDIR(info.stx_mode)) {
        return ExchangeObstacle::missing;
    }
    if ((info.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0) {
        return ExchangeObstacle::mountPoint;
    }
    // Where it is read-only, that is the reason, whoever the owner is.
    const bool isWritable = ::faccessat(AT_FDCWD, folder.c_str(), W_OK | X_OK, AT_EACCESS) == 0;
    if (!isWritable && errno == EROFS) {
        return ExchangeObstacle::readOnly;
    }
    if (info.stx_uid != ::geteuid()) {
        return ExchangeObstacle::otherOwner;
    }
    return isWritable ? std::nullopt : std::optional(exchangeFailure());
}

/// Where an attempt takes place.
constexpr std::string_view attemptPrefix = ".tarnwick-exchange-";

/// Only its empty folders.
void removeAttempt(const fs::path& place) {
    for (const auto& part : {place / "one", place / "other", place}) {
        ::rmdir(part.c_str());
    }
}

/// A process that was killed may have left one.
void removeAttemptsBelow(const fs::path& folder) {
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        if (entry->path().filename().string().starts_with(attemptPrefix)) {
            removeAttempt(entry->path());
        }
    }
}

/// Exchanges two new folders below `folder`.
std::optional<ExchangeFailure> attemptBelow(const fs::path& folder) {
    removeAttemptsBelow(folder);
    std::string place = (folder / (std::string(attemptPrefix) + "XXXXXX")).string();
    if (::mkdtemp(place.data()) == nullptr) {
        return exchangeFailure();
    }
    const fs::path one = fs::path(place) / "one";
    const fs::path other = fs::path(place) / "other";
    const bool isMade = ::mkdir(one.c_str(), 0700) == 0 && ::mkdir(other.c_str(), 0700) == 0;
    const auto failure = isMade ? exchangeNames(one, other) : exchangeFailure();
    removeAttempt(place);
    return failure;
}

std::string_view reasonOf(ExchangeObstacle obstacle) {
    switch (obstacle) {
    case ExchangeObstacle::missing:
        break;
    case ExchangeObstacle::mountPoint:
        return "its folder is a mount point";
    case ExchangeObstacle::readOnly:
        return "it lies on a read-only file system";
    case ExchangeObstacle::otherOwner:
        return "it belongs to another user";
    case ExchangeObstacle::notAllowed:
        return "you may not change its folder";
    case ExchangeObstacle::otherFileSystem:
        return "the new version lies on another file system";
    case ExchangeObstacle::unsupported:
        return "the file system can't exchange two folders";
    }
    return "its folder was moved or removed";
}

} // namespace

std::optional<ExchangeFailure> exchangeFolders(const fs::path& one, const fs::path& other) {
    const auto failure = exchangeNames(one, other);
    if (!failure) {
        flushNamesIn(one.parent_path());
        flushNamesIn(other.parent_path());
    }
    return failure;
}

std::optional<ExchangeFailure> obstacleToExchange(const fs::path& folder) {
    const auto obstacle = obstacleAt(folder);
    return obstacle ? obstacle : attemptBelow(folder.parent_path());
}

std::string sentence(const ExchangeFailure& failure) {
    const auto* const obstacle = std::get_if<ExchangeObstacle>(&failure);
    const std::string reason =
        obstacle != nullptr ? std::string(reasonOf(*obstacle)) : std::get<std::error_code>(failure).message();
    return "Tarnwick can't be replaced where it is: " + reason + ".";
}

} // namespace tarnwick
