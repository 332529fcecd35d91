// Reports changes of one file.
#pragma once

#include "core/FileDescriptor.h"
#include "core/RunLoop.h"

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace tarnwick {

/// Watches the file's folder, since editors replace the file; while that is missing, the nearest folder
/// above. Where the file is a symbolic link, watches its target in the same way. Writing, replacing, making
/// and removing the file are changes. Never reports anything where the system can't watch. Main thread.
class FileWatch {
public:
    /// Debounce, in seconds: a file written in pieces is read once.
    static constexpr double settlingTime = 0.1;

    /// `onChange` may destroy the watch.
    FileWatch(RunLoop& loop, std::filesystem::path file, std::function<void()> onChange);

    FileWatch(const FileWatch&) = delete;
    FileWatch& operator=(const FileWatch&) = delete;

    /// Reports nothing of what has happened so far. Look at the file afterwards: other programs may have
    /// changed it too.
    void forgetChanges();

private:
    struct Place {
        std::filesystem::path folder;
        std::string name; ///< of the entry in it whose changes count

        friend bool operator==(const Place&, const Place&) = default;
    };

    struct Watched {
        int number; ///< of the folder's inotify watch
        std::string name;
    };

    [[nodiscard]] std::vector<Place> places() const;
    void watchPlaces();
    void watch(const std::vector<Place>& places);
    /// Whether one of the waiting events concerns the file.
    [[nodiscard]] bool takeEvents();
    [[nodiscard]] bool concernsFile(const char* events, std::size_t size) const;
    void changed();

    RunLoop& loop_;
    std::filesystem::path file_;
    std::function<void()> onChange_;
    FileDescriptor inotify_;
    std::vector<Watched> watched_;
    RunLoop::Handle readable_;
    RunLoop::Handle settling_; ///< from the first change to the report
};

} // namespace tarnwick
