#include "platform/linux/FileWatch.h"

#include <array>
#include <climits>
#include <cstring>
#include <sys/inotify.h>
#include <unistd.h>
#include <utility>

namespace tarnwick {

namespace {

namespace fs = std::filesystem;

constexpr std::uint32_t ownFate = IN_DELETE_SELF | IN_MOVE_SELF;
constexpr std::uint32_t fateOfFiles =
    IN_CREATE | IN_MODIFY | IN_CLOSE_WRITE | IN_ATTRIB | IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE;

constexpr int mostLinks = 40;
/// Folders may come and go faster than they can be watched.
constexpr int mostAttempts = 10;
/// In a flood the loop gets its turn in between.
constexpr int mostReads = 16;

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
        watchFolders();
        readable_ = loop.watchReadable(inotify_.get(), [this] { readEvents(); });
    }
}

FileWatch::Plan FileWatch::plan() const {
    Plan plan;
    fs::path path = file_;
    for (int links = 0; links < mostLinks; ++links) {
        fs::path inner = path;
        fs::path folder = path.parent_path();
        while (!isFolder(folder) && folder.has_relative_path()) {
            inner = std::exchange(folder, folder.parent_path());
        }
        plan[folder].insert(inner.filename());
        while (folder.has_relative_path()) {
            folder = folder.parent_path();
            plan.try_emplace(folder);
        }
        std::error_code error;
        const fs::path target = fs::read_symlink(path, error);
        if (error) {
            break;
        }
        // An absolute target replaces the folder in front of it.
        path = path.parent_path() / target;
    }
    return plan;
}

void FileWatch::watchFolders() {
    Plan present = plan();
    for (int attempt = 0; attempt < mostAttempts; ++attempt) {
        watch(present);
        Plan next = plan();
        if (next == present) {
            return;
        }
        present = std::move(next);
    }
}

void FileWatch::watch(const Plan& plan) {
    std::map<int, Names> next;
    for (const auto& [folder, names] : plan) {
        const std::uint32_t mask = IN_ONLYDIR | ownFate | (names.empty() ? 0 : fateOfFiles);
        // Another path to a folder gives the same number.
        const int first = ::inotify_add_watch(inotify_.get(), folder.c_str(), mask);
        if (first < 0) {
            continue;
        }
        Names& known = next[first];
        if (names.empty() && !known.empty()) {
            static_cast<void>(
                ::inotify_add_watch(inotify_.get(), folder.c_str(), IN_ONLYDIR | ownFate | fateOfFiles));
        }
        known.insert(names.begin(), names.end());
    }
    for (const auto& [number, names] : watched_) {
        if (!next.contains(number)) {
            ::inotify_rm_watch(inotify_.get(), number);
        }
    }
    watched_ = std::move(next);
}

void FileWatch::readEvents() {
    EventBuffer buffer;
    bool isNews = false;
    for (int reads = 0; reads < mostReads; ++reads) {
        const ssize_t size = ::read(inotify_.get(), buffer.bytes.data(), buffer.bytes.size());
        if (size <= 0) {
            break;
        }
        isNews = hasNews(buffer.bytes.data(), static_cast<std::size_t>(size)) || isNews;
    }
    if (isNews) {
        changed();
    }
}

bool FileWatch::hasNews(const char* events, std::size_t size) const {
    for (std::size_t at = 0; at + sizeof(inotify_event) <= size;) {
        inotify_event event{};
        std::memcpy(&event, events + at, sizeof event);
        const std::string name = event.len > 0 ? events + at + sizeof event : "";
        at += sizeof event + event.len;
        if ((event.mask & IN_Q_OVERFLOW) != 0) {
            return true;
        }
        const auto folder = watched_.find(event.wd);
        const bool isOfFolder = (event.mask & (ownFate | IN_UNMOUNT)) != 0;
        if (folder != watched_.end() && (isOfFolder || folder->second.contains(name))) {
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
        // First: what happens from here on is told again, and what has happened so far is there to be read.
        watchFolders();
        // This may be the end of the watch itself.
        onChange_();
    });
}

} // namespace tarnwick
