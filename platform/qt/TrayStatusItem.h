// The status item in the classic tray of X11 displays.
#pragma once

#include "platform/ports/FacePainter.h"

#include <QSystemTrayIcon>

namespace tarnwick {

/// The toolkit waits for a tray, shows the item again after a tray has restarted, and draws only while a tray
/// shows the item. Make it only while no StatusNotifier watcher runs: the toolkit looks for one at that
/// moment, and would use it instead of the tray from then on. Needs a QApplication.
class TrayStatusItem : public StatusItem {
public:
    /// The painter outlives the item.
    TrayStatusItem(const FacePainter& painter, Ink ink);

    /// Without the text for assistive technology, which the tray's protocol lacks, and always square: a tray
    /// has no other places. Redraws only a face that differs.
    void show(const ItemState& state) override;

    /// Most trays do not publish their color, so the caller chooses the ink.
    void setInk(Ink ink);

private:
    void drawFace();
    [[nodiscard]] std::optional<ScreenPoint> bottomCenter() const;

    const FacePainter& painter_;
    ItemState state_;
    Ink ink_;
    QSystemTrayIcon icon_;
};

} // namespace tarnwick
