#include "app/StatusMenuView/DropDownWindow.h"

#include "app/StatusMenuView/DropDownPlacement.h"
#include "app/StatusMenuView/MenuItemsView.h"
#include "app/StatusMenuView/MenuRow.h"
#include "app/StatusMenuView/StatusMenuView.h"
#include "app/ViewStyle/LatencyPalette.h"
#include "platform/qt/Compositing.h"
#include "platform/qt/Foreground.h"
#include "platform/qt/ScreenPixels.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>
#include <QWheelEvent>
#include <QWindow>

namespace tarnwick {

namespace {

constexpr int shadowWidth = 14;
constexpr int shadowDrop = 3; ///< the light comes from above
constexpr double windowCornerRadius = 10;

Qt::WindowFlags flagsWith(const Wayland::LayerShell* shell) {
    const Qt::WindowFlags flags =
        ScreenOverlay::isNeeded() ? ScreenOverlay::flags(shell) : Qt::Tool | Qt::FramelessWindowHint;
    return flags | Qt::NoDropShadowWindowHint;
}

/// Of the keys that swap items. Whether an event's modifiers contain its own key differs between platforms.
Qt::KeyboardModifier modifierOf(int key) {
    switch (key) {
    case Qt::Key_Alt:
        return Qt::AltModifier;
    case Qt::Key_Shift:
        return Qt::ShiftModifier;
    default:
        return Qt::NoModifier;
    }
}

/// Rings that grow fainter outward. The innermost ones lie under the panel as far as the shadow is dropped,
/// so that no part of it is evenly gray.
void drawShadow(QPainter& painter, const QRect& panel, bool isDark) {
    const double strength = isDark ? 0.075 : 0.034;
    constexpr int outermost = shadowWidth - shadowDrop;
    constexpr int rings = outermost + 2 * shadowDrop;
    painter.setPen(Qt::NoPen);
    for (int ring = outermost; ring > outermost - rings; --ring) {
        const double share = static_cast<double>(outermost - ring + 1) / rings;
        painter.setBrush(QColor::fromRgbF(0, 0, 0, static_cast<float>(strength * share * share)));
        const QRect place = panel.adjusted(-ring, -ring, ring, ring).translated(0, shadowDrop);
        painter.drawRoundedRect(place, windowCornerRadius + ring, windowCornerRadius + ring);
    }
}

} // namespace

// NOLINTBEGIN(cppcoreguidelines-owning-memory): the children are owned by this widget
DropDownWindow::DropDownWindow(
    const Observed<Reading>& reading, const Menu& menu, RunLoop& loop, const NoticeActions& actions,
    Wayland::LayerShell* shell, PastCharts* past)
    : QWidget(nullptr, flagsWith(shell)),
      statusView_(new StatusMenuView(reading, loop, this, actions, past)),
      items_(new MenuItemsView(menu, loop, this)),
      column_(*statusView_, *items_),
      shadow_(Compositing::isAvailable() ? shadowWidth : 0),
      shell_(shell),
      isOverlay_(ScreenOverlay::isNeeded()) {
    setWindowTitle(QStringLiteral("Tarnwick"));
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setAttribute(Qt::WA_TranslucentBackground, shadow_ > 0);
    items_->onChoose = [this](MenuItem::Id id) {
        if (const auto choose = onChoose) { // a copy: the owner ends this window in the call
            choose(id);
        }
    };
    describing_ = std::make_unique<RenderLoop>(loop, [this, &reading] {
        const QString summary = QString::fromStdString(reading.get().accessibilitySummary);
        if (summary != accessibleDescription()) {
            setAccessibleDescription(summary);
        }
    });
    items_->onSizeChange = [this] { fit(); };
    statusView_->onSizeChange = [this] { fit(); };
}

// NOLINTEND(cppcoreguidelines-owning-memory)

DropDownWindow::~DropDownWindow() = default;

void DropDownWindow::open(std::optional<ScreenPoint> at) {
    if (!isVisible()) {
        opensAt_ = at;
        items_->setHeldKeys(QGuiApplication::queryKeyboardModifiers());
        if (!isOverlay_) {
            fit();
        }
    }
    if (!isOverlay_) {
        Foreground::show(*this);
    } else if (!overlay_) {
        openOverlay();
    }
    setFocus(Qt::PopupFocusReason);
}

void DropDownWindow::openOverlay() {
    overlay_ = std::make_unique<ScreenOverlay>(ScreenOverlay::Needs{
        .shell = shell_,
        .window = *this,
        .screen = openingPlace().first,
        .cover = Wayland::LayerSurface::Cover::workArea,
        .onClosed = [this] {
            if (const auto dismiss = onDismiss) { // a copy: the owner ends this window in the call
                dismiss();
            }
        }});
    if (const QWindow* const window = windowHandle()) {
        connect(window, &QWindow::screenChanged, this, [this] { fit(); });
    }
}

void DropDownWindow::end() {
    onChoose = nullptr;
    onDismiss = nullptr;
    onLoseFocus = nullptr;
    overlay_.reset();
    hide();
    describing_.reset();
    statusView_->stopFollowing();
    items_->stopFollowing();
}

bool DropDownWindow::covers(ScreenPoint point) const {
    const auto [on, place] = ScreenPixels::locate(point);
    return on != nullptr && panel_.translated(geometry().topLeft()).contains(place);
}

void DropDownWindow::fit() {
    if (isOverlay_) {
        fitOverlay();
    } else {
        fitWindow();
    }
    column_.layOut(panel_);
    update();
}

std::pair<const QScreen*, std::optional<QPoint>> DropDownWindow::openingPlace() const {
    if (opensAt_) {
        if (const auto [screen, click] = ScreenPixels::locate(*opensAt_); screen != nullptr) {
            return {screen, click};
        }
    }
    return {QGuiApplication::primaryScreen(), std::nullopt};
}

void DropDownWindow::fitWindow() {
    const auto [screen, click] = openingPlace();
    if (screen == nullptr) {
        return;
    }
    const QRect available = ScreenPixels::available(*screen);
    const QSize size = column_.sizeWithin(DropDownPlacement::room(available).height());
    panel_ = QRect(QPoint(shadow_, shadow_), size);
    setFixedSize(size.grownBy({shadow_, shadow_, shadow_, shadow_}));
    const QRect place = DropDownPlacement::place(click, size, screen->geometry(), available);
    move(place.topLeft() - panel_.topLeft());
}

std::pair<QRect, std::optional<QPoint>> DropDownWindow::overlaidPlace() const {
    const auto [expected, click] = openingPlace();
    const bool isPlaced = shell_ != nullptr || windowHandle() == nullptr;
    const QScreen* const screen = isPlaced ? expected : windowHandle()->screen();
    if (screen == nullptr) {
        return {rect(), click};
    }
    return {
        DropDownPlacement::inUnits(screen->geometry(), size(), screen->devicePixelRatio()),
        screen == expected ? click : std::nullopt};
}

void DropDownWindow::fitOverlay() {
    const auto [area, click] = overlaidPlace();
    const DropDownPlacement::Overlaid overlaid = DropDownPlacement::overlaid(click, area, this->size());
    // Without a click it is unknown at which edges there are panels.
    const QRect known = click ? area : overlaid.available;
    const QSize size = column_.sizeWithin(DropDownPlacement::room(overlaid.available).height());
    const QRect place = shell_ == nullptr && !opensAt_
                            ? DropDownPlacement::inMiddle(size, overlaid.available)
                            : DropDownPlacement::place(click, size, known, overlaid.available);
    panel_ = place.translated(-overlaid.origin);
}

void DropDownWindow::resizeEvent(QResizeEvent* /*event*/) {
    if (isOverlay_) {
        fit();
    }
}

void DropDownWindow::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    const bool isDark = LatencyPalette::isDark(palette());
    const double radius = shadow_ > 0 ? windowCornerRadius : 0;
    painter.setRenderHint(QPainter::Antialiasing);
    if (shadow_ > 0) {
        drawShadow(painter, panel_, isDark);
    }
    QColor border = palette().color(QPalette::WindowText);
    border.setAlphaF(isDark ? 0.22F : 0.18F);
    painter.setPen(Qt::NoPen);
    painter.setBrush(palette().color(QPalette::Window));
    painter.drawRoundedRect(panel_, radius, radius);
    painter.setPen(QPen(border, 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(QRectF(panel_).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
    column_.drawThumb(painter, palette().color(QPalette::WindowText));
}

bool DropDownWindow::event(QEvent* event) {
    if (event->type() == QEvent::WindowActivate) {
        hadFocus_ = true;
    } else if (event->type() == QEvent::WindowDeactivate && hadFocus_ && isVisible() && onLoseFocus) {
        const auto loseFocus = onLoseFocus; // a copy: the owner ends this window in the call
        loseFocus();
        return true;
    }
    return QWidget::event(event);
}

void DropDownWindow::closeEvent(QCloseEvent* event) {
    event->accept(); // else it would keep the program from ending
    if (const auto dismiss = onDismiss) {
        dismiss();
    }
}

void DropDownWindow::mousePressEvent(QMouseEvent* event) {
    // A click on the shadow counts as a click outside.
    if (!panel_.contains(event->position().toPoint())) {
        if (const auto dismiss = onDismiss) {
            dismiss();
        }
    }
}

void DropDownWindow::mouseMoveEvent(QMouseEvent* event) {
    items_->setHeldKeys(event->modifiers());
}

void DropDownWindow::wheelEvent(QWheelEvent* event) {
    constexpr int notch = 120;    // of a wheel, as the toolkit counts
    constexpr int notchRows = 40; // pixels that one turns on
    const int turned =
        event->pixelDelta().isNull() ? event->angleDelta().y() * notchRows / notch : event->pixelDelta().y();
    if (column_.canScroll()) {
        column_.scroll(-turned);
        update();
    }
}

void DropDownWindow::revealHighlight() {
    for (const MenuRow* const row : items_->visibleRows()) {
        if (row->hasFocus()) {
            column_.reveal(*row);
            update();
        }
    }
}

bool DropDownWindow::focusNextPrevChild(bool next) {
    bool isMoved = true;
    if (statusView_->hasButtons()) {
        isMoved = QWidget::focusNextPrevChild(next);
    } else {
        items_->highlightNext(next ? 1 : -1);
    }
    revealHighlight();
    return isMoved;
}

bool DropDownWindow::chooseByKey(const QKeyEvent& event) {
    const Qt::KeyboardModifiers modifiers = event.modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier);
    if (event.key() <= 0 || event.key() > 0x7f || event.isAutoRepeat()) {
        return false;
    }
    const QChar character(static_cast<char16_t>(event.key()));
    if (modifiers == Qt::ControlModifier) {
        return items_->chooseByShortcut(character);
    }
    return (modifiers == Qt::NoModifier || modifiers == Qt::AltModifier)
           && items_->chooseByMnemonic(character);
}

void DropDownWindow::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Escape:
        if (const auto dismiss = onDismiss) {
            dismiss();
        }
        return;
    case Qt::Key_Alt:
    case Qt::Key_Shift:
        items_->setHeldKeys(event->modifiers() | modifierOf(event->key()));
        break;
    case Qt::Key_Down:
        items_->highlightNext(1);
        break;
    case Qt::Key_Up:
        items_->highlightNext(-1);
        break;
    case Qt::Key_Home:
    case Qt::Key_PageUp:
        items_->highlightEnd(-1);
        break;
    case Qt::Key_End:
    case Qt::Key_PageDown:
        items_->highlightEnd(1);
        break;
    default:
        if (!chooseByKey(*event) && !statusView_->chooseReachByKey(event->key())) {
            QWidget::keyPressEvent(event);
        }
        return; // it may have ended this window
    }
    revealHighlight();
}

void DropDownWindow::keyReleaseEvent(QKeyEvent* event) {
    if (const Qt::KeyboardModifier modifier = modifierOf(event->key()); modifier != Qt::NoModifier) {
        items_->setHeldKeys(event->modifiers() & ~Qt::KeyboardModifiers(modifier));
    } else {
        QWidget::keyReleaseEvent(event);
    }
}

} // namespace tarnwick
