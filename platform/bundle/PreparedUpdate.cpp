#include "platform/bundle/PreparedUpdate.h"

#include "platform/linux/FolderExchange.h"

#include <utility>

namespace tarnwick {

namespace {

using Phase = UpdateRecord::Phase;

constexpr auto gone = "The update is no longer there.";

} // namespace

std::optional<UpdateRecord> preparedIn(const UpdateFolder& folder) {
    auto record = folder.record();
    // A process that ended right before the exchange has left `exchanging`.
    const bool isBeforeExchange =
        record && (record->phase == Phase::prepared || record->phase == Phase::exchanging);
    if (!isBeforeExchange || versionOf(folder.bundle()) != record->from
        || versionOf(folder.other()) != record->to) {
        return std::nullopt;
    }
    return record;
}

PreparedUpdate::Problem PreparedUpdate::hold() {
    auto lock = folder_.lock();
    if (!lock || !preparedIn(folder_)) {
        return gone;
    }
    lock_ = std::move(lock);
    return std::nullopt;
}

PreparedUpdate::Problem PreparedUpdate::exchange() {
    if (!isHeld()) {
        if (auto problem = hold()) {
            return problem;
        }
    }
    auto problem = exchanged();
    if (problem) {
        folder_.remove();
    }
    lock_.reset();
    return problem;
}

PreparedUpdate::Problem PreparedUpdate::exchanged() const {
    auto record = folder_.record();
    if (!record) {
        return gone;
    }
    // It may have been replaced by hand since, or moved away, which the exchange finds out.
    if (const auto present = versionOf(folder_.bundle()); present && present != record->from) {
        return "Tarnwick's folder has version " + present->text() + " by now, so version " + record->to.text()
               + " was not installed.";
    }
    record->phase = Phase::exchanging;
    if (!folder_.write(*record)) {
        return "The folder beside the program can't be written.";
    }
    if (const auto failure = exchangeFolders(folder_.other(), folder_.bundle())) {
        return sentence(*failure);
    }
    record->phase = Phase::fresh;
    // Where this fails, the next start finds out by the version in the bundle's place.
    static_cast<void>(folder_.write(*record));
    return std::nullopt;
}

void PreparedUpdate::discard() {
    if (!isHeld()) {
        lock_ = folder_.lock();
    }
    if (isHeld()) {
        folder_.remove();
    }
    lock_.reset();
}

} // namespace tarnwick
