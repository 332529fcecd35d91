// The slider for the slow-ping threshold.
#pragma once

#include <QSlider>

#include <functional>

namespace tarnwick {

/// Moves on a logarithmic scale and yields whole steps of it. Keys move it by steps. To assistive technology
/// its value is the threshold in milliseconds.
class ThresholdSlider final : public QSlider {
public:
    explicit ThresholdSlider(QWidget* parent);

    /// The threshold as it was last followed.
    [[nodiscard]] double thresholdMs() const { return thresholdMs_; }

    /// Shows the threshold that holds now.
    void follow(double ms);

    /// As if the user had moved it there.
    void moveTo(int position);

    /// Called with what the user has moved it to.
    std::function<void(double ms)> onMove;

private:
    void adjust(int action);

    double thresholdMs_ = 0;
};

} // namespace tarnwick
