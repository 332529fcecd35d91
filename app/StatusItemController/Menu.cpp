#include "app/StatusItemController/Menu.h"

#include <algorithm>

namespace tarnwick {

void Menu::setHidden(MenuItem::Id id, bool hidden) {
    change(id, &MenuItem::hidden, hidden);
}

void Menu::setEnabled(MenuItem::Id id, bool enabled) {
    change(id, &MenuItem::enabled, enabled);
}

void Menu::change(MenuItem::Id id, bool MenuItem::* property, bool value) {
    items_.mutate([&](Items& items) {
        const auto item = std::ranges::find(items, id, &MenuItem::id);
        if (item == items.end() || (*item).*property == value) {
            return false;
        }
        (*item).*property = value;
        return true;
    });
}

// NOLINTBEGIN(readability-make-member-function-const): they change what the menu stands for
void Menu::choose(MenuItem::Id id) {
    bool canBeChosen = false;
    withoutTracking([&] {
        const auto item = std::ranges::find(items(), id, &MenuItem::id);
        canBeChosen = item != items().end() && !item->hidden && item->enabled;
    });
    if (canBeChosen && onChoose) {
        onChoose(id);
    }
}

void Menu::refresh() {
    if (onRefresh) {
        onRefresh();
    }
}

// NOLINTEND(readability-make-member-function-const)

void Menu::willOpen() {
    ++shownIn_;
    if (shownIn_ == 1 && onWillOpen) {
        onWillOpen();
    }
}

void Menu::didClose() {
    if (shownIn_ == 0) {
        return;
    }
    --shownIn_;
    if (shownIn_ == 0 && onDidClose) {
        onDidClose();
    }
}

} // namespace tarnwick
