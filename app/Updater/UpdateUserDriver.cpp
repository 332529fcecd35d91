#include "app/Updater/UpdateUserDriver.h"

#include "platform/qt/Foreground.h"

#include <QApplication>

#include <utility>

namespace tarnwick {

UpdateUserDriver::UpdateUserDriver(Needs needs)
    : needs_(std::move(needs)), following_(std::make_unique<RenderLoop>(needs_.loop, [this] { follow(); })) {
}

UpdateUserDriver::~UpdateUserDriver() {
    delete window_; // NOLINT(cppcoreguidelines-owning-memory): it has no parent
}

void UpdateUserDriver::follow() {
    const auto page = pageOf(needs_.engine.state(), needs_.engine.running());
    if (!page) {
        hide();
    } else if (announce(*page)) {
        show(*page);
    }
}

bool UpdateUserDriver::announce(const UpdatePage& page) {
    const auto* const found = std::get_if<Updating::Found>(&needs_.engine.state());
    const bool isAskedFor = found == nullptr || found->isAskedFor;
    if (page.title == std::exchange(announced_, page.title)
        && isAskedFor == std::exchange(isAnnouncedAsAskedFor_, isAskedFor)) {
        return window_ != nullptr;
    }
    isAnnouncedAsAskedFor_ = isAskedFor;
    if (page.isAlert) {
        needs_.delegate.standardUserDriverWillShowModalAlert();
        return true;
    }
    if (found == nullptr) {
        return true;
    }
    const bool isGentle = !isAskedFor && needs_.delegate.supportsGentleScheduledUpdateReminders();
    const bool isShown = !isGentle
                         || needs_.delegate.standardUserDriverShouldHandleShowingScheduledUpdate(
                             found->update, QApplication::activeWindow() != nullptr);
    needs_.delegate.standardUserDriverWillHandleShowingUpdate(isShown, found->update, isAskedFor);
    return isShown;
}

void UpdateUserDriver::show(const UpdatePage& page) {
    if (window_ == nullptr) {
        window_ = new UpdateWindow(needs_.icon()); // NOLINT(cppcoreguidelines-owning-memory): see `hide`
        window_->onAction = [this](UpdatePage::Action action) { act(action); };
        if (needs_.furnish) {
            needs_.furnish(*window_);
        }
    }
    window_->setPage(page);
    if (!window_->isVisible()) {
        Foreground::show(*window_);
    }
}

void UpdateUserDriver::hide() {
    announced_.clear();
    if (window_ != nullptr) {
        window_->onAction = nullptr;
        window_->hide();
        window_->deleteLater(); // one of its own events may be what ends it
        window_.clear();
    }
}

void UpdateUserDriver::bringToFront() {
    if (window_ != nullptr && window_->isVisible()) {
        Foreground::show(*window_);
    }
}

void UpdateUserDriver::act(UpdatePage::Action action) {
    switch (action) {
    case UpdatePage::Action::install:
        needs_.engine.install();
        break;
    case UpdatePage::Action::skip:
        needs_.engine.skip();
        break;
    case UpdatePage::Action::remindLater:
        needs_.engine.remindLater();
        break;
    case UpdatePage::Action::cancel:
        needs_.engine.cancel();
        break;
    case UpdatePage::Action::dismiss:
        needs_.engine.dismiss();
        break;
    case UpdatePage::Action::restart:
        needs_.restart();
        break;
    }
}

} // namespace tarnwick
