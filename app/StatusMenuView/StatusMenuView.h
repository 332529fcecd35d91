// What the drop-down shows above its items: how the connection is, how it was, and its statistics.
#pragma once

#include "app/Monitor/Monitor.h"
#include "app/Reading/Format.h"
#include "app/StatusMenuView/ReadAloud.h"

#include <memory>

namespace tarnwick {

class HeaderView;
class LatencyChartView;
class StatsGridView;

/// Follows the monitor for as long as it exists. Monitor and loop outlive it.
class StatusMenuView final : public ReadAloudWidget {
public:
    StatusMenuView(Monitor& monitor, RunLoop& loop, QWidget* parent);
    ~StatusMenuView() override;

    /// From now on nothing changes any more.
    void stopFollowing() { rendering_.reset(); }

    /// Fixed: width by design, height by font.
    [[nodiscard]] QSize sizeHint() const override;

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void render();
    void place();

    Monitor& monitor_;
    RunLoop& loop_;
    Format::Grouping grouping_;
    HeaderView* header_; ///< children
    LatencyChartView* chart_;
    StatsGridView* grid_;
    std::unique_ptr<RenderLoop> rendering_;
};

} // namespace tarnwick
