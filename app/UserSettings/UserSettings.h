// The user's settings with their file, which other programs may change too.
#pragma once

#include "app/Preferences/Preferences.h"
#include "core/RunLoop.h"
#include "platform/linux/FileWatch.h"
#include "platform/ports/UserDefaults.h"
#include "platform/xdg/SettingsFile.h"

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace tarnwick {

/// Reads the file, writes changes soon, and takes over what other programs change in it. Main thread.
class UserSettings {
public:
    /// Seconds for which a file may be away without any effect: programs that replace it may remove it first.
    static constexpr double longestAbsence = 2;

    /// `loop` outlives it. The values `forThisRun` are never written.
    UserSettings(RunLoop& loop, const std::filesystem::path& path, UserDefaults::Table forThisRun);

    UserSettings(const UserSettings&) = delete;
    UserSettings& operator=(const UserSettings&) = delete;

    [[nodiscard]] Preferences& preferences() { return preferences_; }

    /// What is wrong with the file, in lines for users, each with the file's name.
    [[nodiscard]] std::vector<std::string> mistakes() const;
    /// Calls `listener` with them, now if there are any, and after each change of them.
    void tellMistakes(std::function<void(const std::vector<std::string>&)> listener);

private:
    void fileChanged();
    void takeOverChanges();

    std::function<void(const std::vector<std::string>&)> onMistakes_;
    std::vector<std::string> told_;
    RunLoop& loop_;
    SettingsFile file_;
    Preferences preferences_;
    FileWatch watch_;
    RunLoop::Handle absence_; ///< from the file's disappearance until it counts
};

} // namespace tarnwick
