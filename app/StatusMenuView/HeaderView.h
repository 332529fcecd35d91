// The head of the menu view: signal bars, quality, host, latency and loss.
#pragma once

#include "app/Reading/Reading.h"
#include "app/ViewStyle/ReadAloud.h"

#include <memory>

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

class TextTip;
class ViewStyle;

/// A tool tip shows the whole of a text that has no room.
class HeaderView final : public ReadAloudWidget {
public:
    explicit HeaderView(QWidget* parent);
    ~HeaderView() override;

    /// Draws again only if something differs.
    void setContent(const HeaderContent& content);

    [[nodiscard]] QSize sizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void drawLatency(QPainter& painter, const ViewStyle& style) const;
    /// Where quality and host are: at the left edge of this, up to the latency.
    [[nodiscard]] QRectF textRoom(const ViewStyle& style) const;
    void showTip();

    HeaderContent content_;
    std::unique_ptr<TextTip> tip_; ///< a later child of the same parent, which deletes this view first
};

} // namespace tarnwick
