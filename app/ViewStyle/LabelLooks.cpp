#include "app/ViewStyle/LabelLooks.h"

#include <QLabel>
#include <QStyle>

namespace tarnwick {

void alignText(QLabel& label, Qt::Alignment side) {
    label.setAlignment(
        QStyle::visualAlignment(label.layoutDirection(), side) | Qt::AlignAbsolute | Qt::AlignVCenter);
}

void setTextColor(QLabel& label, const QColor& color) {
    QPalette palette = label.palette();
    palette.setColor(QPalette::WindowText, color);
    label.setPalette(palette);
}

} // namespace tarnwick
