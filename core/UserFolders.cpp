#include "core/UserFolders.h"

#include <cstdlib>
#include <optional>
#include <pwd.h>
#include <unistd.h>

namespace tarnwick::UserFolders {

namespace {

namespace fs = std::filesystem;

/// A relative path in such a variable is invalid and ignored.
std::optional<fs::path> absolutePath(const char* variable) {
    const char* value = std::getenv(variable);
    return value != nullptr && *value == '/' ? std::optional<fs::path>(value) : std::nullopt;
}

fs::path home() {
    if (const auto path = absolutePath("HOME")) {
        return *path;
    }
    const passwd* user = ::getpwuid(::getuid());
    return user != nullptr ? user->pw_dir : "/";
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

} // namespace tarnwick::UserFolders
