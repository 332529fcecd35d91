#include "app/OutagesView/DayStrip.h"

#include "app/ViewStyle/FormStyle.h"
#include "app/ViewStyle/ViewStyle.h"
#include "core/History/CalendarNames.h"

#include <QFontMetricsF>
#include <QKeyEvent>
#include <QPainter>
#include <QRadioButton>
#include <QSignalBlocker>

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>

namespace tarnwick {

namespace {

// Sizes of the design, in points.
constexpr double dayWidth = 8;
constexpr double narrowestDay = 5;
constexpr double dayHeight = 52;
constexpr double dayGap = 2;
constexpr double markerMargin = 4; ///< around the column of the chosen day
constexpr double markerRadius = 4;
constexpr double monthGap = 4;
constexpr double dayRadius = 1.5;

constexpr float markerOpacity = 0.28F;
constexpr float hoverOpacity = 0.12F;

constexpr std::ptrdiff_t daysOfAWeek = 7;

/// Of the whole height, so that more than the color tells.
double heightShare(DaySummary::Worst worst) {
    switch (worst) {
    case DaySummary::Worst::down:
        return 1;
    case DaySummary::Worst::degraded:
        return 0.62;
    case DaySummary::Worst::good:
        return 0.34;
    case DaySummary::Worst::notWatched:
        break;
    }
    return 0;
}

QColor dayColor(const LatencyPalette& colors, DaySummary::Worst worst) {
    switch (worst) {
    case DaySummary::Worst::down:
        return colors.bad();
    case DaySummary::Worst::degraded:
        return colors.warn();
    case DaySummary::Worst::good:
        return colors.good();
    case DaySummary::Worst::notWatched:
        break;
    }
    return colors.tertiary();
}

/// How far a key leads, or the end to which it leads.
std::optional<std::ptrdiff_t> stepOf(int key, std::ptrdiff_t count) {
    switch (key) {
    case Qt::Key_Left:
        return -1;
    case Qt::Key_Right:
        return 1;
    case Qt::Key_PageUp:
        return -daysOfAWeek;
    case Qt::Key_PageDown:
        return daysOfAWeek;
    case Qt::Key_Home:
        return -count;
    case Qt::Key_End:
        return count;
    default:
        return std::nullopt;
    }
}

} // namespace

/// A day's column, as wide as its share of the strip.
class DayStrip::DayButton final : public QRadioButton {
public:
    DayButton(DayStrip& strip, std::size_t day) : QRadioButton(&strip), strip_(strip), day_(day) {
        connect(this, &QRadioButton::toggled, this, [this](bool isOn) {
            if (isOn) {
                strip_.choose(day_);
            }
        });
    }

    void setWorst(DaySummary::Worst worst) {
        if (worst != worst_) {
            worst_ = worst;
            update();
        }
    }

    void setSummary(const QString& text) {
        if (text != accessibleName()) {
            setAccessibleName(text);
            setToolTip(text);
        }
    }

protected:
    [[nodiscard]] bool hitButton(const QPoint& place) const override { return rect().contains(place); }

    void keyPressEvent(QKeyEvent* event) override {
        if (const auto step = stepOf(event->key(), static_cast<std::ptrdiff_t>(strip_.buttons_.size()))) {
            strip_.moveTo(static_cast<std::ptrdiff_t>(day_) + *step);
        } else if (event->key() == Qt::Key_Up || event->key() == Qt::Key_Down) {
            event->ignore(); // they would lead to any day
        } else {
            QRadioButton::keyPressEvent(event);
        }
    }

    void focusInEvent(QFocusEvent* event) override {
        QRadioButton::focusInEvent(event);
        strip_.update();
    }

    void focusOutEvent(QFocusEvent* event) override {
        QRadioButton::focusOutEvent(event);
        strip_.update();
    }

    void enterEvent(QEnterEvent* event) override {
        QRadioButton::enterEvent(event);
        update();
    }

    void leaveEvent(QEvent* event) override {
        QRadioButton::leaveEvent(event);
        update();
    }

    void paintEvent(QPaintEvent* /*event*/) override {
        const ViewStyle style(*this);
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        if (underMouse()) {
            QColor hovered = style.colors().primary();
            hovered.setAlphaF(hoverOpacity);
            painter.fillRect(rect(), hovered);
        }
        const double between = std::min<double>(style.length(dayGap), std::max(1.0, width() / 4.0));
        const double margin = style.length(markerMargin);
        const double whole = height() - 2 * margin;
        // A day of which nothing is known is a dot.
        const double high = std::max(std::round(whole * heightShare(worst_)), width() - between);
        const double radius = worst_ == DaySummary::Worst::notWatched ? high / 2 : dayRadius;
        painter.setBrush(dayColor(style.colors(), worst_));
        painter.drawRoundedRect(
            QRectF(between / 2, height() - margin - high, width() - between, high), radius, radius);
    }

private:
    DayStrip& strip_;
    std::size_t day_;
    DaySummary::Worst worst_ = DaySummary::Worst::notWatched;
};

DayStrip::DayStrip(QWidget* parent) : ReadAloudWidget(Role::group, parent) {
    setSpokenText(QStringLiteral("Days"));
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    while (buttons_.size() < OutagesPage::dayCount) {
        // NOLINTNEXTLINE(cppcoreguidelines-owning-memory): a child
        buttons_.push_back(new DayButton(*this, buttons_.size()));
        buttons_.back()->setFocusPolicy(Qt::ClickFocus);
    }
    check(buttons_.size() - 1);
}

void DayStrip::showDays(const std::vector<OutagesDay>& days, std::size_t chosen) {
    days_ = days;
    for (std::size_t day = 0; day < days.size(); ++day) {
        buttons_[day]->setWorst(days[day].summary.worst);
        buttons_[day]->setSummary(QString::fromStdString(days[day].text));
    }
    check(chosen);
    update();
}

void DayStrip::check(std::size_t day) {
    const bool hadFocus = buttons_[chosen_]->hasFocus();
    buttons_[chosen_]->setFocusPolicy(Qt::ClickFocus);
    chosen_ = day;
    buttons_[day]->setFocusPolicy(Qt::StrongFocus);
    const QSignalBlocker quiet(buttons_[day]);
    buttons_[day]->setChecked(true);
    if (hadFocus) {
        focusChosen();
    }
}

void DayStrip::focusChosen() {
    buttons_[chosen_]->setFocus(Qt::OtherFocusReason);
}

void DayStrip::choose(std::size_t day) {
    chosen_ = day;
    update();
    if (onChoose) {
        onChoose(day);
    }
}

void DayStrip::moveTo(std::ptrdiff_t day) {
    const auto last = static_cast<std::ptrdiff_t>(buttons_.size()) - 1;
    DayButton* const button = buttons_[static_cast<std::size_t>(std::clamp<std::ptrdiff_t>(day, 0, last))];
    button->setFocus(Qt::OtherFocusReason);
    button->setChecked(true);
}

int DayStrip::columnHeight() const {
    const ViewStyle style(*this);
    return style.length(dayHeight) + 2 * style.length(markerMargin);
}

QSize DayStrip::sizeHint() const {
    const ViewStyle style(*this);
    const double months = std::ceil(QFontMetricsF(style.font(ViewStyle::smallText)).height());
    return {
        OutagesPage::dayCount * style.length(dayWidth),
        columnHeight() + style.length(monthGap) + static_cast<int>(months)};
}

QSize DayStrip::minimumSizeHint() const {
    return {OutagesPage::dayCount * ViewStyle(*this).length(narrowestDay), sizeHint().height()};
}

void DayStrip::resizeEvent(QResizeEvent* /*event*/) {
    place();
}

void DayStrip::changeEvent(QEvent* event) {
    ReadAloudWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange) {
        updateGeometry();
        place();
    }
}

void DayStrip::place() {
    const auto count = static_cast<int>(buttons_.size());
    const auto edge = [&](int day) { return day * width() / count; };
    for (int day = 0; day < count; ++day) {
        buttons_[static_cast<std::size_t>(day)]->setGeometry(
            edge(day), 0, edge(day + 1) - edge(day), columnHeight());
    }
}

void DayStrip::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    drawMarker(painter);
    drawMonths(painter);
}

void DayStrip::drawMarker(QPainter& painter) const {
    const ViewStyle style(*this);
    const DayButton& button = *buttons_[chosen_];
    const bool hasFocus = button.hasFocus();
    QColor accent = palette().color(QPalette::Active, QPalette::Highlight);
    painter.setPen(hasFocus ? QPen(accent, 2) : QPen(Qt::NoPen));
    accent.setAlphaF(markerOpacity);
    painter.setBrush(accent);
    const double radius = style.length(markerRadius);
    const QRectF around = QRectF(button.geometry()).adjusted(-2, 1, 2, -1);
    painter.drawRoundedRect(around.intersected(QRectF(rect()).adjusted(1, 1, -1, -1)), radius, radius);
}

void DayStrip::drawMonths(QPainter& painter) const {
    const ViewStyle style(*this);
    const QFont font = style.font(ViewStyle::smallText);
    const QFontMetricsF metrics(font);
    const double baseline = columnHeight() + style.length(monthGap) + std::round(metrics.ascent());
    painter.setFont(font);
    painter.setPen(style.colors().secondary());
    for (std::size_t day = 0; day < days_.size(); ++day) {
        const std::chrono::year_month_day date = days_[day].summary.day;
        const QString name = QString::fromStdString(std::string(CalendarNames::shortOf(date.month())));
        const double left = buttons_[day]->x();
        const bool isFirst = date.day() == std::chrono::day(1);
        if (isFirst && left + metrics.horizontalAdvance(name) <= width()) {
            painter.drawText(QPointF(left, baseline), name);
        }
    }
}

} // namespace tarnwick
