// The network path as the kernel's routing tells it: with any network manager, or none.
#pragma once

#include "core/RunLoop.h"
#include "platform/linux/RouteChanges.h"
#include "platform/linux/RoutedPath.h"
#include "platform/ports/PathMonitor.h"

#include <functional>
#include <optional>

namespace tarnwick {

/// Looks the path up at the start and after each burst of changes, and reports it when it differs. Where the
/// kernel sends no messages about routes it never reports anything.
class RoutePathMonitor final : public PathMonitor {
public:
    using PathSource = std::function<std::optional<RoutedPath>()>;

    /// From the first message of a burst to the look-up.
    static constexpr double settleTime = 0.03;
    /// Between look-ups while changes may come without a message.
    static constexpr double slowInterval = 5;

    explicit RoutePathMonitor(RunLoop& loop, PathSource presentPath = RoutedPath::present);

    void start(Update update) override;

private:
    void readChanges();
    void lookUpAfter(double seconds);
    void lookUp();
    /// Seconds until the next look-up without a message; nothing when a message tells of every change.
    [[nodiscard]] std::optional<double> nextLookUp(const std::optional<RoutedPath>& present) const;
    void report(const NetworkPath& path);

    RunLoop& loop_;
    PathSource presentPath_;
    Update update_;
    std::optional<NetworkPath> reported_;
    bool wasExpiring_ = false; ///< at the last look-up
    RouteChanges changes_;
    RunLoop::Handle watch_; ///< none while a burst settles
    RunLoop::Handle timer_;
};

} // namespace tarnwick
