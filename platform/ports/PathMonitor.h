// Tells whether the system has a usable way to the network, and when that changes.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace tarnwick {

struct NetworkPath {
    bool satisfied;                      ///< there is a route to the world over an interface that is up
    std::vector<std::string> interfaces; ///< names, in the order in which the system prefers them

    friend bool operator==(const NetworkPath&, const NetworkPath&) = default;
};

/// Main thread.
class PathMonitor {
public:
    using Update = std::function<void(const NetworkPath&)>;

    PathMonitor() = default;
    PathMonitor(const PathMonitor&) = delete;
    PathMonitor& operator=(const PathMonitor&) = delete;
    virtual ~PathMonitor() = default;

    /// `update` is called with the present path soon after, never from inside, and then with each path that
    /// differs from the one told last. Called once.
    virtual void start(Update update) = 0;
};

} // namespace tarnwick
