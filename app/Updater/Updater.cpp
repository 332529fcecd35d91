#include "app/Updater/Updater.h"

#include <utility>

namespace tarnwick {

Updater::Updater(Needs needs) : needs_(std::move(needs)) {
    if (auto engine = needs_.makeEngine ? needs_.makeEngine() : nullptr) {
        controller_.emplace(Controller{.engine = std::move(engine), .driver = nullptr});
    }
}

void Updater::start() {
    if (!controller_) {
        return;
    }
    controller_->driver = std::make_unique<UpdateUserDriver>(UpdateUserDriver::Needs{
        .loop = needs_.loop,
        .engine = *controller_->engine,
        .delegate = *this,
        .icon = needs_.icon,
        .furnish = needs_.furnish,
        .restart = needs_.restart});
    controller_->engine->start();
}

Updater::~Updater() = default;

bool Updater::automaticallyChecksForUpdates() const {
    return controller_ && needs_.preferences.automaticallyChecksForUpdates();
}

void Updater::setAutomaticallyChecksForUpdates(bool checks) {
    if (controller_) {
        needs_.preferences.setAutomaticallyChecksForUpdates(checks);
    }
}

bool Updater::automaticallyDownloadsUpdates() const {
    return controller_ && needs_.preferences.automaticallyDownloadsUpdates();
}

void Updater::setAutomaticallyDownloadsUpdates(bool downloads) {
    if (controller_) {
        needs_.preferences.setAutomaticallyDownloadsUpdates(downloads);
    }
}

std::optional<RunLoop::WallTime> Updater::lastUpdateCheckDate() const {
    return controller_ ? needs_.preferences.lastUpdateCheckDate() : std::nullopt;
}

std::string Updater::lastProblem() const {
    return controller_ ? controller_->engine->lastProblem() : "";
}

bool Updater::canCheckForUpdates() const {
    return controller_ && controller_->engine->canCheck();
}

std::string Updater::serverDomain() const {
    return controller_ ? controller_->engine->serverDomain() : "";
}

void Updater::checkForUpdates() {
    bringUpdaterToFront(0);
    if (controller_ && controller_->driver) {
        controller_->engine->check();
        controller_->driver->follow();
    }
    bringUpdaterToFront(momentLater);
}

void Updater::bringUpdaterToFront(double delay) {
    if (delay <= 0) {
        if (controller_ && controller_->driver) {
            controller_->driver->bringToFront();
        }
        return;
    }
    constexpr std::size_t enough = 4;
    if (fronting_.size() == enough) {
        fronting_.erase(fronting_.begin());
    }
    fronting_.push_back(needs_.loop.after(delay, [this] { bringUpdaterToFront(0); }));
}

bool Updater::supportsGentleScheduledUpdateReminders() const {
    return true;
}

bool Updater::standardUserDriverShouldHandleShowingScheduledUpdate(
    const FoundUpdate& /*update*/, bool /*inImmediateFocus*/) {
    return true;
}

void Updater::standardUserDriverWillHandleShowingUpdate(
    bool /*handleShowingUpdate*/, const FoundUpdate& /*update*/, bool /*isUserInitiated*/) {
    // The window is there only after this call.
    needs_.loop.post(lifeline_.guarded([this] {
        bringUpdaterToFront(0);
        bringUpdaterToFront(momentLater);
    }));
}

void Updater::standardUserDriverWillShowModalAlert() {
    needs_.loop.post(lifeline_.guarded([this] { bringUpdaterToFront(0); }));
}

} // namespace tarnwick
