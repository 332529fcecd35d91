#include "platform/linux/OwnIcons.h"

#include "platform/ports/ApplicationId.h"

namespace tarnwick {

namespace fs = std::filesystem;

fs::path ownIcons(bool isSandboxed, const std::optional<fs::path>& program) {
    if (isSandboxed || !program) {
        return {};
    }
    const fs::path folder = (program->parent_path() / TARNWICK_ICONS_FROM_PROGRAM).lexically_normal();
    std::error_code error;
    return fs::is_regular_file(
               folder / "hicolor/scalable/apps" / (std::string(applicationId) + ".svg"), error)
               ? folder
               : fs::path();
}

} // namespace tarnwick
