// The head of the menu view: signal bars, quality, host, latency and loss.
#pragma once

#include "app/Reading/Reading.h"
#include "app/ViewStyle/ReadAloud.h"

namespace tarnwick {

/// The header's part of a reading, in the toolkit's texts.
struct HeaderContent {
    int bars = 0;
    QualityTone tone = QualityTone::neutral;
    QString quality{};
    QString hostLine{};
    QString latency{};
    QString loss{}; ///< empty while none is shown
    bool isDown = false;
    bool isLossy = false;

    [[nodiscard]] static HeaderContent of(const Reading& reading);
    [[nodiscard]] QString spokenText() const;

    friend bool operator==(const HeaderContent&, const HeaderContent&) = default;
};

class ViewStyle;

class HeaderView final : public ReadAloudWidget {
public:
    explicit HeaderView(QWidget* parent);

    /// Draws again only if something differs.
    void setContent(const HeaderContent& content);

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    /// Returns its left edge.
    double drawLatency(QPainter& painter, const ViewStyle& style) const;

    HeaderContent content_;
};

} // namespace tarnwick
