#include "app/StatusMenuView/StatsGridView.h"

#include "app/StatusItemController/Painting/TabularLine.h"
#include "app/ViewStyle/ViewStyle.h"

#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tarnwick {

namespace {

constexpr double valueWidth = 72;
constexpr double columnGap = 12;
constexpr double rowGap = 4;

int lineHeight(const QFont& font) {
    return static_cast<int>(std::ceil(QFontMetricsF(font).height()));
}

/// Draws a text that ends at `right`.
void drawRight(QPainter& painter, const QFont& font, QPointF right, const QString& text) {
    const TabularLine line(font, text);
    line.draw(painter, {right.x() - line.width(), right.y()});
}

} // namespace

class StatsGridView::RowView final : public ReadAloudWidget {
public:
    explicit RowView(StatsGridView* grid) : ReadAloudWidget(Role::text, grid), grid_(*grid) {}

    [[nodiscard]] const StatsGrid::Row& row() const { return row_; }

    void setRow(const StatsGrid::Row& row) {
        const QString spoken = QString::fromStdString(row.summary());
        if (spoken != accessibleName()) {
            row_ = row;
            setSpokenText(spoken);
            update();
        }
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        const ViewStyle style(*this);
        const QFont font = style.font(ViewStyle::usualText);
        const double baseline = std::round(QFontMetricsF(font).ascent());
        QPainter painter(this);
        painter.setPen(style.colors().secondary());
        TabularLine(font, QString::fromStdString(row_.label)).draw(painter, {0, baseline});
        painter.setPen(style.colors().primary());
        const double sessionRight = width() - grid_.allTimeWidth() - style.length(columnGap);
        drawRight(painter, font, {sessionRight, baseline}, QString::fromStdString(row_.session));
        drawRight(
            painter, font, {static_cast<double>(width()), baseline}, QString::fromStdString(row_.allTime));
    }

private:
    const StatsGridView& grid_;
    StatsGrid::Row row_;
};

StatsGridView::StatsGridView(QWidget* parent) : ReadAloudWidget(Role::group, parent) {
    setSpokenText(QStringLiteral("Statistics"));
    for (RowView*& row : rows_) {
        row = new RowView(this); // NOLINT(cppcoreguidelines-owning-memory): owned by its parent
    }
}

void StatsGridView::setRows(const std::array<StatsGrid::Row, StatsGrid::rowCount>& rows) {
    const double widthBefore = allTimeWidth();
    for (std::size_t index = 0; index < rows.size(); ++index) {
        rows_[index]->setRow(rows[index]);
    }
    if (allTimeWidth() != widthBefore) {
        update();
    }
}

double StatsGridView::allTimeWidth() const {
    const ViewStyle style(*this);
    const QFont font = style.font(ViewStyle::usualText);
    double widest = style.length(valueWidth);
    // A figure of a billion pings may need more than its column.
    for (const RowView* row : rows_) {
        widest = std::max(
            widest, std::ceil(TabularLine(font, QString::fromStdString(row->row().allTime)).width()));
    }
    return widest;
}

QSize StatsGridView::sizeHint() const {
    const ViewStyle style(*this);
    const int row = style.length(rowGap) + lineHeight(style.font(ViewStyle::usualText));
    return {0, lineHeight(style.font(ViewStyle::smallText)) + row * static_cast<int>(rows_.size())};
}

void StatsGridView::resizeEvent(QResizeEvent* /*event*/) {
    placeRows();
}

void StatsGridView::placeRows() {
    const ViewStyle style(*this);
    const int height = lineHeight(style.font(ViewStyle::usualText));
    int y = lineHeight(style.font(ViewStyle::smallText));
    for (RowView* row : rows_) {
        y += style.length(rowGap);
        row->setGeometry(0, y, width(), height);
        y += height;
    }
}

void StatsGridView::paintEvent(QPaintEvent* /*event*/) {
    const ViewStyle style(*this);
    const QFont font = style.font(ViewStyle::smallText);
    const double baseline = std::round(QFontMetricsF(font).ascent());
    const double sessionRight = width() - allTimeWidth() - style.length(columnGap);
    QPainter painter(this);
    painter.setPen(style.colors().secondary());
    drawRight(painter, font, {sessionRight, baseline}, QString::fromLatin1(StatsGrid::sessionTitle));
    drawRight(
        painter, font, {static_cast<double>(width()), baseline},
        QString::fromLatin1(StatsGrid::allTimeTitle));
}

} // namespace tarnwick
