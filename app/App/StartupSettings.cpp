#include "app/App/StartupSettings.h"

#include <algorithm>
#include <utility>

namespace tarnwick::StartupSettings {

namespace {

using Command = std::vector<std::string>;

const std::vector<std::pair<std::string_view, Command>>& knownPlaces() {
    static const std::vector<std::pair<std::string_view, Command>> places{
        {"Budgie", {"budgie-desktop-settings"}},
        {"KDE", {"systemsettings", "kcm_autostart"}},
        {"LXQt", {"lxqt-config-session"}},
        {"MATE", {"mate-session-properties"}},
        {"X-Cinnamon", {"cinnamon-settings", "startup"}},
        {"XFCE", {"xfce4-session-settings"}},
    };
    return places;
}

} // namespace

Command command(std::string_view desktops) {
    while (!desktops.empty()) {
        const std::size_t end = std::min(desktops.find(':'), desktops.size());
        const std::string_view name = desktops.substr(0, end);
        const auto place =
            std::ranges::find(knownPlaces(), name, &std::pair<std::string_view, Command>::first);
        if (place != knownPlaces().end()) {
            return place->second;
        }
        desktops.remove_prefix(std::min(end + 1, desktops.size()));
    }
    return {};
}

void open(DesktopOpened ended) {
    const Command words = command(qgetenv("XDG_CURRENT_DESKTOP").toStdString());
    if (words.empty()) {
        return;
    }
    QStringList arguments;
    for (auto word = words.begin() + 1; word != words.end(); ++word) {
        arguments << QString::fromStdString(*word);
    }
    startBeside(QString::fromStdString(words.front()), arguments, std::move(ended));
}

} // namespace tarnwick::StartupSettings
