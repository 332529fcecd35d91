#include "app/SettingsView/ThresholdSlider.h"

#include "app/SettingsView/Model/ThresholdScale.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QSignalBlocker>

namespace tarnwick {

namespace {

constexpr int pageSteps = 10;
/// A notch of the wheel moves by a few of these.
constexpr int wheelPositions = ThresholdScale::positions / 50;

class AccessibleThreshold final : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    explicit AccessibleThreshold(ThresholdSlider& slider)
        : QAccessibleWidget(&slider, QAccessible::Slider), slider_(slider) {}

    void* interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::ValueInterface) {
            return static_cast<QAccessibleValueInterface*>(this);
        }
        return QAccessibleWidget::interface_cast(type);
    }

    [[nodiscard]] QVariant currentValue() const override { return slider_.thresholdMs(); }

    void setCurrentValue(const QVariant& value) override {
        slider_.moveTo(ThresholdScale::positionOf(value.toDouble()));
    }

    [[nodiscard]] QVariant maximumValue() const override { return ThresholdScale::highestMs; }

    [[nodiscard]] QVariant minimumValue() const override { return ThresholdScale::lowestMs; }

    [[nodiscard]] QVariant minimumStepSize() const override { return ThresholdScale::stepMs; }

private:
    ThresholdSlider& slider_;
};

QAccessibleInterface* makeSliderInterface(const QString& /*className*/, QObject* object) {
    auto* const slider = dynamic_cast<ThresholdSlider*>(object);
    // The toolkit's accessibility cache takes ownership.
    return slider == nullptr ? nullptr : new AccessibleThreshold(*slider);
}

} // namespace

ThresholdSlider::ThresholdSlider(QWidget* parent) : QSlider(Qt::Horizontal, parent) {
    static const bool isInstalled = [] {
        QAccessible::installFactory(makeSliderInterface);
        return true;
    }();
    static_cast<void>(isInstalled);
    setRange(0, ThresholdScale::positions);
    setSingleStep(wheelPositions);
    connect(this, &QSlider::actionTriggered, this, [this](int action) { adjust(action); });
    connect(this, &QSlider::valueChanged, this, [this](int position) {
        if (onMove) {
            onMove(ThresholdScale::thresholdAtPosition(position));
        }
    });
}

void ThresholdSlider::follow(double ms) {
    thresholdMs_ = ms;
    const QSignalBlocker quiet(this);
    setValue(ThresholdScale::positionOf(ms));
}

void ThresholdSlider::moveTo(int position) {
    if (position != value()) {
        setValue(position);
        return;
    }
    // At an end of the scale the threshold may lie beyond that end.
    const double ms = ThresholdScale::thresholdAtPosition(position);
    if (ms != thresholdMs_ && onMove) {
        onMove(ms);
    }
}

void ThresholdSlider::adjust(int action) {
    const auto moveBy = [this](int steps) {
        setSliderPosition(ThresholdScale::positionOf(ThresholdScale::stepped(thresholdMs_, steps)));
    };
    switch (action) {
    case SliderSingleStepAdd:
        moveBy(1);
        break;
    case SliderSingleStepSub:
        moveBy(-1);
        break;
    case SliderPageStepAdd:
        moveBy(pageSteps);
        break;
    case SliderPageStepSub:
        moveBy(-pageSteps);
        break;
    case SliderToMinimum:
        moveTo(minimum());
        break;
    case SliderToMaximum:
        moveTo(maximum());
        break;
    default:
        break;
    }
}

} // namespace tarnwick
