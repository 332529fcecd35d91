#include "app/ViewStyle/LatencyPalette.h"

#include "platform/qt/Appearance.h"

#include <QPalette>

namespace tarnwick {

namespace {

constexpr float outageOpacity = 0.85F;

QColor faded(QColor color, float opacity) {
    color.setAlphaF(opacity);
    return color;
}

} // namespace

LatencyPalette::LatencyPalette(const QPalette& palette)
    : text_(palette.color(QPalette::WindowText)),
      isDark_(isDark(palette)),
      wantsContrast_(Appearance::isBlackAndWhite(palette)) {
}

bool LatencyPalette::isDark(const QPalette& palette) {
    return palette.color(QPalette::Window).lightnessF() < 0.5F;
}

QColor LatencyPalette::good() const {
    return isDark_ ? QColor::fromRgbF(0.27F, 0.80F, 0.40F) : QColor::fromRgbF(0.14F, 0.54F, 0.24F);
}

QColor LatencyPalette::warn() const {
    return isDark_ ? QColor::fromRgbF(1.0F, 0.66F, 0.20F) : QColor::fromRgbF(0.76F, 0.42F, 0.0F);
}

QColor LatencyPalette::warnText() const {
    return isDark_ ? warn() : QColor::fromRgbF(0.62F, 0.34F, 0.0F);
}

QColor LatencyPalette::bad() const {
    return isDark_ ? QColor::fromRgbF(1.0F, 0.47F, 0.42F) : QColor::fromRgbF(0.77F, 0.16F, 0.11F);
}

QColor LatencyPalette::secondary() const {
    return faded(text_, wantsContrast_ ? 0.85F : 0.65F);
}

QColor LatencyPalette::tertiary() const {
    return faded(text_, wantsContrast_ ? 0.7F : 0.42F);
}

QColor LatencyPalette::of(QualityTone tone) const {
    switch (tone) {
    case QualityTone::neutral:
        return secondary();
    case QualityTone::good:
        return good();
    case QualityTone::middle:
        return warn();
    case QualityTone::bad:
        break;
    }
    return bad();
}

QColor LatencyPalette::of(LatencyChart::BarTone tone) const {
    switch (tone) {
    case LatencyChart::BarTone::good:
        return good();
    case LatencyChart::BarTone::warn:
        return warn();
    case LatencyChart::BarTone::bad:
        return bad();
    case LatencyChart::BarTone::outage:
        return faded(bad(), outageOpacity);
    case LatencyChart::BarTone::none:
        break;
    }
    return Qt::transparent;
}

} // namespace tarnwick
