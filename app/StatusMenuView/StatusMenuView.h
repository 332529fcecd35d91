// What the drop-down shows above its items: how the connection is, how it was, and its statistics.
#pragma once

#include "app/Observation/Observation.h"
#include "app/Reading/Format.h"
#include "app/Reading/Reading.h"
#include "app/StatusMenuView/ReadAloud.h"

#include <memory>

namespace tarnwick {

class HeaderView;
class LatencyChartView;
class StatsGridView;

/// Follows the reading, which outlives it together with the loop.
class StatusMenuView final : public ReadAloudWidget {
public:
    StatusMenuView(const Observed<Reading>& reading, RunLoop& loop, QWidget* parent);
    ~StatusMenuView() override;

    /// From now on nothing changes.
    void stopFollowing() { rendering_.reset(); }

    /// Fixed: width by design, height by font.
    [[nodiscard]] QSize sizeHint() const override;

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void render();
    void place();

    const Observed<Reading>& reading_;
    Format::Grouping grouping_;
    HeaderView* header_; ///< children
    LatencyChartView* chart_;
    StatsGridView* grid_;
    std::unique_ptr<RenderLoop> rendering_;
};

} // namespace tarnwick
