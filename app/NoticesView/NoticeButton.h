// A small button on a notice.
#pragma once

#include "app/ViewStyle/KeyButton.h"

namespace tarnwick {

class NoticeButton final : public KeyButton {
public:
    NoticeButton(const QString& text, QWidget* parent);

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace tarnwick
