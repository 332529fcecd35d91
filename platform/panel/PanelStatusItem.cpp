#include "platform/panel/PanelStatusItem.h"

#include <utility>

namespace tarnwick {

PanelStatusItem::PanelStatusItem(Needs needs) : needs_(std::move(needs)) {
    forwardClicks(needs_.notifier);
    watcherChanged();
}

PanelStatusItem::~PanelStatusItem() {
    needs_.notifier.onActivate = nullptr;
}

void PanelStatusItem::watcherChanged() {
    if (needs_.hasWatcher()) {
        trayTimer_.reset();
        tray_.reset();
    } else if (!tray_ && !trayTimer_) {
        trayTimer_ = needs_.loop.after(patience, [this] { lookForTray(); });
    }
}

void PanelStatusItem::show(const ItemState& state) {
    state_ = state;
    needs_.notifier.show(state);
    if (tray_) {
        tray_->show(state);
    }
}

void PanelStatusItem::lookForTray() {
    trayTimer_.reset();
    // Made even if there is no tray yet: the item appears as soon as there is one.
    tray_ = needs_.makeTrayItem();
    if (tray_) {
        forwardClicks(*tray_);
        tray_->show(state_);
    }
    if (!hasComplained_ && !(tray_ && needs_.hasTray())) {
        hasComplained_ = true;
        needs_.say(
            "No panel shows status items here yet. Measuring continues; the item appears with a panel.");
    }
}

void PanelStatusItem::forwardClicks(StatusItem& item) {
    item.onActivate = [this](std::optional<ScreenPoint> at) {
        if (onActivate) {
            onActivate(at);
        }
    };
}

} // namespace tarnwick
