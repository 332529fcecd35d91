// The window that drops down from the status item: the status view, and the menu's items below it.
#pragma once

#include "app/NoticesView/NoticesView.h"
#include "app/Observation/Observation.h"
#include "app/Reading/PastCharts.h"
#include "app/Reading/Reading.h"
#include "app/StatusItemController/Menu.h"
#include "core/Lifeline.h"
#include "core/RunLoop.h"
#include "platform/ports/StatusItem.h"
#include "platform/qt/PointerProbe.h"
#include "platform/x11/PressWatch.h"

#include <functional>
#include <memory>
#include <optional>

namespace tarnwick {

class DropDownWindow;

/// Its window exists only while it is open. Everything handed in outlives it.
/// Main thread.
class DropDown {
public:
    /// Where the past can be read, charts of longer spans can be chosen. The choice is kept while it is
    /// closed; the past is read only while it is open.
    DropDown(
        const Observed<Reading>& reading, Menu& menu, RunLoop& loop, NoticeActions actions = {},
        const PastSource& past = {});
    DropDown(const DropDown&) = delete;
    DropDown& operator=(const DropDown&) = delete;
    ~DropDown();

    /// A click on the status item: opens there, or closes. Without a place it opens at the pointer. A click
    /// that has just closed the window by taking its focus does not open it again. A click that a panel
    /// reports twice counts once.
    void toggle(std::optional<ScreenPoint> at);
    /// At a pixel of the desktop. Without one it opens where it was opened last, or in the corner where
    /// panels have their items; in GNOME on Wayland in the middle. When it is open already it comes to the
    /// front.
    void open(std::optional<ScreenPoint> at);
    /// At once, or when the pointer, or else the item, has been found.
    void openAtPointer();
    /// At once, or when the item has been found. Where it is not found it opens at the other place, if any.
    void openAtItem(std::optional<ScreenPoint> otherwise = std::nullopt);
    void close();

    [[nodiscard]] bool isOpen() const { return window_ != nullptr; }

    /// It opens as soon as the item has been found.
    [[nodiscard]] bool looksForItem() const { return itemSearch_ != nullptr; }

    using Found = std::function<void(std::optional<ScreenPoint>)>;

    /// Asks where the item is; the answer comes later. Null where nothing tells. Set by the owner.
    std::function<void(Found)> findItem;

    /// The window while it is open.
    [[nodiscard]] DropDownWindow* window() const { return window_.get(); }

private:
    void hide();
    void lostFocus();
    void closedByClick();
    void buttonsMoved(const X11::PressWatch::Buttons& buttons);
    void waitForEndOfClick();

    const Observed<Reading>& reading_;
    Menu& menu_;
    RunLoop& loop_;
    NoticeActions actions_;
    std::optional<PastCharts> past_;

    struct LaterDeletion {
        void operator()(DropDownWindow* window) const;
    };

    std::unique_ptr<Wayland::LayerShell> shell_; ///< null where the desktop has none
    std::unique_ptr<PointerProbe> probe_;        ///< while the pointer is looked for, to open there
    std::unique_ptr<Lifeline> itemSearch_;       ///< while the item is looked for, to open there
    std::unique_ptr<DropDownWindow, LaterDeletion> window_;
    /// On X11 only: while it is open, and until the click that has closed it has ended.
    std::unique_ptr<X11::PressWatch> presses_;
    bool isButtonHeld_ = false;
    bool mayBeSameClick_ = false; ///< a click reported now may be the one that took the focus
    RunLoop::Handle endOfClick_;
    RunLoop::Handle focusReturn_;          ///< while the focus is elsewhere and no press was seen
    std::optional<ScreenPoint> lastPlace_; ///< where it was opened, at the item
    std::optional<double> toggledAt_;      ///< monotonic: when a click last opened or closed it
};

} // namespace tarnwick
