// Tells whether the system has a usable way to the network, and when that changes.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace tarnwick {

struct NetworkPath {
    bool satisfied;                      ///< there is a route to the world over an interface that is up
    std::vector<std::string> interfaces; ///< names, in the order in which the system prefers them
};

/// Main thread.
class PathMonitor {
public:
    using Update = std::function<void(const NetworkPath&)>;

    PathMonitor() = default;
    PathMonitor(const PathMonitor&) = delete;
    PathMonitor& operator=(const PathMonitor&) = delete;
    virtual ~PathMonitor() = default;

    /// `update` is called with the present path soon after, and after each change. Called once.
    virtual void start(Update update) = 0;
};

} // namespace tarnwick
