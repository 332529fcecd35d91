// What the toolkit's own style needs so that its controls stand out from a card, and look alike beside each
// other. Styles of desktops are left alone.
#pragma once

#include <QColor>

class QStyleOptionSpinBox;
class QWidget;

namespace tarnwick::ControlLooks {

/// The color that has gone so far, of 1, from one to another.
[[nodiscard]] QColor mixed(const QColor& from, const QColor& to, double share);

/// Gives the control an edge that can be seen on its parent's ground.
void setEdge(QWidget& control);

/// Lets a spin box be drawn as high as it is, as line edits and pickers are.
void evenOut(QStyleOptionSpinBox& option, const QWidget& box);

} // namespace tarnwick::ControlLooks
