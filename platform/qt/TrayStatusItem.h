// The status item in the classic tray of X11 displays.
#pragma once

#include "platform/ports/FacePainter.h"

#include <QSystemTrayIcon>

namespace tarnwick {

/// For X11 displays on which no StatusNotifier watcher runs. The toolkit waits for a tray, returns to one
/// that was restarted, and draws only while one shows the item. It looks for a watcher only once, when this
/// is made; if it finds one, it uses D-Bus from then on. Needs a QApplication.
class TrayStatusItem : public StatusItem {
public:
    /// The painter outlives the item.
    TrayStatusItem(const FacePainter& painter, Ink ink);

    void setFace(const StatusFace& face) override;
    void setToolTip(const std::string& text) override;

    /// Nothing to do: the tray's protocol has no such text.
    void setAccessibilityValue(const std::string& /*text*/) override {}

    /// Nothing to do: the tray has square places only.
    void setPanelFace(PanelFace /*form*/) override {}

    /// Few trays tell their color, so the caller chooses the ink.
    void setInk(Ink ink);

private:
    void showFace();
    [[nodiscard]] std::optional<ScreenPoint> bottomCenter() const;

    const FacePainter& painter_;
    StatusFace face_;
    Ink ink_;
    QSystemTrayIcon icon_;
};

} // namespace tarnwick
