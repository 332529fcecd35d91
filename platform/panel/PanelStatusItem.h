// The status item in the place that the desktop offers: with a StatusNotifier watcher or, without one, in the
// classic tray.
#pragma once

#include "core/RunLoop.h"
#include "platform/ports/StatusItem.h"

#include <functional>
#include <memory>
#include <optional>

namespace tarnwick {

/// Main thread.
class PanelStatusItem final : public StatusItem {
public:
    /// Seconds that a panel may take to come up before the classic tray is tried, and that the tray may take
    /// before the item counts as shown nowhere.
    static constexpr double patience = 2;
    /// Seconds from then on between two looks for a tray.
    static constexpr double lookInterval = 5;

    /// All of it outlives the item.
    struct Needs {
        RunLoop& loop;
        StatusItem& notifier; ///< shown while there is a watcher; the item sets its `onActivate`
        std::function<bool()> hasWatcher;
        /// Returns null on displays that never have a classic tray.
        std::function<std::unique_ptr<StatusItem>()> makeTrayItem;
        std::function<bool()> hasTray;
        /// Told whether any panel shows the item, once that is known, and when it changes.
        std::function<void(bool isShown)> shownChanged;
    };

    explicit PanelStatusItem(Needs needs);
    ~PanelStatusItem() override;

    /// To be called when the answer of `hasWatcher` may have changed.
    void watcherChanged();

    void show(const ItemState& state) override;

private:
    void takeTray();
    void setShown(bool isShown);
    void forwardClicks(StatusItem& item);

    Needs needs_;
    std::unique_ptr<StatusItem> tray_; ///< only while there is no watcher
    RunLoop::Handle look_;             ///< for a tray; only while there is no watcher
    std::optional<bool> isShown_;      ///< as told
    ItemState state_;
};

} // namespace tarnwick
