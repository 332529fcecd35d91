#include "app/ViewStyle/ControlLooks.h"

#include <QPushButton>
#include <QWidget>

namespace tarnwick::ControlLooks {

namespace {

constexpr double controlHeight = 28;
constexpr double buttonInset = 16;

} // namespace

int height(const ViewStyle& style) {
    return style.length(controlHeight);
}

void setHeight(QWidget& control, const ViewStyle& style) {
    control.setMinimumHeight(height(style));
}

void setWidth(QPushButton& button, const ViewStyle& style) {
    const int text = button.fontMetrics().size(Qt::TextShowMnemonic, button.text()).width();
    button.setMinimumWidth(text + 2 * style.length(buttonInset));
}

} // namespace tarnwick::ControlLooks
