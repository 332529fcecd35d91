#include "platform/panel/PanelStatusItem.h"

#include <utility>

namespace tarnwick {

PanelStatusItem::PanelStatusItem(Needs needs) : needs_(std::move(needs)) {
    forwardClicks(needs_.notifier);
    watcherChanged();
}

void PanelStatusItem::watcherChanged() {
    if (needs_.hasWatcher()) {
        trayTimer_.reset();
        tray_.reset();
    } else if (!tray_ && !trayTimer_) {
        trayTimer_ = needs_.loop.after(patience, [this] { lookForTray(); });
    }
}

void PanelStatusItem::setFace(const StatusFace& face) {
    face_ = face;
    needs_.notifier.setFace(face);
    if (tray_) {
        tray_->setFace(face);
    }
}

void PanelStatusItem::setToolTip(const std::string& text) {
    toolTip_ = text;
    needs_.notifier.setToolTip(text);
    if (tray_) {
        tray_->setToolTip(text);
    }
}

void PanelStatusItem::setAccessibilityValue(const std::string& text) {
    accessibilityValue_ = text;
    needs_.notifier.setAccessibilityValue(text);
    if (tray_) {
        tray_->setAccessibilityValue(text);
    }
}

void PanelStatusItem::setForm(Form form) {
    needs_.notifier.setForm(form);
}

void PanelStatusItem::lookForTray() {
    trayTimer_.reset();
    // Made even if there is no tray yet: the item appears as soon as there is one.
    tray_ = needs_.makeTrayItem();
    if (tray_) {
        forwardClicks(*tray_);
        showIn(*tray_);
    }
    if (!hasComplained_ && !(tray_ && needs_.hasTray())) {
        hasComplained_ = true;
        needs_.say(
            "No panel shows status items here yet. Measuring continues; the item appears with a panel.");
    }
}

void PanelStatusItem::showIn(StatusItem& item) const {
    if (face_) {
        item.setFace(*face_);
    }
    item.setToolTip(toolTip_);
    item.setAccessibilityValue(accessibilityValue_);
}

void PanelStatusItem::forwardClicks(StatusItem& item) {
    item.onActivate = [this](std::optional<ScreenPoint> at) {
        if (onActivate) {
            onActivate(at);
        }
    };
}

} // namespace tarnwick
