#include "platform/linux/Sandbox.h"

#include <cstdlib>
#include <system_error>

namespace tarnwick {

bool isSandboxed(const std::filesystem::path& root) {
    const char* const snap = std::getenv("SNAP");
    std::error_code ignored;
    return (snap != nullptr && *snap != '\0') || std::filesystem::exists(root / ".flatpak-info", ignored);
}

} // namespace tarnwick
