#include "app/OutagesView/DayFigures.h"

#include "app/StatusItemController/Painting/TabularLine.h"
#include "app/ViewStyle/ViewStyle.h"

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
        const QFont font = style.font(ViewStyle::usualText);
        const double texts = TabularLine(font, QString::fromStdString(figure_.name)).width()
                             + TabularLine(font, QString::fromStdString(figure_.value)).width();
        const int width = static_cast<int>(std::ceil(texts)) + style.length(figureNameGap);
        return {
            std::max(width, style.length(figureWidth)),
            static_cast<int>(std::ceil(QFontMetricsF(font).height()))};
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
DayFigures::DayFigures(QWidget* parent) : ReadAloudWidget(Role::group, parent) {
    setSpokenText(QStringLiteral("Figures"));
    auto* const grid = new QGridLayout(this);
    const ViewStyle style(*this);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setVerticalSpacing(style.length(figureGap));
    grid->setHorizontalSpacing(style.length(figureColumnGap));
    for (std::size_t index = 0; index < dayFigureCount; ++index) {
        views_.push_back(new FigureView(this));
        grid->addWidget(
            views_.back(), static_cast<int>(index % dayFigureGroup),
            static_cast<int>(index / dayFigureGroup));
    }
}

// NOLINTEND(cppcoreguidelines-owning-memory)

void DayFigures::showFigures(const std::vector<OutagesFigure>& figures) {
    for (std::size_t index = 0; index < views_.size(); ++index) {
        views_[index]->setFigure(index < figures.size() ? figures[index] : OutagesFigure{});
    }
}

} // namespace tarnwick
