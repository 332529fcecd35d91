// One item of the menu as a button.
#pragma once

#include "app/StatusItemController/Menu.h"
#include "app/ViewStyle/KeyButton.h"

#include <QKeySequence>

#include <functional>

namespace tarnwick {

/// Looks like a row of a menu: icon, title, and at the right the keys that choose it from anywhere in the
/// menu. Highlighted while it has the focus, which the pointer gives it too.
class MenuRow final : public KeyButton {
public:
    explicit MenuRow(QWidget* parent);

    void setItem(const MenuItem& item);
    /// Underlines the letter that chooses the item.
    void setShowsMnemonic(bool shows);

    /// For low screens: with less air above and below the title.
    void setTight(bool isTight) { isTight_ = isTight; }

    [[nodiscard]] const MenuItem& item() const { return item_; }

    [[nodiscard]] QSize sizeHint() const override;

    /// Set by the owner.
    std::function<void()> onChoose;

protected:
    void paintEvent(QPaintEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    void drawTitle(QPainter& painter, double left, double baseline) const;

    MenuItem item_;
    bool showsMnemonic_ = false;
    bool isTight_ = false;
};

/// The keys of a shortcut: Control with the key of this character. None for 0.
[[nodiscard]] QKeySequence shortcutKeys(char shortcut);

/// How a shortcut is written for people: "Ctrl+Q".
[[nodiscard]] QString shortcutText(char shortcut);

} // namespace tarnwick
