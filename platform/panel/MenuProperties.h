// A panel menu's rows as the menu protocol has them: properties by name, and what has changed between two
// states of them.
#pragma once

#include "platform/ports/PanelMenu.h"

#include <map>
#include <string>
#include <variant>
#include <vector>

namespace tarnwick {

/// Keys pressed together, the last one not being a modifier.
using MenuShortcut = std::vector<std::string>;
using MenuPropertyValue = std::variant<bool, std::string, MenuShortcut>;
using MenuProperties = std::map<std::string, MenuPropertyValue>;

/// Those that differ from the protocol's defaults. A row's texts are made valid UTF-8.
[[nodiscard]] MenuProperties menuProperties(const PanelMenuRow& row);

/// Of the menu itself.
[[nodiscard]] MenuProperties rootMenuProperties();

/// What a property is that is not mentioned.
[[nodiscard]] const MenuProperties& defaultMenuProperties();

/// `properties` without those that are not asked for. Without names all are.
[[nodiscard]] MenuProperties selected(
    const MenuProperties& properties, const std::vector<std::string>& names);

/// Of one row that stays.
struct MenuRowChange {
    int id = 0;
    MenuProperties updated{};
    std::vector<std::string> removed{}; ///< back to their defaults

    friend bool operator==(const MenuRowChange&, const MenuRowChange&) = default;
};

/// Whether the same rows stand in the same order.
[[nodiscard]] bool haveSameLayout(
    const std::vector<PanelMenuRow>& before, const std::vector<PanelMenuRow>& after);

/// The rows that differ among those with the same layout.
[[nodiscard]] std::vector<MenuRowChange> menuChanges(
    const std::vector<PanelMenuRow>& before, const std::vector<PanelMenuRow>& after);

} // namespace tarnwick
