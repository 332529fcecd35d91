#include "platform/linux/FileWatch.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdint>
#include <cstring>
#include <sys/inotify.h>
#include <unistd.h>
#include <utility>

namespace tarnwick {

namespace {

namespace fs = std::filesystem;

constexpr std::uint32_t folderGone = IN_DELETE_SELF | IN_MOVE_SELF;
constexpr std::uint32_t entryChanged =
    IN_CREATE | IN_MODIFY | IN_CLOSE_WRITE | IN_ATTRIB | IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE;

/// Folders may come and go while they are looked up.
constexpr int mostLookUps = 10;
/// In a flood the loop gets its turn in between.
constexpr int readsPerTurn = 16;

struct EventBuffer {
    alignas(inotify_event) std::array<char, 4096> bytes{};
    static_assert(sizeof bytes >= sizeof(inotify_event) + NAME_MAX + 1);
};

bool isFolder(const fs::path& path) {
    std::error_code error;
    return fs::is_directory(path, error);
}

} // namespace

FileWatch::FileWatch(RunLoop& loop, fs::path file, std::function<void()> onChange)
    : loop_(loop),
      file_(std::move(file)),
      onChange_(std::move(onChange)),
      inotify_(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
    if (inotify_.isOpen()) {
        watchPlaces();
        readable_ = loop.watchReadable(inotify_.get(), [this] {
            if (takeEvents()) {
                changed();
            }
        });
    }
}

void FileWatch::forgetChanges() {
    settling_.reset();
    // First, since it makes events itself.
    watchPlaces();
    static_cast<void>(takeEvents());
}

std::vector<FileWatch::Place> FileWatch::places() const {
    const auto nearest = [](fs::path path) {
        while (!isFolder(path.parent_path()) && path.parent_path().has_relative_path()) {
            path = path.parent_path();
        }
        return Place{path.parent_path(), path.filename()};
    };
    std::vector places{nearest(file_)};
    std::error_code error;
    if (const fs::path target = fs::read_symlink(file_, error); !error) {
        // An absolute target replaces the folder in front of it.
        places.push_back(nearest(file_.parent_path() / target));
    }
    return places;
}

void FileWatch::watchPlaces() {
    std::vector<Place> present = places();
    for (int attempt = 0; attempt < mostLookUps; ++attempt) {
        watch(present);
        std::vector<Place> next = places();
        if (next == present) {
            return;
        }
        present = std::move(next);
    }
}

void FileWatch::watch(const std::vector<Place>& places) {
    std::vector<Watched> next;
    for (const auto& [folder, name] : places) {
        constexpr std::uint32_t mask = IN_ONLYDIR | folderGone | entryChanged;
        // Both places may be in one folder, which then has one watch.
        if (const int number = ::inotify_add_watch(inotify_.get(), folder.c_str(), mask); number >= 0) {
            next.push_back({number, name});
        }
    }
    for (const Watched& old : watched_) {
        if (std::ranges::find(next, old.number, &Watched::number) == next.end()) {
            ::inotify_rm_watch(inotify_.get(), old.number);
        }
    }
    watched_ = std::move(next);
}

bool FileWatch::takeEvents() {
    EventBuffer buffer;
    bool isChanged = false;
    for (int reads = 0; reads < readsPerTurn; ++reads) {
        const ssize_t size = ::read(inotify_.get(), buffer.bytes.data(), buffer.bytes.size());
        if (size <= 0) {
            break;
        }
        isChanged = concernsFile(buffer.bytes.data(), static_cast<std::size_t>(size)) || isChanged;
    }
    return isChanged;
}

bool FileWatch::concernsFile(const char* events, std::size_t size) const {
    for (std::size_t at = 0; at + sizeof(inotify_event) <= size;) {
        inotify_event event{};
        std::memcpy(&event, events + at, sizeof event);
        const std::string name = event.len > 0 ? events + at + sizeof event : "";
        at += sizeof event + event.len;
        if ((event.mask & IN_Q_OVERFLOW) != 0) {
            return true;
        }
        const bool isFolderGone = (event.mask & (folderGone | IN_UNMOUNT)) != 0;
        if (std::ranges::any_of(watched_, [&, number = event.wd](const Watched& watched) {
                return watched.number == number && (isFolderGone || watched.name == name);
            })) {
            return true;
        }
    }
    return false;
}

void FileWatch::changed() {
    if (settling_) {
        return;
    }
    settling_ = loop_.after(settlingTime, [this] {
        const RunLoop::Handle done = std::move(settling_);
        // Before the report, so that no change falls between reading the file and watching it.
        watchPlaces();
        // Copied: the callback may destroy this watch.
        const auto report = onChange_;
        report();
    });
}

} // namespace tarnwick
