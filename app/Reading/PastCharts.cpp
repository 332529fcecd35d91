#include "app/Reading/PastCharts.h"

namespace tarnwick {

const HistoryChart::Chart& PastCharts::chart(int most, const Reading& reading, HistoryTime now) {
    const Purpose purpose{
        .minute = floorTo(now, std::chrono::minutes(1)),
        .host = reading.host,
        .thresholds = {.lowMs = reading.chart.lowThresholdMs, .highMs = reading.chart.highThresholdMs},
        .most = most};
    const auto found = made_.find(reach_);
    if (found != made_.end() && found->second.purpose == purpose) {
        return found->second.chart;
    }
    Made& made = made_[reach_];
    made = {.purpose = purpose, .chart = make(purpose, now)};
    return made.chart;
}

HistoryChart::Chart PastCharts::make(const Purpose& purpose, HistoryTime now) const {
    const auto division = HistoryChart::divisionOf(reach_, now, purpose.most, source_.offset);
    auto chart =
        HistoryChart::chartOf(source_.read(division.span), division, purpose.thresholds, source_.offset);
    chart.title = HistoryChart::titleOf(reach_);
    if (chart.isEmpty()) {
        chart.whyEmpty = source_.whyEmpty();
    }
    return chart;
}

} // namespace tarnwick
