// The windows that the status item opens.
#pragma once

#include "app/App/AboutPanel.h"
#include "app/App/ConfirmDialog.h"
#include "app/StatusItemController/StatusItemController.h"
#include "app/StatusMenuView/DropDown.h"

#include <functional>
#include <optional>
#include <string>

namespace tarnwick {

/// Main thread.
class DesktopWindows final : public StatusItemWindows {
public:
    /// All arguments outlive this object.
    DesktopWindows(
        RunLoop& loop, Monitor& monitor, Menu& menu, std::string version, std::function<void()> openSettings);

    void toggleDropDown(std::optional<ScreenPoint> at) override;
    /// For requests other than a click on the item: opens, never closes.
    void openDropDown(const std::string& activationToken);
    /// The same, at the pointer, for a click in the panel's menu.
    void openDropDownAtPointer();

    /// Returns the token with which a click may open a window in front of others; empty where there is none.
    std::function<std::string()> takeActivationToken;

    void showSettings() override;
    void showAbout() override;
    void ask(const Question& question, std::function<void(bool)> answered) override;
    void quit() override;

private:
    void useActivationTokenOfClick() const;

    DropDown dropDown_;
    AboutPanel about_;
    ConfirmDialog confirm_;
    std::function<void()> openSettings_;
};

} // namespace tarnwick
