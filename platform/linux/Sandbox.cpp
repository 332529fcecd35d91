#include "platform/linux/Sandbox.h"

#include <algorithm>
#include <cstdlib>
#include <system_error>

namespace tarnwick {

namespace {

namespace fs = std::filesystem;

/// Follows symbolic links.
bool isBelow(const fs::path& file, const fs::path& folder) {
    std::error_code error;
    const fs::path top = fs::canonical(folder, error);
    if (error) {
        return false;
    }
    const fs::path bottom = fs::canonical(file, error);
    const auto [topEnd, rest] = std::ranges::mismatch(top, bottom);
    return !error && topEnd == top.end() && rest != bottom.end();
}

} // namespace

bool isSandboxed(const fs::path& root, const std::optional<fs::path>& program) {
    const char* const snap = std::getenv("SNAP");
    const bool isSnapped = snap != nullptr && program && isBelow(*program, snap);
    std::error_code ignored;
    return isSnapped || fs::exists(root / ".flatpak-info", ignored);
}

} // namespace tarnwick
