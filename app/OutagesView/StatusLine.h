// A remark in up to two lines.
#pragma once

#include "app/ViewStyle/ReadAloud.h"

#include <QString>

namespace tarnwick {

/// Has room for two lines, whatever it says; a tool tip has all of it.
class StatusLine final : public ReadAloudWidget {
public:
    explicit StatusLine(QWidget* parent);

    /// A failure stands in the color of what is bad.
    void showText(const QString& text, bool isFailure);

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString text_;
    bool isFailure_ = false;
};

} // namespace tarnwick
