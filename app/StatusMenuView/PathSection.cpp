#include "app/StatusMenuView/PathSection.h"

#include "app/NoticesView/NoticeButton.h"
#include "app/StatusItemController/Painting/TabularLine.h"
#include "app/ViewStyle/ViewStyle.h"

#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tarnwick {

namespace {

constexpr double hopNamePoints = 10;
constexpr double hopRowGap = 3;
constexpr double hopNumberWidth = 18;
constexpr double hopLossWidth = 36;
constexpr double hopBarWidth = 44;
constexpr double hopLatencyWidth = 52;
constexpr double hopColumnGap = 8;
constexpr double hopBarHeight = 5;
constexpr float hopGroundOpacity = 0.1F;

} // namespace

/// Number, address, loss, the latency as a bar and as a figure; below the address its name, where it is
/// known.
class PathSection::HopView final : public ReadAloudWidget {
public:
    explicit HopView(QWidget* parent) : ReadAloudWidget(Role::text, parent) {}

    void setRow(const PathRow& row) {
        if (row != row_) {
            row_ = row;
            setSpokenText(QString::fromStdString(row.summary()));
            updateGeometry();
            update();
        }
    }

    [[nodiscard]] QSize sizeHint() const override {
        const int nameHeight = row_.name.empty() ? 0 : lineHeight(hopNamePoints);
        return {0, lineHeight(ViewStyle::smallText) + nameHeight};
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        const ViewStyle style(*this);
        const LatencyPalette& colors = style.colors();
        const double space = style.length(hopColumnGap);
        QPainter painter(this);
        drawText(painter, 0, row_.hop, colors.secondary());
        double right = width();
        drawRight(painter, right, row_.latency, colors.primary());
        right -= style.length(hopLatencyWidth) + space;
        if (row_.barShare > 0) {
            drawBar(painter, right);
        }
        right -= style.length(hopBarWidth) + space;
        drawRight(painter, right, row_.loss, row_.isLossy ? colors.bad() : colors.secondary());
        right -= style.length(hopLossWidth) + space;
        const double left = style.length(hopNumberWidth);
        const QString address =
            QFontMetricsF(style.font(ViewStyle::smallText))
                .elidedText(QString::fromStdString(row_.address), Qt::ElideMiddle, right - left);
        drawText(painter, left, address.toStdString(), colors.primary());
        drawName(painter, left);
    }

private:
    [[nodiscard]] int lineHeight(double points) const {
        return static_cast<int>(std::ceil(QFontMetricsF(ViewStyle(*this).font(points)).height()));
    }

    /// The end of a name tells whose it is, its beginning which one.
    void drawName(QPainter& painter, double left) const {
        const ViewStyle style(*this);
        const QFont font = style.font(hopNamePoints);
        const QFontMetricsF metrics(font);
        painter.setFont(font);
        painter.setPen(style.colors().secondary());
        painter.drawText(
            QPointF(left, lineHeight(ViewStyle::smallText) + std::round(metrics.ascent())),
            metrics.elidedText(QString::fromStdString(row_.name), Qt::ElideMiddle, width() - left));
    }

    void drawText(QPainter& painter, double left, const std::string& text, const QColor& color) const {
        const QFont font = ViewStyle(*this).font(ViewStyle::smallText);
        painter.setPen(color);
        TabularLine(font, QString::fromStdString(text))
            .draw(painter, {left, std::round(QFontMetricsF(font).ascent())});
    }

    void drawRight(QPainter& painter, double right, const std::string& text, const QColor& color) const {
        const TabularLine line(ViewStyle(*this).font(ViewStyle::smallText), QString::fromStdString(text));
        drawText(painter, right - line.width(), text, color);
    }

    void drawBar(QPainter& painter, double right) const {
        const ViewStyle style(*this);
        const double length = style.length(hopBarWidth);
        const double thickness = style.length(hopBarHeight);
        const double left = right - length;
        const QRectF ground(
            left, std::round((lineHeight(ViewStyle::smallText) - thickness) / 2), length, thickness);
        QColor faint = style.colors().primary();
        faint.setAlphaF(hopGroundOpacity);
        painter.fillRect(ground, faint);
        QRectF bar = ground;
        bar.setWidth(std::max(1.0, std::round(length * row_.barShare)));
        painter.fillRect(bar, style.colors().secondary());
    }

    PathRow row_;
};

// NOLINTBEGIN(cppcoreguidelines-owning-memory): button and rows are owned by this widget
PathSection::PathSection(QWidget* parent)
    : ReadAloudWidget(Role::group, parent), button_(new NoticeButton(QStringLiteral("Show Path"), this)) {
    setSpokenText(QStringLiteral("Path"));
    QObject::connect(button_, &QPushButton::clicked, this, [this] { toggle(); });
}

void PathSection::setRows(const std::vector<PathRow>& rows, int width) {
    rows_ = rows;
    width_ = width;
    if (isOpen_) {
        showRows();
    }
}

void PathSection::toggle() {
    isOpen_ = !isOpen_;
    button_->setText(isOpen_ ? QStringLiteral("Hide Path") : QStringLiteral("Show Path"));
    showRows();
    if (onToggle) {
        onToggle();
    }
}

void PathSection::showRows() {
    const std::size_t count = isOpen_ ? rows_.size() : 0;
    for (; views_.size() > count; views_.pop_back()) {
        delete views_.back();
    }
    while (views_.size() < count) {
        views_.push_back(new HopView(this));
        views_.back()->show();
    }
    for (std::size_t index = 0; index < count; ++index) {
        views_[index]->setRow(rows_[index]);
    }
    place();
}

// NOLINTEND(cppcoreguidelines-owning-memory)

QSize PathSection::sizeHint() const {
    const int space = ViewStyle(*this).length(hopRowGap);
    int height = button_->sizeHint().height();
    for (const HopView* view : views_) {
        height += space + view->sizeHint().height();
    }
    return {width_, height};
}

void PathSection::resizeEvent(QResizeEvent* /*event*/) {
    place();
}

void PathSection::place() {
    const int space = ViewStyle(*this).length(hopRowGap);
    const QSize size = button_->sizeHint();
    button_->setGeometry(0, 0, size.width(), size.height());
    int top = size.height();
    for (HopView* view : views_) {
        const int height = view->sizeHint().height();
        view->setGeometry(0, top + space, width_, height);
        top += space + height;
    }
}

} // namespace tarnwick
