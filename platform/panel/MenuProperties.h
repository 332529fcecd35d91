// A panel menu's rows as the menu protocol has them: properties by name, and what has changed between two
// states of them.
#pragma once

#include "platform/ports/PanelMenu.h"

#include <map>
#include <string>
#include <variant>
#include <vector>

namespace tarnwick {

/// A list for each stroke: the keys that are pressed together, modifiers first.
using MenuShortcut = std::vector<std::vector<std::string>>;
using MenuPropertyValue = std::variant<bool, std::string, MenuShortcut>;
using MenuProperties = std::map<std::string, MenuPropertyValue>;

/// The properties that differ from the protocol's defaults.
[[nodiscard]] MenuProperties menuProperties(const PanelMenuRow& row);

/// The properties of the menu itself.
[[nodiscard]] MenuProperties rootMenuProperties();

/// The value of each property that is left out.
[[nodiscard]] const MenuProperties& defaultMenuProperties();

/// The properties with these names; all of them when no name is given.
[[nodiscard]] MenuProperties selected(
    const MenuProperties& properties, const std::vector<std::string>& names);

/// What differs in a row that exists before and after.
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
