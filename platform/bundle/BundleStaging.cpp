#include "platform/bundle/BundleStaging.h"

#include "core/Storage/FileStore.h"
#include "core/Update/ArchiveCheck.h"
#include "platform/archive/Unpack.h"
#include "platform/linux/FolderExchange.h"

#include <cerrno>
#include <fcntl.h>
#include <string>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace tarnwick {

namespace {

namespace fs = std::filesystem;
using Problem = UpdatePlace::Problem;

/// What is started from a bundle.
constexpr auto desktopProgram = "bin/tarnwick";

std::string notStored(const std::error_code& error) {
    return "The download can't be stored: " + error.message() + ".";
}

std::error_code lastSystemError() {
    return {errno, std::generic_category()};
}

/// What was unpacked may still be something else than what it was signed as.
Problem problemWithBundle(const fs::path& bundle, const ReleaseVersion& expected) {
    std::error_code error;
    const auto permissions = fs::status(bundle / desktopProgram, error).permissions();
    const bool isThere = !error && (permissions & fs::perms::owner_exec) != fs::perms::none;
    if (!isThere || versionOf(bundle) != expected) {
        return "The download is not Tarnwick " + expected.text() + ".";
    }
    return std::nullopt;
}

/// Off the main thread.
Problem made(const UpdateFolder& folder, const UpdatePlace::Claim& claim, const ReleaseVersion& running) {
    if (const auto refusal =
            checkArchive(folder.archive(), claim.archive, claim.version, claim.signature, claim.keys)) {
        return sentence(*refusal);
    }
    if (const auto failure = unpack(folder.archive(), folder.unpacked(), UpdateFolder::topFolder)) {
        return sentence(*failure);
    }
    if (auto problem = problemWithBundle(folder.other(), claim.version)) {
        return problem;
    }
    std::error_code ignored;
    fs::remove(folder.archive(), ignored);
    const bool isWritten =
        folder.write({.phase = UpdateRecord::Phase::prepared, .from = running, .to = claim.version});
    return isWritten ? std::nullopt : Problem("The download can't be stored.");
}

} // namespace

BundleStaging::BundleStaging(RunLoop& loop, UpdateFolder folder, ReleaseVersion running)
    : loop_(loop), folder_(std::move(folder)), running_(running) {
}

Problem BundleStaging::obstacle() const {
    const auto failure = obstacleToExchange(folder_.bundle());
    return failure ? Problem(sentence(*failure)) : std::nullopt;
}

Problem BundleStaging::begin() {
    if (work_ && !work_->hasEnded) {
        return "The update before is still being removed. Please try again in a moment.";
    }
    work_.reset();
    if (const std::error_code error = FileStore::makeFolders(folder_.path())) {
        return notStored(error);
    }
    if (!folder_.isOurs()) {
        return "The download can't be stored: " + folder_.path().string() + " belongs to somebody else.";
    }
    lock_.reset(); // of an earlier download
    lock_ = folder_.lock();
    if (!lock_) {
        return "Another Tarnwick is updating this folder.";
    }
    folder_.empty();
    archive_ = FileDescriptor(
        ::open(folder_.archive().c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600));
    return archive_.isOpen() ? std::nullopt : Problem(notStored(lastSystemError()));
}

Problem BundleStaging::add(std::string_view part) {
    while (!part.empty()) {
        const ssize_t written = ::write(archive_.get(), part.data(), part.size());
        if (written < 0 && errno != EINTR) {
            return notStored(lastSystemError());
        }
        part.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
    }
    return std::nullopt;
}

void BundleStaging::prepare(const Claim& claim, std::function<void(const Problem&)> done) {
    archive_.reset();
    work_ = std::make_shared<Work>();
    listening_ = std::make_unique<Lifeline>();
    const auto report = listening_->guarded(std::move(done));
    const bool isUnderWay =
        loop_.detach([work = work_, folder = folder_, claim, running = running_, report]() -> RunLoop::Task {
            const Problem problem = made(folder, claim, running);
            if (work->fate.exchange(Work::Fate::done) == Work::Fate::abandoned) {
                folder.remove();
            }
            work->hasEnded = true;
            return [report, problem] { report(problem); };
        });
    if (!isUnderWay) {
        work_->fate = Work::Fate::done;
        work_->hasEnded = true;
        loop_.post([report] { report("The system has no thread to give."); });
    }
}

void BundleStaging::discard() {
    listening_.reset();
    archive_.reset();
    // Without the lock, what lies there is another instance's.
    if (lock_ && (!work_ || work_->fate.exchange(Work::Fate::abandoned) == Work::Fate::done)) {
        folder_.remove();
    }
    lock_.reset();
}

} // namespace tarnwick
