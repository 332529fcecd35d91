#include "app/StatusMenuView/StatusMenuView.h"

#include "app/StatusMenuView/HeaderView.h"
#include "app/StatusMenuView/LatencyChartView.h"
#include "app/StatusMenuView/PathSection.h"
#include "app/StatusMenuView/StatsGridView.h"
#include "app/StatusMenuView/VerdictView.h"
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

int partHeight(const QWidget* part) {
    return part == nullptr ? 0 : part->sizeHint().height();
}

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
    showVerdict(reading);
    if (reading.notices != shownNotices_) {
        showNotices(reading.notices);
    }
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
    return findChild<QPushButton*>() != nullptr;
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
    parts.insert(parts.end(), {chart_, grid_});
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
