// The status item's menu for panels that draw menus themselves: rows of text.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace tarnwick {

struct PanelMenuRow {
    int id = 0; ///< above 0; stays the same while the row means the same
    bool isSeparator = false;
    std::string label{}; ///< plain text; underscores mark no shortcut
    std::string iconName{};
    std::string shortcutKey{}; ///< pressed with Control ("Q", "comma"); empty: none
    bool enabled = true;
    bool visible = true;

    friend bool operator==(const PanelMenuRow&, const PanelMenuRow&) = default;
};

/// The rows, and the events that a panel reports. Main thread.
class PanelMenu {
public:
    PanelMenu() = default;
    PanelMenu(const PanelMenu&) = delete;
    PanelMenu& operator=(const PanelMenu&) = delete;
    virtual ~PanelMenu() = default;

    /// Brings the menu up to date, then reads it from top to bottom.
    [[nodiscard]] virtual std::vector<PanelMenuRow> rows() = 0;
    /// A row was chosen. Unknown ids are ignored.
    virtual void choose(int id) = 0;
    /// A panel is about to read the rows, to show them now or later.
    virtual void willRead() = 0;
    /// A panel shows the menu; a panel has closed it. Panels may report each of them twice, or never.
    virtual void didShow() = 0;
    virtual void didHide() = 0;

    /// The rows have changed.
    std::function<void()> onChange;
};

} // namespace tarnwick
