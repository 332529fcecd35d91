// The window that drops down from the status item: the status view, and the menu's items below it.
#pragma once

#include "app/Monitor/Monitor.h"
#include "app/StatusItemController/Menu.h"
#include "core/RunLoop.h"
#include "platform/ports/StatusItem.h"
#include "platform/x11/PressWatch.h"

#include <memory>
#include <optional>

namespace tarnwick {

class DropDownWindow;

/// Its window exists only while it is open: what is closed costs nothing. Everything handed in outlives it.
/// Main thread.
class DropDown {
public:
    DropDown(Monitor& monitor, Menu& menu, RunLoop& loop);
    DropDown(const DropDown&) = delete;
    DropDown& operator=(const DropDown&) = delete;
    ~DropDown();

    /// A click on the status item: opens there, or closes. The click that has just closed the window by
    /// taking its focus away does not open it again, nor does a panel that tells of one click twice.
    void toggle(std::optional<ScreenPoint> at);
    /// At a point, if there is one, else at the corner where panels usually have their items. When it is
    /// open already it comes to the front.
    void open(std::optional<ScreenPoint> at);
    void close();

    [[nodiscard]] bool isOpen() const { return window_ != nullptr; }

    /// The window while it is open.
    [[nodiscard]] DropDownWindow* window() const { return window_.get(); }

private:
    void hide();
    void lostFocus();
    void buttonsMoved(const PressWatch::Buttons& buttons);
    void waitForEndOfClick();

    Monitor& monitor_;
    Menu& menu_;
    RunLoop& loop_;

    struct LaterDeletion {
        void operator()(DropDownWindow* window) const;
    };

    std::unique_ptr<DropDownWindow, LaterDeletion> window_;
    /// On an X11 display: while it is open, and until the click that has closed it is over.
    std::unique_ptr<PressWatch> presses_;
    bool isButtonHeld_ = false;
    bool isClosedByClick_ = false; ///< that may still be told as a click on the item
    RunLoop::Handle endOfClick_;
    std::optional<double> toggledAt_; ///< monotonic: when a click last opened or closed it
};

} // namespace tarnwick
