// The charts of longer spans as a front end shows them: which span is chosen, and when the past is read.
#pragma once

#include "app/Reading/HistoryChart.h"
#include "app/Reading/Reading.h"

#include <functional>
#include <map>
#include <string>
#include <utility>

namespace tarnwick {

/// Where the past comes from.
struct PastSource {
    /// Of the present host. It may take some milliseconds, since it reads the disk.
    std::function<History(const Span&)> read = nullptr;
    /// Why nothing is known, as a sentence.
    std::function<std::string()> whyEmpty = nullptr;
    UtcOffset offset = systemUtcOffset;
};

/// Each span is read when its chart is asked for, once in a minute at most.
class PastCharts {
public:
    explicit PastCharts(PastSource source) : source_(std::move(source)) {}

    /// Five minutes until another one is chosen.
    [[nodiscard]] HistoryChart::Reach reach() const { return reach_; }

    void choose(HistoryChart::Reach reach) { reach_ = reach; }

    /// Of the chosen span, which is longer than five minutes, in up to `most` columns.
    [[nodiscard]] const HistoryChart::Chart& chart(int most, const Reading& reading, HistoryTime now);

private:
    /// What a chart was made for.
    struct Purpose {
        HistoryTime minute{};
        std::string host{};
        HistoryChart::Thresholds thresholds{};
        int most = 0;

        friend bool operator==(const Purpose&, const Purpose&) = default;
    };

    struct Made {
        Purpose purpose{};
        HistoryChart::Chart chart{};
    };

    [[nodiscard]] HistoryChart::Chart make(const Purpose& purpose, HistoryTime now) const;

    PastSource source_;
    HistoryChart::Reach reach_ = HistoryChart::Reach::fiveMinutes;
    std::map<HistoryChart::Reach, Made> made_;
};

} // namespace tarnwick
