#include "app/UserSettings/UserSettings.h"

#include <utility>

namespace tarnwick {

UserSettings::UserSettings(RunLoop& loop, const std::filesystem::path& path, UserDefaults::Table forThisRun)
    : file_(loop, path, std::move(forThisRun)),
      preferences_(file_),
      watch_(loop, path, [this] { takeOverChanges(); }) {
    file_.onWritten = [this] {
        watch_.forgetChanges();
        // Another program may have written it just before or just after.
        takeOverChanges();
    };
}

void UserSettings::takeOverChanges() {
    if (file_.reload()) {
        preferences_.reload();
    }
}

} // namespace tarnwick
