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
        look_.reset();
        tray_.reset();
        setShown(true);
    } else if (!look_) {
        look_ = needs_.loop.after(patience, [this] { takeTray(); });
    }
}

void PanelStatusItem::show(const ItemState& state) {
    state_ = state;
    needs_.notifier.show(state);
    if (tray_) {
        tray_->show(state);
    }
}

void PanelStatusItem::takeTray() {
    // Made even if there is no tray yet: the item appears as soon as there is one.
    tray_ = needs_.makeTrayItem();
    if (tray_) {
        forwardClicks(*tray_);
        tray_->show(state_);
    }
    look_ = needs_.loop.every(
        needs_.loop.now() + patience, lookInterval, [this] { setShown(tray_ && needs_.hasTray()); });
}

void PanelStatusItem::setShown(bool isShown) {
    if (isShown_ != isShown) {
        isShown_ = isShown;
        needs_.shownChanged(isShown);
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
