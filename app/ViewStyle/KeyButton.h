// A button that is pressed with the keyboard as menus are.
#pragma once

#include <QPushButton>

namespace tarnwick {

/// Return, Enter, Space and Select click it at once; a key that is held clicks it once. All other keys are
/// its window's.
class KeyButton : public QPushButton {
public:
    using QPushButton::QPushButton;

protected:
    void keyPressEvent(QKeyEvent* event) override;
};

} // namespace tarnwick
