// Why pinging could not start.
#pragma once

#include <string>

namespace tarnwick {

struct PingError {
    enum class Kind {
        resolution, ///< the host has no address
        socket,     ///< no ping socket can be opened
    };

    Kind kind;
    std::string text; ///< the system's own words

    [[nodiscard]] static PingError resolution(std::string text);
    [[nodiscard]] static PingError socket(std::string text);

    /// For the user: what failed, then the system's words.
    [[nodiscard]] std::string message() const;

    friend bool operator==(const PingError&, const PingError&) = default;
};

} // namespace tarnwick
