#include "platform/journal/SqliteJournal.h"

#include "core/Storage/FileStore.h"
#include "core/Storage/UserFolders.h"
#include "platform/journal/JournalFile.h"
#include "platform/journal/JournalRows.h"
#include "platform/journal/JournalSchema.h"
#include "platform/journal/JournalTidying.h"

#include <algorithm>
#include <sys/stat.h>
#include <utility>

namespace tarnwick {

namespace fs = std::filesystem;

SqliteJournal::SqliteJournal(fs::path file)
    : file_(std::move(file)), lock_(file_, WriterLock::Access::userAlone) {
}

fs::path SqliteJournal::defaultPath() {
    return UserFolders::state() / "Tarnwick" / "journal.sqlite";
}

Journal::State SqliteJournal::open() {
    const WriterLock::Attempt attempt = lock_.acquire();
    if (attempt == WriterLock::Attempt::heldByOther || attempt == WriterLock::Attempt::impossible) {
        database_.reset();
        const bool isOther = attempt == WriterLock::Attempt::heldByOther;
        problem_ = isOther ? "" : "nothing can be written in its folder";
        state_ = isOther ? State::otherWrites : State::cannotWrite;
    } else if (!database_ || idOf(file_) != opened_) {
        state_ = openFile();
    }
    return state_;
}

Journal::State SqliteJournal::openFile() {
    database_.reset();
    tidied_.reset();
    JournalFile::Opened opened = JournalFile::openToWrite(file_);
    if (!opened.brokenOne.empty()) {
        brokenOne_ = opened.brokenOne;
    }
    problem_ = opened.problem;
    database_ = std::move(opened.database);
    opened_ = idOf(file_);
    const auto until = database_ ? JournalRows::readUntil(*database_) : std::nullopt;
    hasRecorded_ = until.has_value();
    if (until && !JournalRows::endOpenEpisodes(*database_, *until)) {
        problem_ = database_->problem();
        return State::cannotWrite;
    }
    return opened.state;
}

SqliteJournal::FileId SqliteJournal::idOf(const fs::path& file) {
    struct stat info{};

    return ::stat(file.c_str(), &info) == 0 ? FileId{.device = info.st_dev, .number = info.st_ino} : FileId{};
}

std::string SqliteJournal::problem() const {
    if (problem_.empty() && !brokenOne_.empty()) {
        return "it was broken, and is kept as " + brokenOne_.string();
    }
    return problem_;
}

std::optional<HistoryTime> SqliteJournal::until() {
    if (database_) {
        return JournalRows::readUntil(*database_);
    }
    Database reader = JournalFile::openToRead(file_);
    return JournalRows::readUntil(reader);
}

bool SqliteJournal::write(const Batch& batch) {
    open();
    if (!database_) {
        return false;
    }
    const bool isKept = store(batch);
    database_->forgetStatements();
    state_ = isKept ? State::writes : State::cannotWrite;
    if (isKept) {
        problem_.clear();
    } else if (std::exchange(isBroken_, false)) {
        database_.reset(); // it is checked, and put aside, when it is opened again
    }
    return isKept;
}

bool SqliteJournal::store(const Batch& batch) {
    Transaction transaction(*database_);
    if (transaction.isOpen() && put(batch) && tidyWhenDue(batch.until) && transaction.commit()) {
        tidied_ = floorTo(batch.until, std::chrono::hours(1));
        hasRecorded_ = true;
        return true;
    }
    noteFailure(); // before the transaction is taken back
    return false;
}

bool SqliteJournal::wasCleared() {
    // How far a recording has come stands there from its first writing on.
    return hasRecorded_ && database_ && database_->number("SELECT count(*) FROM recording") == 0;
}

bool SqliteJournal::put(const Batch& batch) {
    const auto host = JournalRows::findOrAddHost(*database_, batch.host);
    if (!host) {
        return false;
    }
    const auto putPeriod = [&](const Period& period) {
        return JournalRows::addPeriod(*database_, *host, period);
    };
    const auto putEpisode = [&](const Episode& episode) {
        return JournalRows::putEpisode(*database_, *host, episode);
    };
    const auto putGap = [&](const Gap& gap) { return JournalRows::putGap(*database_, gap); };
    return std::ranges::all_of(batch.minutes, putPeriod) && std::ranges::all_of(batch.episodes, putEpisode)
           && std::ranges::all_of(batch.gaps, putGap) && JournalRows::putUntil(*database_, batch.until);
}

bool SqliteJournal::tidyWhenDue(HistoryTime now) {
    return tidied_ == floorTo(now, std::chrono::hours(1)) || JournalTidying::tidy(*database_, now);
}

void SqliteJournal::noteFailure() {
    problem_ = database_->problem();
    isBroken_ = database_->fault() == Database::Fault::broken;
}

History SqliteJournal::read(const std::string& host, const Span& span) {
    if (database_) {
        History history = JournalRows::readHistory(*database_, host, span);
        database_->forgetStatements();
        return history;
    }
    Database reader = JournalFile::openToRead(file_);
    return JournalRows::readHistory(reader, host, span);
}

std::vector<std::string> SqliteJournal::hosts() {
    if (database_) {
        std::vector<std::string> names = JournalRows::knownHosts(*database_);
        database_->forgetStatements();
        return names;
    }
    Database reader = JournalFile::openToRead(file_);
    return JournalRows::knownHosts(reader);
}

bool SqliteJournal::clear() {
    const bool areBrokenGone = JournalFile::removeBrokenOnes(file_);
    brokenOne_.clear();
    hasRecorded_ = false;
    if (!database_ && !JournalFile::isThere(file_)) {
        return areBrokenGone;
    }
    const bool isGone = emptyPresent() || removePresent();
    return isGone && areBrokenGone;
}

bool SqliteJournal::emptyPresent() {
    if (database_) {
        return empty(*database_);
    }
    Database database(file_, Database::Access::write, 1000);
    return JournalSchema::versionOf(database) == JournalSchema::version && empty(database);
}

bool SqliteJournal::removePresent() {
    const WriterLock::Attempt attempt = lock_.acquire();
    if (attempt == WriterLock::Attempt::heldByOther || attempt == WriterLock::Attempt::impossible) {
        return false;
    }
    database_.reset();
    const bool isGone = JournalFile::remove(file_);
    if (attempt == WriterLock::Attempt::taken) {
        lock_ = WriterLock(file_, WriterLock::Access::userAlone); // it is left to who records
    }
    return isGone;
}

bool SqliteJournal::empty(Database& database) {
    Transaction transaction(database);
    return database.execute("PRAGMA secure_delete = ON;"
                            "DELETE FROM periods; DELETE FROM episodes; DELETE FROM gaps;"
                            "DELETE FROM hosts; DELETE FROM recording")
           && transaction.commit() && database.execute("VACUUM")
           && database.number("PRAGMA wal_checkpoint(TRUNCATE)") == 0;
}

} // namespace tarnwick
