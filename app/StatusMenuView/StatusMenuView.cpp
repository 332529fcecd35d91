#include "app/StatusMenuView/StatusMenuView.h"

#include "app/HistoryChartView/HistoryChartView.h"
#include "app/StatusMenuView/HeaderView.h"
#include "app/StatusMenuView/LatencyChartView.h"
#include "app/StatusMenuView/PathSection.h"
#include "app/StatusMenuView/ReachSwitch.h"
#include "app/StatusMenuView/StatsGridView.h"
#include "app/StatusMenuView/VerdictView.h"
#include "app/ViewStyle/ViewStyle.h"

#include <QAbstractButton>

#include <utility>

namespace tarnwick {

namespace {

constexpr double viewWidth = 320;
constexpr double sidePadding = 14;
constexpr double topPadding = 8;
constexpr double bottomPadding = 6;
constexpr double spacing = 12;
constexpr double tightness = 0.5;   ///< what a low screen leaves of the air
constexpr int mostPastColumns = 73; ///< each four points wide

int partHeight(const QWidget* part) {
    return part == nullptr ? 0 : part->sizeHint().height();
}

} // namespace

// NOLINTBEGIN(cppcoreguidelines-owning-memory): the children are owned by this widget
StatusMenuView::StatusMenuView(
    const Observed<Reading>& reading, RunLoop& loop, QWidget* parent, NoticeActions actions, PastCharts* past)
    : ReadAloudWidget(Role::group, parent),
      reading_(reading),
      loop_(loop),
      actions_(std::move(actions)),
      past_(past),
      grouping_(Format::Grouping::ofUser()),
      header_(new HeaderView(this)),
      chart_(new LatencyChartView(this)),
      pastChart_(past != nullptr ? new HistoryChartView(this) : nullptr),
      switch_(past != nullptr ? new ReachSwitch(this) : nullptr),
      grid_(new StatsGridView(this)) {
    setSpokenText(QStringLiteral("Connection"));
    if (past_ != nullptr) {
        switch_->setReach(past_->reach());
        switch_->onChoose = [this](HistoryChart::Reach reach) { choose(reach); };
    }
    rendering_ = std::make_unique<RenderLoop>(loop, [this] { render(); });
}

// NOLINTEND(cppcoreguidelines-owning-memory)

StatusMenuView::~StatusMenuView() = default;

void StatusMenuView::render() {
    const Reading& reading = reading_.get();
    header_->setContent(HeaderContent::of(reading));
    chart_->setChart(reading.chart);
    showPast(reading);
    grid_->setRows(StatsGrid::rows(reading.session, reading.site, grouping_));
    showVerdict(reading);
    if (reading.notices != shownNotices_) {
        showNotices(reading.notices);
    }
}

void StatusMenuView::choose(HistoryChart::Reach reach) {
    past_->choose(reach);
    showPast(reading_.get());
    place();
}

bool StatusMenuView::chooseReachByKey(int key) {
    const auto index = static_cast<std::size_t>(key - Qt::Key_1);
    if (past_ == nullptr || key < Qt::Key_1 || index >= HistoryChart::allReaches.size()) {
        return false;
    }
    switch_->setReach(HistoryChart::allReaches.at(index));
    choose(HistoryChart::allReaches.at(index));
    return true;
}

void StatusMenuView::showPast(const Reading& reading) {
    if (past_ == nullptr) {
        return;
    }
    const bool isPast = past_->reach() != HistoryChart::Reach::fiveMinutes;
    if (isPast) {
        const auto now = std::chrono::floor<std::chrono::seconds>(loop_.wallNow());
        pastChart_->setChart(past_->chart(mostPastColumns, reading, now));
    }
    chart_->setHidden(isPast);
    pastChart_->setHidden(!isPast);
}

void StatusMenuView::showVerdict(const Reading& reading) {
    const int before = partHeight(verdict_.get()) + partHeight(path_.get());
    showPath(reading.path);
    if (!reading.verdict) {
        verdict_.reset();
    } else {
        if (!verdict_) {
            verdict_ = std::make_unique<VerdictView>(this);
            verdict_->stackUnder(
                path_ ? path_.get() : nextAfterVerdict()); // so that it is read after the header
            verdict_->show();
        }
        verdict_->setText(QString::fromStdString(reading.verdict->evidence), partWidth());
    }
    if (before != partHeight(verdict_.get()) + partHeight(path_.get())) {
        changeSize();
    }
}

void StatusMenuView::showPath(const std::vector<HopEvidence>& path) {
    if (path.empty()) {
        path_.reset();
        return;
    }
    if (!path_) {
        path_ = std::make_unique<PathSection>(this);
        path_->onToggle = [this] { changeSize(); };
        path_->stackUnder(nextAfterVerdict());
        path_->show();
    }
    path_->setRows(pathRows(path), partWidth());
}

QWidget* StatusMenuView::nextAfterVerdict() const {
    return notices_ != nullptr ? static_cast<QWidget*>(notices_) : chart_;
}

void StatusMenuView::changeSize() {
    place();
    if (onSizeChange) {
        onSizeChange();
    }
}

int StatusMenuView::partWidth() const {
    const ViewStyle style(*this);
    return style.length(viewWidth) - 2 * style.length(sidePadding);
}

void StatusMenuView::showNotices(const Notices& notices) {
    shownNotices_ = notices;
    notices_ = NoticesView::inPlaceOf(notices_, notices, actions_, partWidth(), this);
    if (notices_ != nullptr) {
        notices_->stackUnder(chart_); // so that it is read after the header
    }
    changeSize();
}

bool StatusMenuView::hasButtons() const {
    return findChild<QAbstractButton*>() != nullptr;
}

std::vector<QWidget*> StatusMenuView::parts() const {
    std::vector<QWidget*> parts{header_};
    if (verdict_) {
        parts.push_back(verdict_.get());
    }
    if (path_) {
        parts.push_back(path_.get());
    }
    if (notices_ != nullptr) {
        parts.push_back(notices_);
    }
    parts.push_back(chart_);
    if (past_ != nullptr) {
        parts.back() = chart_->isHidden() ? static_cast<QWidget*>(pastChart_) : chart_;
        parts.push_back(switch_);
    }
    parts.push_back(grid_);
    return parts;
}

int StatusMenuView::air(double points) const {
    return ViewStyle(*this).length(isTight_ ? tightness * points : points);
}

void StatusMenuView::setTight(bool isTight) {
    isTight_ = isTight;
    place();
}

void StatusMenuView::lowerChart(int pixels) {
    chart_->lower(pixels);
    if (past_ != nullptr) {
        pastChart_->lower(pixels);
    }
    place();
}

QSize StatusMenuView::sizeHint() const {
    int height = air(topPadding) - air(spacing) + air(bottomPadding);
    for (const QWidget* part : parts()) {
        height += part->sizeHint().height() + air(spacing);
    }
    return {ViewStyle(*this).length(viewWidth), height};
}

void StatusMenuView::resizeEvent(QResizeEvent* /*event*/) {
    place();
}

void StatusMenuView::place() {
    const ViewStyle style(*this);
    const int left = style.length(sidePadding);
    int y = air(topPadding);
    for (QWidget* part : parts()) {
        const int height = part->sizeHint().height();
        part->setGeometry(left, y, width() - 2 * left, height);
        y += height + air(spacing);
    }
}

} // namespace tarnwick
