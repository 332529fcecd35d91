#include "app/Monitor/StatsRecorder.h"

#include <utility>

namespace tarnwick {

namespace {

StatsRecorder::State stateAfter(WriterLock::Attempt attempt) {
    switch (attempt) {
    case WriterLock::Attempt::taken:
    case WriterLock::Attempt::held:
        return StatsRecorder::State::records;
    case WriterLock::Attempt::heldByOther:
        return StatsRecorder::State::otherRecords;
    case WriterLock::Attempt::impossible:
        break;
    }
    return StatsRecorder::State::cannotRecord;
}

} // namespace

StatsRecorder::StatsRecorder(StatsStore store) : store_(std::move(store)), lock_(store_.url) {
}

void StatsRecorder::load() {
    // The lock first: what is read under it can't be overwritten by another process's last save.
    state_ = stateAfter(lock_.acquire());
    take(read());
}

std::optional<StatsByHost> StatsRecorder::read() {
    // The version first: a file that is replaced while it is read is read again at the next save.
    seen_ = FileStore::versionOf(store_.url);
    auto present = store_.read();
    isUnread_ = !present;
    return present;
}

void StatsRecorder::take(std::optional<StatsByHost> present) {
    onDisk_ = present.value_or(StatsByHost{});
    // After a power cut a file that was not flushed may hold anything.
    StatsByHost figures = present ? *std::move(present) : store_.flushedFigures();
    for (const std::string& host : resetHosts_) {
        figures[host] = counterOf(host);
    }
    allTimeStats_ = std::move(figures);
    written_.reset();
}

StatCounter StatsRecorder::counterOf(const std::string& host) const {
    const auto found = allTimeStats_.find(host);
    return found != allTimeStats_.end() ? found->second : StatCounter{};
}

void StatsRecorder::reset(const std::string& host) {
    allTimeStats_[host] = {};
    resetHosts_.insert(host);
}

StatsRecorder::Saved StatsRecorder::save(
    const std::string& host, const StatCounter& counter, FileStore::Durability durability) {
    allTimeStats_[host] = counter;
    const WriterLock::Attempt attempt = lock_.acquire();
    const State before = std::exchange(state_, stateAfter(attempt));
    if (state_ == State::records && (attempt == WriterLock::Attempt::taken || mustBeRead())) {
        std::optional<StatsByHost> present = read();
        if (before == State::otherRecords || (present && isFromAnotherWriter(*present))) {
            take(std::move(present));
            if (!resetHosts_.empty()) {
                write(host, durability); // this save may be the last one
            }
            return Saved::tookOver;
        }
    }
    if (state_ == State::records) {
        write(host, durability);
    }
    return Saved::kept;
}

bool StatsRecorder::mustBeRead() const {
    // Reading may have failed for a moment only, as with too many open files. The file may also have come
    // since: with a mounted disk, or from a backup.
    return isUnread_ || FileStore::versionOf(store_.url) != seen_;
}

bool StatsRecorder::isFromAnotherWriter(const StatsByHost& present) const {
    // A file that was removed is not another writer's.
    return !present.empty() && present != onDisk_;
}

void StatsRecorder::write(const std::string& host, FileStore::Durability durability) {
    StatsByHost figures = allTimeStats_;
    std::erase_if(figures, [](const auto& entry) { return entry.second.isEmpty(); });
    surplus_ = dropLeastPinged(figures, host);
    if (!isUnread_ && written_ && durability <= *written_ && figures == onDisk_) {
        problem_.clear();
        return; // nothing has been counted since
    }
    problem_ = replaceFile(std::move(figures), durability);
}

std::error_code StatsRecorder::replaceFile(StatsByHost figures, FileStore::Durability durability) {
    if (isUnread_) {
        if (const std::error_code error = FileStore::keepAside(store_.url, &keptAside_)) {
            return error;
        }
    }
    if (const std::error_code error = store_.save(figures, durability)) {
        return error;
    }
    isUnread_ = false;
    seen_ = FileStore::versionOf(store_.url);
    written_ = durability;
    resetHosts_.clear();
    onDisk_ = std::move(figures);
    return {};
}

} // namespace tarnwick
