// Buttons that open something.
#pragma once

#include "app/ViewStyle/KeyButton.h"

namespace tarnwick {

/// Assistive technology learns what it opens, and whether that is open.
class OpeningButton : public KeyButton {
public:
    enum class Opens { menu, section };

    OpeningButton(Opens opens, QWidget* parent);

    [[nodiscard]] Opens opens() const { return opens_; }

    /// What it opens, where that is not found elsewhere by assistive technology; else null.
    [[nodiscard]] virtual QWidget* content() const { return nullptr; }

    [[nodiscard]] bool isOpen() const { return isOpen_; }

protected:
    /// Also draws the button again.
    void setOpen(bool isOpen);

private:
    Opens opens_;
    bool isOpen_ = false;
};

} // namespace tarnwick
