#include "app/StatusMenuView/StatusMenuView.h"

#include "app/StatusMenuView/HeaderView.h"
#include "app/StatusMenuView/LatencyChartView.h"
#include "app/StatusMenuView/StatsGridView.h"
#include "app/ViewStyle/ViewStyle.h"

namespace tarnwick {

namespace {

constexpr double viewWidth = 320;
constexpr double sidePadding = 14;
constexpr double topPadding = 8;
constexpr double bottomPadding = 6;
constexpr double spacing = 12;

} // namespace

// NOLINTBEGIN(cppcoreguidelines-owning-memory): the children are owned by this widget
StatusMenuView::StatusMenuView(const Observed<Reading>& reading, RunLoop& loop, QWidget* parent)
    : ReadAloudWidget(Role::group, parent),
      reading_(reading),
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
}

QSize StatusMenuView::sizeHint() const {
    const ViewStyle style(*this);
    const int heights =
        header_->sizeHint().height() + chart_->sizeHint().height() + grid_->sizeHint().height();
    return {
        style.length(viewWidth),
        style.length(topPadding) + heights + 2 * style.length(spacing) + style.length(bottomPadding)};
}

void StatusMenuView::resizeEvent(QResizeEvent* /*event*/) {
    place();
}

void StatusMenuView::place() {
    const ViewStyle style(*this);
    const int left = style.length(sidePadding);
    int y = style.length(topPadding);
    for (QWidget* part :
         {static_cast<QWidget*>(header_), static_cast<QWidget*>(chart_), static_cast<QWidget*>(grid_)}) {
        const int height = part->sizeHint().height();
        part->setGeometry(left, y, width() - 2 * left, height);
        y += height + style.length(spacing);
    }
}

} // namespace tarnwick
