// Whether an open file is still the one that its name leads to.
#pragma once

#include <filesystem>

namespace tarnwick {

/// False when the file was renamed, removed or replaced since it was opened, and when that can't be found
/// out.
[[nodiscard]] bool isNamed(int descriptor, const std::filesystem::path& path);

} // namespace tarnwick
