// Keeps callbacks from running after the end of the object that they belong to.
#pragma once

#include <memory>
#include <utility>

namespace tarnwick {

/// A member of the object that hands out such callbacks. One thread.
class Lifeline {
public:
    /// Tells whether the owner of the lifeline is gone, for code that runs on after calling out.
    class Watch {
    public:
        explicit Watch(const std::shared_ptr<const bool>& alive) : alive_(alive) {}

        [[nodiscard]] bool hasEnded() const { return alive_.expired(); }

    private:
        std::weak_ptr<const bool> alive_;
    };

    Lifeline() = default;
    // A copy would keep the callbacks of the original alive.
    Lifeline(const Lifeline&) = delete;
    Lifeline& operator=(const Lifeline&) = delete;

    [[nodiscard]] Watch watch() const { return Watch(alive_); }

    /// `function`, for as long as the owner exists.
    template<typename Function>
    [[nodiscard]] auto guarded(Function function) const {
        return [watch = watch(),
                function = std::move(function)]<typename... Arguments>(Arguments&&... arguments) {
            if (!watch.hasEnded()) {
                function(std::forward<Arguments>(arguments)...);
            }
        };
    }

private:
    std::shared_ptr<const bool> alive_ = std::make_shared<const bool>(true);
};

} // namespace tarnwick
