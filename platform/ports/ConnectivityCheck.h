// What the system's network service found out about the way to the internet.
#pragma once

#include "core/Diagnosis/Evidence.h"

#include <functional>

namespace tarnwick {

/// Main thread.
class ConnectivityCheck {
public:
    ConnectivityCheck() = default;
    ConnectivityCheck(const ConnectivityCheck&) = delete;
    ConnectivityCheck& operator=(const ConnectivityCheck&) = delete;
    virtual ~ConnectivityCheck() = default;

    /// The result of the service's own last check, which may be minutes old: this starts none. `answer` is
    /// called once, soon; with `unknown` where nothing tells. Never called when this object has ended.
    virtual void ask(std::function<void(Connectivity)> answer) = 0;
};

} // namespace tarnwick
