#include "app/StatusMenuView/StatusMenuView.h"

#include "app/StatusMenuView/HeaderView.h"
#include "app/StatusMenuView/LatencyChartView.h"
#include "app/StatusMenuView/StatsGridView.h"
#include "app/ViewStyle/ViewStyle.h"

#include <QPushButton>

#include <utility>

namespace tarnwick {

namespace {

constexpr double viewWidth = 320;
constexpr double sidePadding = 14;
constexpr double topPadding = 8;
constexpr double bottomPadding = 6;
constexpr double spacing = 12;
constexpr double tightness = 0.5; ///< what a low screen leaves of the air

} // namespace

// NOLINTBEGIN(cppcoreguidelines-owning-memory): the children are owned by this widget
StatusMenuView::StatusMenuView(
    const Observed<Reading>& reading, RunLoop& loop, QWidget* parent, NoticeActions actions)
    : ReadAloudWidget(Role::group, parent),
      reading_(reading),
      actions_(std::move(actions)),
      grouping_(Format::Grouping::ofUser()),
      header_(new HeaderView(this)),
      chart_(new LatencyChartView(this)),
      grid_(new StatsGridView(this)),
      rendering_(std::make_unique<RenderLoop>(loop, [this] { render(); })) {
    setSpokenText(QStringLiteral("Connection"));
}

// NOLINTEND(cppcoreguidelines-owning-memory)

StatusMenuView::~StatusMenuView() = default;

void StatusMenuView::render() {
    const Reading& reading = reading_.get();
    header_->setContent(HeaderContent::of(reading));
    chart_->setChart(reading.chart);
    grid_->setRows(StatsGrid::rows(reading.session, reading.site, grouping_));
    if (reading.notices != shownNotices_) {
        showNotices(reading.notices);
    }
}

void StatusMenuView::showNotices(const Notices& notices) {
    shownNotices_ = notices;
    const ViewStyle style(*this);
    const int width = style.length(viewWidth) - 2 * style.length(sidePadding);
    notices_ = NoticesView::inPlaceOf(notices_, notices, actions_, width, this);
    if (notices_ != nullptr) {
        notices_->stackUnder(chart_); // so that it is read after the header
    }
    place();
    if (onSizeChange) {
        onSizeChange();
    }
}

bool StatusMenuView::hasButtons() const {
    return notices_ != nullptr && notices_->findChild<QPushButton*>() != nullptr;
}

std::vector<QWidget*> StatusMenuView::parts() const {
    if (notices_ != nullptr) {
        return {header_, notices_, chart_, grid_};
    }
    return {header_, chart_, grid_};
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
