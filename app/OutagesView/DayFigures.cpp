#include "app/OutagesView/DayFigures.h"

#include "app/StatusItemController/Painting/TabularLine.h"
#include "app/ViewStyle/ViewStyle.h"

#include <QEvent>
#include <QFontMetricsF>
#include <QGridLayout>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tarnwick {

namespace {

constexpr double figureWidth = 160;
constexpr double figureGap = 4;
constexpr double figureColumnGap = 32;
constexpr double figureNameGap = 12;

// The widest figure that is usual. Its column keeps this width, so that days do not move the columns.
const char* const widestName = "Worst hour";
const char* const widestValue = "00:00, down for 00 min 00 s";
constexpr int widestColumn = 1;

/// Of both, with the gap between them.
int widthOf(const QWidget& widget, const QString& name, const QString& value) {
    const ViewStyle style(widget);
    const QFont font = style.font(ViewStyle::usualText);
    const double texts = TabularLine(font, name).width() + TabularLine(font, value).width();
    return static_cast<int>(std::ceil(texts)) + style.length(figureNameGap);
}

} // namespace

/// The name at the left, the value at the right.
class DayFigures::FigureView final : public ReadAloudWidget {
public:
    explicit FigureView(QWidget* parent) : ReadAloudWidget(Role::text, parent) {
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    }

    void setFigure(const OutagesFigure& figure) {
        if (figure != figure_) {
            figure_ = figure;
            setSpokenText(QString::fromStdString(figure.name + ": " + figure.value));
            updateGeometry();
            update();
        }
    }

    [[nodiscard]] QSize sizeHint() const override {
        const ViewStyle style(*this);
        const int width =
            widthOf(*this, QString::fromStdString(figure_.name), QString::fromStdString(figure_.value));
        return {
            std::max(width, style.length(figureWidth)),
            static_cast<int>(std::ceil(QFontMetricsF(style.font(ViewStyle::usualText)).height()))};
    }

    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        const ViewStyle style(*this);
        const QFont font = style.font(ViewStyle::usualText);
        const double baseline = std::round(QFontMetricsF(font).ascent());
        const TabularLine value(font, QString::fromStdString(figure_.value));
        QPainter painter(this);
        painter.setPen(style.colors().secondary());
        TabularLine(font, QString::fromStdString(figure_.name)).draw(painter, {0, baseline});
        painter.setPen(style.colors().primary());
        value.draw(painter, {width() - value.width(), baseline});
    }

private:
    OutagesFigure figure_;
};

// NOLINTBEGIN(cppcoreguidelines-owning-memory): owned by this widget
DayFigures::DayFigures(QWidget* parent) : ReadAloudWidget(Role::group, parent), grid_(new QGridLayout(this)) {
    setSpokenText(QStringLiteral("Figures"));
    grid_->setContentsMargins(0, 0, 0, 0);
    for (int column = 0; column < static_cast<int>(dayFigureCount / dayFigureGroup); ++column) {
        grid_->setColumnStretch(column, column == widestColumn ? 0 : 1);
    }
    for (std::size_t index = 0; index < dayFigureCount; ++index) {
        views_.push_back(new FigureView(this));
        grid_->addWidget(
            views_.back(), static_cast<int>(index % dayFigureGroup),
            static_cast<int>(index / dayFigureGroup));
    }
    applyStyle();
}

// NOLINTEND(cppcoreguidelines-owning-memory)

void DayFigures::applyStyle() {
    const ViewStyle style(*this);
    grid_->setVerticalSpacing(style.length(figureGap));
    grid_->setHorizontalSpacing(style.length(figureColumnGap));
    grid_->setColumnMinimumWidth(
        widestColumn, widthOf(*this, QLatin1String(widestName), QLatin1String(widestValue)));
}

void DayFigures::changeEvent(QEvent* event) {
    ReadAloudWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange) {
        applyStyle();
    }
}

void DayFigures::showFigures(const std::vector<OutagesFigure>& figures) {
    for (std::size_t index = 0; index < views_.size(); ++index) {
        views_[index]->setFigure(index < figures.size() ? figures[index] : OutagesFigure{});
    }
}

} // namespace tarnwick
