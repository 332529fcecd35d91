// A small button on a notice.
#pragma once

#include <QPushButton>

namespace tarnwick {

class NoticeButton final : public QPushButton {
public:
    NoticeButton(const QString& text, QWidget* parent);

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
};

} // namespace tarnwick
