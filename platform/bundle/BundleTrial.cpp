#include "platform/bundle/BundleTrial.h"

#include "platform/bundle/PreparedUpdate.h"
#include "platform/linux/FolderExchange.h"

#include <memory>
#include <utility>

namespace tarnwick {

namespace {

using Phase = UpdateRecord::Phase;

UpdateRecord at(Phase phase, UpdateRecord record) {
    record.phase = phase;
    return record;
}

} // namespace

std::optional<ReleaseVersion> bringBack(const UpdateFolder& folder) {
    const auto record = folder.record();
    if (!record || versionOf(folder.other()) != record->from
        || exchangeFolders(folder.other(), folder.bundle())) {
        return std::nullopt;
    }
    folder.remove();
    return record->to;
}

BundleTrial::BundleTrial(UpdateFolder folder) : folder_(std::move(folder)) {
    lock_ = folder_.lock();
    if (!lock_) {
        return; // another instance is updating, has an update ready, or is on trial
    }
    const auto record = folder_.record();
    // Before the exchange, and after the way back, the version in the bundle's place is the old one.
    if (record && versionOf(folder_.bundle()) == record->to) {
        lookAt(*record);
        return;
    }
    if (!preparedIn(folder_)) {
        folder_.remove();
    }
    lock_.reset();
}

void BundleTrial::lookAt(const UpdateRecord& record) {
    if (record.phase == Phase::begun) {
        broughtBackFrom_ = bringBack(folder_);
    }
    if (broughtBackFrom_ || !folder_.write(at(Phase::begun, record))) {
        lock_.reset();
    }
}

void BundleTrial::pass(RunLoop& loop) {
    if (!lock_) {
        return;
    }
    const auto lock = std::make_shared<WriterLock>(std::move(*lock_));
    lock_.reset();
    const auto remove = [folder = folder_, lock]() -> RunLoop::Task {
        folder.remove();
        return [lock] {};
    };
    if (!loop.detach(remove)) {
        folder_.remove();
    }
}

void BundleTrial::endWell() {
    const auto record = isOn() ? folder_.record() : std::nullopt;
    if (record) {
        static_cast<void>(folder_.write(at(Phase::ended, *record)));
    }
    lock_.reset();
}

} // namespace tarnwick
