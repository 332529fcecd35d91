#include "platform/linux/OwnBundle.h"

namespace tarnwick {

namespace fs = std::filesystem;

std::optional<fs::path> ownBundle(const std::optional<fs::path>& program) {
    if (!program) {
        return std::nullopt;
    }
    fs::path folder = program->parent_path();
    while (folder.extension() != ".app" && folder.has_relative_path()) {
        folder = folder.parent_path();
    }
    const bool isInIt = folder.extension() == ".app" && *program == folder / "bin" / program->filename();
    return isInIt ? std::optional(folder) : std::nullopt;
}

} // namespace tarnwick
