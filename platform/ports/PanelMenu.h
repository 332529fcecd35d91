// The menu of the status item where the panel draws it by itself: rows of text.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace tarnwick {

struct PanelMenuRow {
    int id = 0; ///< above 0; stays the same for as long as the row stands for the same thing
    bool isSeparator = false;
    std::string label{}; ///< plain text; an underscore is an underscore
    std::string iconName{};
    std::string shortcutKey{}; ///< pressed together with Control ("Q", "comma"); empty: none
    bool enabled = true;
    bool visible = true;

    friend bool operator==(const PanelMenuRow&, const PanelMenuRow&) = default;
};

/// The rows, and what becomes of them. Main thread.
class PanelMenu {
public:
    PanelMenu() = default;
    PanelMenu(const PanelMenu&) = delete;
    PanelMenu& operator=(const PanelMenu&) = delete;
    virtual ~PanelMenu() = default;

    [[nodiscard]] virtual std::vector<PanelMenuRow> rows() const = 0;
    /// A row was chosen. Unknown ids are ignored.
    virtual void choose(int id) = 0;
    /// A panel is about to read the rows: to draw them, or just ahead of time.
    virtual void willRead() = 0;
    /// A panel shows the menu; it has been closed. Either may come twice, or not at all.
    virtual void didShow() = 0;
    virtual void didHide() = 0;

    /// The rows are no longer what they were.
    std::function<void()> onChange;
};

} // namespace tarnwick
