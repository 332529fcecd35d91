// Offers once to add a bundle's program to the user's applications, and takes it out of them again.
#pragma once

#include "app/Monitor/Monitor.h"
#include "app/SettingsView/Model/SettingsModel.h"
#include "app/StatusItemController/StatusItemController.h"
#include "platform/xdg/AutostartEntry.h"
#include "platform/xdg/MenuEntry.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace tarnwick {

/// A notice until the user has answered it, and later a row of the settings. Nothing moves: the entry in the
/// menu and the start at login name the program where it is. Main thread.
class ApplicationsOffer {
public:
    struct Needs {
        Monitor& monitor;        ///< outlives this, like the settings
        SettingsModel& settings; ///< whose actions are set here
        MenuEntry menu;
        AutostartEntry::Session session;
        std::filesystem::path program;
        std::filesystem::path bundle;   ///< its folder
        std::filesystem::path answered; ///< a file that remembers that the user has answered
        std::function<void(const Question& question, std::function<void(bool)> answered)> ask;
        /// Removes what updates keep beside the folder.
        std::function<void()> forgetUpdates;
    };

    explicit ApplicationsOffer(Needs needs);
    ApplicationsOffer(const ApplicationsOffer&) = delete;
    ApplicationsOffer& operator=(const ApplicationsOffer&) = delete;
    ~ApplicationsOffer() = default;

    /// Called once. Offers where the menu has no entry, and brings an entry up to date whose program was
    /// moved here or replaced by another version.
    void start();

private:
    void answer(bool addsIt);
    void askToRemove();
    /// Nothing on success, else the reason for the user.
    [[nodiscard]] std::optional<std::string> add();
    [[nodiscard]] std::optional<std::string> remove();
    void show(const std::optional<std::string>& problem);
    void remember() const;

    Needs needs_;
    AutostartEntry login_;
};

} // namespace tarnwick
