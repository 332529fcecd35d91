// The one status item of the program: what it shows, when it is touched, and what its menu does.
#pragma once

#include "app/Monitor/Monitor.h"
#include "app/Reading/LossGates.h"
#include "app/StatusItemController/Menu.h"
#include "app/Update/SoftwareUpdates.h"
#include "core/Lifeline.h"
#include "platform/ports/StatusItem.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tarnwick {

/// A question to be answered with yes or no.
struct Question {
    std::string title; ///< of the question's window; says what a yes does
    std::string text;
    std::string note{};  ///< what else to know before the answer; empty: nothing
    std::string confirm; ///< the button that says yes
    std::string cancel;
};

/// What the status item opens. Main thread.
class StatusItemWindows {
public:
    StatusItemWindows() = default;
    StatusItemWindows(const StatusItemWindows&) = delete;
    StatusItemWindows& operator=(const StatusItemWindows&) = delete;
    virtual ~StatusItemWindows() = default;

    /// Opens the status view with the menu, at the click if the panel tells where it was. Closes them when
    /// they are open.
    virtual void toggleDropDown(std::optional<ScreenPoint> at) = 0;
    virtual void showOutages() = 0;
    virtual void showSettings() = 0;
    virtual void showAbout() = 0;
    /// To be called before a click opens a window: it may then open in front of other programs' windows.
    virtual void expectWindow() = 0;
    /// Returns at once; `answered` is called later with whether it was confirmed, perhaps never.
    virtual void ask(const Question& question, std::function<void(bool)> answered) = 0;
    virtual void quit() = 0;
};

/// Touches the item only when something visible has changed. Main thread.
class StatusItemController {
public:
    /// All of it outlives the controller.
    struct Needs {
        RunLoop& loop;
        Monitor& monitor;
        StatusItem& item;
        Menu& menu; ///< made of `menuItems`
        StatusItemWindows& windows;
        /// Width of a text in the title's font, in points, rounded up.
        std::function<double(const std::string&)> textWidth;
        SoftwareUpdates* updates = nullptr; ///< null where the program can't be replaced
    };

    /// The menu's items from top to bottom.
    [[nodiscard]] static Menu::Items menuItems(bool offersUpdates);

    explicit StatusItemController(Needs needs);

    StatusItemController(const StatusItemController&) = delete;
    StatusItemController& operator=(const StatusItemController&) = delete;
    ~StatusItemController();

private:
    void update();
    [[nodiscard]] StatusFace face(const Reading& reading);
    void addTitle(StatusFace& face, const Reading& reading);
    std::optional<int> updateLossGates(const Reading& reading);

    struct MeasuredText {
        std::string text{};
        double width = 0; ///< points
    };

    [[nodiscard]] MeasuredText measured(const std::string& text) const;
    /// The widest title with this many digits of loss.
    [[nodiscard]] const MeasuredText& widestTitle(std::optional<int> lossDigits);

    void menuWillOpen();
    void menuDidClose();
    void refreshMenu();
    void chosen(MenuItem::Id id);
    void resetAllTimeSelected();

    Needs needs_;
    bool isMenuOpen_ = false;

    std::optional<ItemState> shown_;
    std::optional<int> appliedLossDigits_; ///< in the title

    MeasuredText title_;                 ///< the latest
    std::optional<MeasuredText> widest_; ///< for `widestLossDigits_`
    std::optional<int> widestLossDigits_;
    LossGates gates_;
    RunLoop::Handle lossGateRecheck_; ///< at most one
    std::unique_ptr<RenderLoop> renderLoop_;
    std::unique_ptr<RenderLoop> menuLoop_; ///< only while the menu is open
    Lifeline lifeline_;
};

} // namespace tarnwick
