#include "app/App/StartupSettings.h"

#include "platform/xdg/PresentDesktop.h"

#include <QStandardPaths>

#include <algorithm>
#include <optional>
#include <string_view>

namespace tarnwick::StartupSettings {

namespace {

struct Place {
    std::string_view desktop;
    Command command;
};

/// A desktop with several has one line for each, the best one first.
const std::vector<Place>& knownPlaces() {
    static const std::vector<Place> places{
        {"Budgie", {"budgie-desktop-settings"}},
        {"GNOME", {"gnome-session-properties"}},
        {"GNOME", {"gnome-tweaks"}},
        {"GNOME-Flashback", {"gnome-session-properties"}},
        {"GNOME-Flashback", {"gnome-tweaks"}},
        {"KDE", {"systemsettings", "kcm_autostart"}},
        {"LXQt", {"lxqt-config-session"}},
        {"MATE", {"mate-session-properties"}},
        {"Unity", {"gnome-session-properties"}},
        {"Unity", {"gnome-tweaks"}},
        {"X-Cinnamon", {"cinnamon-settings", "startup"}},
        {"XFCE", {"xfce4-session-settings"}},
    };
    return places;
}

bool isInstalled(const Command& command) {
    return !QStandardPaths::findExecutable(QString::fromStdString(command.front())).isEmpty();
}

std::optional<Command> presentCommand() {
    const std::vector<Command> known = commands(PresentDesktop::names());
    const auto command = std::ranges::find_if(known, isInstalled);
    return command == known.end() ? std::nullopt : std::optional(*command);
}

} // namespace

std::vector<Command> commands(const std::vector<std::string>& desktops) {
    std::vector<Command> found;
    for (const std::string& name : desktops) {
        for (const Place& place : knownPlaces()) {
            if (place.desktop == name) {
                found.push_back(place.command);
            }
        }
    }
    return found;
}

bool exists() {
    return presentCommand().has_value();
}

void open(DesktopOpened ended) {
    const auto command = presentCommand();
    if (!command) {
        return;
    }
    QStringList arguments;
    for (auto word = command->begin() + 1; word != command->end(); ++word) {
        arguments << QString::fromStdString(*word);
    }
    startBeside(QString::fromStdString(command->front()), arguments, std::move(ended));
}

} // namespace tarnwick::StartupSettings
