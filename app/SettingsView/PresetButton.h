// The arrow in the host's field, which opens a menu of hosts.
#pragma once

#include "app/SettingsView/Model/HostPresets.h"
#include "app/SettingsView/OpeningButton.h"

#include <functional>
#include <vector>

class QLineEdit;
class QMenu;

namespace tarnwick {

/// Stands at the end of the field, which leaves it room. Alt with O opens the menu, and in the field the Down
/// key does.
class PresetButton final : public OpeningButton {
public:
    /// Reads the hosts, each time that the menu opens.
    using Source = std::function<std::vector<HostPreset>()>;
    /// Receives the address that was chosen.
    using Choose = std::function<void(const QString&)>;

    /// A child of the field.
    PresetButton(Source source, Choose choose, QLineEdit& field);

    [[nodiscard]] QWidget* content() const override;

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

    bool eventFilter(QObject* watched, QEvent* event) override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void open();
    void place();
    void fill();

    Source source_;
    Choose choose_;
    QLineEdit& field_;
    QMenu* menu_; ///< a child
};

} // namespace tarnwick
