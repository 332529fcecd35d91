#include "core/Storage/FileStore.h"

#include "core/FileDescriptor.h"
#include "core/Storage/NamedFile.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace tarnwick::FileStore {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t largestFile = std::size_t{16} << 20;
constexpr int mostKeptAside = 99;
constexpr int mostLinks = 40;

std::error_code lastError() {
    return {errno, std::generic_category()};
}

/// The file at the end of a chain of links. It need not exist.
fs::path linkTarget(fs::path path) {
    std::error_code error;
    for (int links = 0; links < mostLinks && fs::is_symlink(path, error); ++links) {
        // Joining paths drops the folder when the target is absolute.
        path = path.parent_path() / fs::read_symlink(path, error);
    }
    return path;
}

std::error_code writeAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(descriptor, text.data(), text.size());
        if (written < 0) {
            if (errno == EINTR) {
                continue;
            }
            return lastError();
        }
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    return {};
}

/// A fixed name: a program killed while writing leaves one draft at most, and the next one reuses it.
fs::path draftOf(const fs::path& target) {
    fs::path draft = target;
    draft += ".new";
    return draft;
}

/// A pipe, a device, a link, or a file that has another name too. A folder can't lose its name so easily.
bool isForeign(const fs::path& draft) {
    struct stat info{};

    return ::lstat(draft.c_str(), &info) == 0 && !S_ISDIR(info.st_mode)
           && (!S_ISREG(info.st_mode) || info.st_nlink > 1);
}

/// The error for something that must keep its place; none for a file, for nothing and for a link that leads
/// nowhere.
std::error_code refusalToReplace(const fs::path& target) {
    struct stat info{};

    if (::lstat(target.c_str(), &info) != 0 || S_ISREG(info.st_mode) || S_ISLNK(info.st_mode)) {
        return {};
    }
    return std::make_error_code(
        S_ISDIR(info.st_mode) ? std::errc::is_a_directory : std::errc::operation_not_supported);
}

/// Whether an open draft is this writer's alone.
std::error_code claim(int descriptor, const fs::path& draft) {
    // A file system without locks gives another error: then writing goes on without one.
    if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
        return lastError();
    }
    if (!isNamed(descriptor, draft)) {
        // Another writer has just renamed this draft: it is the target file now.
        return std::make_error_code(std::errc::resource_unavailable_try_again);
    }
    return isForeign(draft) ? std::make_error_code(std::errc::file_exists) : std::error_code();
}

/// Opens the draft for this writer alone. A second writer at the same moment gets an error. What is no draft
/// of this program loses that name.
FileDescriptor openDraft(const fs::path& draft, std::error_code& error) {
    for (const bool isLast : {false, true}) {
        // Without waiting, in case it is a pipe.
        FileDescriptor file(
            ::open(draft.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0666));
        error = file.isOpen() ? claim(file.get(), draft) : lastError();
        if (!error) {
            return file;
        }
        if (isLast || !isForeign(draft) || ::unlink(draft.c_str()) != 0) {
            break;
        }
    }
    return {};
}

/// The file replaces the one that had the name. Where the file system has no hard links, that one stays.
void giveFlushedName(const fs::path& target) {
    const fs::path name = flushedName(target);
    const fs::path next = draftOf(name);
    ::unlink(next.c_str()); // left by a program that was killed here
    if (::link(target.c_str(), next.c_str()) == 0) {
        ::rename(next.c_str(), name.c_str());
    }
}

void keepPermissions(const fs::path& target, int descriptor) {
    struct stat old{};

    if (::stat(target.c_str(), &old) == 0) {
        // The owner can always read and write it: the next run must. A file system without permissions
        // refuses, and there is nothing to keep.
        static_cast<void>(::fchmod(descriptor, (old.st_mode & 07777) | 0600));
    }
}

std::error_code writeDraft(
    const fs::path& target, int descriptor, std::string_view text, Durability durability) {
    if (::ftruncate(descriptor, 0) != 0) {
        return lastError();
    }
    keepPermissions(target, descriptor);
    if (const std::error_code error = writeAll(descriptor, text)) {
        return error;
    }
    if (durability == Durability::powerCut && ::fdatasync(descriptor) != 0) {
        return lastError();
    }
    return {};
}

} // namespace

// Without this, a power cut may bring back the old name of a file that was renamed.
void flushFolder(const fs::path& folder) {
    const FileDescriptor opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened.isOpen()) {
        static_cast<void>(::fsync(opened.get()));
    }
}

std::optional<std::string> read(const fs::path& path, std::error_code& error) {
    // Without blocking, in case it is a pipe.
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));

    struct stat info{};

    if (!file.isOpen() || ::fstat(file.get(), &info) != 0) {
        error = lastError();
        return std::nullopt;
    }
    if (!S_ISREG(info.st_mode)) {
        error = std::make_error_code(std::errc::invalid_argument);
        return std::nullopt;
    }
    std::string text;
    std::array<char, 4096> buffer{};
    for (;;) {
        const ssize_t count = ::read(file.get(), buffer.data(), buffer.size());
        if (count == 0) {
            error.clear();
            return text;
        }
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            error = lastError();
            return std::nullopt;
        }
        text.append(buffer.data(), static_cast<std::size_t>(count));
        if (text.size() > largestFile) {
            error = std::make_error_code(std::errc::file_too_large);
            return std::nullopt;
        }
    }
}

namespace {

/// Adds each folder that it makes to `made`, the upper ones first.
// NOLINTNEXTLINE(misc-no-recursion): as deep as the path
std::error_code makeMissing(const fs::path& folder, std::vector<fs::path>& made) {
    std::error_code ignored; // the type tells
    const fs::file_status present = fs::status(folder, ignored);
    if (fs::is_directory(present)) {
        return {};
    }
    if (fs::exists(present)) {
        return std::make_error_code(std::errc::not_a_directory);
    }
    if (folder.has_parent_path() && folder.has_relative_path()) {
        if (const std::error_code error = makeMissing(folder.parent_path(), made)) {
            return error;
        }
    }
    if (::mkdir(folder.c_str(), S_IRWXU) != 0) {
        const std::error_code error = lastError();
        // Another program may have made it in this moment.
        return fs::is_directory(folder, ignored) ? std::error_code() : error;
    }
    made.push_back(folder);
    return {};
}

} // namespace

std::error_code makeFolders(const fs::path& folder) {
    std::vector<fs::path> made;
    const std::error_code error = makeMissing(folder, made);
    while (!made.empty()) {
        flushFolder(made.back().parent_path());
        made.pop_back();
    }
    return error;
}

namespace {

enum class SecondName { none, flushed };

std::error_code replaceTarget(
    const fs::path& target, std::string_view text, Durability durability, SecondName secondName) {
    if (const std::error_code error = refusalToReplace(target)) {
        return error;
    }
    if (const std::error_code error = makeFolders(target.parent_path())) {
        return error;
    }
    std::error_code error;
    const fs::path draft = draftOf(target);
    const FileDescriptor file = openDraft(draft, error);
    if (error) {
        return error;
    }
    error = writeDraft(target, file.get(), text, durability);
    if (!error && ::rename(draft.c_str(), target.c_str()) != 0) {
        error = lastError();
    }
    if (error) {
        ::unlink(draft.c_str());
        return error;
    }
    if (secondName == SecondName::flushed) {
        giveFlushedName(target);
    }
    if (durability == Durability::powerCut) {
        flushFolder(target.parent_path());
    }
    return {};
}

} // namespace

std::error_code replace(const fs::path& path, std::string_view text, Durability durability) {
    return replaceTarget(linkTarget(path), text, durability, SecondName::none);
}

std::error_code replaceAndKeep(const fs::path& path, std::string_view text) {
    return replaceTarget(linkTarget(path), text, Durability::powerCut, SecondName::flushed);
}

void flush(const fs::path& path) {
    const fs::path target = linkTarget(path);
    const FileDescriptor file(::open(target.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (file.isOpen()) {
        static_cast<void>(::fdatasync(file.get()));
        flushFolder(target.parent_path());
    }
}

fs::path flushedName(const fs::path& path) {
    fs::path name = linkTarget(path);
    name += ".flushed";
    return name;
}

Version versionOf(const fs::path& path) {
    struct stat info{};

    if (::stat(path.c_str(), &info) != 0) {
        return {};
    }
    constexpr std::int64_t nsPerSecond = 1'000'000'000;
    return {
        .device = info.st_dev,
        .number = info.st_ino,
        .size = info.st_size,
        .changedNs = info.st_mtim.tv_sec * nsPerSecond + info.st_mtim.tv_nsec};
}

std::error_code keepAside(const fs::path& path, fs::path* keptAs) {
    const fs::path target = linkTarget(path);
    if (const std::error_code error = refusalToReplace(target); error == std::errc::operation_not_supported) {
        return error;
    }
    for (int number = 1; number <= mostKeptAside; ++number) {
        fs::path aside = target;
        aside += number == 1 ? ".unreadable" : ".unreadable-" + std::to_string(number);
        if (::link(target.c_str(), aside.c_str()) != 0) {
            if (errno == ENOENT) {
                return {};
            }
            if (errno == EEXIST) {
                if (std::error_code error; !fs::equivalent(target, aside, error)) {
                    continue; // kept earlier, of another file
                }
            } else if (::rename(target.c_str(), aside.c_str()) != 0) { // without hard links
                return lastError();
            }
        }
        if (keptAs != nullptr) {
            *keptAs = aside;
        }
        return {};
    }
    return std::make_error_code(std::errc::file_exists);
}

} // namespace tarnwick::FileStore
