// The slider for the slow-ping threshold.
#pragma once

#include <QSlider>

#include <functional>

namespace tarnwick {

/// Moves on a logarithmic scale and yields whole steps of it. Keys move it by steps. Its accessible value is
/// the threshold in milliseconds.
class ThresholdSlider final : public QSlider {
public:
    explicit ThresholdSlider(QWidget* parent);

    /// The latest value given to `follow`.
    [[nodiscard]] double thresholdMs() const { return thresholdMs_; }

    /// Shows a threshold without calling `onMove`.
    void follow(double ms);

    /// Moves as the user does.
    void moveTo(int position);

    /// Called with the new threshold when the user moves the slider.
    std::function<void(double ms)> onMove;

private:
    void adjust(int action);

    double thresholdMs_ = 0;
};

} // namespace tarnwick
