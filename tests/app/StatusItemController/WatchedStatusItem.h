// The controller of a status item in virtual time, with everything it opens recorded.
#pragma once

#include "app/StatusItemController/StatusItemController.h"
#include "tests/app/WatchedMonitor.h"
#include "tests/simulation/FakeSoftwareUpdates.h"
#include "tests/simulation/RecordingStatusItem.h"
#include "tests/simulation/RecordingWindows.h"

#include <memory>

namespace tarnwick {

struct WatchedStatusItem : WatchedMonitor {
    simulation::RecordingStatusItem item;
    simulation::RecordingWindows windows;
    simulation::FakeSoftwareUpdates updates;
    std::unique_ptr<Menu> menu;
    std::unique_ptr<StatusItemController> controller;

    /// Settings made before this hold from the beginning.
    void show(bool offersUpdates = false) {
        menu = std::make_unique<Menu>(StatusItemController::menuItems(offersUpdates));
        controller = std::make_unique<StatusItemController>(StatusItemController::Needs{
            .loop = loop,
            .monitor = monitor,
            .item = item,
            .menu = *menu,
            .windows = windows,
            .textWidth = [this](const std::string& text) { return item.textWidth(text); },
            .updates = offersUpdates ? &updates : nullptr});
    }

    /// Shows it, starts the monitor and lets `seconds` pass.
    void showFor(double seconds) {
        show();
        watchFor(seconds);
    }

    /// Of every `period` pings the first `count` are lost from now on.
    void lose(std::size_t count, std::size_t period) {
        network.setBehavior([count, period, number = std::size_t{0}](const auto&) mutable {
            return simulation::Answer{.copies = number++ % period < count ? 0 : 1};
        });
    }

    /// No ping is answered any more: the connection goes down, and what is shown follows. False when it stays
    /// up.
    [[nodiscard]] bool goDown() {
        fallSilent();
        const bool isDown = waitUntilDown();
        loop.runPending();
        return isDown;
    }

    [[nodiscard]] const StatusFace& face() const { return item.faces.back(); }

    [[nodiscard]] std::string title() const { return face().title.value_or("(none)"); }

    [[nodiscard]] const MenuItem* menuItem(MenuItem::Id id) const {
        for (const MenuItem& candidate : menu->items()) {
            if (candidate.id == id) {
                return &candidate;
            }
        }
        return nullptr;
    }
};

} // namespace tarnwick
