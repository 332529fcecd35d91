// The user's settings with their file, which other programs may change too.
#pragma once

#include "app/Preferences/Preferences.h"
#include "core/RunLoop.h"
#include "platform/linux/FileWatch.h"
#include "platform/ports/UserDefaults.h"
#include "platform/xdg/SettingsFile.h"

#include <filesystem>

namespace tarnwick {

/// Reads the file, writes changes soon, and takes over what other programs change in it. Main thread.
class UserSettings {
public:
    /// `loop` outlives it. The values `forThisRun` are never written.
    UserSettings(RunLoop& loop, const std::filesystem::path& path, UserDefaults::Table forThisRun);

    UserSettings(const UserSettings&) = delete;
    UserSettings& operator=(const UserSettings&) = delete;

    [[nodiscard]] Preferences& preferences() { return preferences_; }

private:
    void takeOverChanges();

    SettingsFile file_;
    Preferences preferences_;
    FileWatch watch_;
};

} // namespace tarnwick
