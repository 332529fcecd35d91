// Tells whether the system has a usable way to the network, and when that changes.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace tarnwick {

struct NetworkPath {
    bool satisfied;                      ///< an interface that is up has a default route
    std::vector<std::string> interfaces; ///< names, the preferred one first

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

    /// Calls `update` with the present path soon after it has returned, then with each path that differs from
    /// the last one. Never calls it where the system can't tell. Called once.
    virtual void start(Update update) = 0;
};

} // namespace tarnwick
