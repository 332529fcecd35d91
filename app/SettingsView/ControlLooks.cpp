#include "app/SettingsView/ControlLooks.h"

#include <QPalette>
#include <QPushButton>
#include <QStyle>
#include <QStyleOptionSpinBox>
#include <QWidget>

namespace tarnwick::ControlLooks {

namespace {

constexpr double controlHeight = 28;
constexpr double buttonInset = 16;

/// The edge's color between background and text.
constexpr double edgeShare = 0.42;

/// The toolkit's own style darkens the window's color by this for the edges of controls, in percent.
constexpr int darkening = 140;

bool isToolkitsOwn(const QStyle& style) {
    return style.name() == QLatin1String("fusion");
}

} // namespace

QColor mixed(const QColor& from, const QColor& to, double share) {
    const auto mix = [share](float a, float b) { return static_cast<float>(a + (b - a) * share); };
    return QColor::fromRgbF(
        mix(from.redF(), to.redF()), mix(from.greenF(), to.greenF()), mix(from.blueF(), to.blueF()));
}

void setEdge(QWidget& control) {
    QPalette own; // colors that are not set here are inherited
    if (isToolkitsOwn(*control.style())) {
        const QPalette around = control.parentWidget()->palette();
        const QColor edge =
            mixed(around.color(QPalette::Window), around.color(QPalette::WindowText), edgeShare);
        own.setColor(QPalette::Window, edge.lighter(darkening));
    }
    control.setPalette(own);
}

void setHeight(QWidget& control, const ViewStyle& style) {
    control.setMinimumHeight(style.length(controlHeight));
}

void setWidth(QPushButton& button, const ViewStyle& style) {
    const int text = button.fontMetrics().horizontalAdvance(button.text());
    button.setMinimumWidth(text + 2 * style.length(buttonInset));
}

void useFullHeight(QStyleOptionSpinBox& option, const QWidget& box) {
    if (isToolkitsOwn(*box.style())) {
        option.rect.adjust(0, -1, 0, 1); // the style leaves one pixel free above and below
    }
}

} // namespace tarnwick::ControlLooks
