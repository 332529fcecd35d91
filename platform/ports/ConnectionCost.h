// Whether the internet connection is paid by what goes over it.
#pragma once

#include <functional>

namespace tarnwick {

/// Main thread.
class ConnectionCost {
public:
    ConnectionCost() = default;
    ConnectionCost(const ConnectionCost&) = delete;
    ConnectionCost& operator=(const ConnectionCost&) = delete;
    virtual ~ConnectionCost() = default;

    /// `answer` is called once, soon; false where nothing tells. Never called when this object has ended.
    virtual void ask(std::function<void(bool isMetered)> answer) = 0;
};

} // namespace tarnwick
