// The drop-down's window: frame, keys, and what closes it.
#pragma once

#include "app/NoticesView/NoticesView.h"
#include "app/Observation/Observation.h"
#include "app/Reading/PastCharts.h"
#include "app/Reading/Reading.h"
#include "app/StatusItemController/Menu.h"
#include "app/StatusMenuView/DropDownColumn.h"
#include "platform/ports/StatusItem.h"
#include "platform/qt/ScreenOverlay.h"

#include <QWidget>

#include <functional>
#include <memory>
#include <optional>

namespace tarnwick {

class MenuItemsView;
class StatusMenuView;

class DropDownWindow final : public QWidget {
public:
    /// Where windows can't choose their place it covers a screen, transparent but for its visible part.
    /// `shell` is the layer shell, if there is one. Without charts of the past there is only that of five
    /// minutes.
    DropDownWindow(
        const Observed<Reading>& reading, const Menu& menu, RunLoop& loop, const NoticeActions& actions,
        Wayland::LayerShell* shell = nullptr, PastCharts* past = nullptr);
    ~DropDownWindow() override;

    /// Shows it at this pixel of the desktop, if it may choose its place, and asks for the focus.
    void open(std::optional<ScreenPoint> at);
    /// Hides it and stops following anything, at once.
    void end();

    /// Whether its visible part is at this point.
    [[nodiscard]] bool covers(ScreenPoint point) const;

    [[nodiscard]] MenuItemsView& items() const { return *items_; }

    /// Set by the owner.
    std::function<void(MenuItem::Id)> onChoose;
    std::function<void()> onDismiss;   ///< Escape, or closed by the desktop
    std::function<void()> onLoseFocus; ///< after it had it

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    bool focusNextPrevChild(bool next) override;

private:
    void openOverlay();
    void fit();
    void fitWindow();
    void fitOverlay();
    /// Where it was opened, and the screen that this is on; neither is known of some desktops.
    [[nodiscard]] std::pair<const QScreen*, std::optional<QPoint>> openingPlace() const;
    /// The same for an overlay, which may have come to another screen, in its units.
    [[nodiscard]] std::pair<QRect, std::optional<QPoint>> overlaidPlace() const;
    /// After a key may have highlighted another row.
    void revealHighlight();
    bool chooseByKey(const QKeyEvent& event);

    StatusMenuView* statusView_; ///< children
    MenuItemsView* items_;
    DropDownColumn column_; ///< of both
    int shadow_;            ///< width of the margin that holds the shadow; 0 without transparency
    QRect panel_;           ///< the visible part, without its shadow
    Wayland::LayerShell* shell_;
    const bool isOverlay_;
    std::unique_ptr<ScreenOverlay> overlay_; ///< while it is open
    std::optional<ScreenPoint> opensAt_;
    bool hadFocus_ = false;
    std::unique_ptr<RenderLoop> describing_; ///< follows the reading, for assistive technology
};

} // namespace tarnwick
