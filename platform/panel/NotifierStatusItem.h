// The status item for panels with a StatusNotifier watcher: org.kde.StatusNotifierItem.
#pragma once

#include "core/Lifeline.h"
#include "core/RunLoop.h"
#include "platform/bus/BusConnection.h"
#include "platform/bus/ColorScheme.h"
#include "platform/panel/DBusMenu.h"
#include "platform/panel/ItemPixmaps.h"
#include "platform/panel/ItemPresentation.h"
#include "platform/panel/PanelHostFinder.h"
#include "platform/panel/WatcherRegistration.h"
#include "platform/ports/FacePainter.h"
#include "platform/ports/PanelMenu.h"
#include "platform/ports/StatusItem.h"
#include "platform/theme/ThemeWatch.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tarnwick {

/// Panels drop the item when its bus connection ends. Main thread.
class NotifierStatusItem final : public StatusItem {
public:
    /// The references outlive the item.
    struct Needs {
        RunLoop& loop;
        BusConnection& bus; ///< the session's
        const FacePainter& painter;
        PanelMenu& menu;
        ColorScheme& colors;
        ThemeWatch& panelTheme; ///< for this item alone
        PanelHostFinder::ProcessNames processNames;
        /// A folder with the program's icons by name, laid out as an icon theme. Empty: every icon is sent as
        /// an image.
        std::string iconThemePath{};
        /// Images are painted in the sizes that panels need on screens of these scales.
        ItemPixmaps::Scales screenScales = [] { return std::vector<double>{1, 2}; };
        double registrationPatience = WatcherRegistration::usualPatience;
    };

    explicit NotifierStatusItem(Needs needs);
    ~NotifierStatusItem() override;

    void show(const ItemState& state) override;

    /// The ink of images where it is unknown how dark the panel is; dark at first.
    void setFallbackInk(Ink ink);

    /// Whether there is a watcher, which keeps the list of items for all panels, and a panel that shows it.
    [[nodiscard]] bool hasWatcher() const { return !hosts_.watcher().empty(); }

    /// Called after the result of `hasWatcher` has changed.
    std::function<void()> onWatcherChange;

    /// Whether the panel has room for the whole title.
    [[nodiscard]] bool showsText() const { return shown_.showsText; }

    /// Called after the result of `showsText` has changed.
    std::function<void()> onShowsTextChange;

    /// The token by which the desktop lets the latest click open a window in front of others; empty when
    /// there is none, or when it was taken before.
    [[nodiscard]] std::string takeActivationToken() { return std::exchange(activationToken_, {}); }

private:
    class Exported;

    void busChanged();
    void hostChanged();
    void refresh();
    void menuRead();
    void activateSoon(std::optional<ScreenPoint> at);
    [[nodiscard]] std::optional<ScreenPoint> desktopPosition(int x, int y) const;
    [[nodiscard]] bool wasRead() const;

    Needs needs_;
    ItemState state_;
    Ink fallbackInk_ = Ink::dark;
    /// What panels read. While there is a watcher, they are told of each difference.
    ItemPresentation shown_;
    ItemPixmaps pixmaps_;
    DBusMenu menu_;
    PanelHostFinder hosts_;
    WatcherRegistration registration_;
    std::unique_ptr<Exported> exported_; ///< only while connected
    bool hadWatcher_ = false;
    bool itemWasRead_ = false;
    bool menuWasRead_ = false;
    std::string activationToken_;
    Lifeline lifeline_;
    Subscription colorSubscription_;
    Subscription stateSubscription_;
};

} // namespace tarnwick
