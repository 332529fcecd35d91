// Linux: when the kernel received a datagram.
#pragma once

#include "core/ClockPair.h"

#include <cstring>
#include <optional>
#include <sys/socket.h>

namespace tarnwick {

/// Wall-clock seconds; nothing unless the socket has SO_TIMESTAMPNS.
[[nodiscard]] inline std::optional<double> kernelStamp(msghdr& message) {
    for (cmsghdr* part = CMSG_FIRSTHDR(&message); part != nullptr; part = CMSG_NXTHDR(&message, part)) {
        if (part->cmsg_level == SOL_SOCKET && part->cmsg_type == SCM_TIMESTAMPNS) {
            timespec stamp{};
            std::memcpy(&stamp, CMSG_DATA(part), sizeof stamp);
            return seconds(stamp);
        }
    }
    return std::nullopt;
}

} // namespace tarnwick
