#include "platform/theme/ThemeFolders.h"

#include "core/Storage/UserFolders.h"

namespace tarnwick {

namespace fs = std::filesystem;

ThemeFolders ThemeFolders::ofSession() {
    ThemeFolders folders{.config = UserFolders::systemConfig(), .data = UserFolders::systemData()};
    folders.config.insert(folders.config.begin(), UserFolders::config());
    folders.data.insert(folders.data.begin(), UserFolders::data());
    return folders;
}

std::optional<fs::path> ThemeFolders::find(const fs::path& name) const {
    for (const fs::path& folder : data) {
        std::error_code error;
        if (fs::path file = folder / name; fs::is_regular_file(file, error)) {
            return file;
        }
    }
    return std::nullopt;
}

} // namespace tarnwick
