#include "app/StatusMenuView/DropDown.h"

#include "app/StatusMenuView/DropDownWindow.h"
#include "app/StatusMenuView/PressWatch.h"

#include <QGuiApplication>

#include <utility>

namespace tarnwick {

namespace {

/// A click on the status item first takes the focus away and is then told to us: for so many seconds the two
/// belong together.
constexpr double sameClick = 0.3;

/// Of a double click some panels tell twice in the same moment.
constexpr double sameMoment = 0.02;

} // namespace

void DropDown::LaterDeletion::operator()(DropDownWindow* window) const {
    window->end();
    window->deleteLater(); // one of its own events may be what closes it
}

DropDown::DropDown(Monitor& monitor, Menu& menu, RunLoop& loop)
    : monitor_(monitor), menu_(menu), loop_(loop) {
}

DropDown::~DropDown() {
    close();
}

void DropDown::toggle(std::optional<ScreenPoint> at) {
    const double now = loop_.now();
    const std::optional<double> lostFocusAt = std::exchange(lostFocusAt_, std::nullopt);
    const std::optional<double> toggledAt = std::exchange(toggledAt_, now);
    if (toggledAt && now - *toggledAt < sameMoment) {
        return;
    }
    if (isOpen()) {
        close();
    } else if (!lostFocusAt || now - *lostFocusAt >= sameClick) {
        open(at);
    }
}

void DropDown::open(std::optional<ScreenPoint> at) {
    if (!isOpen()) {
        menu_.willOpen();
        window_.reset(std::make_unique<DropDownWindow>(monitor_, menu_, loop_).release());
        window_->onDismiss = [this] { close(); };
        window_->onLoseFocus = [this] { lostFocus(); };
        window_->onChoose = [this](MenuItem::Id id) {
            close();
            menu_.choose(id);
        };
    }
    window_->open(at);
    if (!presses_ && QGuiApplication::platformName() == QLatin1String("xcb")) {
        presses_ = std::make_unique<PressWatch>(loop_, [this](ScreenPoint point) { pressedAt(point); });
    }
}

void DropDown::close() {
    if (isOpen()) {
        window_.reset();
        presses_.reset();
        menu_.didClose();
    }
}

void DropDown::pressedAt(ScreenPoint point) {
    if (isOpen() && !window_->covers(point)) {
        lostFocus();
    }
}

void DropDown::lostFocus() {
    lostFocusAt_ = loop_.now();
    close();
}

} // namespace tarnwick
