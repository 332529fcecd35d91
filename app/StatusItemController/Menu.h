// The status item's menu as a model: what stands in it, observed by everything that shows it.
#pragma once

#include "app/Observation/Observation.h"

#include <functional>
#include <string>
#include <vector>

namespace tarnwick {

struct MenuItem {
    enum class Id {
        header, ///< the status view; without title or action
        changeHost,
        resetSession,
        resetAllTime,
        pause,
        resume,
        outages,
        checkForUpdates,
        settings,
        about,
        quit,
        separator,
    };

    Id id = Id::separator;
    std::string title{};
    char mnemonic = 0;        ///< a letter of the title, typed with Alt to choose the item; 0: none
    char shortcut = 0;        ///< typed with Control to choose the item; 0: none
    bool isAlternate = false; ///< takes the place of the item above it while Alt is held
    std::string iconName{};   ///< of the desktop's icon theme, symbolic
    bool hidden = false;
    bool enabled = true;

    friend bool operator==(const MenuItem&, const MenuItem&) = default;
};

/// Main thread.
class Menu {
public:
    using Items = std::vector<MenuItem>;

    explicit Menu(Items items) : items_(std::move(items)) {}

    /// From top to bottom. Observable.
    [[nodiscard]] const Items& items() const { return items_.get(); }

    /// Observers are told only of real changes.
    void setHidden(MenuItem::Id id, bool hidden);
    void setEnabled(MenuItem::Id id, bool enabled);

    /// Runs the action of the item, if it is there, visible and enabled.
    void choose(MenuItem::Id id);

    /// Brings the items up to date before they are read without being shown. An open menu is always up to
    /// date.
    void refresh();

    /// Each view that shows the menu calls these in pairs: before it shows it, and after it has hidden it.
    void willOpen();
    void didClose();

    /// Set by the owner. Shown in several places at a time, it opens with the first and closes with the last.
    std::function<void(MenuItem::Id)> onChoose;
    std::function<void()> onRefresh;
    std::function<void()> onWillOpen;
    std::function<void()> onDidClose;

private:
    void change(MenuItem::Id id, bool MenuItem::* property, bool value);

    Observed<Items> items_;
    int shownIn_ = 0; ///< number of views that show it
};

} // namespace tarnwick
