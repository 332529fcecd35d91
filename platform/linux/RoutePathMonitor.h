// The network path as the kernel's routing tells it: with any network manager, or none.
#pragma once

#include "core/RunLoop.h"
#include "platform/linux/RouteChanges.h"
#include "platform/linux/RoutedPath.h"
#include "platform/ports/PathMonitor.h"

#include <functional>
#include <optional>

namespace tarnwick {

/// Looks the path up at the start and after each burst of changes, and tells of it when it differs. Where the
/// kernel offers no such messages nothing is ever told.
class RoutePathMonitor final : public PathMonitor {
public:
    using LookUp = std::function<std::optional<RoutedPath>()>;

    /// From the first message of a burst to the look-up.
    static constexpr double settleTime = 0.03;
    /// Between look-ups where no message can be relied upon.
    static constexpr double slowInterval = 5;

    explicit RoutePathMonitor(RunLoop& loop, LookUp lookUp = RoutedPath::present);

    void start(Update update) override;

private:
    void changesWait();
    void lookUpAfter(double seconds);
    void lookUp();
    /// In how many seconds to look again unasked: when no message may tell of what happens next.
    [[nodiscard]] std::optional<double> nextLookUp(const std::optional<RoutedPath>& present);
    void tell(const NetworkPath& path);

    RunLoop& loop_;
    LookUp lookUp_;
    Update update_;
    std::optional<NetworkPath> told_;
    bool wasExpiring_ = false; ///< the path that was looked up last
    RouteChanges changes_;
    RunLoop::Handle watch_; ///< none while a burst settles
    RunLoop::Handle timer_;
};

} // namespace tarnwick
