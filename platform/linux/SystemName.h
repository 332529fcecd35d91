// How the system calls itself.
#pragma once

#include <string>

namespace tarnwick {

struct SystemName {
    std::string name;    ///< "Linux"
    std::string release; ///< of the kernel: "6.1.0-18-amd64"
    std::string machine; ///< "x86_64"
};

[[nodiscard]] SystemName systemName();

} // namespace tarnwick
