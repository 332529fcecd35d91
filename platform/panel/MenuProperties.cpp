#include "platform/panel/MenuProperties.h"

#include <algorithm>

namespace tarnwick {

namespace {

std::string escapedLabel(const std::string& text) {
    // A single underscore would mark the letter behind it as the row's key.
    std::string escaped;
    for (const char character : text) {
        escaped += character;
        if (character == '_') {
            escaped += '_';
        }
    }
    return escaped;
}

} // namespace

MenuProperties menuProperties(const PanelMenuRow& row) {
    MenuProperties properties;
    if (row.isSeparator) {
        properties["type"] = std::string("separator");
    } else {
        properties["label"] = escapedLabel(row.label);
    }
    if (!row.iconName.empty()) {
        properties["icon-name"] = row.iconName;
    }
    if (!row.shortcutKey.empty()) {
        properties["shortcut"] = MenuShortcut{std::vector<std::string>{"Control", row.shortcutKey}};
    }
    if (!row.enabled) {
        properties["enabled"] = false;
    }
    if (!row.visible) {
        properties["visible"] = false;
    }
    return properties;
}

MenuProperties rootMenuProperties() {
    return {{"children-display", std::string("submenu")}};
}

const MenuProperties& defaultMenuProperties() {
    static const MenuProperties defaults{
        {"type", std::string("standard")},
        {"label", std::string()},
        {"enabled", true},
        {"visible", true},
        {"icon-name", std::string()},
        {"shortcut", MenuShortcut()},
        {"children-display", std::string()},
    };
    return defaults;
}

MenuProperties selected(const MenuProperties& properties, const std::vector<std::string>& names) {
    if (names.empty()) {
        return properties;
    }
    MenuProperties result;
    for (const auto& [name, value] : properties) {
        if (std::ranges::find(names, name) != names.end()) {
            result.emplace(name, value);
        }
    }
    return result;
}

bool haveSameLayout(const std::vector<PanelMenuRow>& before, const std::vector<PanelMenuRow>& after) {
    return std::ranges::equal(before, after, {}, &PanelMenuRow::id, &PanelMenuRow::id);
}

std::vector<MenuRowChange> menuChanges(
    const std::vector<PanelMenuRow>& before, const std::vector<PanelMenuRow>& after) {
    std::vector<MenuRowChange> changes;
    for (std::size_t i = 0; i < before.size() && i < after.size(); ++i) {
        if (before[i] == after[i]) {
            continue;
        }
        const MenuProperties old = menuProperties(before[i]);
        MenuRowChange change{.id = after[i].id, .updated = menuProperties(after[i])};
        for (const auto& [name, value] : old) {
            if (!change.updated.contains(name)) {
                change.removed.push_back(name);
            }
        }
        std::erase_if(change.updated, [&old](const auto& property) {
            const auto known = old.find(property.first);
            return known != old.end() && known->second == property.second;
        });
        changes.push_back(std::move(change));
    }
    return changes;
}

} // namespace tarnwick
