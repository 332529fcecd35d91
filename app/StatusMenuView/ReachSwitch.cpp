#include "app/StatusMenuView/ReachSwitch.h"

#include "app/ViewStyle/ViewStyle.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QRadioButton>
#include <QSignalBlocker>

#include <cmath>

namespace tarnwick {

namespace {

constexpr double segmentTopInset = 3;
constexpr double switchRadius = 5;

QColor shade(QColor color, float opacity) {
    color.setAlphaF(opacity);
    return color;
}

} // namespace

/// The toolkit's radio button, for its keys and its role, drawn as a part of the switch.
class ReachSwitch::Segment final : public QRadioButton {
public:
    Segment(const QString& text, QWidget* parent) : QRadioButton(text, parent) {
        setAttribute(Qt::WA_Hover); // drawn again when the pointer comes and goes
    }

    [[nodiscard]] QSize sizeHint() const override {
        const ViewStyle style(*this);
        const QFontMetricsF metrics(style.font(ViewStyle::smallText, QFont::Medium));
        return {
            static_cast<int>(std::ceil(metrics.horizontalAdvance(text()))),
            static_cast<int>(std::ceil(metrics.height())) + 2 * style.length(segmentTopInset)};
    }

    [[nodiscard]] bool hitButton(const QPoint& place) const override { return rect().contains(place); }

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        const ViewStyle style(*this);
        const QColor ink = style.colors().primary();
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        if (hasFocus()) {
            painter.setBrush(palette().color(QPalette::Active, QPalette::Highlight));
        } else if (isChecked()) {
            painter.setBrush(shade(ink, 0.16F));
        } else {
            painter.setBrush(shade(ink, underMouse() ? 0.07F : 0));
        }
        const double radius = style.length(switchRadius) - 1;
        painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), radius, radius);
        const QColor quiet = isChecked() ? ink : style.colors().secondary();
        painter.setPen(hasFocus() ? palette().color(QPalette::Active, QPalette::HighlightedText) : quiet);
        painter.setFont(style.font(ViewStyle::smallText, isChecked() ? QFont::Medium : QFont::Normal));
        painter.drawText(rect(), Qt::AlignCenter, text());
    }
};

// NOLINTBEGIN(cppcoreguidelines-owning-memory): the segments are owned by this widget
ReachSwitch::ReachSwitch(QWidget* parent) : ReadAloudWidget(Role::group, parent) {
    setSpokenText(QStringLiteral("Chart"));
    for (std::size_t index = 0; index < segments_.size(); ++index) {
        const HistoryChart::Reach reach = HistoryChart::allReaches.at(index);
        auto* const segment = new Segment(QString::fromStdString(HistoryChart::nameOf(reach)), this);
        segments_.at(index) = segment;
        connect(segment, &QRadioButton::toggled, this, [this, reach](bool isChosen) {
            if (isChosen) {
                letTabReachChosen();
                if (onChoose) {
                    onChoose(reach);
                }
            }
        });
    }
    setReach(HistoryChart::Reach::fiveMinutes);
}

// NOLINTEND(cppcoreguidelines-owning-memory)

void ReachSwitch::setReach(HistoryChart::Reach reach) {
    Segment* const segment = segments_.at(static_cast<std::size_t>(reach));
    const QSignalBlocker quiet(segment);
    segment->setChecked(true);
    letTabReachChosen();
}

void ReachSwitch::letTabReachChosen() {
    // The toolkit does so only once one of them has had the focus.
    for (Segment* segment : segments_) {
        segment->setFocusPolicy(segment->isChecked() ? Qt::StrongFocus : Qt::ClickFocus);
    }
}

QSize ReachSwitch::sizeHint() const {
    int width = 0;
    for (const Segment* segment : segments_) {
        width += segment->sizeHint().width();
    }
    return {width, segments_.front()->sizeHint().height()};
}

void ReachSwitch::resizeEvent(QResizeEvent* /*event*/) {
    const int count = static_cast<int>(segments_.size());
    for (int index = 0; index < count; ++index) {
        const int left = width() * index / count;
        segments_.at(static_cast<std::size_t>(index))
            ->setGeometry(left, 0, width() * (index + 1) / count - left, height());
    }
}

void ReachSwitch::paintEvent(QPaintEvent* /*event*/) {
    const ViewStyle style(*this);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(shade(style.colors().primary(), 0.22F));
    painter.setBrush(shade(style.colors().primary(), 0.05F));
    const double radius = style.length(switchRadius);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
}

} // namespace tarnwick
