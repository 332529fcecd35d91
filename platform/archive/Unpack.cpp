#include "platform/archive/Unpack.h"

#include "core/FileDescriptor.h"
#include "platform/archive/EntryPath.h"

#include <algorithm>
#include <archive.h>
#include <archive_entry.h>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <memory>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

// libarchive can write files itself, and safely so, but either below the working directory, which all threads
// share, or by a path from the root, in which it would refuse the user's own links. So it reads only. Files
// are made here: each folder is opened from the one above, none through a link, and links are made when all
// else is there.

namespace tarnwick {

namespace {

namespace fs = std::filesystem;

using Failure = std::optional<UnpackFailure>;
using EntryParts = std::vector<std::string>;

struct ReaderEnd {
    void operator()(archive* reader) const { ::archive_read_free(reader); }
};

using ArchiveReader = std::unique_ptr<archive, ReaderEnd>;

/// Of the last system call.
UnpackFailure unpackFailure() {
    switch (errno) {
    case EEXIST:  // a name twice
    case ENOENT:  // in no folder
    case ENOTDIR: // in a file
    case ELOOP:   // in a link
        return UnpackFault::damaged;
    default:
        return std::error_code(errno, std::generic_category());
    }
}

/// The library has read from this descriptor, which stays open. Null when it holds no tar archive that is
/// packed with zstd, once.
ArchiveReader openArchive(int descriptor) {
    constexpr std::size_t blockSize = std::size_t{64} << 10;
    constexpr int filters = 2; // zstd, and the file itself
    ArchiveReader reader(::archive_read_new());
    if (reader == nullptr || ::archive_read_support_filter_zstd(reader.get()) != ARCHIVE_OK
        || ::archive_read_support_format_tar(reader.get()) != ARCHIVE_OK
        || ::archive_read_open_fd(reader.get(), descriptor, blockSize) != ARCHIVE_OK
        || ::archive_filter_count(reader.get()) != filters
        || ::archive_filter_code(reader.get(), 0) != ARCHIVE_FILTER_ZSTD) {
        return nullptr;
    }
    return reader;
}

std::optional<std::error_code> written(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(file, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR) {
            return std::error_code(errno, std::generic_category());
        }
        bytes.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    }
    return std::nullopt;
}

/// Puts the entries of one archive below one folder.
class Unpacking {
public:
    /// The descriptor of the folder stays open, and the others exist, meanwhile.
    Unpacking(archive* reader, int folder, const std::string& top, const UnpackLimits& limits)
        : reader_(reader), folder_(folder), top_(top), limits_(limits) {}

    [[nodiscard]] Failure run() {
        archive_entry* entry = nullptr;
        for (std::size_t entries = 0;; ++entries) {
            const int result = ::archive_read_next_header(reader_, &entry);
            if (result == ARCHIVE_EOF) {
                return entries > 0 ? makeLinks() : UnpackFault::damaged;
            }
            if (result != ARCHIVE_OK) {
                return UnpackFault::damaged;
            }
            if (entries == limits_.entries) {
                return UnpackFault::tooManyEntries;
            }
            if (const Failure failure = take(entry)) {
                return failure;
            }
        }
    }

private:
    struct Link {
        EntryParts parts;
        std::string target;
    };

    [[nodiscard]] Failure take(archive_entry* entry) {
        const char* const path = ::archive_entry_pathname(entry);
        const auto parts = entryParts(path != nullptr ? path : "", limits_.pathLength);
        if (!parts) {
            return UnpackFault::unsafePath;
        }
        const mode_t type = ::archive_entry_filetype(entry);
        if (parts->front() != top_ || (parts->size() == 1 && type != AE_IFDIR)) {
            return UnpackFault::wrongFolder;
        }
        if (::archive_entry_hardlink(entry) != nullptr) {
            return UnpackFault::unsafeLink;
        }
        switch (type) {
        case AE_IFDIR:
            return makeFolder(*parts);
        case AE_IFREG:
            return makeFile(entry, *parts);
        case AE_IFLNK:
            return takeLink(entry, *parts);
        default:
            return UnpackFault::unsafeType;
        }
    }

    /// The folder that the entry lies in; closed where that is none. Opened anew for each entry: a release
    /// has some hundred.
    [[nodiscard]] FileDescriptor folderOf(const EntryParts& parts) const {
        FileDescriptor folder(::openat(folder_, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        for (std::size_t part = 0; part + 1 < parts.size() && folder.isOpen(); ++part) {
            folder = FileDescriptor(
                ::openat(folder.get(), parts[part].c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        }
        return folder;
    }

    [[nodiscard]] Failure makeFolder(const EntryParts& parts) const {
        const FileDescriptor folder = folderOf(parts);
        if (!folder.isOpen() || ::mkdirat(folder.get(), parts.back().c_str(), 0755) != 0) {
            return unpackFailure();
        }
        return std::nullopt;
    }

    [[nodiscard]] Failure makeFile(archive_entry* entry, const EntryParts& parts) {
        const FileDescriptor folder = folderOf(parts);
        if (!folder.isOpen()) {
            return unpackFailure();
        }
        const bool isExecutable = (::archive_entry_perm(entry) & S_IXUSR) != 0;
        const FileDescriptor file(::openat(
            folder.get(), parts.back().c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
            isExecutable ? 0755 : 0644));
        return file.isOpen() ? fill(file.get()) : unpackFailure();
    }

    /// Counts what comes out, whatever size the archive announces.
    [[nodiscard]] Failure fill(int file) {
        for (;;) {
            const la_ssize_t count = ::archive_read_data(reader_, piece_.data(), piece_.size());
            if (count == 0) {
                return std::nullopt;
            }
            if (count < 0) {
                return UnpackFault::damaged;
            }
            bytes_ += static_cast<std::uint64_t>(count);
            if (bytes_ > limits_.bytes) {
                return UnpackFault::tooLarge;
            }
            if (const auto error = written(file, {piece_.data(), static_cast<std::size_t>(count)})) {
                return *error;
            }
        }
    }

    [[nodiscard]] Failure takeLink(archive_entry* entry, const EntryParts& parts) {
        const char* const target = ::archive_entry_symlink(entry);
        if (target == nullptr || !leadsInside(parts, target, limits_.pathLength)) {
            return UnpackFault::unsafeLink;
        }
        links_.push_back({.parts = parts, .target = target});
        return std::nullopt;
    }

    [[nodiscard]] Failure makeLinks() const {
        for (const Link& link : links_) {
            const FileDescriptor folder = folderOf(link.parts);
            if (!folder.isOpen()
                || ::symlinkat(link.target.c_str(), folder.get(), link.parts.back().c_str()) != 0) {
                return unpackFailure();
            }
        }
        return std::nullopt;
    }

    archive* reader_;
    int folder_;
    const std::string& top_;
    const UnpackLimits& limits_;
    std::uint64_t bytes_ = 0; ///< in files
    std::vector<Link> links_;
    std::array<char, std::size_t{64} << 10> piece_{};
};

/// Makes all of it survive a power cut: in one step for all files, which takes far less than one step each.
Failure flushAll(int folder) {
    return ::syncfs(folder) == 0 ? Failure() : unpackFailure();
}

/// Into a folder that is there and empty.
Failure unpackInto(int file, const fs::path& folder, const std::string& top, const UnpackLimits& limits) {
    const FileDescriptor opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!opened.isOpen()) {
        return unpackFailure();
    }
    const ArchiveReader reader = openArchive(file);
    if (reader == nullptr) {
        return UnpackFault::damaged;
    }
    const auto unpacking = std::make_unique<Unpacking>(reader.get(), opened.get(), top, limits);
    const Failure failure = unpacking->run();
    return failure ? failure : flushAll(opened.get());
}

std::string_view reasonOf(UnpackFault fault) {
    switch (fault) {
    case UnpackFault::damaged:
        break;
    case UnpackFault::wrongFolder:
        return "it is not one folder of Tarnwick";
    case UnpackFault::unsafePath:
    case UnpackFault::unsafeLink:
    case UnpackFault::unsafeType:
        return "it has files that do not belong there";
    case UnpackFault::tooLarge:
    case UnpackFault::tooManyEntries:
        return "it is larger than Tarnwick can be";
    }
    return "it is damaged";
}

} // namespace

Failure unpack(
    const fs::path& file, const fs::path& folder, const std::string& top, const UnpackLimits& limits) {
    const FileDescriptor opened(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    if (!opened.isOpen() || ::mkdir(folder.c_str(), 0700) != 0) {
        return std::error_code(errno, std::generic_category());
    }
    Failure failure = unpackInto(opened.get(), folder, top, limits);
    if (failure) {
        std::error_code ignored; // what is left there is looked for at the next update
        fs::remove_all(folder, ignored);
    }
    return failure;
}

std::string sentence(const UnpackFailure& failure) {
    const auto* const fault = std::get_if<UnpackFault>(&failure);
    const std::string reason =
        fault != nullptr ? std::string(reasonOf(*fault)) : std::get<std::error_code>(failure).message();
    return "The download can't be unpacked: " + reason + ".";
}

} // namespace tarnwick
