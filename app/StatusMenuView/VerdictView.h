// Whose fault it is that the connection is bad, in as many lines as that takes.
#pragma once

#include "app/ViewStyle/ReadAloud.h"

#include <QString>

namespace tarnwick {

/// Below the header, while something is wrong.
class VerdictView final : public ReadAloudWidget {
public:
    explicit VerdictView(QWidget* parent);

    /// `width` in pixels.
    void setText(const QString& text, int width);

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString text_;
    int width_ = 0;
};

} // namespace tarnwick
