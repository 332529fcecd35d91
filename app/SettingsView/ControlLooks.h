// Sizes that the form's controls have in common.
#pragma once

#include "app/ViewStyle/ViewStyle.h"

class QPushButton;
class QWidget;

namespace tarnwick::ControlLooks {

/// Gives the control at least the height that those of the form have in common.
void setHeight(QWidget& control, const ViewStyle& style);

/// Leaves room beside the button's text.
void setWidth(QPushButton& button, const ViewStyle& style);

} // namespace tarnwick::ControlLooks
