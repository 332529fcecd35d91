#include "core/Storage/UserFolders.h"

#include <cstdlib>
#include <optional>
#include <pwd.h>
#include <sstream>
#include <string>
#include <unistd.h>

namespace tarnwick::UserFolders {

namespace {

namespace fs = std::filesystem;

/// The base directory specification says to ignore relative paths.
std::optional<fs::path> absolutePath(const char* variable) {
    const char* value = std::getenv(variable);
    return value != nullptr && *value == '/' ? std::optional<fs::path>(value) : std::nullopt;
}

fs::path home() {
    if (const auto path = absolutePath("HOME")) {
        return *path;
    }
    const passwd* user = ::getpwuid(::getuid());
    const char* const path = user != nullptr ? user->pw_dir : nullptr;
    return path != nullptr && *path == '/' ? path : "/";
}

} // namespace

fs::path data() {
    const auto path = absolutePath("XDG_DATA_HOME");
    return path ? *path : home() / ".local" / "share";
}

fs::path config() {
    const auto path = absolutePath("XDG_CONFIG_HOME");
    return path ? *path : home() / ".config";
}

std::vector<fs::path> systemConfig() {
    const char* value = std::getenv("XDG_CONFIG_DIRS");
    std::istringstream names(value != nullptr && *value != '\0' ? value : "/etc/xdg");
    std::vector<fs::path> folders;
    for (std::string name; std::getline(names, name, ':');) {
        if (name.starts_with('/')) {
            folders.emplace_back(name);
        }
    }
    return folders;
}

} // namespace tarnwick::UserFolders
