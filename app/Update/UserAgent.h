// How the updater calls itself to the server of updates.
#pragma once

#include <optional>
#include <string>

namespace tarnwick {

struct UserAgentParts {
    std::optional<std::string> applicationVersion; ///< "0" where there is none
    std::string framework;                         ///< what fetches the updates
    std::optional<std::string> frameworkVersion;   ///< "2" where there is none
    std::string system;                            ///< the system's name
    std::string systemVersion; ///< of which the first two numbers are told: "6.1" of "6.1.0-18-amd64"
};

/// Tells no more than that: nothing of it is this machine's own.
[[nodiscard]] std::string userAgent(const UserAgentParts& parts);

} // namespace tarnwick
