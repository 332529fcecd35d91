#include "platform/xdg/PresentDesktop.h"

#include <algorithm>
#include <cstdlib>
#include <sstream>

namespace tarnwick::PresentDesktop {

namespace {

bool hasName(const char* name) {
    const std::vector<std::string> present = names();
    return std::ranges::find(present, name) != present.end();
}

} // namespace

std::vector<std::string> names() {
    const char* const desktops = std::getenv("XDG_CURRENT_DESKTOP");
    std::istringstream parts(desktops != nullptr ? desktops : "");
    std::vector<std::string> found;
    for (std::string name; std::getline(parts, name, ':');) {
        if (!name.empty()) {
            found.push_back(name);
        }
    }
    return found;
}

bool isGnome() {
    return hasName("GNOME");
}

bool isPlasma() {
    return hasName("KDE");
}

} // namespace tarnwick::PresentDesktop
