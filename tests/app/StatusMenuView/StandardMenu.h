// The program's menu, without what it does: every choice is written down.
#pragma once

#include "app/StatusItemController/StatusItemController.h"

#include <vector>

namespace tarnwick::test {

struct StandardMenu {
    using Id = MenuItem::Id;

    StandardMenu() {
        menu.onChoose = [this](Id id) { chosen.push_back(id); };
        menu.onWillOpen = [this] { ++opened; };
        menu.onDidClose = [this] { ++closed; };
    }

    StandardMenu(const StandardMenu&) = delete;
    StandardMenu& operator=(const StandardMenu&) = delete;

    Menu menu{StatusItemController::menuItems(true)};
    std::vector<Id> chosen;
    int opened = 0;
    int closed = 0;
};

} // namespace tarnwick::test
