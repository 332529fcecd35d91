// The label of a form's row.
#pragma once

#include <QLabel>

namespace tarnwick {

/// A click on it and its letter do the same: they click its buddy if that is a button, else focus it.
class RowLabel final : public QLabel {
public:
    using QLabel::QLabel;

    /// The letter that activates the row together with Alt. It is in the text.
    void setMnemonic(QChar letter);
    /// Underlines the letter.
    void setShowsMnemonic(bool shows);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void activate(Qt::FocusReason reason);

    QChar mnemonic_;
    bool showsMnemonic_ = false;
};

} // namespace tarnwick
