#include "app/StatusMenuView/DropDown.h"

#include "app/StatusMenuView/DropDownWindow.h"
#include "platform/qt/ScreenOverlay.h"
#include "platform/qt/ScreenPixels.h"
#include "platform/qt/WindowSystem.h"

#include <QScreen>

#include <utility>

namespace tarnwick {

namespace {

/// A click on the status item takes the focus away first. The panel reports it later, in some cases when the
/// button is released. Within this many seconds the two are one click.
constexpr double sameClick = 0.3;

/// Where the focus follows the pointer, other windows take it on the pointer's way to the drop-down. Within
/// this many seconds it may come back.
constexpr double longestWay = 1;

/// Some panels report a double click as two clicks within this many seconds.
constexpr double sameMoment = 0.02;

/// In pixels, of the place that a panel has told.
ScreenPoint clickedAt(ScreenPoint told) {
    const std::optional<ScreenPoint> pointer = ScreenPixels::pointer();
    if (!pointer) {
        return told;
    }
    const QScreen* const screen = ScreenPixels::locate(*pointer).first;
    const QPoint origin = screen != nullptr ? screen->geometry().topLeft() : QPoint();
    return ScreenPixels::clicked(told, *pointer, {.x = origin.x(), .y = origin.y()});
}

} // namespace

void DropDown::LaterDeletion::operator()(DropDownWindow* window) const {
    window->end();
    window->deleteLater(); // one of its own events may be what closes it
}

DropDown::DropDown(
    const Observed<Reading>& reading, Menu& menu, RunLoop& loop, NoticeActions actions,
    const PastSource& past)
    : reading_(reading),
      menu_(menu),
      loop_(loop),
      actions_(std::move(actions)),
      shell_(ScreenOverlay::findShell()) {
    if (past.read) {
        past_.emplace(past);
    }
}

DropDown::~DropDown() {
    close();
}

void DropDown::toggle(std::optional<ScreenPoint> at) {
    const double now = loop_.now();
    const std::optional<double> toggledAt = std::exchange(toggledAt_, now);
    if (toggledAt && now - *toggledAt < sameMoment) {
        return;
    }
    if (isOpen() || probe_ || itemSearch_) {
        close();
    } else if (std::exchange(mayBeSameClick_, false)) {
        presses_.reset();
    } else if (at && findItem && !shell_ && !ScreenPixels::pointer()) {
        openAtItem(at); // GNOME tells a click in pixels, and the item's place in units
    } else if (at) {
        open(clickedAt(*at));
    } else {
        openAtPointer();
    }
}

void DropDown::openAtPointer() {
    const std::optional<ScreenPoint> pointer = ScreenPixels::pointer();
    if (pointer || isOpen()) {
        open(pointer);
    } else if (!shell_) {
        openAtItem();
    } else if (!probe_) {
        probe_ = std::make_unique<PointerProbe>(
            loop_, *shell_, [this](std::optional<ScreenPoint> found) { open(found); });
    }
}

void DropDown::openAtItem(std::optional<ScreenPoint> otherwise) {
    if (isOpen() || !findItem) {
        open(otherwise);
    } else if (!itemSearch_) {
        itemSearch_ = std::make_unique<Lifeline>();
        findItem(itemSearch_->guarded(
            [this, otherwise](std::optional<ScreenPoint> found) { open(found ? found : otherwise); }));
    }
}

void DropDown::open(std::optional<ScreenPoint> at) {
    probe_.reset();
    itemSearch_.reset();
    mayBeSameClick_ = false;
    if (at) {
        lastPlace_ = at;
    }
    if (!isOpen()) {
        menu_.willOpen();
        window_.reset(std::make_unique<DropDownWindow>(
                          reading_, menu_, loop_, actions_, shell_.get(), past_ ? &*past_ : nullptr)
                          .release());
        window_->onDismiss = [this] { close(); };
        window_->onLoseFocus = [this] { lostFocus(); };
        window_->onChoose = [this](MenuItem::Id id) {
            close();
            menu_.choose(id);
        };
    }
    window_->open(lastPlace_);
    if (!presses_ && WindowSystem::isX11()) {
        isButtonHeld_ = false;
        presses_ = std::make_unique<X11::PressWatch>(
            loop_, [this](const X11::PressWatch::Buttons& buttons) { buttonsMoved(buttons); });
    }
}

void DropDown::close() {
    probe_.reset();
    itemSearch_.reset();
    presses_.reset();
    mayBeSameClick_ = false;
    hide();
}

void DropDown::hide() {
    focusReturn_.reset();
    if (isOpen()) {
        window_.reset();
        menu_.didClose();
    }
}

void DropDown::lostFocus() {
    if (!presses_) {
        closedByClick();
        return;
    }
    // Had a press taken the focus, it would be told of, too.
    focusReturn_ = loop_.after(longestWay, [this] {
        if (isOpen() && !window_->isActiveWindow()) {
            close();
        }
    });
}

void DropDown::closedByClick() {
    hide();
    mayBeSameClick_ = true;
    waitForEndOfClick();
}

void DropDown::buttonsMoved(const X11::PressWatch::Buttons& buttons) {
    isButtonHeld_ = buttons.isHeld;
    if (isOpen() && buttons.pressedAt && !window_->covers(*buttons.pressedAt)) {
        closedByClick();
    } else if (mayBeSameClick_) {
        waitForEndOfClick();
    }
}

void DropDown::waitForEndOfClick() {
    endOfClick_.reset();
    if (!isButtonHeld_) {
        endOfClick_ = loop_.after(sameClick, [this] {
            if (!isOpen()) {
                presses_.reset();
            }
            mayBeSameClick_ = false;
        });
    }
}

} // namespace tarnwick
