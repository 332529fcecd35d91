// Adjusts the toolkit's own style: controls stand out from a card and have the same height. Desktop styles
// are left alone.
#pragma once

#include "app/ViewStyle/ViewStyle.h"

#include <QColor>

class QPushButton;
class QStyleOptionSpinBox;
class QWidget;

namespace tarnwick::ControlLooks {

/// The color between two others; a share of 1 gives `to`.
[[nodiscard]] QColor mixed(const QColor& from, const QColor& to, double share);

/// Gives the control an edge that stands out from its parent's background.
void setEdge(QWidget& control);

/// Gives the control at least the height that those of the form have in common.
void setHeight(QWidget& control, const ViewStyle& style);

/// Leaves room beside the button's text.
void setWidth(QPushButton& button, const ViewStyle& style);

/// Draws a spin box at its full height, like line edits and pickers.
void useFullHeight(QStyleOptionSpinBox& option, const QWidget& box);

} // namespace tarnwick::ControlLooks
