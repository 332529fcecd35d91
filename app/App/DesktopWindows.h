// The windows that the status item opens.
#pragma once

#include "app/App/AboutPanel.h"
#include "app/App/ConfirmDialog.h"
#include "app/App/OutagesWindow.h"
#include "app/App/SettingsWindow.h"
#include "app/StatusItemController/StatusItemController.h"
#include "app/StatusMenuView/DropDown.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tarnwick {

/// Main thread.
class DesktopWindows final : public StatusItemWindows {
public:
    /// All references outlive this object.
    DesktopWindows(
        RunLoop& loop, const Observed<Reading>& reading, Menu& menu, SettingsModel& settings,
        std::string version, const NoticeActions& actions, const PastSource& past,
        OutagesModel::Needs outages);

    void toggleDropDown(std::optional<ScreenPoint> at) override;
    /// For requests other than a click on the item: opens, never closes.
    void openDropDown(const std::string& activationToken);
    void openSettings(const std::string& activationToken);
    void openOutages(const std::string& activationToken);
    /// The drop-down at the pointer, for a click in the panel's menu.
    void openDropDownAtPointer();
    /// To the clipboard, for a click in the panel's menu. On Wayland this needs a window with the focus, so
    /// it opens the drop-down.
    void copy(const std::string& text);

    /// Where the shell tells of the item: the drop-down opens there when no click does.
    void setItemFinder(std::function<void(DropDown::Found)> find);

    /// Returns the token with which a click may open a window in front of others; empty where there is none.
    std::function<std::string()> takeActivationToken;

    void showOutages() override;
    void showSettings() override;
    void showAbout() override;

    void expectWindow() override { useActivationTokenOfClick(); }

    void ask(const Question& question, std::function<void(bool)> answered) override;
    void quit() override;

private:
    void useActivationTokenOfClick() const;
    void presentSettings();
    void presentOutages();

    RunLoop& loop_;
    Menu& menu_;
    SettingsModel& settings_;
    DropDown dropDown_;
    std::unique_ptr<SettingsWindow> settingsWindow_; ///< made at its first use
    OutagesModel::Needs outages_;
    std::unique_ptr<OutagesWindow> outagesWindow_; ///< likewise
    AboutPanel about_;
    ConfirmDialog confirm_;
};

} // namespace tarnwick
