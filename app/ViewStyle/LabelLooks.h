// How labels look.
#pragma once

#include <Qt>

class QColor;
class QLabel;

namespace tarnwick {

/// Leading or trailing in the layout's direction. Left alone, a label follows the direction of its text.
void alignText(QLabel& label, Qt::Alignment side);

void setTextColor(QLabel& label, const QColor& color);

} // namespace tarnwick
