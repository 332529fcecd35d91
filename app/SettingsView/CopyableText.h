// A text that can be copied without a pointer.
#pragma once

#include <QLabel>

namespace tarnwick {

/// Tab leads to it and selects all of it.
class CopyableText final : public QLabel {
public:
    explicit CopyableText(QWidget* parent);

protected:
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
};

} // namespace tarnwick
