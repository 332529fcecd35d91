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

/// Those in the variable, or else in `usual`, between colons.
std::vector<fs::path> absolutePaths(const char* variable, const char* usual) {
    const char* value = std::getenv(variable);
    std::istringstream names(value != nullptr && *value != '\0' ? value : usual);
    std::vector<fs::path> folders;
    for (std::string name; std::getline(names, name, ':');) {
        if (name.starts_with('/')) {
            folders.emplace_back(name);
        }
    }
    return folders;
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

fs::path state() {
    const auto path = absolutePath("XDG_STATE_HOME");
    return path ? *path : home() / ".local" / "state";
}

std::vector<fs::path> systemConfig() {
    return absolutePaths("XDG_CONFIG_DIRS", "/etc/xdg");
}

std::vector<fs::path> systemData() {
    return absolutePaths("XDG_DATA_DIRS", "/usr/local/share:/usr/share");
}

std::string shown(const fs::path& path) {
    const std::string text = path.string();
    const std::string folder = (home() / "").string(); // with a slash at its end
    return folder != "/" && text.starts_with(folder) ? "~/" + text.substr(folder.size()) : text;
}

} // namespace tarnwick::UserFolders
