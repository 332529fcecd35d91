// The status item's menu for panels that draw menus themselves: com.canonical.dbusmenu.
#pragma once

#include "core/RunLoop.h"
#include "platform/bus/BusConnection.h"
#include "platform/ports/PanelMenu.h"

#include <functional>
#include <memory>
#include <string>

namespace tarnwick {

/// Published while the bus is connected. Main thread.
class DBusMenu {
public:
    static constexpr const char* path = "/MenuBar";

    /// The references outlive it. It sets the menu's `onChange`. `iconThemePath` is a folder with icons for
    /// the rows; empty: none.
    DBusMenu(RunLoop& loop, BusConnection& bus, PanelMenu& menu, std::string iconThemePath);
    DBusMenu(const DBusMenu&) = delete;
    DBusMenu& operator=(const DBusMenu&) = delete;
    ~DBusMenu();

    /// A panel has read the rows.
    std::function<void()> onRead;

private:
    class Exported;

    void busChanged();

    RunLoop& loop_;
    BusConnection& bus_;
    PanelMenu& menu_;
    std::string iconThemePath_;
    std::unique_ptr<Exported> exported_; ///< only while connected
    Subscription stateSubscription_;
};

} // namespace tarnwick
