// The names that another process goes by.
#pragma once

#include <string>
#include <vector>

namespace tarnwick {

/// The kernel's name of the process, at most 15 letters, then the name of its program's file. Only what the
/// system tells: empty when the process is gone.
[[nodiscard]] std::vector<std::string> processNames(unsigned pid);

} // namespace tarnwick
