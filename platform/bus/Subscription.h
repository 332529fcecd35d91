// Several listeners to one event. Each listens until its subscription is destroyed.
#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace tarnwick {

/// Its destruction ends the listening. The listener itself may destroy it.
using Subscription = std::shared_ptr<const void>;

class Subscribers {
public:
    using Listener = std::function<void()>;

    [[nodiscard]] Subscription add(Listener listener) {
        auto entry = std::make_shared<const Listener>(std::move(listener));
        entries_.push_back(entry);
        return entry;
    }

    void tell() {
        std::erase_if(entries_, [](const auto& entry) { return entry.expired(); });
        // A copy: a listener may add subscriptions, and end any of them.
        const auto present = entries_;
        for (const auto& weakEntry : present) {
            if (const auto entry = weakEntry.lock()) {
                (*entry)();
            }
        }
    }

private:
    std::vector<std::weak_ptr<const Listener>> entries_;
};

} // namespace tarnwick
