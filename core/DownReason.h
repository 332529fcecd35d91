// Why the connection is down.
#pragma once

#include "core/PingError.h"

#include <optional>
#include <string>

namespace tarnwick {

struct DownReason {
    enum class Kind { socketError, hostNotFound, noNetwork, noReplies };

    Kind kind;
    std::string text = {}; ///< the system's words, for `socketError` only

    /// Without a network path the other reasons are only consequences.
    [[nodiscard]] static DownReason from(const std::optional<PingError>& startError, bool pathSatisfied);

    friend bool operator==(const DownReason&, const DownReason&) = default;
};

} // namespace tarnwick
