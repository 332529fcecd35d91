// Runs the programs' loop turn by turn, as an event loop that hosts it.
#pragma once

#include "platform/loop/EpollRunLoop.h"

#include <cmath>
#include <poll.h>

namespace tarnwick::test {

/// Waits up to `seconds` until the loop has something to run, and lets it run one turn; false when there was
/// nothing.
inline bool runOneTurn(EpollRunLoop& loop, double seconds) {
    pollfd question{.fd = loop.descriptor(), .events = POLLIN, .revents = 0};
    const int milliseconds = seconds > 0 ? static_cast<int>(std::ceil(seconds * 1000)) : 0;
    if (::poll(&question, 1, milliseconds) != 1) {
        return false;
    }
    loop.runReady();
    return true;
}

} // namespace tarnwick::test
