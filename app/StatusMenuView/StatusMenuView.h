// What the drop-down shows above its items: how the connection is, how it was, and its statistics.
#pragma once

#include "app/NoticesView/NoticesView.h"
#include "app/Observation/Observation.h"
#include "app/Reading/Format.h"
#include "app/Reading/PastCharts.h"
#include "app/Reading/Reading.h"
#include "app/ViewStyle/ReadAloud.h"

#include <functional>
#include <memory>
#include <vector>

namespace tarnwick {

class HeaderView;
class HistoryChartView;
class LatencyChartView;
class PathSection;
class ReachSwitch;
class StatsGridView;
class VerdictView;

/// Follows the reading, which outlives it together with the loop and the charts of the past.
class StatusMenuView final : public ReadAloudWidget {
public:
    /// Without charts of the past there is no switch below the chart.
    StatusMenuView(
        const Observed<Reading>& reading, RunLoop& loop, QWidget* parent, NoticeActions actions = {},
        PastCharts* past = nullptr);
    ~StatusMenuView() override;

    /// From now on nothing changes.
    void stopFollowing() { rendering_.reset(); }

    /// Width by design, height by font and notices.
    [[nodiscard]] QSize sizeHint() const override;

    /// For low screens: with less air between its parts.
    void setTight(bool isTight);
    /// For low screens: takes this height from the chart, as far as it stays readable.
    void lowerChart(int pixels);

    /// Whether there is something in it that Tab can reach.
    [[nodiscard]] bool hasButtons() const;

    /// The chart's span, by the keys from 1 on. False for other keys.
    bool chooseReachByKey(int key);

    /// Set by the owner. Called when a part comes, goes or grows.
    std::function<void()> onSizeChange;

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void render();
    void choose(HistoryChart::Reach reach);
    void showPast(const Reading& reading);
    void showVerdict(const Reading& reading);
    void showPath(const std::vector<HopEvidence>& path);
    /// What stands below whose fault it is.
    [[nodiscard]] QWidget* nextAfterVerdict() const;
    void changeSize();
    void showNotices(const Notices& notices);
    [[nodiscard]] int partWidth() const;
    [[nodiscard]] std::vector<QWidget*> parts() const;
    /// A length of the air around the parts.
    [[nodiscard]] int air(double points) const;
    void place();

    const Observed<Reading>& reading_;
    const RunLoop& loop_;
    NoticeActions actions_;
    PastCharts* past_; ///< null: none
    Format::Grouping grouping_;
    bool isTight_ = false;
    int chartLowered_ = 0;           ///< pixels
    HeaderView* header_;             ///< children
    NoticesView* notices_ = nullptr; ///< a child while there are notices
    Notices shownNotices_;
    std::unique_ptr<VerdictView> verdict_; ///< a child while something is wrong
    std::unique_ptr<PathSection> path_;    ///< a child while the path to blame is known
    LatencyChartView* chart_;
    HistoryChartView* pastChart_; ///< instead of it, while a longer span is chosen; null without the past
    ReachSwitch* switch_;         ///< likewise
    StatsGridView* grid_;
    std::unique_ptr<RenderLoop> rendering_;
};

} // namespace tarnwick
