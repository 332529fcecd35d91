// The switch below the chart: how far it reaches back.
#pragma once

#include "app/Reading/HistoryChart.h"
#include "app/ViewStyle/ReadAloud.h"

#include <array>
#include <functional>

class QRadioButton;

namespace tarnwick {

/// A segment for each span, side by side. Tab reaches the chosen one; Left and Right lead to the others.
class ReachSwitch final : public ReadAloudWidget {
public:
    explicit ReachSwitch(QWidget* parent);

    /// Shows this one as chosen, without a call.
    void setReach(HistoryChart::Reach reach);

    [[nodiscard]] QSize sizeHint() const override;

    /// Set by the owner. Called when another one is chosen.
    std::function<void(HistoryChart::Reach)> onChoose;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    class Segment;

    void letTabReachChosen();

    std::array<Segment*, HistoryChart::allReaches.size()> segments_{}; ///< children
};

} // namespace tarnwick
