// The menu's items below the status view: buttons and the lines between them.
#pragma once

#include "app/StatusItemController/Menu.h"
#include "app/ViewStyle/ReadAloud.h"
#include "core/RunLoop.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace tarnwick {

class MenuRow;

/// Follows the menu for as long as it exists. Menu and loop outlive it.
class MenuItemsView final : public ReadAloudWidget {
public:
    MenuItemsView(const Menu& menu, RunLoop& loop, QWidget* parent);
    ~MenuItemsView() override;

    /// From now on nothing changes.
    void stopFollowing() { rendering_.reset(); }

    /// The keys that are held down. With Shift or Alt, alternates stand in for the items above them. With
    /// Alt, mnemonics are underlined.
    void setHeldKeys(Qt::KeyboardModifiers held);

    /// For low screens: with less air between the items.
    void setTight(bool isTight);

    /// Moves the highlight to the next row that can be chosen, or to the previous one, around the ends.
    void highlightNext(int direction);
    /// The first one, or the last.
    void highlightEnd(int direction);

    /// Chooses the row with this mnemonic or shortcut. False when no row has it.
    bool chooseByMnemonic(QChar letter);
    bool chooseByShortcut(QChar character);

    /// From top to bottom, the visible ones.
    [[nodiscard]] std::vector<MenuRow*> visibleRows() const;

    [[nodiscard]] QSize sizeHint() const override;

    /// Set by the owner.
    std::function<void(MenuItem::Id)> onChoose;
    std::function<void()> onSizeChange;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    /// A row or, without one, a line.
    struct Entry {
        MenuRow* row = nullptr; ///< a child
        MenuItem item{};
        std::optional<MenuItem> alternate = std::nullopt;
        int y = 0;
    };

    void render();
    void makeEntries(const Menu::Items& items);
    void showItems();
    void place();
    [[nodiscard]] int lineHeight() const; ///< of a separator
    [[nodiscard]] std::vector<MenuRow*> choosableRows() const;
    bool chooseBy(char MenuItem::* key, QChar typed);

    const Menu& menu_;
    std::vector<Entry> entries_;
    Qt::KeyboardModifiers held_; ///< Shift and Alt alone
    bool isTight_ = false;
    int heightBefore_ = 0;
    std::unique_ptr<RenderLoop> rendering_;
};

} // namespace tarnwick
