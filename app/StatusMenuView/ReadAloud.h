// Widgets that assistive technology reads as one element each.
#pragma once

#include <QWidget>

namespace tarnwick {

/// Draws all of its content itself: there are no children to be read.
class ReadAloudWidget : public QWidget {
public:
    enum class Role { text, chart, group };

    explicit ReadAloudWidget(Role role, QWidget* parent);

    [[nodiscard]] Role role() const { return role_; }

    /// What is read. Told to assistive technology only when it changes.
    void setSpokenText(const QString& text);

private:
    Role role_;
};

} // namespace tarnwick
