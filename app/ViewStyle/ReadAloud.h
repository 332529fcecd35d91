// Widgets for assistive technology.
#pragma once

#include <QWidget>

namespace tarnwick {

/// A widget that assistive technology reads as one element with `setSpokenText`. Texts and charts draw all of
/// their content themselves; a group has such widgets as children.
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
