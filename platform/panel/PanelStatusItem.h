// The status item in the place that the desktop offers: with a StatusNotifier watcher or, without one, in the
// classic tray.
#pragma once

#include "core/RunLoop.h"
#include "platform/ports/StatusItem.h"

#include <functional>
#include <memory>
#include <string>

namespace tarnwick {

/// Main thread.
class PanelStatusItem final : public StatusItem {
public:
    /// How long a panel may take to come up before the classic tray is tried, in seconds.
    static constexpr double patience = 2;

    /// All of it outlives the item.
    struct Needs {
        RunLoop& loop;
        StatusItem& notifier; ///< shown while there is a watcher; the item sets its `onActivate`
        std::function<bool()> hasWatcher;
        /// Returns null on displays that never have a classic tray.
        std::function<std::unique_ptr<StatusItem>()> makeTrayItem;
        std::function<bool()> hasTray;
        std::function<void(const std::string&)> say; ///< tells the user, outside any panel
    };

    explicit PanelStatusItem(Needs needs);
    ~PanelStatusItem() override;

    /// To be called when the answer of `hasWatcher` may have changed.
    void watcherChanged();

    void show(const ItemState& state) override;

private:
    void lookForTray();
    void forwardClicks(StatusItem& item);

    Needs needs_;
    std::unique_ptr<StatusItem> tray_; ///< only while there is no watcher
    RunLoop::Handle trayTimer_;
    bool hasComplained_ = false;
    ItemState state_;
};

} // namespace tarnwick
