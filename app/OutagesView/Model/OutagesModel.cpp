#include "app/OutagesView/Model/OutagesModel.h"

#include "app/Report/LocalText.h"

#include <algorithm>
#include <utility>

namespace tarnwick {

namespace {

constexpr std::chrono::minutes chartPart{30};

} // namespace

void OutagesModel::open() {
    if (isOpen()) {
        return;
    }
    withoutTracking([this] {
        state_ = presentState();
        reread();
    });
    following_ = std::make_unique<RenderLoop>(needs_.loop, [this] { follow(); });
}

void OutagesModel::close() {
    following_.reset();
    rereading_.reset();
    history_ = {};
    page_ = {};
    status_.clear();
    chosenDay_ = 0;
}

OutagesModel::State OutagesModel::presentState() const {
    const Reading& reading = needs_.reading.get();
    const auto problem = std::ranges::find(reading.notices, Notice::Kind::noHistory, &Notice::kind);
    return {
        .host = reading.host,
        .keepsHistory = needs_.keepsHistory(),
        .isDown = reading.isDown(),
        .blame = reading.verdict ? std::optional(reading.verdict->blame) : std::nullopt,
        .problem = problem != reading.notices.end() ? problem->text : std::string()};
}

HistoryTime OutagesModel::wallNow() const {
    return std::chrono::floor<std::chrono::seconds>(needs_.loop.wallNow());
}

void OutagesModel::follow() {
    State present = presentState();
    if (present != state_) {
        state_ = std::move(present);
        reread();
    }
}

bool OutagesModel::lasts() const {
    return std::ranges::any_of(history_.episodes, [](const Episode& episode) { return !episode.end; });
}

void OutagesModel::rereadLater() {
    const double interval = lasts() ? lastingInterval : rereadInterval;
    if (!rereading_ || interval != interval_) {
        interval_ = interval;
        rereading_ = needs_.loop.everyRoughly(
            needs_.loop.now() + interval, interval, interval * rereadTolerance, [this] { reread(); });
    }
}

void OutagesModel::reread() {
    const HistoryTime now = wallNow();
    const bool showsToday = page_.days.empty() || chosenDay_ + 1 == page_.days.size();
    const auto shown = showsToday ? std::chrono::year_month_day() : page_.days.at(chosenDay_).summary.day;
    const Span span = outagesSpan(now, needs_.offset);
    history_ = needs_.read(span);
    page_ = makeOutagesPage(history_, now, needs_.offset);
    status_ = historyStatus(
        history_, span, {.host = state_.host, .isOn = state_.keepsHistory, .problem = state_.problem},
        needs_.offset);
    const auto same =
        std::ranges::find(page_.days, shown, [](const OutagesDay& day) { return day.summary.day; });
    chosenDay_ = static_cast<std::size_t>(same - page_.days.begin());
    if (same == page_.days.end()) {
        chosenDay_ = page_.days.size() - 1; // today, or a day that has left the calendar
    }
    rereadLater();
    if (onChange) {
        onChange();
    }
}

void OutagesModel::chooseDay(std::size_t day) {
    if (day < page_.days.size()) {
        chosenDay_ = day;
    }
}

std::vector<OutagesFigure> OutagesModel::figures() const {
    if (chosenDay_ >= page_.days.size()) {
        return {};
    }
    return dayFigures(history_, page_.days[chosenDay_].summary, needs_.offset);
}

HistoryChart::Chart OutagesModel::chart() const {
    if (chosenDay_ >= page_.days.size()) {
        return {};
    }
    const LatencyChart::Chart& present = needs_.reading.get().chart;
    const Span day = spanOfDay(page_.days[chosenDay_].summary.day, needs_.offset);
    HistoryChart::Chart chart = HistoryChart::chartOf(
        history_, {.span = day, .parts = static_cast<int>(day.length() / chartPart)},
        {.lowMs = present.lowThresholdMs, .highMs = present.highThresholdMs}, needs_.offset);
    chart.title = "By half hours";
    chart.whyEmpty = "Nothing is known of this day.";
    return chart;
}

std::string OutagesModel::exported(ExportFormat format) const {
    const HistoryTime now = wallNow();
    const Report report = makeReport(history_, state_.host, outagesSpan(now, needs_.offset), needs_.offset);
    return tarnwick::exported(report, format, {.version = needs_.version, .made = now}, needs_.offset);
}

std::string OutagesModel::exportName() const {
    return "tarnwick-" + LocalText::day(localDay(wallNow(), needs_.offset));
}

} // namespace tarnwick
