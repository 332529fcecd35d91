// Tells when a file is changed by whatever means.
#pragma once

#include "core/FileDescriptor.h"
#include "core/RunLoop.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace tarnwick {

/// Writing in place, replacing, removing, making it and the folders above it: all are changes, and those of
/// a burst are told once, a moment after its first. The folders are watched, since editors replace the file;
/// where the file is a link, those of what it names too. Where the system can't watch, nothing is ever told.
/// Main thread.
class FileWatch {
public:
    /// From a change to the telling: what comes in pieces is complete by then. What is not causes another
    /// one.
    static constexpr double settlingTime = 0.1;

    FileWatch(RunLoop& loop, std::filesystem::path file, std::function<void()> onChange);

    FileWatch(const FileWatch&) = delete;
    FileWatch& operator=(const FileWatch&) = delete;

    [[nodiscard]] bool isWatching() const { return readable_ != nullptr; }

private:
    using Names = std::set<std::string>;

    /// By folder: the names that count there. In a folder without any, only its own fate counts.
    using Plan = std::map<std::filesystem::path, Names>;

    [[nodiscard]] Plan plan() const;
    void watchFolders();
    void watch(const Plan& plan);
    void readEvents();
    /// Whether an event of those in the buffer counts.
    [[nodiscard]] bool hasNews(const char* events, std::size_t size) const;
    void changed();

    RunLoop& loop_;
    std::filesystem::path file_;
    std::function<void()> onChange_;
    FileDescriptor inotify_;
    std::map<int, Names> watched_;
    RunLoop::Handle readable_;
    RunLoop::Handle settling_; ///< from the first change to the telling
};

} // namespace tarnwick
