// A tool tip that is part of the window which it belongs to.
#pragma once

#include "app/NoticesView/WrappedText.h"

#include <QWidget>

namespace tarnwick {

/// Shows a whole text in as many lines as it needs. The toolkit's own tool tips are windows, which need a
/// parent window of a kind that the layer shell's surfaces are not.
class TextTip final : public QWidget {
public:
    /// Shown at once, in front of the parent's other children, below `place`, which is in the parent's
    /// coordinates, and as wide.
    TextTip(QWidget& parent, const QRect& place, const QFont& font, const QString& text);

    [[nodiscard]] const QString& text() const { return text_; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString text_;
    WrappedText lines_;
};

} // namespace tarnwick
