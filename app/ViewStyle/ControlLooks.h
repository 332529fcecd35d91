// Sizes that the form's controls have in common.
#pragma once

#include "app/ViewStyle/ViewStyle.h"

class QPushButton;
class QWidget;

namespace tarnwick::ControlLooks {

/// The height that the form's controls have in common.
[[nodiscard]] int height(const ViewStyle& style);

/// Gives the control at least that height.
void setHeight(QWidget& control, const ViewStyle& style);

/// Leaves room beside the button's text.
void setWidth(QPushButton& button, const ViewStyle& style);

} // namespace tarnwick::ControlLooks
