// The status item in the classic tray of X11 displays.
#pragma once

#include "platform/ports/FacePainter.h"

#include <QSystemTrayIcon>

namespace tarnwick {

/// For X11 displays on which no StatusNotifier watcher runs. The toolkit waits for a tray by itself, comes
/// back to one that was restarted, and draws only while one shows it. Whether there is a watcher it looks
/// just once, when this is made, and goes over D-Bus for good if there is. Needs a QApplication.
class TrayStatusItem : public StatusItem {
public:
    /// The painter outlives the item.
    TrayStatusItem(const FacePainter& painter, Ink ink);

    void setFace(const StatusFace& face) override;
    void setToolTip(const std::string& text) override;

    /// The tray's protocol has no place for it.
    void setAccessibilityValue(const std::string& /*text*/) override {}

    /// The tray's places are squares, whatever is wished for.
    void setPanelFace(PanelFace /*form*/) override {}

    [[nodiscard]] double textWidth(const std::string& text) const override;

    /// Few trays say what color they have, so somebody else has to.
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
