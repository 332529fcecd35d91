// The windows that the status item opens, in the desktop's toolkit.
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
    /// What is handed in outlives this object.
    DesktopWindows(
        RunLoop& loop, Monitor& monitor, Menu& menu, std::string version, std::function<void()> openSettings);

    void toggleDropDown(std::optional<ScreenPoint> at) override;
    /// In answer to something else than a click on the item: opens, and never closes.
    void openDropDown(const std::string& activationToken);
    /// The same for a click in the panel's menu.
    void openDropDownAtPointer();

    /// By what the desktop lets a click open a window in front of others; empty where it gives nothing.
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
